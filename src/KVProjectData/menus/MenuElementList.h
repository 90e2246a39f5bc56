#pragma once
// The elements of a menu, or of a button, from the back to the front.

#include "KVProjectData/IKVMenuElementList.h"
#include "KVProjectData/tree/NodeList.h"
#include "platform/automation/Dispatch.h"
#include "platform/com/Object.h"

namespace kv {

class CMenuElementImpl;

/// An inner object of its owner. Its members reach for the menu and its production (LineageLock); elements that come or
/// go while recording is on are recorded with what happens to their effects.
class CKVMenuElementList final : public CNodeList, public Object<Dual<IKVMenuElementList>> {
public:
    explicit CKVMenuElementList(IUnknown* outer) : CNodeList(typeElementList), Object(outer) {}

    HRESULT get_ElementCount(LONG* pVal) override;
    HRESULT GetElement(LONG index, IKVMenuElement** ppElem) override;
    HRESULT AddElement(const GUID* piid, IKVMenuElement** ppvElem) override;
    HRESULT InsertElement(LONG index, IKVMenuElement* pElem) override;
    HRESULT RemoveElement(LONG ID, IKVMenuElement** ppElem) override;
    HRESULT MoveElement(LONG fromPos, LONG toPos) override;
    HRESULT FindElement(LONG ID, IKVMenuElement** ppElem) override;
    HRESULT Clear() override;
    /// What Clear does, with the first failure of an element as its result.
    HRESULT RemoveAll();

    // The effects of all elements, called with the owner's lineage held. The first failure ends the walk, except of
    // AttachEffects, is reported and returned.

    /// S_FALSE without a production.
    HRESULT InsertEffects(IUnknown* production);
    HRESULT RemoveEffects();
    HRESULT AttachEffects(IUnknown* production);
    HRESULT DetachEffects();

    /// Whether an element can stand in this list: no buttons in buttons.
    bool Takes(NodeType type) const;

    CProjectNode* CreateItem(NodeType type) override;
    IUnknown* Identity() override { return Controlling(); }

    void Attributes(AttributeArchive&) override {}

private:
    /// Where an element of this list has its effect; empty without a production.
    ComPtr<IUnknown> Production() const;
    /// Makes or deletes the effects of an element that has come or is about to go.
    HRESULT Bind(CMenuElementImpl& element, IUnknown* production, bool insert);
    template <class Call>
    HRESULT ForEach(Call&& call);
};

} // namespace kv
