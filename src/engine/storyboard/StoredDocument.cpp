#include "engine/storyboard/StoredDocument.h"

#include "engine/render/Look.h"
#include "platform/xml/XmlBuffer.h"

#include <mutex>

namespace kv {
namespace {

XmlElement RootOf(IXMLDOMNode* document)
{
    ComPtr<IXMLDOMElement> element;
    if (const auto whole = Query<IXMLDOMDocument>(document)) whole->get_documentElement(element.Put());
    return XmlElement(element ? element.Get() : document);
}

} // namespace

struct StoredDocument::Held {
    std::mutex mutex;
    /// Empty until the markup was asked for.
    ComPtr<IXMLDOMNode> node;
    std::string markup;
    /// Taken before the other one.
    std::mutex lookMutex;
    /// Empty until it was asked for.
    std::shared_ptr<const Look> look;
};

StoredDocument::StoredDocument(IXMLDOMNode* node)
{
    // The elements that a saved production stands in, with some to spare.
    constexpr int kLevelsAbove = 16;
    if (!node) return;
    const XmlElement element = RootOf(node);
    if (!element || !element.FitsBelow(kLevelsAbove)) throw Error(E_INVALIDARG);
    m_held = std::make_shared<Held>();
    m_held->node = node;
}

StoredDocument StoredDocument::FromMarkup(std::string markup)
{
    StoredDocument document;
    document.m_held = std::make_shared<Held>();
    document.m_held->markup = std::move(markup);
    return document;
}

bool StoredDocument::operator==(const StoredDocument& other) const
{
    if (m_held == other.m_held) return true;
    if (!m_held || !other.m_held) return false;
    const std::scoped_lock lock(m_held->mutex, other.m_held->mutex);
    return m_held->node && m_held->node == other.m_held->node;
}

ComPtr<IXMLDOMNode> StoredDocument::Node() const
{
    if (!m_held) return nullptr;
    const std::lock_guard lock(m_held->mutex);
    if (!m_held->node) {
        m_held->node = XmlElement::Parse(m_held->markup).Get();
        m_held->markup = {};
    }
    return m_held->node;
}

XmlElement StoredDocument::Root() const
{
    return RootOf(Node().Get());
}

HRESULT StoredDocument::Give(IXMLDOMNode** out) const
{
    if (!out) return E_POINTER;
    *out = nullptr;
    return Guarded([&] { return m_held ? Node().CopyTo(out) : S_FALSE; });
}

std::shared_ptr<const Look> StoredDocument::ShownAs() const
{
    if (!m_held) return nullptr;
    const std::lock_guard lock(m_held->lookMutex);
    if (!m_held->look) m_held->look = std::make_shared<const Look>(ReadLook(Passing()));
    return m_held->look;
}

XmlElement StoredDocument::Passing() const
{
    {
        const std::lock_guard lock(m_held->mutex);
        if (!m_held->node) return XmlElement::Parse(m_held->markup);
    }
    return Root();
}

void StoredDocument::WriteTo(XmlBuffer& target) const
{
    if (!m_held) return;
    {
        const std::lock_guard lock(m_held->mutex);
        if (!m_held->node) return target.Put(m_held->markup);
    }
    target.Put(Root().View().CompactMarkup());
}

} // namespace kv
