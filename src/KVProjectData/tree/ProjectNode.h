#pragma once
// The base of every object of a project: identity, parent and children, lock, and the way up for events.

#include "KVProjectData/tree/NodeType.h"
#include "KVProjectData/tree/RecordedValues.h"
#include "platform/com/Error.h"
#include "platform/system/CriticalSection.h"
#include "platform/xml/Element.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kv {

/// Marks a property whose change is recorded for undo.
struct UndoOption {};
inline constexpr UndoOption Undo{};

/// Marks a property whose change is told, with the property ID of the event.
struct Fires {
    explicit constexpr Fires(DISPID id) : propId(id) {}
    DISPID propId;
};

class AttributeArchive;
class CKVCommandList;
class CNodeList;
class KeptMode;
class LoadedElement;
class ModeImage;
class ProductionOwner;

/// Held while a parent link changes, after the node's section. Whoever climbs the tree holds it: what is above may be
/// released by others. Nothing but the event queue is locked meanwhile.
CriticalSection& ParentLinks();

/// A node does not own its children: whoever adds one keeps it alive (CNodeList does so by reference).
/// Every public operation of a node's interface runs inside the node's section; operations that reach into
/// children take the parent's section first.
class CProjectNode {
public:
    CProjectNode(const CProjectNode&) = delete;
    CProjectNode& operator=(const CProjectNode&) = delete;
    /// Leaves its parent's children; its own children lose their parent.
    virtual ~CProjectNode();

    /// Takes the node's properties from an element. E_NOTIMPL unless `node` is one.
    virtual HRESULT LoadXML(IUnknown* node);
    /// Hands an event to the parent, at last to the project, which queues it. KV_E_NO_PARENT without one.
    virtual HRESULT FireEvent(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c);
    /// Tells the project that it was changed.
    virtual void SetModified(bool major);
    /// What the project knows that a relative path of its own leads to; any other path as it is.
    virtual std::u16string FullPathOf(std::u16string_view path);
    /// The element name of this very node; empty where the name follows from the type.
    virtual std::string_view GetName(ULONG flags) const;
    /// Binds the node to its effect, or takes it off; only menu elements have one.
    virtual HRESULT AttachEffect();
    virtual HRESULT DetachEffect();
    /// Lists the node's attributes; run inside the node's section.
    virtual void Attributes(AttributeArchive& archive) = 0;
    /// Takes over the attributes that are there; those that it does not know or cannot read are reported. Fails, or
    /// throws Error, for an element that the node cannot take.
    virtual HRESULT LoadElement(const LoadedElement& element);
    /// Makes an object of an item type that a document names and appends it, without an ID. Null where none of that
    /// type can stand.
    virtual CProjectNode* CreateItem(NodeType type);
    /// Whether the node takes a child of its element for itself, which the element table has no node for.
    virtual bool OwnsContent(const XmlView& child) const;
    /// What the node's element holds beside the elements of its children: an element of a tree of its own. Empty for
    /// most.
    virtual XmlElement OwnContent() const;
    /// The object that the node is part of; not counted.
    virtual IUnknown* Identity() = 0;

    /// What documents say of the node beside its attributes and children, for snapshots: an element of a tree that
    /// nobody changes. Empty for most. Run inside the node's section.
    virtual XmlElement KeptXml();
    /// Takes over what `KeptXml` of this node gave.
    virtual void KeepXml(const XmlElement& xml);
    /// The node's present mode, for snapshots; null for every node but menus. Run inside the node's section.
    virtual std::shared_ptr<const ModeImage> PresentMode();
    /// The node as a list that owns its children; null for every other.
    virtual CNodeList* List() { return nullptr; }
    /// The node as the owner of productions; null for every other.
    virtual ProductionOwner* Owner() { return nullptr; }

    /// Writes the node's attributes and its own content to an element. E_NOTIMPL unless `node` is a DOM node.
    HRESULT SaveXML(IUnknown* node, ULONG flags);

    /// The values that an undo record keeps of the node.
    RecordedValues GetRecord();
    /// Takes over what `GetRecord` of this node gave, and keeps the present values in its place.
    void ExchangeRecord(RecordedValues& record);

    LONG ID() const { return m_ID.load(std::memory_order_relaxed); }
    NodeType Type() const { return m_type; }
    CProjectNode* Parent() const { return m_parent.load(std::memory_order_acquire); }
    /// Another number after every change of who stands where in trees, and of IDs. Whoever finds the same number inside
    /// the section of a node finds what is below it as it was.
    static ULONGLONG TreeState();

    /// The top of the tree, the node itself without a parent. Called while the links are held.
    CProjectNode& Root();
    CriticalSection& Section() { return m_section; }

