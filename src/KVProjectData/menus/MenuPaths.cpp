#include "KVProjectData/menus/MenuPaths.h"

#include "KVProjectData/content/DocumentPaths.h"
#include "platform/com/Object.h"

#include <algorithm>

namespace kv {
namespace {

Bstr Translated(const Bstr& source, HRESULT (IZXEContentPaths::*translate)(BSTR, BSTR*))
{
    if (source.Empty()) return {};
    if (IsMonikerSource(source.View())) return source;
    const auto paths = Make<DocumentPaths>();
    Bstr translated;
    ThrowIfFailed((paths.Get()->*translate)(source.Get(), translated.Put()));
    return translated;
}

} // namespace

bool IsMonikerSource(std::u16string_view source)
{
    constexpr std::u16string_view kPrefix = u"moniker::";
    const auto same = [](char16_t left, char16_t right) {
        return left == (right >= u'A' && right <= u'Z' ? right - u'A' + u'a' : right);
    };
    return source.size() >= kPrefix.size() && std::equal(kPrefix.begin(), kPrefix.end(), source.begin(), same);
}

std::u16string ExpandPath(std::u16string_view path)
{
    return SharedContentPaths()->Resolve(path);
}

Bstr SourceToDocument(const Bstr& source)
{
    return Translated(source, &IZXEContentPaths::ToDocument);
}

Bstr SourceFromDocument(const Bstr& text)
{
    return Translated(text, &IZXEContentPaths::FromDocument);
}

} // namespace kv
