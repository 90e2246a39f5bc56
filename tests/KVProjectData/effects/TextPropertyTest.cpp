// Random trees and setters: what is set is what is told, the words stay, setting it twice changes nothing, and all else
// stays.

#include "TextSupport.h"

#include <algorithm>
#include <map>
#include <random>

namespace kv::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned kSeeds = 300;
#else
constexpr unsigned kSeeds = 3'000;
#endif

class Random {
public:
    explicit Random(unsigned seed) : m_numbers(seed) {}

    unsigned Below(std::size_t count) { return static_cast<unsigned>(m_numbers() % count); }

    template <std::size_t count>
    std::string From(const char* const (&values)[count])
    {
        return values[Below(count)];
    }

private:
    std::mt19937 m_numbers;
};

std::string RandomNodes(Random& random, int depth)
{
    constexpr const char* kOthers[] = {"<br/>", "<hr/>", "<!-- note -->", "<?font a?>", "<![CDATA[cd<]]>",
                                       "&#32;", "w",     "two words ",    " more",      "~"};
    constexpr const char* kElements[] = {"p", "p", "font", "font", "b", "i", "u", "table", "strange"};
    constexpr const char* kFont[] = {"face=\"A\"",          "fontHeight=\"30\"",     "color=\"Red\"",
                                     "color=\"#10203040\"", "SelectedStyleId=\"7\"", "id=\"1\"",
                                     "edgeColor=\"Navy\""};
    constexpr const char* kParagraph[] = {"align=\"right\"", "align=\"center\"", "placeholder=\"1\"", "id=\"2\""};
    std::string nodes;
    for (unsigned count = random.Below(4); count > 0; --count) {
        if (depth == 0 || random.Below(3) == 0) {
            nodes += random.From(kOthers);
            continue;
        }
        const std::string name = random.From(kElements);
        std::string attribute;
        if (name == "font") attribute = " " + random.From(kFont);
        if (name == "p" && random.Below(2)) attribute = " " + random.From(kParagraph);
        nodes += "<" + name + attribute + ">" + RandomNodes(random, depth - 1) + "</" + name + ">";
    }
    return nodes;
}

struct Setting {
    std::string name;
    std::string value;
};

std::ostream& operator<<(std::ostream& out, const Setting& setting)
{
    return out << setting.name << "='" << setting.value << "'";
}

Setting RandomSetting(Random& random)
{
    constexpr const char* kNames[] = {"face",  "height", "heightString", "justify", "styleId",
                                      "style", "style",  "colour",       "string"};
    constexpr const char* kFaces[] = {"A", "B", "", "a,b;c\\>d", "Times New Roman"};
    constexpr const char* kHeights[] = {"8", "24", "30", "300"};
    constexpr const char* kHeightStrings[] = {"30", "", "stringRef:H,1", "NaN"};
    constexpr const char* kAlignments[] = {"1", "2", "4", "8"};
    constexpr const char* kIDs[] = {"-1", "0", "7", "2147483647"};
    constexpr const char* kStyles[] = {"1", "2", "100", "200", "10000", "20000", "20202", "10101", "20001"};
    constexpr const char* kColours[] = {"ffffff", "ff", "40302010", "ff000000"};
    constexpr const char* kWords[] = {"", "words", " ", "~", "~words", "a<b>&\r\n", "r:x"};
    const std::string name = random.From(kNames);
    if (name == "face") return {name, random.From(kFaces)};
    if (name == "height") return {name, random.From(kHeights)};
    if (name == "heightString") return {name, random.From(kHeightStrings)};
    if (name == "justify") return {name, random.From(kAlignments)};
    if (name == "styleId") return {name, random.From(kIDs)};
    if (name == "style") return {name, random.From(kStyles)};
    if (name == "colour") return {name, random.From(kColours)};
    return {name, random.From(kWords)};
}

/// The value of each getter by the name of its setter.
using Values = std::map<std::string, std::string>;

