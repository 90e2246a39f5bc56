#include "platform/xml/DomDocument.h"

#include "platform/system/AtomicFile.h"
#include "platform/system/Case.h"
#include "platform/system/Paths.h"
#include "platform/xml/DomDocumentObject.h"
#include "platform/xml/DomEdit.h"
#include "platform/xml/XmlChecker.h"
#include "platform/xml/XmlDecoder.h"
#include "platform/xml/XmlWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utf8.h>
#include <vector>

namespace kv {
namespace {

constexpr LONG kSyntaxError = static_cast<LONG>(0xC00CE500);

struct ParseErrorFacts {
    LONG code = 0;
    std::u16string url;
    std::u16string reason;
    std::u16string source;
    LONG line = 0;
    LONG position = 0;
    LONG offset = 0;
};

class DomParseError final : public Object<IXMLDOMParseError> {
public:
    explicit DomParseError(ParseErrorFacts facts) : m_facts(std::move(facts)) {}

    HRESULT get_errorCode(LONG* code) override { return Copy(code, m_facts.code); }
    HRESULT get_url(BSTR* url) override { return Copy(url, m_facts.url); }
    HRESULT get_reason(BSTR* reason) override { return Copy(reason, m_facts.reason); }
    HRESULT get_srcText(BSTR* text) override { return Copy(text, m_facts.source); }
    HRESULT get_line(LONG* line) override { return Copy(line, m_facts.line); }
    HRESULT get_linepos(LONG* position) override { return Copy(position, m_facts.position); }
    HRESULT get_filepos(LONG* position) override { return Copy(position, m_facts.offset); }

private:
    HRESULT Copy(LONG* out, LONG value) const
    {
        if (!out) return E_POINTER;
        *out = value;
        return m_facts.code ? S_OK : S_FALSE;
    }

    HRESULT Copy(BSTR* out, const std::u16string& text) const
    {
        return Guarded([&] {
            if (!out) return E_POINTER;
            *out = nullptr;
            *out = Bstr(text).Detach();
            return m_facts.code ? S_OK : S_FALSE;
        });
    }

