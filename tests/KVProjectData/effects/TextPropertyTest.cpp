// Random trees and setters: what is set is what is told, the words stay, setting it twice changes nothing, and all else
// stays.

#include "TextSupport.h"

#include <algorithm>
#include <random>

namespace kv::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned kSeeds = 300;
#else
constexpr unsigned kSeeds = 3'000;
#endif

using Names = std::vector<std::string>;

/// What may be set, and what of the tree that may change.
struct Property {
    std::string name;
    Names values;
    Names attributes;
    Names elements;
};

const std::vector<Property> kProperties{
    {"face", {"A", "B", "", "a,b;c\\>d", "Times New Roman"}, {"face"}, {"font"}},
    {"height", {"8", "24", "30", "300"}, {"fontHeight"}, {"font"}},
    {"heightString", {"30", "", "stringRef:H,1", "NaN"}, {"fontHeight"}, {"font"}},
    {"justify", {"1", "2", "4", "8"}, {"align"}, {"p"}},
    {"styleId", {"-1", "0", "7", "2147483647"}, {"SelectedStyleId"}, {"font"}},
    {"style", {"1", "2", "3"}, {}, {"i"}},
    {"style", {"100", "200"}, {}, {"b"}},
    {"style", {"20000", "10000", "20202", "10101", "20001"}, {}, {"b", "i", "u"}},
    {"colour", {"ffffff", "ff", "40302010", "ff000000"}, {"color", "faceTexture"}, {"font"}},
    {"string", {"", "words", " ", "~", "~words", "a<b>&\r\n", "r:x"}, {}, {}},
};

