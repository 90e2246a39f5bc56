#include "KVProjectData/Engine/Strings.h"

#include "engine/EngineSupport.h"

namespace kv::test {
namespace {

constexpr const char* kFile = R"(<?xml version="1.0" encoding="UTF-8"?>
<Strings>
  <Language id="1031">
    <String id="Hello">Hallo</String><String id="OnlyGerman">Nur hier</String><String id="Hello">Zweimal</String>
  </Language>
  <Other/>
  <Language id="1033">
    <String id="Hello">Hello</String><String id="World">World</String><String id="Both">stringRef:Hello, stringRef:World!</String>
    <String id="A">a stringRef:B</String><String id="B">b stringRef:A</String><String id="Self">stringRef:Self</String>
    <String id="Empty"/><String>without an id</String>
  </Language>
</Strings>)";

std::string Resolve(IZXStringTable* table, const std::string& text)
{
    Bstr result;
    EXPECT_EQ(S_OK, table->Resolve(Bstr(ToUtf16(text)).Get(), result.Put()));
    return ToUtf8(result.View());
}

TEST(StringTable, ReplacesReferences)
{
    const TemporaryFolder folder;
    folder.Write("strings.xml", kFile);
    const auto table = CreateEngine<IZXStringTable>(CLSID_ZXStringTable);
    EXPECT_EQ("stringRef:Hello", Resolve(table.Get(), "stringRef:Hello"));
    ASSERT_EQ(S_OK, table->Load(folder.File("strings.xml").Get()));
    const std::tuple<const char*, const char*, const char*> cases[]{
        {"1033", "stringRef:Hello", "Hello"},
        {"1033", "plain", "plain"},
        {"1033", "", ""},
        {"1033", "Say stringRef:Hello-stringRef:World", "Say stringRef:Hello-stringRef:World"},
        {"1033", "Say stringRef:Hello stringRef:World.", "Say Hello World."},
        {"1033", "stringRef:HellostringRef:World", "stringRef:HellostringRef:World"},
        {"1033", "stringRef:Both", "Hello, World!"},
        {"1031", "stringRef:Both", "Hallo, World!"},
        {"1036", "stringRef:Hello", "Hello"},
        {"1036", "stringRef:OnlyGerman", "Nur hier"},
        {"", "stringRef:Hello", "Hello"},
        {"1033", "[stringRef:Empty]", "[]"},
        {"1033", "stringRef:Unknown and stringRef:World", "stringRef:Unknown and World"},
        {"1033", "stringRef:hello", "stringRef:hello"},
        {"1033", "StringRef:Hello", "StringRef:Hello"},
        {"1033", "stringRef:A", "a b stringRef:A"},
        {"1033", "stringRef:Self", "stringRef:Self"}};
    for (const auto& [language, text, result] : cases) {
        EXPECT_EQ(S_OK, table->put_Language(Bstr(ToUtf16(language)).Get()));
        EXPECT_EQ(result, Resolve(table.Get(), text)) << language << " " << text;
    }
}

TEST(StringTable, KeepsItsStringsWhenAFileIsNone)
{
    const TemporaryFolder folder;
    folder.Write("strings.xml", kFile);
    folder.Write("broken.xml", "<Strings><Language id='1033'><String id='Hello'>No</Strings>");
    folder.Write("other.xml", "<Root/>");
    const auto table = CreateEngine<IZXStringTable>(CLSID_ZXStringTable);
    Bstr language;
    EXPECT_EQ(S_OK, table->get_Language(language.Put()));
    EXPECT_FALSE(language);
    ASSERT_EQ(S_OK, table->Load(folder.File("strings.xml").Get()));
    for (const char* name : {"broken.xml", "other.xml", "missing.xml", "."})
        EXPECT_EQ(ZXE_E_NOT_STRINGS, table->Load(folder.File(name).Get())) << name;
    EXPECT_EQ(E_INVALIDARG, table->Load(nullptr));
    EXPECT_EQ("Hello", Resolve(table.Get(), "stringRef:Hello"));
    EXPECT_EQ(E_POINTER, table->Resolve(Bstr(u"x").Get(), nullptr));
    EXPECT_EQ(E_POINTER, table->get_Language(nullptr));
}

TEST(StringTable, BoundsHostileStrings)
{
    std::string file = "<Strings><Language id='1033'>";
    // Each doubles the one before: 2 to the 40th of them in full, of a megabyte, and of nothing.
    for (const std::string prefix : {"Long", "Void"}) {
        for (int i = 1; i <= 40; ++i) {
            const std::string inner = " stringRef:" + prefix + std::to_string(i - 1);
            file += "<String id='" + prefix + std::to_string(i) + "'>" + inner + inner + "</String>";
        }
    }
    file += "<String id='Long0'>" + std::string(1'000'000, 'x') + "</String><String id='Void0'/>";
    for (int i = 0; i < 1000; ++i)
        file += "<String id='Deep" + std::to_string(i) + "'>stringRef:Deep" + std::to_string(i + 1) + "</String>";
    file += "</Language></Strings>";
    const TemporaryFolder folder;
    folder.Write("strings.xml", file);
    const auto table = CreateEngine<IZXStringTable>(CLSID_ZXStringTable);
    ASSERT_EQ(S_OK, table->Load(folder.File("strings.xml").Get()));
    const std::string grown = Resolve(table.Get(), "stringRef:Long40");
    EXPECT_GT(grown.size(), 1'000'000U);
    EXPECT_LE(grown.size(), 1'048'576U);
    EXPECT_LE(Resolve(table.Get(), "stringRef:Void40").size(), 1'048'576U);
    EXPECT_TRUE(Resolve(table.Get(), "stringRef:Deep0").starts_with("stringRef:Deep"));
    const std::string huge(3'000'000, 'y');
    EXPECT_EQ(huge + "stringRef:Long0", Resolve(table.Get(), huge + "stringRef:Long0"));
}

} // namespace
} // namespace kv::test
