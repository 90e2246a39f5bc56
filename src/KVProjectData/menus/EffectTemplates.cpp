#include "KVProjectData/menus/EffectTemplates.h"

#include "KVProjectData/content/ContentPaths.h"
#include "KVProjectData/content/StringRefs.h"
#include "KVProjectData/menus/MenuPaths.h"
#include "platform/com/Activation.h"
#include "platform/xml/Element.h"

#include <mutex>

namespace kv {
namespace {

constexpr std::u16string_view kOverlayFile = u"%CONTENT%\\DVD\\Mandatory\\AlphaOverlay.xml";
constexpr std::u16string_view kTextFile = u"%CONTENT%\\DVD\\Mandatory\\ZXTextPlugIns.xml";

/// Empty where the file has no such effect, or cannot be read.
XmlElement ReadTemplate(std::u16string_view file, const XmlKey& effect)
{
    ComPtr<IXMLDOMDocument> document;
    ThrowIfFailed(CreateInstance(CLSID_DOMDocument, document));
    VARIANT_BOOL parsed = VARIANT_FALSE;
    const HRESULT loaded = document->load(Variant(SharedContentPaths()->Resolve(file)), &parsed);
    if (loaded == E_OUTOFMEMORY) throw Error(loaded);
    ComPtr<IXMLDOMElement> root;
    if (SUCCEEDED(loaded) && parsed) document->get_documentElement(root.Put());
    const XmlElement found = XmlElement(root.Get()).Child(effect);
    return found ? found.Copy() : found;
}

XmlElement ReadOverlayTemplate()
{
    XmlElement effect = ReadTemplate(kOverlayFile, "effect");
    if (effect) effect.Replace("alphaFile", XmlValue(SharedContentPaths()->Resolve(kPlaceHolder)));
    return effect;
}

std::string ResolvedText(const std::string& text)
{
    std::string resolved = text;
    const HRESULT result = Guarded([&] {
        resolved = SharedStringRefs().LookUp(text);
        return S_OK;
    });
    if (result == E_OUTOFMEMORY) throw Error(result);
    if (resolved.find(kStringRef) == resolved.npos) return resolved;
    return "Failed to resolve stringRef: " + resolved;
}

XmlElement ReadTextTemplate()
{
    XmlElement effect = ReadTemplate(kTextFile, {"effect", "TextOverlay"});
    const XmlView top = effect.View();
    for (XmlView html = top; html; html = html.Following(top)) {
        if (html.Name() != "html") continue;
        for (XmlView place = html.Following(html); place; place = place.Following(html)) {
            if (!place.IsText() || place.Text().find(kStringRef) == std::string_view::npos) continue;
            effect.At(place).SetText(ResolvedText(std::string(place.Text())));
        }
    }
    return effect;
}

/// Read until there is one; it is never changed afterwards.
class Template {
public:
    using Read = XmlElement (*)();

    constexpr Template(Read read, const char* bare) : m_read(read), m_bare(bare) {}

    HRESULT Copy(ComPtr<IXMLDOMNode>& document)
    {
        return Guarded([&] {
            const XmlElement effect = Get();
            document = (effect ? effect.Copy() : XmlElement::Parse(m_bare)).Get();
            return effect ? S_OK : S_FALSE;
        });
    }

private:
    XmlElement Get()
    {
        const std::lock_guard lock(m_mutex);
        if (!m_effect) m_effect = m_read();
        return m_effect;
    }

    const Read m_read;
    const char* const m_bare;
    std::mutex m_mutex;
    XmlElement m_effect;
};

} // namespace

HRESULT NewOverlayDocument(ComPtr<IXMLDOMNode>& document)
{
    static Template overlay(&ReadOverlayTemplate, "<effect Name=\"AlphaOverlay\"><plugin_data/></effect>");
    return overlay.Copy(document);
}

HRESULT NewTextDocument(ComPtr<IXMLDOMNode>& document)
{
    static Template text(
        &ReadTextTemplate,
        "<effect Name=\"TextOverlay\"><plugin_data><html><body><p><font/></p></body></html></plugin_data></effect>");
    return text.Copy(document);
}

} // namespace kv
