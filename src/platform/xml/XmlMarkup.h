#pragma once
// Elements as markup, for much that is written once: without a tree, which takes several times as much memory.

#include "platform/xml/Element.h"
#include "platform/xml/XmlBuffer.h"
#include "platform/xml/XmlStandIns.h"

#include <string>
#include <string_view>
#include <vector>

namespace kv {

/// What stands at a level of a document that declares the prefix of data types, laid out like the document. It is made
/// from front to back:
///
///     markup.Begin("Titles");
///     markup.Begin("Title");
///     markup.WriteAttributes(&attributes);
///     markup.End();
///     markup.End();
class KV_EXPORT XmlMarkup {
public:
    /// `level` is the number of elements around it.
    explicit XmlMarkup(int level) : m_level(level) {}

    /// Begins an element, in the one that was begun before it and has not ended. The name is borrowed until then.
    /// Throws Error(E_INVALIDARG) for what is no name, and where elements would be nested too deep.
    void Begin(std::string_view name);
    /// The attributes of the element that has just been begun, each with another name. E_INVALIDARG for the first that
    /// XML does not allow.
    HRESULT WriteAttributes(XMLAttributeSource* source);
    /// Adds a copy of an element. Throws Error(E_INVALIDARG) where it would be nested too deep.
    void Add(const XmlElement& element);
    void End();

    bool Empty() const { return m_pieces.empty(); }
    /// All of it, each element on a line of its own, when all elements have ended.
    void PassTo(XmlBuffer& buffer) const;

private:
    int Level() const { return m_level + static_cast<int>(m_open.size()); }
    /// Makes room for an element of so many levels.
    void BeginLine(int height);

    const int m_level;
    std::vector<std::string> m_pieces;
    XmlBuffer m_buffer{[this](std::string_view piece) { m_pieces.emplace_back(piece); }};
    std::vector<std::string_view> m_open;
    /// The start tag of the last element may still get attributes.
    bool m_inTag = false;
    /// A text on its way.
    std::string m_utf8;
};

/// Saves a document as IXMLDOMDocument::save does, with markup in front of what its root element holds, and other
/// markup in the place of some of its elements.
KV_EXPORT HRESULT SaveXml(IXMLDOMDocument* document, std::u16string_view path, const XmlMarkup& markup,
                          const XmlStandIns& standIns);

} // namespace kv