Values ValuesOf(const CZXPTextPlugInHelper& text)
{
    using Helper = CZXPTextPlugInHelper;
    const auto get = [&](auto member) { return [&text, member](auto* out) { return (text.*member)(out); }; };
    const auto value = [](std::string answer) {
        if (answer.ends_with('?')) answer.pop_back();
        return answer;
    };
    return {{"face", value(Answer<BSTR>(get(&Helper::get_Face), Words))},
            {"height", value(Answer<LONG>(get(&Helper::get_Height), Decimal))},
            {"heightString", value(Answer<BSTR>(get(&Helper::get_HeightString), Words))},
            {"justify", value(Answer<ULONG>(get(&Helper::get_Justify), Hex))},
            {"styleId", value(Answer<LONG>(get(&Helper::get_SelectedStyleId), Decimal))},
            {"style", value(Answer<ULONG>(get(&Helper::get_Style), Hex))},
            {"colour", value(Answer<ULONG>(get(&Helper::get_Color), Hex))},
            {"string", value(Answer<BSTR>(get(&Helper::get_String), Words))}};
}

std::string WithoutBlanks(std::string text)
{
    std::erase(text, ' ');
    return text;
}

/// What a setting may change of what is around a text, and of the tree.
struct Changes {
    std::vector<std::string> attributes;
    /// Elements that may be added, or taken out when it is a style that is turned off.
    std::vector<std::string> elements;
};

Changes ChangesOf(const Setting& setting)
{
    if (setting.name == "face") return {{"face"}, {"font"}};
    if (setting.name == "height" || setting.name == "heightString") return {{"fontHeight"}, {"font"}};
    if (setting.name == "styleId") return {{"SelectedStyleId"}, {"font"}};
    if (setting.name == "colour") return {{"color", "faceTexture"}, {"font"}};
    if (setting.name == "justify") return {{"align"}, {"p"}};
    Changes changes;
    const unsigned long bits = std::stoul(setting.value, nullptr, 16);
    if (bits & 0x3) changes.elements.emplace_back("i");
    if (bits & 0x300) changes.elements.emplace_back("b");
    if (bits & 0x30000) changes.elements.emplace_back("u");
    return changes;
}

bool Contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::ranges::find(names, name) != names.end();
}

/// Each character but blanks with what is told around it, without what may change; and what else the tree holds.
struct Rest {
    std::string characters;
    /// Elements with their attributes and all that is no text, by what stands there.
    std::map<std::string, int> nodes;

    friend bool operator==(const Rest&, const Rest&) = default;
};

class RestReader {
public:
    explicit RestReader(const Changes& changes) : m_changes(changes) {}

    Rest Of(const XmlElement& body)
    {
        Read(body, {});
        return std::move(m_rest);
    }

private:
    void Read(const XmlElement& parent, const std::map<std::string, std::string>& around)
    {
        for (const XmlNode& node : parent.Nodes()) {
            if (node.IsText()) {
                for (const char c : WithoutBlanks(node.Text())) {
                    m_rest.characters += c;
                    for (const auto& [name, value] : around)
                        m_rest.characters += name + value;
                }
                continue;
            }
            const XmlElement element(node);
            const std::string name(element.Name());
            auto inner = around;
            if (!Contains(m_changes.elements, name) && (name == "b" || name == "i" || name == "u")) inner[name] = "on";
            std::string signature = name;
            for (const char* attribute : {"face", "fontHeight", "color", "faceTexture", "SelectedStyleId", "align",
                                          "id", "edgeColor", "placeholder"}) {
                const std::string value(element.Attribute(attribute));
                if (value.empty() || Contains(m_changes.attributes, attribute)) continue;
                inner[attribute] = value;
                signature += std::string(" ") + attribute + "=" + value;
            }
            // Those that bear nothing may come and go.
            if (signature != name || !Contains(m_changes.elements, name)) ++m_rest.nodes[signature];
            Read(element, inner);
        }
    }

    const Changes& m_changes;
    Rest m_rest;
};

