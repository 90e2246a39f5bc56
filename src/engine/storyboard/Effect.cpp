#include "engine/storyboard/Effect.h"

#include "KVProjectData/Engine/Media.h"
#include "KVProjectData/Engine/Production.h"
#include "engine/storyboard/Storyboard.h"

namespace kv {

CEffect::CEffect(std::shared_ptr<Storyboard> board, LONG id, LONG type, ItemState state, Leftovers rest) : m_type(type)
{
    Start(std::move(board), id, std::move(state), std::move(rest));
}

HRESULT CEffect::FindInterface(REFIID iid, void** out)
{
    if (!ShowsMedia() && (iid == ISourceFile::IID || iid == INativeInfo::IID)) return E_NOINTERFACE;
    return Object::FindInterface(iid, out);
}

HRESULT CEffect::put_Layer(LONG lLayer)
{
    return Edit([=](ItemState& state) {
        state.layer = lLayer;
        return S_OK;
    });
}

HRESULT CEffect::get_GroupID(LONG* plGroupID)
{
    return Give(State().group, plGroupID);
}

HRESULT CEffect::SetGroupID(LONG lGroupID)
{
    return Edit([=](ItemState& state) {
        state.group = lGroupID;
        return S_OK;
    });
}

HRESULT CEffect::SetMaskFile(BSTR bstrFileName, LONG lKind)
{
    if (lKind != ZXE_MASK_ALPHA) return E_INVALIDARG;
    return Guarded([&]() -> HRESULT {
        const auto file = View(bstrFileName).empty() ? nullptr : std::make_shared<Source>(View(bstrFileName));
        const HRESULT edited = Edit([&file](ItemState& state) {
            state.mask.source = file;
            return S_OK;
        });
        if (FAILED(edited) || !file) return edited;
        return file->Facts().aspectRatio > 0.0 ? edited : ZXE_E_MASK_NOT_READ;
    });
}

HRESULT CEffect::GetSourceObject(IUnknown** ppSource)
{
    if (!ppSource) return E_POINTER;
    *ppSource = nullptr;
    return State().mask.source ? m_mask.CopyTo(ppSource) : S_FALSE;
}

HRESULT CEffect::GetParameterDocument(IXMLDOMNode** ppDocument)
{
    return State().parameters.Give(ppDocument);
}

HRESULT CEffect::SetParameterDocument(IXMLDOMNode* pDocument, VARIANT_BOOL)
{
    if (!pDocument) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        return Edit([document = StoredDocument(pDocument)](ItemState& state) {
            state.parameters = document;
            return S_OK;
        });
    });
}

HRESULT CEffect::get_ParentProduction(IUnknown** ppProduction)
{
    if (!ppProduction) return E_POINTER;
    *ppProduction = Query<IUnknown>(Query<IZXEProductionData>(Board().Production())).Detach();
    return *ppProduction ? S_OK : ZXE_E_NOT_OPEN;
}

LONG CEffect::Enter(BoardContents& contents, LONG)
{
    contents.effects.Add(ComPtr(this), Inside().layer, Inside().start);
    return ID();
}

LONG CEffect::Where(const BoardContents&) const
{
    return ID();
}

void CEffect::Leave(BoardContents& contents)
{
    contents.effects.Remove(*this);
}

void CEffect::Put(BoardContents& contents, ItemState state)
{
    contents.effects.Move(*this, state.layer, state.start);
    Item::Put(contents, std::move(state));
}

void CEffect::TellPlaced(ProductionSinks& sinks, LONG where, bool added) const
{
    sinks.Tell(added ? &IZXEProductionDataEvents::OnEffectAdded : &IZXEProductionDataEvents::OnEffectRemoved,
               State().layer, where);
}

void CEffect::TellChanged(ProductionSinks& sinks, LONG, Origin origin) const
{
    if (origin != Origin::History) return;
    const ItemState state = State();
    sinks.Tell(&IZXEProductionDataEvents::OnEffectChanged, state.layer, state.group);
}

} // namespace kv
