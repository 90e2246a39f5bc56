#include "KVProjectData/content/StringRefs.h"

#include "KVProjectData/content/ContentPaths.h"
#include "platform/com/Activation.h"
#include "platform/xml/Element.h"

#include <utility>
#include <vector>

namespace kv {
namespace {

constexpr std::u16string_view kStringFile = u"%CONTENT%\\DVD\\Mandatory\\ZXPlugInStrings.xml";
constexpr std::u16string_view kUsualLanguage = u"1033";

ComPtr<IZXStringTable> ReadTable()
{
    ComPtr<IZXStringTable> table;
    ThrowIfFailed(CreateInstance(CLSID_ZXStringTable, table));
    Bstr language;
    ThrowIfFailed(table->get_Language(language.Put()));
    if (language.Empty()) ThrowIfFailed(table->put_Language(Bstr(kUsualLanguage).Get()));
    ThrowIfFailed(table->Load(Bstr(SharedContentPaths()->Resolve(kStringFile)).Get()));
    return table;
}

bool Refers(std::string_view text)
{
    return text.find(kStringRef) != text.npos;
}

/// Runs a body on each element below one, in document order.
template <class Body>
void ForEachElement(const XmlView& top, Body&& body)
{
    for (XmlView place = top.Following(top); place; place = place.Following(top)) {
        if (place.IsElement()) body(place);
    }
}

/// Resolves the references below one element of a document.
class Pass {
public:
    Pass(XmlElement scope, StringRefs& strings) : m_scope(std::move(scope)), m_strings(strings) {}

    void Run()
    {
        std::vector<XmlView> richTexts;
        ForEachElement(m_scope.View(), [&](const XmlView& element) {
            ResolveAttributes(element, {"label", "buttonTextCache"});
            if (element.Name() == "html") richTexts.push_back(element);
        });
        for (const XmlView& html : richTexts) {
            ResolveTexts(html);
            ForEachElement(html, [&](const XmlView& element) {
                if (element.Name() != "font") return;
                ResolveAttributes(element, {"face", "fontHeight"});
            });
        }
    }

private:
    void ResolveAttributes(const XmlView& place, const std::array<std::string_view, 2>& names)
    {
        const XmlView::Two values = place.Attributes(names);
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (!values[i] || !Refers(*values[i])) continue;
            const std::string text = m_strings.LookUp(*values[i]);
            if (!text.empty()) XmlElement(m_scope.At(place)).SetAttribute(names[i], text);
        }
    }

    /// Texts may be cut anywhere by formatting: they are resolved as one, and poured back.
    void ResolveTexts(const XmlView& html)
    {
        std::vector<XmlView> texts;
        std::string joined;
        for (XmlView place = html.Following(html); place; place = place.Following(html)) {
            if (!place.IsText()) continue;
            texts.push_back(place);
            joined += place.Text();
        }
        if (!Refers(joined)) return;
        const std::string text = m_strings.LookUp(joined);
        if (!text.empty()) Pour(ToUtf16(text), texts);
    }

    /// Each gets as many characters as it had, as long as so many are left; that which cannot be filled, and the last
    /// one, get the rest. No surrogate pair is parted.
    void Pour(std::u16string_view text, const std::vector<XmlView>& texts)
    {
        for (const XmlView& place : texts) {
            std::size_t count = text.size();
            if (place != texts.back()) count = std::min(count, ToUtf16(place.Text()).size());
            if (count > 0 && count < text.size() && (text[count] & 0xFC00) == 0xDC00) --count;
            m_scope.At(place).SetText(ToUtf8(text.substr(0, count)));
            text.remove_prefix(count);
        }
    }

    const XmlElement m_scope;
    StringRefs& m_strings;
};

} // namespace

void StringRefs::Drop()
{
    ComPtr<IZXStringTable> dropped;
    const SectionLock lock(m_section);
    std::swap(dropped, m_table);
    ++m_drops;
}

std::string StringRefs::LookUp(std::string_view text)
{
    Bstr result;
    ThrowIfFailed(Table()->Resolve(Bstr(ToUtf16(text)).Get(), result.Put()));
    return ToUtf8(result.View());
}

ComPtr<IZXStringTable> StringRefs::Table()
{
    unsigned drops = 0;
    {
        const SectionLock lock(m_section);
        if (m_table) return m_table;
        drops = m_drops;
    }
    ComPtr<IZXStringTable> table;
    const HRESULT read = Guarded([&] {
        table = ReadTable();
        return S_OK;
    });
    if (FAILED(read)) throw Error(read == E_OUTOFMEMORY ? read : E_FAIL);
    const SectionLock lock(m_section);
    // Meanwhile the file may have become another one.
    if (drops == m_drops) m_table = table;
    return table;
}

StringRefs& SharedStringRefs()
{
    static StringRefs strings;
    return strings;
}

HRESULT ResolveStringRefs(IXMLDOMNode* root)
{
    return Guarded([&] {
        ComPtr<IXMLDOMNode> scope;
        for (const std::u16string_view path : {u"/Root/Project", u"/Root"}) {
            if (!scope) root->selectSingleNode(Bstr(path).Get(), scope.Put());
        }
        StringRefs& strings = SharedStringRefs();
        strings.Drop();
        Pass(XmlElement(scope.Get()), strings).Run();
        return S_OK;
    });
}

} // namespace kv