    /// Null for an index outside the children. Indices count from 0.
    CProjectNode* GetChild(LONG index) const;
    LONG ChildCount() const { return static_cast<LONG>(m_children.size()); }
    /// Appends. A child without ID gets one if `assignID` says so.
    bool AddChild(CProjectNode* child, bool assignID);
    /// False for no child, and for an index outside 0 … count.
    bool InsertChild(CProjectNode* child, LONG index, bool assignID);
    /// Hands the child to the caller, with the reference that was held for it; null for a bad index.
    CProjectNode* RemoveChildAt(LONG index);
    /// Afterwards the child stands at `to`. KV_E_BAD_POSITION for a bad index, except when `from` equals `to`.
    HRESULT MoveChild(LONG from, LONG to, CProjectNode** moved = nullptr);
    /// Direct children only. `index` may be null.
    CProjectNode* FindChildByID(LONG id, LONG* index = nullptr) const;
    /// An empty name on either side matches.
    CProjectNode* FindChildByTypeAndName(NodeType type, std::string_view name) const;
    /// Where a child stands; asking is cheap when it stands at `hint`. -1 for what is no child of this node.
    LONG IndexOf(const CProjectNode& child, LONG hint) const;
    /// -1 without a parent.
    LONG IndexInParent() const;
    bool RemoveFromParent();

    /// No other node is given this ID later.
    void SetID(LONG id);
    /// Gives a node that has none the next ID.
    void AssignID();

    void Lock(bool recursive);
    /// Returns the count that is left.
    LONG Unlock(bool recursive);
    HRESULT CheckLocked() const;

    /// Makes the project dirty and keeps the node's state for undo, once in an open step. True when kept.
    bool RecordState(bool major);
    /// The same with the commands of a list as the state.
    bool RecordCommandListState(CKVCommandList& commandList);
    /// Makes the project dirty and keeps a change of the node's mode for undo, each in an open step. True when kept.
    bool RecordMode(std::shared_ptr<KeptMode> mode);
    /// The same with the properties and the elements of the button that this node is.
    bool RecordButtonStyle();
    /// The same with the parameter document of the text that this node is, once in an open step: `mark` tells in which.
    bool RecordTextEffect(bool major, std::atomic<ULONG>& mark, const XmlElement& document);

protected:
    explicit CProjectNode(NodeType type) : m_type(type) {}

    /// So many children can be added without fail.
    void ReserveChildren(std::size_t count) { m_children.reserve(count); }

    /// Fires the event that tells of a changed property of this node.
    virtual void FirePropertyChanged(DISPID propId);

    /// A change under way: inside the node's section, the node not locked.
    class EditScope {
    public:
        explicit EditScope(CProjectNode& node) : m_node(node) {}

        void Record() { m_node.RecordState(false); }
        void Changed(DISPID propId) { m_node.FirePropertyChanged(propId); }

    private:
        CProjectNode& m_node;
    };

    /// Runs a change; the body validates, records, stores, tells, and returns the result.
    template <class Body>
    HRESULT Edit(Body&& body)
    {
        return Guarded([&]() -> HRESULT {
            const SectionLock lock(m_section);
            if (const HRESULT locked = CheckLocked(); FAILED(locked)) return locked;
            EditScope edit(*this);
            return body(edit);
        });
    }

    /// The setter of a property that takes any value. A string is copied.
    template <class Field, class Value, class... Options>
    HRESULT Put(Field& field, Value value, Options... options)
    {
        return Edit([&](EditScope& edit) {
            if constexpr (std::is_same_v<Field, Bstr>) {
                if (value == field.Get() && value) {
                    (Before(edit, options), ...);
                } else {
                    Bstr copy = Bstr::CopyOf(value);
                    (Before(edit, options), ...);
                    field = std::move(copy);
                }
            } else {
                (Before(edit, options), ...);
                field = static_cast<Field>(value);
            }
            (After(edit, options), ...);
            return S_OK;
        });
    }

    /// Runs a read access.
    template <class Body>
    HRESULT Read(Body&& body)
    {
        return Guarded([&]() -> HRESULT {
            const SectionLock lock(m_section);
            return body();
        });
    }

    /// The getter of a property: strings are copied, booleans become -1 or 0.
    template <class Out, class Field>
    HRESULT Get(Out* out, const Field& field)
    {
        return Read([&] {
            if (!out) return E_POINTER;
            if constexpr (std::is_same_v<Field, Bstr>) {
                *out = nullptr;
                *out = Bstr::Copy(field.Get());
            } else if constexpr (std::is_same_v<Field, bool>) {
                *out = field ? VARIANT_TRUE : VARIANT_FALSE;
            } else {
                *out = static_cast<Out>(field);
            }
            return S_OK;
        });
    }

private:
    static void Before(EditScope& edit, UndoOption) { edit.Record(); }
    static void Before(EditScope&, Fires) {}
    static void After(EditScope&, UndoOption) {}
    static void After(EditScope& edit, Fires fires) { edit.Changed(fires.propId); }

    HRESULT SaveElement(IXMLDOMNode* element, ULONG flags);
    void SetParent(CProjectNode* parent);
    template <class Keep>
    bool Record(bool major, std::atomic<ULONG>& mark, Keep&& keep);

    CriticalSection m_section;
    std::atomic<LONG> m_ID{0};
    const NodeType m_type;
    std::vector<CProjectNode*> m_children;
    /// Changed inside the section, with the links held; read by whoever comes up from below.
    std::atomic<CProjectNode*> m_parent{nullptr};
    /// The number of the last step that keeps this node's state.
    std::atomic<ULONG> m_recordedIn{0};
    LONG m_lockCount = 0;
};

} // namespace kv
