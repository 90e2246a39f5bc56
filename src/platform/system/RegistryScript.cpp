#include "platform/system/RegistryScript.h"

#include "platform/com/Error.h"
#include "platform/system/Registry.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace kv {
namespace {

enum class KeyMark { None, NoRemove, ForceRemove, Delete };

struct ScriptKey {
    std::u16string name;
    KeyMark mark = KeyMark::None;
    std::optional<RegistryValue> defaultValue;
    std::vector<std::pair<std::u16string, RegistryValue>> values;
    std::vector<ScriptKey> keys;
};

struct ScriptHive {
    Hive hive;
    std::vector<ScriptKey> keys;
};

[[noreturn]] void Fail()
{
    throw Error(E_INVALIDARG);
}

std::u16string Replace(std::u16string_view text, const ScriptReplacements& replacements)
{
    std::u16string result;
    while (!text.empty()) {
        const std::size_t start = text.find(u'%');
        result += text.substr(0, start);
        if (start == text.npos) break;
        text.remove_prefix(start + 1);
        const std::size_t end = text.find(u'%');
        if (end == text.npos) Fail();
        const std::u16string_view name = text.substr(0, end);
        text.remove_prefix(end + 1);
        if (name.empty()) {
            result += u'%';
        } else if (const auto found = replacements.find(name); found != replacements.end()) {
            result += found->second;
        } else {
            Fail();
        }
    }
    return result;
}

class ScriptParser {
public:
    ScriptParser(std::u16string_view text, const ScriptReplacements& replacements)
        : m_text(text), m_replacements(replacements)
    {
        Advance();
    }

    std::vector<ScriptHive> Parse()
    {
        std::vector<ScriptHive> hives;
        while (!m_ended) {
            ScriptHive hive{TakeHive(), {}};
            Expect(u"{");
            hive.keys = TakeKeys(0);
            hives.push_back(std::move(hive));
        }
        return hives;
    }

private:
    static bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

    /// Reads the next token, which may be empty.
    void Advance()
    {
        m_quoted = false;
        m_token.clear();
        while (!m_text.empty() && IsBlank(m_text.front()))
            m_text.remove_prefix(1);
        m_ended = m_text.empty();
        if (m_ended) return;
        if (m_text.front() == u'\'') {
            TakeQuoted();
            return;
        }
        std::size_t length = 0;
        while (length < m_text.size() && !IsBlank(m_text[length]) && m_text[length] != u'\'')
            ++length;
        m_token = Replace(m_text.substr(0, length), m_replacements);
        m_text.remove_prefix(length);
    }

    void TakeQuoted()
    {
        std::u16string raw;
        for (m_text.remove_prefix(1);; m_text.remove_prefix(1)) {
            if (m_text.empty()) Fail();
            if (m_text.front() == u'\'') {
                if (!m_text.substr(1).starts_with(u'\'')) break;
                m_text.remove_prefix(1);
            }
            raw += m_text.front();
        }
        m_text.remove_prefix(1);
        m_token = Replace(raw, m_replacements);
        m_quoted = true;
    }

    bool Is(std::u16string_view word) const { return !m_quoted && m_token == word; }

    bool Accept(std::u16string_view word)
    {
        const bool accepted = Is(word);
        if (accepted) Advance();
        return accepted;
    }

    void Expect(std::u16string_view word)
    {
        if (!Accept(word)) Fail();
    }

    std::u16string TakeName()
    {
        if (m_token.empty() || (!m_quoted && (m_token == u"{" || m_token == u"}" || m_token == u"="))) Fail();
        std::u16string name = std::move(m_token);
        Advance();
        return name;
    }

    Hive TakeHive()
    {
        static constexpr std::array<std::pair<std::u16string_view, Hive>, 10> kHives{{
            {u"HKCR", Hive::ClassesRoot},
            {u"HKCU", Hive::CurrentUser},
            {u"HKLM", Hive::LocalMachine},
            {u"HKU", Hive::Users},
            {u"HKCC", Hive::CurrentConfig},
            {u"HKEY_CLASSES_ROOT", Hive::ClassesRoot},
            {u"HKEY_CURRENT_USER", Hive::CurrentUser},
            {u"HKEY_LOCAL_MACHINE", Hive::LocalMachine},
            {u"HKEY_USERS", Hive::Users},
            {u"HKEY_CURRENT_CONFIG", Hive::CurrentConfig},
        }};
        for (const auto& [name, hive] : kHives) {
            if (Accept(name)) return hive;
        }
        Fail();
    }

