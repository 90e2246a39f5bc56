#pragma once
// Markup in the place of elements, for much that others write: without a tree, which takes several times as much
// memory.

#include "platform/xml/Element.h"
#include "platform/xml/XmlBuffer.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace kv {

/// Elements of a document that declares the prefix of data types, each with the markup that is saved in its place, laid
/// out like the document. They may move about at their level of the tree; one that is removed is dropped before.
class KV_EXPORT XmlStandIns {
public:
    /// `markup` is an element of the same name in one line, as XmlView::CompactMarkup tells it. Throws
    /// Error(E_INVALIDARG) for anything else, and where its elements would be nested too deep.
    void Put(const XmlElement& element, std::string markup);
    void Drop(const XmlElement& element);

    /// Whether there is one for the element, which holds anything but attributes.
    bool HasContent(const XmlElement& element) const;

    bool Empty() const { return m_standIns.empty(); }
    /// Writes the one of a node at a level, if there is one. `layout` tells whether the node stands on a line of its
    /// own.
    bool Write(const void* node, int level, bool layout, XmlBuffer& buffer) const;

private:
    struct StandIn {
        std::string markup;
        /// Of each element, in the order of the document, whether a text stands among its children.
        std::vector<bool> holdText;
    };

    std::unordered_map<const void*, StandIn> m_standIns;
};

} // namespace kv
