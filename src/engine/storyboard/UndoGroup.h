#pragma once
// The undo blocks of many productions, opened and closed at once.

#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/Engine/UndoGroup.h"
#include "platform/com/Object.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace kv {

class Storyboard;

/// What the members of a group share. A member looks here whether a block is open for it, and opens its own when it is
/// about to record something. Asked inside the sections of members, it calls them inside no section of its own.
class UndoBlocks {
public:
    /// Results as those of IZXEUndoGroup.
    HRESULT Open();
    HRESULT Close(bool commit);
    /// False past the last; `member` is null for one that has ended.
    bool FindTouched(LONG index, std::shared_ptr<Storyboard>& member);

    /// No group any more.
    void End() { m_ended = true; }
    bool IsEnded() const { return m_ended; }

    /// The number of the open block, from 1; 0 when none is open.
    ULONG OpenBlock() const { return m_open; }
    /// The member opens its own block as part of the open one, whose number is returned; 0 when none is open any more.
    /// Throws for lack of memory.
    ULONG Touch(const std::weak_ptr<Storyboard>& member);
    /// How many blocks have been kept that held anything.
    ULONG Kept() const { return m_kept; }
    /// So many members more, or less, cannot open a block.
    void CountBusy(int change);

private:
    std::mutex m_guard;
    int m_busy = 0;
    ULONG m_blocks = 0;
    std::vector<std::weak_ptr<Storyboard>> m_touched;
    /// Changed with the guard held.
    std::atomic<ULONG> m_open{0};
    std::atomic<ULONG> m_kept{0};
    std::atomic<bool> m_ended{false};
};

/// The storyboard of a production of ours.
struct IStoryboardOwner : IUnknown {
    static constexpr GUID IID = "d94e2f57-0c1b-4b6a-a2f8-63c7b5e8190d"_guid;
    using Base = IUnknown;

    virtual Storyboard& Board() = 0;
};

class CUndoGroup final : public Object<IZXEUndoGroup> {
public:
    using Object::Object;

    HRESULT AddProduction(IUnknown* pProduction) override;
    HRESULT OpenUndoBlocks() override;
    HRESULT CloseUndoBlocks(VARIANT_BOOL bCommit) override;
    HRESULT GetTouched(LONG lIndex, IUnknown** ppProduction) override;

private:
    void FinalRelease() override;

    const std::shared_ptr<UndoBlocks> m_blocks = std::make_shared<UndoBlocks>();
};

} // namespace kv
