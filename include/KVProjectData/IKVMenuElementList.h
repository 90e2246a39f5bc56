#pragma once
// The elements of a menu, or of a button, in an order that is the host's to use. A picture shows them in the order of
// their IDs, which are the layers of their effects: what was made last is in front.
//
// A menu and a button answer for it. Positions count from 1. Objects that are handed out carry a reference. Getters
// return E_POINTER for a null out-pointer. Edits are recorded for undo and told by the events that are named; they do
// not look at locks. Elements that come into a list get their effects in the menu's production, and lose them when they
// go; a failure of that is returned.

#include "KVProjectData/MenuRecords.h"
#include "platform/automation/Members.h"

struct IKVMenuElement;

struct IKVMenuElementList : IDispatch {
    static constexpr GUID IID = "5a13eeea-cbb8-46ba-9037-3590c1ac2214"_guid;
    using Base = IDispatch;
    virtual HRESULT get_ElementCount(LONG* pVal) = 0;

    /// KV_E_NO_SUCH_ELEMENT.
    virtual HRESULT GetElement(LONG index, IKVMenuElement** ppElem) = 0;

    /// Makes an element and appends it: a button, an overlay or a text by the identity of their interface, which is the
    /// one handed out. MenuElementAdded. E_INVALIDARG for a button in a button, KV_E_BAD_POSITION for any other
    /// identity; nothing is made then. When its effect cannot be made, the element stays in the list.
    virtual HRESULT AddElement(const GUID* piid, IKVMenuElement** ppvElem) = 0;

    /// At a position, or last for 0 and below. MenuElementInserted. E_POINTER for null, KV_E_BAD_POSITION.
    virtual HRESULT InsertElement(LONG index, IKVMenuElement* pElem) = 0;

    /// The out-pointer may be null. MenuElementRemoved. E_INVALIDARG for an ID that is not in the list,
    /// KV_E_ELEMENT_NOT_REMOVED.
    virtual HRESULT RemoveElement(LONG ID, IKVMenuElement** ppElem) = 0;

    /// Afterwards the element stands at `toPos`; a move to where it stands succeeds and is told. MenuElementMoved.
    /// KV_E_BAD_POSITION.
    virtual HRESULT MoveElement(LONG fromPos, LONG toPos) = 0;

    /// E_INVALIDARG for an ID that is not in the list.
    virtual HRESULT FindElement(LONG ID, IKVMenuElement** ppElem) = 0;

    /// Removes one after the other, from the first, as RemoveElement does. S_OK also when the engine keeps the effect
    /// of the first one, which stays then.
    virtual HRESULT Clear() = 0;
};

template <>
struct kv::InterfaceTable<IKVMenuElementList> {
    static constexpr auto members =
        Members(Get<&IKVMenuElementList::get_ElementCount>("ElementCount", 0x258),
                Method<&IKVMenuElementList::GetElement>("GetElement", 0x259, "index", "ppElem"),
                Method<&IKVMenuElementList::AddElement>("AddElement", 0x25a, "piid", "ppvElem"),
                Method<&IKVMenuElementList::InsertElement>("InsertElement", 0x25b, "index", "pElem"),
                Method<&IKVMenuElementList::RemoveElement>("RemoveElement", 0x25c, "ID", "ppElem"),
                Method<&IKVMenuElementList::MoveElement>("MoveElement", 0x25d, "fromPos", "toPos"),
                Method<&IKVMenuElementList::FindElement>("FindElement", 0x25e, "ID", "ppElem"),
                Method<&IKVMenuElementList::Clear>("Clear", 0x9));
};

// The member table hands out elements, so their interface must be known, too.
#include "KVProjectData/IKVMenuElement.h"
