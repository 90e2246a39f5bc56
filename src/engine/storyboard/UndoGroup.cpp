#include "engine/storyboard/UndoGroup.h"

#include "engine/storyboard/Storyboard.h"

namespace kv {

HRESULT UndoBlocks::Open()
{
    const std::lock_guard lock(m_guard);
    if (m_open != 0 || m_busy > 0) return ZXE_E_UNDO_BLOCK_OPEN;
    m_touched.clear();
    m_open = ++m_blocks;
    return S_OK;
}

HRESULT UndoBlocks::Close(bool commit)
{
    {
        const std::lock_guard lock(m_guard);
        if (m_open == 0) return ZXE_E_NO_UNDO_BLOCK;
        m_open = 0;
        if (commit && !m_touched.empty()) ++m_kept;
    }
    HRESULT result = S_OK;
    // From here on no member is added to them.
    for (const auto& member : m_touched) {
        const auto board = member.lock();
        const HRESULT closed = board ? board->CloseUndoBlock(commit) : S_OK;
        if (SUCCEEDED(result)) result = closed;
    }
    return result;
}

bool UndoBlocks::FindTouched(LONG index, std::shared_ptr<Storyboard>& member)
{
    const std::lock_guard lock(m_guard);
    if (index < 0 || static_cast<std::size_t>(index) >= m_touched.size()) return false;
    member = m_touched[static_cast<std::size_t>(index)].lock();
    return true;
}

ULONG UndoBlocks::Touch(const std::weak_ptr<Storyboard>& member)
{
    const std::lock_guard lock(m_guard);
    if (m_open != 0) m_touched.push_back(member);
    return m_open;
}

void UndoBlocks::CountBusy(int change)
{
    const std::lock_guard lock(m_guard);
    m_busy += change;
}

HRESULT CUndoGroup::AddProduction(IUnknown* pProduction)
{
    if (!pProduction) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        const auto owner = Query<IStoryboardOwner>(pProduction);
        if (!owner) return E_NOINTERFACE;
        return m_blocks->OpenBlock() != 0 ? ZXE_E_UNDO_BLOCK_OPEN : owner->Board().Join(m_blocks);
    });
}

HRESULT CUndoGroup::OpenUndoBlocks()
{
    return m_blocks->Open();
}

HRESULT CUndoGroup::CloseUndoBlocks(VARIANT_BOOL bCommit)
{
    return m_blocks->Close(bCommit != VARIANT_FALSE);
}

HRESULT CUndoGroup::GetTouched(LONG lIndex, IUnknown** ppProduction)
{
    if (!ppProduction) return E_POINTER;
    *ppProduction = nullptr;
    std::shared_ptr<Storyboard> member;
    if (!m_blocks->FindTouched(lIndex, member)) return S_FALSE;
    if (member) *ppProduction = member->Production().Detach();
    return S_OK;
}

void CUndoGroup::FinalRelease()
{
    m_blocks->Close(true);
    m_blocks->End();
}

} // namespace kv
