#pragma once
// Markup on its way out.

#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace kv {

/// Receives UTF-8 in pieces that end between characters.
using XmlOutput = std::function<void(std::string_view)>;

/// The characters that do not stand in markup as they are, and the zero that ends a text.
using XmlSpecials = std::array<bool, 256>;

constexpr XmlSpecials SpecialsOf(std::string_view characters)
{
    XmlSpecials set{true};
    for (char c : characters)
        set[static_cast<unsigned char>(c)] = true;
    return set;
}

inline constexpr XmlSpecials kSpecialInName = SpecialsOf("");
inline constexpr XmlSpecials kSpecialInText = SpecialsOf("&<>\r");
inline constexpr XmlSpecials kSpecialInAttribute = SpecialsOf("&<>\"\t\n\r");

/// Gathers markup into pieces.
class XmlBuffer {
public:
    explicit XmlBuffer(XmlOutput output) : m_output(std::move(output)) {}
    XmlBuffer(const XmlBuffer&) = delete;
    XmlBuffer& operator=(const XmlBuffer&) = delete;

    void Put(char c)
    {
        *Room(1) = c;
        ++m_out;
    }

    void Put(std::string_view text)
    {
        std::memcpy(Room(text.size()), text.data(), text.size());
        m_out += text.size();
    }

    template <std::size_t kSize>
    void Put(const char (&literal)[kSize])
    {
        std::memcpy(Room(kSize - 1), literal, kSize - 1);
        m_out += kSize - 1;
    }

    void PutLine(int level)
    {
        const std::size_t indent = static_cast<std::size_t>(level) * 2;
        char* const out = Room(1 + indent);
        *out = '\n';
        std::memset(out + 1, ' ', indent);
        m_out += 1 + indent;
    }

    void PutAttribute(std::string_view name, std::string_view value)
    {
        Put(name);
        Put("=\"");
        PutEscaped(value, kSpecialInAttribute);
        Put('"');
    }

    void PutAttribute(const char* name, const char* value)
    {
        PutPlain(name, kSpecialInName);
        Put("=\"");
        PutEscaped(value, kSpecialInAttribute);
        Put('"');
    }

    void PutEscaped(std::string_view text, const XmlSpecials& special)
    {
        const char* at = text.data();
        const char* const end = at + text.size();
        while (true) {
            const char* const plain = at;
            while (at != end && !special[static_cast<unsigned char>(*at)])
                ++at;
            Put({plain, static_cast<std::size_t>(at - plain)});
            if (at == end) return;
            PutReference(*at++);
        }
    }

    /// The same of a text that ends with a zero, whose length costs more to find than the text to put.
    void PutEscaped(const char* text, const XmlSpecials& special)
    {
        while (*(text = PutPlain(text, special)))
            PutReference(*text++);
    }

    /// Puts what stands before the first special character of a text, and tells where that is.
    const char* PutPlain(const char* text, const XmlSpecials& special)
    {
        while (true) {
            char* out = m_out;
            char* const end = m_end;
            while (out != end && !special[static_cast<unsigned char>(*text)])
                *out++ = *text++;
            m_out = out;
            if (out != end) return text;
            Grow(1);
        }
    }

    void PutReference(char c)
    {
        switch (c) {
        case '&':
            return Put("&amp;");
        case '<':
            return Put("&lt;");
        case '>':
            return Put("&gt;");
        case '"':
            return Put("&quot;");
        default:
            Put("&#");
            Put(std::to_string(static_cast<unsigned char>(c)));
            Put(';');
        }
    }

    /// A piece that is large enough goes out.
    void Relieve()
    {
        if (Size() >= kPiece) Flush();
    }

    void Flush()
    {
        if (Size()) m_output({m_buffer.data(), Size()});
        m_out = m_buffer.data();
    }

    /// Hands on what others gathered.
    void Pass(std::string_view piece)
    {
        Flush();
        m_output(piece);
    }

private:
    static constexpr std::size_t kPiece = std::size_t{64} * 1024;

    std::size_t Size() const { return static_cast<std::size_t>(m_out - m_buffer.data()); }

    /// Where the next so many bytes go.
    char* Room(std::size_t count)
    {
        if (static_cast<std::size_t>(m_end - m_out) < count) Grow(count);
        return m_out;
    }

    void Grow(std::size_t count)
    {
        const std::size_t size = Size();
        m_buffer.resize(2 * m_buffer.size() + count);
        m_out = m_buffer.data() + size;
        m_end = m_buffer.data() + m_buffer.size();
    }

    const XmlOutput m_output;
    /// Grows where the text between two nodes is longer.
    std::string m_buffer = std::string(kPiece / 16, '\0');
    char* m_out = m_buffer.data();
    char* m_end = m_out + m_buffer.size();
};

} // namespace kv