    ParseErrorFacts m_facts;
};

ParseErrorFacts FactsOf(const XmlError& error, std::string_view text)
{
    constexpr std::size_t kLongestSource = 256;
    const std::string_view before = text.substr(0, error.offset);
    const std::size_t lineStart = before.rfind('\n') == before.npos ? 0 : before.rfind('\n') + 1;
    const std::string_view line =
        text.substr(lineStart, std::min(text.find('\n', lineStart) - lineStart, 4 * kLongestSource));
    const auto characters = [](std::string_view part) {
        return static_cast<LONG>(std::ranges::count_if(part, [](char c) { return (c & 0xc0) != 0x80; }));
    };
    ParseErrorFacts facts;
    facts.code = kSyntaxError;
    facts.reason = ToUtf16(error.reason);
    facts.source = ToUtf16(line).substr(0, kLongestSource);
    facts.line = static_cast<LONG>(std::ranges::count(before, '\n')) + 1;
    facts.position = characters(before.substr(lineStart)) + 1;
    facts.offset = characters(before);
    return facts;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Opens a regular file; anything else is E_ACCESSDENIED. Throws Error with the system's code.
std::unique_ptr<std::FILE, FileCloser> OpenRegularFile(const std::string& path, struct stat& facts)
{
    // A pipe must not keep the caller waiting for its other end.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    std::unique_ptr<std::FILE, FileCloser> file(descriptor < 0 ? nullptr : fdopen(descriptor, "rb"));
    if (!file || fstat(descriptor, &facts) != 0) {
        const HRESULT result = ResultFromErrno(errno);
        if (!file && descriptor >= 0) close(descriptor);
        throw Error(result);
    }
    if (!S_ISREG(facts.st_mode)) throw Error(E_ACCESSDENIED);
    return file;
}

/// The text of a file. Throws Error with the system's code, or XmlError for a file that is none, with what stands
/// before the error in `text`.
void ReadXmlFile(const std::string& path, std::string& text)
{
    // The same text is at most twice as long in UTF-16.
    constexpr std::size_t kMaxFileSize = 2 * kMaxXmlSize + 2;
    struct stat facts {};
    const auto file = OpenRegularFile(path, facts);
    if (static_cast<std::size_t>(facts.st_size) > kMaxFileSize) throw XmlError{"the document is too large", 0};
    XmlDecoder decoder(text, static_cast<std::size_t>(facts.st_size));
    std::array<char, std::size_t{128} * 1024> piece;
    while (const std::size_t read = std::fread(piece.data(), 1, piece.size(), file.get())) {
        decoder.Append({piece.data(), read});
        // The file may have grown since its size was asked for.
        if (text.size() > kMaxXmlSize) throw XmlError{"the document is too large", 0};
    }
    if (std::ferror(file.get())) throw Error(ResultFromErrno(errno));
    decoder.Finish();
}

/// Whether the declaration asks for UTF-16.
bool SaysUtf16(pugi::xml_node document)
{
    if (!IsDeclaration(document.first_child())) return false;
    const std::string_view data = document.first_child().value();
    constexpr std::string_view kName = "utf-16";
    const auto same = [](char a, char b) { return FoldCase(a) == FoldCase(b); };
    return std::search(data.begin(), data.end(), kName.begin(), kName.end(), same) != data.end();
}

/// Whether a path holds U+0000, at which the system would cut it.
bool IsCutPath(const VARIANT& path)
{
    return View(path.bstrVal).find(u'\0') != std::u16string_view::npos;
}

/// Whether the next eight bytes are there and all plain; nearly all text is.
bool ArePlain(std::string_view text, std::size_t at)
{
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    std::uint64_t bytes = kHighBits;
    if (text.size() - at >= sizeof bytes) std::memcpy(&bytes, text.data() + at, sizeof bytes);
    return !(bytes & kHighBits);
}

/// Well-formed UTF-8 as UTF-16, little-endian, in a buffer that is used again and again and only grows.
std::string_view EncodeUtf16(std::string_view utf8, std::vector<char>& bytes)
{
    // No character takes more units than it takes bytes.
    bytes.resize(std::max(bytes.size(), 2 * utf8.size()));
    char* out = bytes.data();
    const auto put = [&out](char32_t unit) {
        *out++ = static_cast<char>(unit & 0xff);
        *out++ = static_cast<char>(unit >> 8);
    };
    for (std::size_t i = 0; i < utf8.size();) {
        const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(utf8[i + k]); };
        if (ArePlain(utf8, i)) {
            for (std::size_t k = 0; k < sizeof(std::uint64_t); ++k)
                put(byte(k));
            i += sizeof(std::uint64_t);
        } else if (byte(0) < 0x80) {
            put(byte(0));
            i += 1;
        } else {
            const char* next = utf8.data() + i;
            const char32_t c = utf8::unchecked::next(next);
            i = static_cast<std::size_t>(next - utf8.data());
            if (c > 0xffff) put(0xd800 + ((c - 0x10000) >> 10));
            put(c > 0xffff ? 0xdc00 + (c & 0x3ff) : c);
        }
    }
    return {bytes.data(), static_cast<std::size_t>(out - bytes.data())};
}

pugi::xml_node_type NodeTypeOf(const VARIANT& type)
{
    if (type.vt == VT_BSTR) {
        const std::u16string_view name = View(type.bstrVal);
        if (name == u"element") return pugi::node_element;
        if (name == u"text") return pugi::node_pcdata;
        if (name == u"cdatasection") return pugi::node_cdata;
        if (name == u"comment") return pugi::node_comment;
        if (name == u"processinginstruction") return pugi::node_pi;
        throw Error(E_INVALIDARG);
    }
    Variant number;
    ThrowIfFailed(VariantChangeType(&number, &type, 0, VT_I4));
    switch (number.lVal) {
    case NODE_ELEMENT:
        return pugi::node_element;
    case NODE_TEXT:
        return pugi::node_pcdata;
    case NODE_CDATA_SECTION:
        return pugi::node_cdata;
    case NODE_COMMENT:
        return pugi::node_comment;
    case NODE_PROCESSING_INSTRUCTION:
        return pugi::node_pi;
    default:
        throw Error(E_INVALIDARG);
    }
}

} // namespace

HRESULT CreateDomDocument(IUnknown* outer, REFIID iid, void** out)
{
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    return Guarded([&] { return Make<DomDocument>()->QueryInterface(iid, out); });
}

DomDocument::DomDocument() : DomNodeOf(DomPlace{}, DomHome{})
{
    SetTree(std::make_shared<DomTree>());
    m_parseError = Make<DomParseError>(ParseErrorFacts{});
}

void DomDocument::SetTree(std::shared_ptr<DomTree> tree)
{
    // A document that is loaded anew is no longer the parent of its old nodes.
    if (m_home.tree) m_home.tree->SetIsDocument(false);
    m_home.tree = std::move(tree);
    m_home.tree->SetIsDocument(true);
    m_place = {m_home.tree->Root(), {}};
}

pugi::xml_node DomDocument::DocumentElement() const
{
    return m_place.node.find_child([](pugi::xml_node child) { return child.type() == pugi::node_element; });
}

HRESULT DomDocument::get_documentElement(IXMLDOMElement** element)
{
    return Guarded([&] {
        if (!element) return E_POINTER;
        *element = nullptr;
        *element = Query<IXMLDOMElement>(ObjectFor({DocumentElement(), {}})).Detach();
        return *element ? S_OK : S_FALSE;
    });
}

HRESULT DomDocument::putref_documentElement(IXMLDOMElement* element)
{
    if (!element) return E_POINTER;
    ComPtr<IXMLDOMElement> old;
    const HRESULT found = get_documentElement(old.Put());
    if (FAILED(found)) return found;
    return old ? ReplaceChild(element, old.Get(), nullptr) : Insert(element, nullptr, nullptr);
}

ComPtr<IXMLDOMNode> DomDocument::NewNode(pugi::xml_node_type type, const std::string& name, const std::string& value)
{
    const auto tree = std::make_shared<DomTree>();
    return tree->ObjectAt({AddNode(tree->Root(), type, name, value), {}}, this);
}

HRESULT DomDocument::createElement(BSTR name, IXMLDOMElement** element)
{
    return Guarded([&] {
        if (!element) return E_POINTER;
        *element = nullptr;
        *element = Query<IXMLDOMElement>(NewNode(pugi::node_element, XmlNameOf(name), {})).Detach();
        return S_OK;
    });
}

HRESULT DomDocument::CreateText(pugi::xml_node_type type, BSTR text, IXMLDOMNode** out)
{
    return Guarded([&] {
        if (!out) return E_POINTER;
        *out = nullptr;
        const std::string checked = XmlTextOf(text);
        if (type == pugi::node_comment && !IsXmlComment(checked)) return E_INVALIDARG;
        return NewNode(type, {}, checked).CopyTo(out);
    });
}

HRESULT DomDocument::createTextNode(BSTR text, IXMLDOMNode** node)
{
    return CreateText(pugi::node_pcdata, text, node);
}

HRESULT DomDocument::createComment(BSTR text, IXMLDOMNode** node)
{
    return CreateText(pugi::node_comment, text, node);
}

HRESULT DomDocument::createCDATASection(BSTR text, IXMLDOMNode** node)
{
    return CreateText(pugi::node_cdata, text, node);
}

HRESULT DomDocument::createProcessingInstruction(BSTR target, BSTR data, IXMLDOMNode** out)
{
    return Guarded([&] {
        if (!out) return E_POINTER;
        *out = nullptr;
        const std::string name = XmlNameOf(target);
        const std::string text = XmlTextOf(data);
        if (!IsXmlInstruction(name, text)) return E_INVALIDARG;
        return NewNode(pugi::node_pi, name, text).CopyTo(out);
    });
}

HRESULT DomDocument::createNode(VARIANT type, BSTR name, BSTR namespaceURI, IXMLDOMNode** node)
{
    return Guarded([&] {
        if (!node) return E_POINTER;
        *node = nullptr;
        if (SysStringLen(namespaceURI) != 0) return E_INVALIDARG;
        const pugi::xml_node_type kind = NodeTypeOf(type);
        if (kind == pugi::node_element) {
            ComPtr<IXMLDOMElement> element;
            const HRESULT result = createElement(name, element.Put());
            *node = element.Detach();
            return result;
        }
        if (kind == pugi::node_pi) return createProcessingInstruction(name, nullptr, node);
        return CreateText(kind, nullptr, node);
    });
}

HRESULT DomDocument::importNode(IXMLDOMNode* node, VARIANT_BOOL deep, IXMLDOMNode** copy)
{
    return Guarded([&] {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        const DomObject* object = ObjectOf(node);
        if (!object) return E_INVALIDARG;
        const DomPlace& place = object->Place();
        if (!place.attribute && place.node.type() == pugi::node_document) return E_INVALIDARG;
        return CopyFor(this, place, deep != VARIANT_FALSE).CopyTo(copy);
    });
}

HRESULT DomDocument::Parse(std::u16string_view url, const std::function<void(std::string&)>& read,
                           VARIANT_BOOL* success)
{
    return Guarded([&] {
        if (success) *success = VARIANT_FALSE;
        ParseErrorFacts facts;
        std::shared_ptr<DomTree> tree;
        std::string text;
        try {
            read(text);
            tree = DomTree::Parse(text);
        } catch (const XmlError& error) {
            facts = FactsOf(error, text);
        } catch (const Error& error) {
            facts.code = error.Result();
            facts.reason = u"the file cannot be read";
        }
        facts.url = url;
        const bool parsed = tree != nullptr;
        SetTree(parsed ? std::move(tree) : std::make_shared<DomTree>());
        m_parseError = Make<DomParseError>(std::move(facts));
        if (success && parsed) *success = VARIANT_TRUE;
        return parsed ? S_OK : S_FALSE;
    });
}

HRESULT DomDocument::load(VARIANT source, VARIANT_BOOL* success)
{
    if (success) *success = VARIANT_FALSE;
    if (source.vt != VT_BSTR || IsCutPath(source)) return E_INVALIDARG;
    const std::u16string_view path = View(source.bstrVal);
    return Parse(
        path, [&](std::string& text) { ReadXmlFile(ToHostPath(path), text); }, success);
}

HRESULT DomDocument::loadXML(BSTR xml, VARIANT_BOOL* success)
{
    return Parse(
        {},
        [&](std::string& text) {
            if (SysStringLen(xml) > kMaxXmlSize) throw XmlError{"the document is too large", 0};
            if (!ToXmlUtf8(View(xml), text))
                throw XmlError{"the document holds a character that XML does not allow", text.size()};
        },
        success);
}

bool DomDocument::Write(AtomicFile& file, bool declarePrefix, const XmlInsertions& insertions) const
{
    const bool utf16 = SaysUtf16(m_place.node);
    std::size_t size = 0;
    std::vector<char> bytes;
    if (utf16) ThrowIfFailed(file.Write("\xff\xfe", 2));
    const auto output = [&](std::string_view piece) {
        size += piece.size();
        if (size > kMaxXmlSize) throw Error(ResultFromErrno(EFBIG));
        if (utf16) piece = EncodeUtf16(piece, bytes);
        ThrowIfFailed(file.Write(piece.data(), piece.size()));
    };
    return WriteXml(m_place.node, declarePrefix, output, insertions);
}

HRESULT DomDocument::save(VARIANT target)
{
    return Save(target, {});
}

HRESULT DomDocument::Save(const VARIANT& target, const XmlInsertions& insertions) const
{
    return Guarded([&] {
        if (target.vt != VT_BSTR || SysStringLen(target.bstrVal) == 0 || IsCutPath(target)) return E_INVALIDARG;
        const std::string path = ToHostPath(View(target.bstrVal));
        for (bool declarePrefix = false;; declarePrefix = true) {
            AtomicFile file;
            ThrowIfFailed(file.Create(path));
            if (Write(file, declarePrefix, insertions)) return file.Commit();
        }
    });
}

HRESULT DomDocument::get_parseError(IXMLDOMParseError** error)
{
    return m_parseError.CopyTo(error);
}

HRESULT DomDocument::get_async(VARIANT_BOOL* async)
{
    if (!async) return E_POINTER;
    *async = m_async;
    return S_OK;
}

HRESULT DomDocument::put_async(VARIANT_BOOL async)
{
    m_async = async ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

} // namespace kv