/// Whether a style word is what was set, seen as what is turned on and off.
bool HasStyle(unsigned long style, unsigned long set)
{
    const auto agrees = [&](unsigned long off, unsigned long on) {
        if (set & on) return (style & on) != 0;
        return !(set & off) || (style & (on | on << 1)) == 0;
    };
    return agrees(kItalicOff, kItalicOn) && agrees(kBoldOff, kBoldOn) && agrees(kUnderlineOff, kUnderlineOn);
}

class Session {
public:
    explicit Session(unsigned seed) : m_random(seed), m_data(TextData(RandomNodes(m_random, 4)))
    {
        EXPECT_EQ(S_OK, m_text.Attach(m_data));
    }

    void Step()
    {
        const Setting setting = RandomSetting(m_random);
        SCOPED_TRACE(testing::Message() << setting << " in " << BodyOf(m_data));
        const Values before = ValuesOf(m_text);
        const std::string markup = m_data.Markup();
        const Changes changes = setting.name == "string" ? Changes() : ChangesOf(setting);
        const Rest rest = RestReader(changes).Of(Body());
        ASSERT_EQ(S_OK, Put(m_text, setting.name, setting.value));
        const Values after = ValuesOf(m_text);
        const std::string edited = m_data.Markup();
        ExpectSet(setting, before, after, markup == edited);
        if (setting.name == "string") {
            ExpectFormatKept(before, after);
        } else {
            EXPECT_EQ(WithoutBlanks(before.at("string")), WithoutBlanks(after.at("string")));
            const bool turnsOff = setting.name == "style" && (std::stoul(setting.value, nullptr, 16) & 0x10101);
            EXPECT_TRUE(turnsOff || before.at("string") == after.at("string")) << after.at("string");
            EXPECT_EQ(rest, RestReader(changes).Of(Body())) << BodyOf(m_data);
        }
        ASSERT_EQ(S_OK, Put(m_text, setting.name, setting.value));
        EXPECT_EQ(edited, m_data.Markup()) << "twice";
        EXPECT_EQ(after, ValuesOf(m_text)) << "twice";
        CZXPTextPlugInHelper loaded;
        ASSERT_EQ(S_OK, loaded.Load(XmlElement::Parse(edited)));
        EXPECT_EQ(after, ValuesOf(loaded)) << "what is saved and loaded tells the same";
    }

private:
    XmlElement Body() const { return m_data.Child("html").Child("body"); }

    static void ExpectSet(const Setting& setting, const Values& before, const Values& after, bool isSame)
    {
        if (setting.name != "style") {
            EXPECT_EQ(setting.value, after.at(setting.name));
            return;
        }
        const unsigned long set = std::stoul(setting.value, nullptr, 16);
        const unsigned long was = std::stoul(before.at("style"), nullptr, 16);
        if (set & was) {
            EXPECT_TRUE(isSame) << "the text has one of them already";
        } else {
            EXPECT_TRUE(HasStyle(std::stoul(after.at("style"), nullptr, 16), set)) << after.at("style");
        }
    }

    /// New words look as the old ones did where those were alike.
    static void ExpectFormatKept(const Values& before, const Values& after)
    {
        for (const char* name : {"face", "heightString", "height", "justify", "styleId", "colour"}) {
            const std::string& was = before.at(name);
            const bool isMixed = was == kUndetermined || was == "0" || was == "-1" || was == "ffffff";
            EXPECT_TRUE(isMixed || was == after.at(name)) << name << " was " << was << ", is " << after.at(name);
        }
        const bool isMixed = std::stoul(before.at("style"), nullptr, 16) & kMixedStyles;
        EXPECT_TRUE(isMixed || before.at("style") == after.at("style")) << after.at("style");
    }

    Random m_random;
    XmlElement m_data;
    CZXPTextPlugInHelper m_text;
};

TEST(TextProperties, HoldForRandomTreesAndSetters)
{
    constexpr int kSteps = 5;
    for (unsigned seed = 0; seed < kSeeds && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Session session(seed);
        for (int step = 0; step < kSteps; ++step)
            session.Step();
    }
}

} // namespace
} // namespace kv::test
