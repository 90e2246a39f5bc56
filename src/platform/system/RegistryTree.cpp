#include "platform/system/RegistryTree.h"

#include "platform/automation/Bstr.h"
#include "platform/com/Error.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <charconv>

namespace kv {
namespace {

constexpr std::size_t kMaxDepth = 64;
constexpr std::size_t kMaxName = 255;
constexpr std::string_view kSignature = "KVProjectData Registry 1";

/// Takes the first name off a path.
std::u16string_view TakeName(std::u16string_view& path)
{
    const std::size_t end = path.find(u'\\');
    const std::u16string_view name = path.substr(0, end);
    path.remove_prefix(end == path.npos ? path.size() : end + 1);
    return name;
}

std::string Quoted(std::u16string_view text)
{
    std::string quoted = "\"";
    for (char c : ToUtf8(text)) {
        switch (c) {
        case '"':
        case '\\':
            quoted += '\\';
            quoted += c;
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\r':
            quoted += "\\r";
            break;
        case '\0':
            quoted += "\\0";
            break;
        default:
            quoted += c;
        }
    }
    return quoted += '"';
}

void AppendHex(std::string& text, ULONG value, int digits)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += kDigits[value >> shift & 0xf];
}

void WriteKey(const RegistryKey& key, const std::u16string& path, std::string& text)
{
    if (!path.empty()) {
        text += "\n[" + ToUtf8(path) + "]\n";
        for (const auto& [name, value] : key.values) {
            text += name.empty() ? "@" : Quoted(name);
            text += '=';
            if (const auto* string = std::get_if<std::u16string>(&value)) {
                text += Quoted(*string);
            } else if (const auto* number = std::get_if<ULONG>(&value)) {
                text += "dword:";
                AppendHex(text, *number, 8);
            } else {
                text += "hex:";
                for (std::byte byte : std::get<std::vector<std::byte>>(value))
                    AppendHex(text, static_cast<ULONG>(byte), 2);
            }
            text += '\n';
        }
    }
    for (const auto& [name, child] : key.keys)
        WriteKey(child, path.empty() ? name : path + u'\\' + name, text);
}

/// Reads the text form line by line.
class Parser {
public:
    explicit Parser(std::string_view text) : m_text(text) {}

    RegistryKey Parse()
    {
        RegistryKey root;
        RegistryKey* key = nullptr;
        if (TakeLine() != kSignature) Fail();
        while (!m_text.empty()) {
            std::string_view line = TakeLine();
            if (line.empty()) continue;
            if (line.front() == '[' && line.back() == ']' && line.size() > 2) {
                key = &CreateKey(root, line.substr(1, line.size() - 2));
            } else if (key) {
                ParseValue(line, *key);
            } else {
                Fail();
            }
        }
        return root;
    }

private:
    [[noreturn]] static void Fail() { throw Error(REGISTRY_E_CORRUPT); }

    static RegistryKey& CreateKey(RegistryKey& root, std::string_view path)
    {
        try {
            return root.Create(ToUtf16(path));
        } catch (const Error&) {
            Fail();
        }
    }

    std::string_view TakeLine()
    {
        const std::size_t end = m_text.find('\n');
        std::string_view line = m_text.substr(0, end);
        m_text.remove_prefix(end == m_text.npos ? m_text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        return line;
    }

    static std::u16string TakeQuoted(std::string_view& line)
    {
        std::string text;
        if (!line.starts_with('"')) Fail();
        for (line.remove_prefix(1); !line.starts_with('"'); line.remove_prefix(1)) {
            if (line.empty()) Fail();
            if (line.front() != '\\') {
                text += line.front();
                continue;
            }
            line.remove_prefix(1);
            if (line.empty()) Fail();
            const char c = line.front();
            text += c == 'n' ? '\n' : c == 'r' ? '\r' : c == '0' ? '\0' : c;
        }
        line.remove_prefix(1);
        return ToUtf16(text);
    }

    static ULONG ParseHex(std::string_view digits)
    {
        ULONG value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
        if (error != std::errc() || end != digits.data() + digits.size()) Fail();
        return value;
    }

    static void ParseValue(std::string_view line, RegistryKey& key)
    {
        std::u16string name;
        if (line.starts_with('@')) {
            line.remove_prefix(1);
        } else {
            name = TakeQuoted(line);
        }
        if (!line.starts_with('=')) Fail();
        line.remove_prefix(1);
        RegistryValue& value = key.values[std::move(name)];
        if (line.starts_with('"')) {
            value = TakeQuoted(line);
            if (!line.empty()) Fail();
        } else if (line.starts_with("dword:")) {
            value = ParseHex(line.substr(6));
        } else if (line.starts_with("hex:") && line.size() % 2 == 0) {
            std::vector<std::byte> bytes;
            for (std::string_view rest = line.substr(4); !rest.empty(); rest.remove_prefix(2)) {
                bytes.push_back(static_cast<std::byte>(ParseHex(rest.substr(0, 2))));
            }
            value = std::move(bytes);
        } else {
            Fail();
        }
    }

    std::string_view m_text;
};

} // namespace

bool RegistryNameLess::operator()(std::u16string_view left, std::u16string_view right) const
{
    const auto fold = [](char16_t c) { return FoldCase(c); };
    return std::ranges::lexicographical_compare(left, right, {}, fold, fold);
}

const RegistryKey* RegistryKey::Find(std::u16string_view path) const
{
    const RegistryKey* key = this;
    while (key && !path.empty()) {
        const auto child = key->keys.find(TakeName(path));
        key = child == key->keys.end() ? nullptr : &child->second;
    }
    return key;
}

RegistryKey* RegistryKey::Find(std::u16string_view path)
{
    return const_cast<RegistryKey*>(std::as_const(*this).Find(path));
}

RegistryKey& RegistryKey::Create(std::u16string_view path)
{
    if (static_cast<std::size_t>(std::ranges::count(path, u'\\')) >= kMaxDepth) throw Error(E_INVALIDARG);
    RegistryKey* key = this;
    while (!path.empty()) {
        const std::u16string_view name = TakeName(path);
        if (name.empty() || name.size() > kMaxName || name.find_first_of(u"\n\r") != name.npos)
            throw Error(E_INVALIDARG);
        auto child = key->keys.find(name);
        if (child == key->keys.end()) child = key->keys.emplace(std::u16string(name), RegistryKey()).first;
        key = &child->second;
    }
    return *key;
}

bool RegistryKey::Erase(std::u16string_view path)
{
    const std::size_t last = path.rfind(u'\\');
    RegistryKey* parent = last == path.npos ? this : Find(path.substr(0, last));
    const auto name = path.substr(last == path.npos ? 0 : last + 1);
    const auto child = parent ? parent->keys.find(name) : keys.end();
    if (!parent || child == parent->keys.end()) return false;
    parent->keys.erase(child);
    return true;
}

std::string WriteRegistryText(const RegistryKey& root)
{
    std::string text(kSignature);
    text += '\n';
    WriteKey(root, {}, text);
    return text;
}

RegistryKey ParseRegistryText(std::string_view text)
{
    return Parser(text).Parse();
}

} // namespace kv
