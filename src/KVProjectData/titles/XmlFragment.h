#pragma once
// The XML of a disc command, apart from any document.

#include "platform/xml/Element.h"

#include <memory>
#include <string>

namespace kv {

/// An element with what is below it, kept as markup: a node would keep a tree in memory, which takes 32 KiB at least.
class XmlFragment {
public:
    XmlFragment() = default;

    /// Copies an element; null makes an empty fragment. Throws Error(E_INVALIDARG) for a node of another kind, and for
    /// one with more levels than a project's document has left.
    explicit XmlFragment(IXMLDOMNode* element);

    bool Empty() const { return !m_markup; }

    /// A copy without a parent, in a document of its own; not of an empty fragment.
    XmlElement Copy() const { return XmlElement::Parse(*m_markup); }

private:
    /// Most commands have none, and pay a pointer.
    std::unique_ptr<const std::string> m_markup;
};

} // namespace kv
