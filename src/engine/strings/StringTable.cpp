#include "engine/strings/StringTable.h"

#include "platform/com/Activation.h"
#include "platform/xml/Dom.h"

#include <algorithm>

namespace kv {
namespace {

constexpr std::u16string_view kReference = u"stringRef:";
constexpr std::u16string_view kFallBack = u"1033";
constexpr int kMaxReplacements = 10'000;
constexpr std::size_t kMaxLength = 1'048'576;

bool IsInId(char16_t c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' || c == u'-';
}

std::u16string IdOf(IXMLDOMNode* node)
{
    Variant id;
    ThrowIfFailed(Query<IXMLDOMElement>(node)->getAttribute(Bstr(u"id").Get(), id.Put()));
    return id.vt == VT_BSTR ? std::u16string(View(id.bstrVal)) : std::u16string();
}

/// Runs a body on each node of a selection.
template <class Body>
void ForEach(IXMLDOMNode* from, std::u16string_view expression, Body&& body)
{
    ComPtr<IXMLDOMNodeList> nodes;
    ThrowIfFailed(from->selectNodes(Bstr(expression).Get(), nodes.Put()));
    for (ComPtr<IXMLDOMNode> node; nodes->nextNode(node.Put()) == S_OK;)
        body(node.Get());
}

} // namespace

/// One resolution of a text.
class CStringTable::Resolver {
public:
    explicit Resolver(const CStringTable& table) : m_table(table) {}

    std::u16string Resolve(std::u16string_view text)
    {
        m_length = text.size();
        Append(text);
        return std::move(m_result);
    }

private:
    void Append(std::u16string_view text)
    {
        while (true) {
            const std::size_t reference = text.find(kReference);
            m_result += text.substr(0, reference);
            if (reference == text.npos) return;
            text.remove_prefix(reference);
            std::u16string_view id = text.substr(kReference.size());
            id = id.substr(0, static_cast<std::size_t>(std::ranges::find_if_not(id, IsInId) - id.begin()));
            const std::u16string_view whole = text.substr(0, kReference.size() + id.size());
            const std::u16string* const string = m_table.Find(id);
            if (string && MayReplace(whole, *string)) {
                m_open.push_back(string);
                Append(*string);
                m_open.pop_back();
            } else {
                m_result += whole;
            }
            text.remove_prefix(whole.size());
        }
    }

    bool MayReplace(std::u16string_view reference, const std::u16string& string)
    {
        constexpr std::size_t kMaxNesting = 64;
        if (m_open.size() == kMaxNesting || std::ranges::find(m_open, &string) != m_open.end()) return false;
        const std::size_t length = m_length - reference.size() + string.size();
        if (m_replacements == kMaxReplacements || (string.size() > reference.size() && length > kMaxLength))
            return false;
        ++m_replacements;
        m_length = length;
        return true;
    }

    const CStringTable& m_table;
    std::u16string m_result;
    /// The strings that the current place stands in.
    std::vector<const std::u16string*> m_open;
    int m_replacements = 0;
    /// Of the result, if nothing else was replaced.
    std::size_t m_length = 0;
};

HRESULT CStringTable::get_Language(BSTR* pbstrLanguage)
{
    if (!pbstrLanguage) return E_POINTER;
    *pbstrLanguage = nullptr;
    return Guarded([&] {
        const SectionLock lock(m_section);
        *pbstrLanguage = Bstr::Copy(m_language.Get());
        return S_OK;
    });
}

HRESULT CStringTable::put_Language(BSTR bstrLanguage)
{
    return Guarded([&] {
        const SectionLock lock(m_section);
        m_language = Bstr::CopyOf(bstrLanguage);
        return S_OK;
    });
}

HRESULT CStringTable::Load(BSTR bstrFile)
{
    return Guarded([&] {
        if (SysStringLen(bstrFile) == 0) return E_INVALIDARG;
        std::vector<Language> languages = Read(bstrFile);
        const SectionLock lock(m_section);
        m_languages = std::move(languages);
        return S_OK;
    });
}

std::vector<CStringTable::Language> CStringTable::Read(BSTR file)
{
    ComPtr<IXMLDOMDocument> document;
    ThrowIfFailed(CreateInstance(CLSID_DOMDocument, document));
    VARIANT_BOOL parsed = VARIANT_FALSE;
    if (document->load(Variant(View(file)), &parsed) != S_OK || !parsed) throw Error(ZXE_E_NOT_STRINGS);
    ComPtr<IXMLDOMNode> root;
    if (document->selectSingleNode(Bstr(u"/Strings").Get(), root.Put()) != S_OK) throw Error(ZXE_E_NOT_STRINGS);
    std::vector<Language> languages;
    ForEach(root.Get(), u"Language", [&](IXMLDOMNode* node) {
        Language language{IdOf(node), {}};
        ForEach(node, u"String", [&](IXMLDOMNode* string) {
            Bstr text;
            ThrowIfFailed(string->get_text(text.Put()));
            language.strings.try_emplace(IdOf(string), text.View());
        });
        languages.push_back(std::move(language));
    });
    return languages;
}

const std::u16string* CStringTable::Find(std::u16string_view id) const
{
    const auto findIn = [&](std::u16string_view name, bool any) -> const std::u16string* {
        for (const Language& language : m_languages) {
            if (!any && language.name != name) continue;
            const auto found = language.strings.find(id);
            if (found != language.strings.end()) return &found->second;
        }
        return nullptr;
    };
    if (const auto* string = findIn(m_language.View(), false)) return string;
    if (const auto* string = findIn(kFallBack, false)) return string;
    return findIn({}, true);
}

HRESULT CStringTable::Resolve(BSTR bstrText, BSTR* pbstrResult)
{
    if (!pbstrResult) return E_POINTER;
    *pbstrResult = nullptr;
    if (SysStringLen(bstrText) == 0) return S_OK;
    return Guarded([&] {
        const SectionLock lock(m_section);
        *pbstrResult = Bstr(Resolver(*this).Resolve(View(bstrText))).Detach();
        return S_OK;
    });
}

} // namespace kv