    RegistryValue TakeValue()
    {
        if (Accept(u"s")) {
            // The text may be empty, so that it must be in quotes.
            if (!m_quoted) Fail();
            RegistryValue value = std::move(m_token);
            Advance();
            return value;
        }
        Expect(u"d");
        return TakeNumber();
    }

    ULONG TakeNumber()
    {
        const bool hexadecimal = m_token.starts_with(u"0x");
        const std::u16string digits = TakeName().substr(hexadecimal ? 2 : 0);
        ULONGLONG number = 0;
        for (char16_t c : digits) {
            const char16_t lower = static_cast<char16_t>(c | 0x20);
            if (c >= u'0' && c <= u'9')
                number = number * (hexadecimal ? 16 : 10) + (c - u'0');
            else if (hexadecimal && lower >= u'a' && lower <= u'f')
                number = number * 16 + (lower - u'a' + 10u);
            else
                Fail();
            if (number > std::numeric_limits<ULONG>::max()) Fail();
        }
        if (digits.empty()) Fail();
        return static_cast<ULONG>(number);
    }

    KeyMark TakeMark()
    {
        if (Accept(u"NoRemove")) return KeyMark::NoRemove;
        if (Accept(u"ForceRemove")) return KeyMark::ForceRemove;
        return Accept(u"Delete") ? KeyMark::Delete : KeyMark::None;
    }

    /// Up to and with the closing brace.
    std::vector<ScriptKey> TakeKeys(int depth)
    {
        ScriptKey holder;
        TakeContent(holder, depth);
        if (!holder.values.empty()) Fail();
        return std::move(holder.keys);
    }

    void TakeContent(ScriptKey& key, int depth)
    {
        constexpr int kMaxDepth = 32;
        if (depth > kMaxDepth) Fail();
        while (!Accept(u"}")) {
            if (Accept(u"val")) {
                std::u16string name = TakeName();
                Expect(u"=");
                key.values.emplace_back(std::move(name), TakeValue());
                continue;
            }
            ScriptKey child;
            child.mark = TakeMark();
            child.name = TakeName();
            if (Accept(u"=")) child.defaultValue = TakeValue();
            if (Accept(u"{")) TakeContent(child, depth + 1);
            key.keys.push_back(std::move(child));
        }
    }

    std::u16string_view m_text;
    const ScriptReplacements& m_replacements;
    std::u16string m_token;
    bool m_quoted = false;
    /// There is no token any more.
    bool m_ended = false;
};

void WriteKeys(Hive hive, const std::u16string& parent, const std::vector<ScriptKey>& keys)
{
    for (const ScriptKey& key : keys) {
        const std::u16string path = parent.empty() ? key.name : parent + u'\\' + key.name;
        if (key.mark == KeyMark::ForceRemove || key.mark == KeyMark::Delete) {
            ThrowIfFailed(Registry::DeleteTreeIfThere(hive, path));
        }
        if (key.mark == KeyMark::Delete) continue;
        ThrowIfFailed(Registry::CreateKey(hive, path));
        if (key.defaultValue) ThrowIfFailed(Registry::Set(hive, path, {}, *key.defaultValue));
        for (const auto& [name, value] : key.values)
            ThrowIfFailed(Registry::Set(hive, path, name, value));
        WriteKeys(hive, path, key.keys);
    }
}

void RemoveKeys(Hive hive, const std::u16string& parent, const std::vector<ScriptKey>& keys)
{
    for (const ScriptKey& key : keys) {
        const std::u16string path = parent.empty() ? key.name : parent + u'\\' + key.name;
        if (key.mark != KeyMark::NoRemove) {
            ThrowIfFailed(Registry::DeleteTreeIfThere(hive, path));
            continue;
        }
        for (const auto& [name, value] : key.values)
            ThrowIfFailed(Registry::DeleteValueIfThere(hive, path, name));
        RemoveKeys(hive, path, key.keys);
    }
}

template <class Apply>
HRESULT Run(std::u16string_view script, const ScriptReplacements& replacements, Apply&& apply)
{
    return Guarded([&] {
        const std::vector<ScriptHive> hives = ScriptParser(script, replacements).Parse();
        Registry::Batch batch;
        for (const ScriptHive& hive : hives)
            apply(hive.hive, std::u16string(), hive.keys);
        return batch.Commit();
    });
}

} // namespace

HRESULT RegisterScript(std::u16string_view script, const ScriptReplacements& replacements)
{
    return Run(script, replacements, WriteKeys);
}

HRESULT UnregisterScript(std::u16string_view script, const ScriptReplacements& replacements)
{
    return Run(script, replacements, RemoveKeys);
}

} // namespace kv
