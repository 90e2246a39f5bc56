#include "KVProjectData/content/ParameterPaths.h"

#include "KVProjectData/Engine/Parameters.h"

namespace kv {
namespace {

constexpr std::string_view kPicture = "alphaFile";
constexpr std::string_view kParameter = "Parameter";
constexpr std::string_view kParameterSet = "ParameterSet";

XmlView ChildOf(const XmlView& element, std::string_view name)
{
    XmlView child = element.FirstChild();
    while (child && child.Name() != name)
        child = child.Next();
    return child;
}

/// The element that holds the path of an element, if that is one of those with a path.
XmlView PathOf(const XmlView& element)
{
    if (element.Name() == kPicture) return element.Parent().Name() == "effect" ? element : XmlView();
    if (element.Name() != kParameter || element.Parent().Name() != kParameterSet) return {};
    static const std::string kMaskFile = std::to_string(ZXP_PARAM_MASK_FILE);
    const XmlView id = ChildOf(element, "ParamID").FirstChild();
    return id.Text() == kMaskFile ? ChildOf(element, "Value") : XmlView();
}

using Translate = HRESULT (IZXEContentPaths::*)(BSTR, BSTR*);

/// Where another text is to stand, and which.
ParameterTexts Translations(const XmlElement& element, IZXEContentPaths& paths, Translate translate)
{
    ParameterTexts translations;
    const XmlView top = element.View();
    for (XmlView place = top; place; place = place.Following(top, {kPicture, kParameter})) {
        const XmlView text = PathOf(place).FirstChild();
        if (!text.IsText() || text.Next()) continue;
        Bstr translated;
        ThrowIfFailed((paths.*translate)(Bstr(ToUtf16(text.Text())).Get(), translated.Put()));
        if (std::string other = ToUtf8(translated.View()); other != text.Text())
            translations.emplace_back(text, std::move(other));
    }
    return translations;
}

ParameterTexts TranslateIn(const XmlElement& element, IZXEContentPaths& paths, Translate translate)
{
    ParameterTexts texts = Translations(element, paths, translate);
    ExchangeTexts(element, texts);
    return texts;
}

} // namespace

void ExchangeTexts(const XmlElement& element, ParameterTexts& texts)
{
    for (auto& [place, text] : texts) {
        std::string before(place.Text());
        element.At(place).SetText(text);
        text = std::move(before);
    }
}

void ParameterPathsToDocument(const XmlElement& element, IZXEContentPaths& paths)
{
    TranslateIn(element, paths, &IZXEContentPaths::ToDocument);
}

void ParameterPathsToDocument(std::string& markup, IZXEContentPaths& paths)
{
    // Most have none, and need no tree.
    if (markup.find(kPicture) == markup.npos && markup.find(kParameterSet) == markup.npos) return;
    const XmlElement element = XmlElement::Parse(markup);
    ParameterPathsToDocument(element, paths);
    markup = element.View().CompactMarkup();
}

ParameterTexts ParameterPathsFromDocument(const XmlElement& element, IZXEContentPaths& paths)
{
    return TranslateIn(element, paths, &IZXEContentPaths::FromDocument);
}

} // namespace kv
