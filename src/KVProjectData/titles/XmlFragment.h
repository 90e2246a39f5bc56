#pragma once
// The XML of a disc command, apart from any document.

#include "platform/com/ComPtr.h"
#include "platform/xml/Dom.h"

#include <memory>
#include <string>

namespace kv {

/// An element with what is below it, kept as markup: a node would keep its whole document in memory, and bind what it
/// belongs to to the document's thread.
class XmlFragment {
public:
    XmlFragment() = default;

    /// Copies an element; null makes an empty fragment. Throws Error(E_INVALIDARG) for a node of another kind, and for
    /// one that could not be loaded again: with more levels than a project's document has left, or with content that
    /// is no XML.
    explicit XmlFragment(IXMLDOMNode* element);

    bool Empty() const { return !m_markup; }

    /// A copy without a parent that belongs to `document`; not for an empty fragment.
    ComPtr<IXMLDOMNode> CopyFor(IXMLDOMDocument& document) const;

private:
    /// UTF-8. Most commands have none, and pay a pointer.
    std::unique_ptr<const std::string> m_markup;
};

} // namespace kv
