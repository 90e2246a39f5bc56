#pragma once
// Elements and texts of the DOM as values, which code that reads and writes many of them uses: without a string object,
// a variant or an interface call for each.
//
//     XmlElement frame = channel.Add("StartOffsetElements").Add("KeyFrame");
//     frame.Add("Time", 0.5);
//     const double time = frame.Typed("Time", 0.0);
//
// A value holds its node as an interface pointer does, and is empty like one; reading an empty value finds nothing, so
// that `effect.Child("Crop").Typed<ULONG>("EditMode")` needs no look at the step between. A change throws Error:
// E_POINTER on an empty value, E_INVALIDARG for a name or text that XML does not allow and for a place that the rules
// of the tree forbid; then nothing has changed. Who changes a tree has it alone (Dom.h).
//
// Text is UTF-8. A view that is handed out is borrowed, until the tree is changed.

#include "platform/xml/Dom.h"

#include <array>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pugi {
struct xml_node_struct;
}

namespace kv {

class DomObject;
class XmlElement;

/// Which child elements: those of a name, or those of them that bear a label or an index in their attribute "Name".
struct XmlKey {
    XmlKey(const char* text) : name(text) {}
    XmlKey(std::string_view text) : name(text) {}
    XmlKey(std::string_view text, std::string_view nameLabel) : name(text), label(nameLabel) {}
    XmlKey(std::string_view text, LONG index) : name(text), label(std::to_string(index)) {}

    std::string_view name;
    /// Empty for any.
    std::string label;
};

/// A value on its way to an element: its data type, and its text.
class KV_EXPORT XmlValue {
public:
    /// Takes nothing but a bool: a pointer to text would turn into one.
    XmlValue(std::same_as<bool> auto value) : m_type("boolean"), m_text(value ? "1" : "0") {}
    XmlValue(LONG value);
    XmlValue(ULONG value);
    /// Throw Error(DISP_E_TYPEMISMATCH) for what is no finite number.
    XmlValue(float value);
    XmlValue(double value);
    XmlValue(const char* utf8) : XmlValue(std::string_view(utf8)) {}
    XmlValue(std::string_view utf8) : m_type("string"), m_text(utf8) {}
    XmlValue(const std::string& utf8) : XmlValue(std::string_view(utf8)) {}
    XmlValue(std::u16string_view utf16);
    XmlValue(BSTR utf16) : XmlValue(View(utf16)) {}
    /// VT_EMPTY and VT_NULL have neither type nor text. Throws Error(DISP_E_TYPEMISMATCH) for what no element can hold.
    XmlValue(const VARIANT& value);

    std::string_view Type() const { return m_type; }
    const std::string& Text() const { return m_text; }

private:
    std::string_view m_type;
    std::string m_text;
};

/// A place in a tree that is only read: an element, a text or anything else, without an object for it. Good while the
/// element that it was had from is held and the place is not removed; moves within the tree leave it good. There is
/// nothing around an empty one.
class KV_EXPORT XmlView {
public:
    XmlView() = default;

    explicit operator bool() const { return m_node; }
    friend bool operator==(const XmlView&, const XmlView&) = default;

    bool IsElement() const;
    bool IsText() const;
    /// Empty for a text.
    std::string_view Name() const;
    /// The text of a text; empty for an element.
    std::string_view Text() const;
    std::optional<std::string_view> Attribute(std::string_view name) const;
    /// Those of two names, in one walk over all.
    using Two = std::array<std::optional<std::string_view>, 2>;
    Two Attributes(const std::array<std::string_view, 2>& names) const;
    /// Names and texts of all attributes.
    std::vector<std::pair<std::string_view, std::string_view>> Attributes() const;
    /// The same without memory for them.
    void ReadAttributes(XMLAttributeVisitor& visitor) const;
    /// As it stands, without the prefixes that elements above it declare.
    std::string Markup() const;
    /// The same in one line.
    std::string CompactMarkup() const;

    XmlView Parent() const;
    XmlView FirstChild() const;
    XmlView Next() const;
    /// The first child element of a name, and the next sibling element of a name; empty when there is none.
    XmlView Child(std::string_view name) const;
    XmlView Next(std::string_view name) const;
    /// What follows in document order below `top`; empty at its end.
    XmlView Following(const XmlView& top) const;
    /// The next element of one of two names, of what follows below `top`.
    XmlView Following(const XmlView& top, const std::array<std::string_view, 2>& names) const;

    /// What an element holds, whatever its data type, as VariantChangeType reads its text; a Variant has the element's
    /// own type. Nothing when the text is no such value. T is bool, LONG, ULONG, float, double, std::string or Variant.
    template <class T>
    std::optional<T> Value() const
    {
        T value{};
        return m_node && ReadInto(value) ? std::optional<T>(std::move(value)) : std::nullopt;
    }

    /// The same of a child element.
    template <class T>
    std::optional<T> Typed(std::string_view name) const
    {
        return Child(name).Value<T>();
    }

private:
    friend class XmlElement;

    explicit XmlView(pugi::xml_node_struct* node) : m_node(node) {}

    bool ReadInto(bool& value) const;
    bool ReadInto(LONG& value) const;
    bool ReadInto(ULONG& value) const;
    bool ReadInto(float& value) const;
    bool ReadInto(double& value) const;
    bool ReadInto(std::string& value) const;
    bool ReadInto(Variant& value) const;

