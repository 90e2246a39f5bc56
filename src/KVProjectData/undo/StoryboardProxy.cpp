#include "KVProjectData/undo/StoryboardProxy.h"

#include "KVProjectData/tree/UndoContext.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {
namespace {

/// The places that the host's diagnostics know.
constexpr int kCanUndo = 193;
constexpr int kUndo = 197;
constexpr int kCanRedo = 203;
constexpr int kRedo = 206;
constexpr int kStopped = 212;
constexpr int kAdd = 222;
constexpr int kFinish = 244;

constexpr EngineCalls kEngine("KVProjectUndo");

/// Reports a failure from one of these places and gives the result on.
HRESULT Checked(HRESULT result, int place)
{
    return kEngine.Checked(result, {}, place);
}

/// S_FALSE when there is nothing to undo.
HRESULT UndoLast(IZXEProductionData& storyboard)
{
    VARIANT_BOOL can = VARIANT_FALSE;
    Bstr description;
    const HRESULT asked = Checked(storyboard.CanUndo(&can, description.Put()), kCanUndo);
    if (FAILED(asked)) return asked;
    return can == VARIANT_TRUE ? Checked(storyboard.Undo(), kUndo) : S_FALSE;
}

/// S_FALSE when there is nothing to redo.
HRESULT RedoLast(IZXEProductionData& storyboard)
{
    VARIANT_BOOL can = VARIANT_FALSE;
    Bstr description;
    const HRESULT asked = Checked(storyboard.CanRedo(&can, description.Put()), kCanRedo);
    if (FAILED(asked)) return asked;
    return can == VARIANT_TRUE ? Checked(storyboard.Redo(), kRedo) : S_FALSE;
}

} // namespace

HRESULT CKVSbdProxy::Finish()
{
    EngineCalls::Begin();
    for (const auto& storyboard : m_storyboards) {
        const auto filler = Make<CKVNullOperation>();
        const HRESULT added = Checked(storyboard->AddUndoUnit(filler->Controlling()), kFinish);
        if (FAILED(added)) return added;
    }
    return S_OK;
}

HRESULT CKVSbdProxy::Run()
{
    EngineCalls::Begin();
    std::vector<IZXEProductionData*> done;
    done.reserve(m_storyboards.size());
    for (const auto& storyboard : m_storyboards) {
        const HRESULT result = m_undoes ? UndoLast(*storyboard) : RedoLast(*storyboard);
        if (FAILED(result)) {
            // All of them stay where they were, so that the next turn finds them together.
            for (IZXEProductionData* back : done)
                m_undoes ? Checked(back->Redo(), kRedo) : Checked(back->Undo(), kUndo);
            return Checked(result, kStopped);
        }
        if (result != S_FALSE) done.push_back(storyboard.Get());
    }
    return S_OK;
}

HRESULT CKVSbdProxy::Do(IOleUndoManager* manager)
{
    return Guarded([&] {
        if (m_passOver) {
            m_passOver = false;
        } else {
            const HRESULT run = Run();
            m_passOver = FAILED(run);
            if (FAILED(run)) return run;
            m_undoes = !m_undoes;
        }
        const HRESULT added = Checked(AddTo(manager), kAdd);
        if (FAILED(added)) return added;
        SharedUndoContext().attachNodes.Run();
        return S_OK;
    });
}

} // namespace kv
