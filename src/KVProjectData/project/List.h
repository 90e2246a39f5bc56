#pragma once
// The lists of a project: titles, menus, data files.

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/NodeList.h"
#include "platform/com/Object.h"

namespace kv {

class CKVList;

/// Makes the items of the lists that a document names: the project, which knows the classes.
class ListItems {
public:
    /// Appends an item without an ID; null where there is no class of such.
    virtual CProjectNode* AppendItem(CKVList& list) = 0;

protected:
    ~ListItems() = default;
};

/// Its members are what the project does with a list inside an edit or a read access. Positions count from 1; edits
/// are recorded, and told with the positions that the caller passed.
class CKVList final : public CNodeList {
public:
    /// The events that edits are told by.
    struct Events {
        DISPID added;
        DISPID removed;
        DISPID moved;
    };

    CKVList(NodeType type, NodeType itemType, const Events& events, ListItems& items)
        : CNodeList(type), m_itemType(itemType), m_events(events), m_items(items)
    {
    }

    /// E_POINTER for a null out-pointer.
    HRESULT Count(LONG* out) const;

    /// KV_E_BAD_POSITION, and null, where nothing stands.
    template <class Item, class Interface>
    HRESULT GetItem(LONG position, Interface** out) const;

    /// Makes an item and inserts it; appends for a position below 1. `prepare` sets it up: what it fails with, the
    /// addition fails with. `out` may be null.
    template <class Item, class Interface, class Prepare>
    HRESULT AddItem(LONG position, Interface** out, Prepare&& prepare);

    /// Inserts an item that stands nowhere; E_INVALIDARG for any other. It keeps its ID. Told by `event`.
    HRESULT InsertItem(LONG position, CProjectNode& item, DISPID event);

    template <class Item, class Interface>
    HRESULT RemoveByID(LONG id, Interface** out)
    {
        LONG index = -1;
        FindChildByID(id, &index);
        return RemoveItem<Item>(index, KV_E_NO_SUCH_ID, out);
    }

    /// Removes the item at an index that counts from 0, and hands it out; `notFound` where nothing stands.
    template <class Item, class Interface>
    HRESULT RemoveItem(LONG index, HRESULT notFound, Interface** out);

    /// KV_E_BAD_POSITION for a position where nothing stands.
    HRESULT MoveItem(LONG from, LONG to);

    /// The project, which it is part of.
    IUnknown* Identity() override { return Parent()->Identity(); }

    CProjectNode* CreateItem(NodeType type) override
    {
        return type == m_itemType ? m_items.AppendItem(*this) : nullptr;
    }
    void Attributes(AttributeArchive& archive) override { archive.OnlyWrite("NumItems", ChildCount()); }

private:
    CProjectNode* At(LONG position) const { return position < 1 ? nullptr : GetChild(position - 1); }

    const NodeType m_itemType;
    const Events m_events;
    ListItems& m_items;
};

template <class Item, class Interface>
HRESULT CKVList::GetItem(LONG position, Interface** out) const
{
    if (!out) return E_POINTER;
    *out = nullptr;
    CProjectNode* item = At(position);
    return item ? ComPtr<Interface>(static_cast<Item*>(item)).CopyTo(out) : KV_E_BAD_POSITION;
}

template <class Item, class Interface, class Prepare>
HRESULT CKVList::AddItem(LONG position, Interface** out, Prepare&& prepare)
{
    const auto item = Make<Item>();
    const LONG index = Adopt(*item, position < 1 ? -1 : position - 1, true);
    if (index < 0) return KV_E_BAD_POSITION;
    const HRESULT prepared = Guarded([&] {
        RecordChange(ListChange::Add, *item, index);
        return prepare(*item);
    });
    if (FAILED(prepared)) {
        TakeOut(index);
        return prepared;
    }
    FireEvent(m_events.added, item->ID(), position, 0);
    return out ? ComPtr<Interface>(item.Get()).CopyTo(out) : S_OK;
}

template <class Item, class Interface>
HRESULT CKVList::RemoveItem(LONG index, HRESULT notFound, Interface** out)
{
    CProjectNode* item = GetChild(index);
    if (!item) return notFound;
    const LONG id = item->ID();
    ComPtr<Interface> removed(static_cast<Item*>(item));
    RecordChange(ListChange::Remove, *item, index);
    TakeOut(index);
    if (out) *out = removed.Detach();
    FireEvent(m_events.removed, id, 0, 0);
    return S_OK;
}

} // namespace kv