    pugi::xml_node_struct* m_node = nullptr;
};

/// An element or a text.
class KV_EXPORT XmlNode {
public:
    XmlNode() = default;
    /// Empty for null and for what is neither.
    explicit XmlNode(IUnknown* node);

    explicit operator bool() const { return static_cast<bool>(m_node); }
    friend bool operator==(const XmlNode& left, const XmlNode& right) { return left.m_node == right.m_node; }
    IXMLDOMNode* Get() const { return m_node.Get(); }

    bool IsText() const;
    /// The joined text of the node and of what it holds.
    std::string Text() const;
    /// Replaces the text, or all that an element holds.
    void SetText(std::string_view text);

    XmlElement Parent() const;
    /// Takes the node out of its parent. It lives on while it is held.
    void Remove();

protected:
    /// What an edit changes. Throws Error(E_POINTER) for nothing.
    DomObject& Object() const;
    const DomObject* Behind() const { return m_node ? m_object : nullptr; }

    ComPtr<IXMLDOMNode> m_node;
    /// Behind the interface; only while that is held.
    DomObject* m_object = nullptr;
};

class KV_EXPORT XmlElement : public XmlNode {
public:
    XmlElement() = default;
    /// Empty for null and for what is no element.
    explicit XmlElement(IUnknown* node);
    explicit XmlElement(const XmlNode& node) : XmlElement(node.Get()) {}

    /// A new element without a parent, in a document of its own.
    static XmlElement New(std::string_view name);
    /// What stands in a text: the root element without a parent, in a document of its own. Throws Error(E_INVALIDARG)
    /// for a text that is no document.
    static XmlElement Parse(std::string text);
    /// A deep copy without a parent, in a document of its own.
    XmlElement Copy() const;

    ComPtr<IXMLDOMElement> Element() const;

    std::string_view Name() const;
    /// The markup as it stands, without the prefixes that elements above it declare.
    std::string Markup() const;
    /// Whether a document has room for the element below so many levels of others.
    bool FitsBelow(int levels) const;

    /// Empty when there is none.
    std::string_view Attribute(std::string_view name) const;
    bool HasAttribute(std::string_view name) const;
    void SetAttribute(std::string_view name, std::string_view text);
    /// False when there is none.
    bool RemoveAttribute(std::string_view name);
    /// The same of an element at a place in the tree of this one.
    void SetAttribute(const XmlView& place, std::string_view name, std::string_view text);
    bool RemoveAttribute(const XmlView& place, std::string_view name);

    /// The first such child; empty when there is none.
    XmlElement Child(const XmlKey& key) const;
    /// The child elements of a name, or all, as they are now.
    std::vector<XmlElement> Children(std::string_view name = {}) const;
    /// The child elements and texts, as they are now.
    std::vector<XmlNode> Nodes() const;
    XmlView View() const;
    /// The first such child; empty when there is none.
    XmlView View(const XmlKey& key) const;
    /// What stands at a place in the tree of this element; empty for what is neither element nor text.
    XmlNode At(const XmlView& place) const;

    /// A new last child. One that is added with a value has its data type and text.
    XmlElement Add(const XmlKey& key);
    void Add(const XmlKey& key, const XmlValue& value);
    /// A new last child with a text of no data type.
    void AddText(const XmlKey& key, std::string_view text);
    XmlNode AddText(std::string_view text);
    /// A deep copy of an element of any tree as the last child.
    void AddCopy(const XmlElement& element);
    /// The markup of any number of elements and texts, as it was given here, as the last children.
    void AddMarkup(std::string_view markup);
    /// Gives the first such child a value, or adds one.
    void Set(const XmlKey& key, const XmlValue& value);
    /// A new last child in the place of all such children.
    XmlElement Replace(const XmlKey& key);
    void Replace(const XmlKey& key, const XmlValue& value);
    /// Makes an element of any tree the last child, in the place of all children of its name.
    void Replace(const XmlElement& element);
    /// Puts a node of any tree before a child, or last.
    void Insert(const XmlNode& node, const XmlNode& before = {});
    /// Puts all such children behind the others; false when there is none.
    bool MoveLast(const XmlKey& key);
    /// Removes all such children; false when there is none.
    bool Remove(const XmlKey& key);
    /// Removes what stands at a place below this element.
    void Remove(const XmlView& place);
    /// Moves what stands at a place below this element, whatever it is, to another element below it or to itself:
    /// before a child there, or last.
    void Move(const XmlView& place, const XmlView& parent, const XmlView& before = {});
    using XmlNode::Remove;
    /// Removes all attributes and all that the element holds.
    void Clear();

    /// The value of the first such child (XmlView::Value). Nothing when there is none.
    template <class T>
    std::optional<T> Typed(const XmlKey& key) const
    {
        return View(key).Value<T>();
    }

    template <class T>
    T Typed(const XmlKey& key, T fallback) const
    {
        return View(key).Value<T>().value_or(std::move(fallback));
    }

    /// The value of the element itself.
    template <class T>
    std::optional<T> Value() const
    {
        return View().Value<T>();
    }
    void SetValue(const XmlValue& value);

private:
    explicit XmlElement(ComPtr<IXMLDOMNode> element);
};

} // namespace kv