bool Contains(const Names& names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

std::string WithoutBlanks(std::string text)
{
    std::erase(text, ' ');
    return text;
}

unsigned long Hex(const std::string& text)
{
    return std::stoul(text, nullptr, 16);
}

/// Each character but blanks with what is told around it; and how often each element with attributes is there. Leaves
/// out what a property may change.
class Rest {
public:
    Rest(const XmlElement& data, const Property& property) : m_property(property)
    {
        Read(data.Child("html").Child("body"), {});
    }

    friend bool operator==(const Rest& left, const Rest& right)
    {
        return left.m_characters == right.m_characters && left.m_elements == right.m_elements;
    }

private:
    void Read(const XmlElement& parent, const std::map<std::string, std::string>& around)
    {
        for (const XmlNode& node : parent.Nodes()) {
            for (const char c : node.IsText() ? WithoutBlanks(node.Text()) : "") {
                m_characters += c;
                for (const auto& [name, value] : around)
                    m_characters += name + value;
            }
            if (node.IsText()) continue;
            const XmlElement element(node);
            const std::string name(element.Name());
            const bool mayChange = Contains(m_property.elements, name);
            auto inner = around;
            if (!mayChange && Contains({"b", "i", "u"}, name)) inner[name] = "on";
            std::string signature = name;
            for (const char* attribute : {"face", "fontHeight", "color", "faceTexture", "SelectedStyleId", "align",
                                          "id", "edgeColor", "placeholder"}) {
                const std::string value(element.Attribute(attribute));
                if (value.empty() || Contains(m_property.attributes, attribute)) continue;
                inner[attribute] = value;
                signature += std::string(" ") + attribute + "=" + value;
            }
            if (signature != name || !mayChange) ++m_elements[signature];
            Read(element, inner);
        }
    }

    const Property& m_property;
    std::string m_characters;
    std::map<std::string, int> m_elements;
};

class Session {
public:
    explicit Session(unsigned seed) : m_random(seed), m_data(TextData(Nodes(4)))
    {
        EXPECT_EQ(S_OK, m_text.Attach(m_data));
    }

    void Step()
    {
        const Property& property = From(kProperties);
        const std::string value = From(property.values);
        const std::string setting = property.name + "=" + value;
        SCOPED_TRACE(setting + " in " + BodyOf(m_data));
        auto before = Answers(m_text);
        const std::string markup = m_data.Markup();
        const Rest rest(m_data, property);
        ASSERT_EQ(S_OK, Put(m_text, setting));
        auto after = Answers(m_text);
        const std::string edited = m_data.Markup();
        if (property.name == "style") {
            EXPECT_TRUE(Hex(value) & Hex(before["style"]) ? markup == edited
                                                          : HasStyle(Hex(after["style"]), Hex(value)));
        } else {
            const std::string& told = after[property.name];
            EXPECT_EQ(value, told.ends_with('?') ? told.substr(0, told.size() - 1) : told);
        }
        if (property.name == "string") {
            // New words look as the old ones did where those were alike.
            for (const auto& [name, was] : before) {
                const bool isMixed = was == kUndetermined || was == "0" || was == "-1" || was.ends_with('?') ||
                                     (name == "style" && Hex(was) & kMixedStyles);
                EXPECT_TRUE(name == "string" || isMixed || was == after[name]) << name;
            }
        } else {
            const bool turnsOff = property.name == "style" && Hex(value) & (kItalicOff | kBoldOff | kUnderlineOff);
            EXPECT_TRUE(turnsOff || before["string"] == after["string"]);
            EXPECT_EQ(WithoutBlanks(before["string"]), WithoutBlanks(after["string"]));
            EXPECT_TRUE(rest == Rest(m_data, property)) << BodyOf(m_data);
        }
        ASSERT_EQ(S_OK, Put(m_text, setting));
        EXPECT_EQ(edited, m_data.Markup()) << "twice";
        CZXPTextPlugInHelper loaded;
        ASSERT_EQ(S_OK, loaded.Load(XmlElement::Parse(edited)));
        EXPECT_EQ(after, Answers(loaded)) << "saved and loaded";
    }

private:
    unsigned Below(std::size_t count) { return static_cast<unsigned>(m_random() % count); }

    template <class T>
    const T& From(const std::vector<T>& values)
    {
        return values[Below(values.size())];
    }

    std::string Nodes(int depth)
    {
        static const Names leaves{"<br/>", "<hr/>", "<!-- note -->", "<?font a?>", "<![CDATA[cd<]]>",
                                  "&#32;", "w",     "two words ",    " more",      "~"};
        static const Names elements{"p", "p", "font", "font", "b", "i", "u", "table", "strange"};
        static const Names ofFonts{" face='A'",          " fontHeight='30'",     " color='Red'",
                                   " color='#10203040'", " SelectedStyleId='7'", " id='1'",
                                   " edgeColor='Navy'"};
        static const Names ofParagraphs{"", " align='right'", " align='center'", " placeholder='1'", " id='2'"};
        std::string nodes;
        for (unsigned count = Below(4); count > 0; --count) {
            if (depth == 0 || Below(3) == 0) {
                nodes += From(leaves);
                continue;
            }
            const std::string name = From(elements);
            const std::string attribute = name == "font" ? From(ofFonts) : name == "p" ? From(ofParagraphs) : "";
            nodes += "<" + name + attribute + ">" + Nodes(depth - 1) + "</" + name + ">";
        }
        return nodes;
    }

    /// Seen as what is turned on and off.
    static bool HasStyle(unsigned long style, unsigned long set)
    {
        return std::ranges::all_of(std::initializer_list<unsigned long>{kItalicOff, kBoldOff, kUnderlineOff},
                                   [&](unsigned long off) {
                                       const unsigned long on = off << 1;
                                       if (set & on) return (style & on) != 0;
                                       return !(set & off) || (style & (on | on << 1)) == 0;
                                   });
    }

    std::mt19937 m_random;
    XmlElement m_data;
    CZXPTextPlugInHelper m_text;
};

TEST(TextProperties, HoldForRandomTreesAndSetters)
{
    for (unsigned seed = 0; seed < kSeeds && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Session session(seed);
        for (int step = 0; step < 5; ++step)
            session.Step();
    }
}

} // namespace
} // namespace kv::test
