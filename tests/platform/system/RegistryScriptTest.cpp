#include "platform/system/RegistryScript.h"

#include "platform/automation/Bstr.h"
#include "platform/system/Registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using kv::Hive;
using kv::RegisterScript;
using kv::RegistryValue;
using kv::UnregisterScript;
using testing::ElementsAre;
namespace Registry = kv::Registry;

const kv::ScriptReplacements kReplacements = {
    {u"ID", u"{1}"}, {u"PATH", u"C:\\it's } %ID% here"}, {u"NUMBER", u"0x10"}, {u"EMPTY", u""}};

constexpr std::u16string_view kScript = u"HKCR\n"
                                        u"{\n"
                                        u"\tNoRemove AppID\n"
                                        u"\t{\n"
                                        u"\t\t'%ID%' = s 'Sample'\n"
                                        u"\t\t'Sample.dll' { val AppID = s '%ID%' }\n"
                                        u"\t}\r\n"
                                        u"}\n"
                                        u"HKEY_CURRENT_USER { NoRemove Software { val Made = d 1 } }";

class RegistryScriptTest : public testing::Test {
protected:
    RegistryScriptTest() { Registry::UseMemory(); }
    ~RegistryScriptTest() override { Registry::SetPerUser(false); }

    static HRESULT Register(std::u16string_view script) { return RegisterScript(script, kReplacements); }
    static HRESULT Unregister(std::u16string_view script) { return UnregisterScript(script, kReplacements); }

    static void Put(std::u16string_view key, std::u16string_view name = {}, Hive hive = Hive::ClassesRoot)
    {
        ASSERT_EQ(Registry::Set(hive, key, name, std::u16string(u"x")), S_OK);
    }

    static std::u16string Text(std::u16string_view key, std::u16string_view name = {})
    {
        return Registry::QueryText(Hive::ClassesRoot, key, name);
    }

    static ULONG Number(std::u16string_view key, std::u16string_view name)
    {
        RegistryValue value;
        EXPECT_EQ(Registry::Query(Hive::ClassesRoot, key, name, value), S_OK);
        return std::get<ULONG>(value);
    }

    static bool Exists(std::u16string_view key, Hive hive = Hive::ClassesRoot)
    {
        return Registry::KeyExists(hive, key);
    }
};

TEST_F(RegistryScriptTest, WritesAndTakesOut)
{
    Put(u"AppID\\Other.dll");
    ASSERT_EQ(Register(kScript), S_OK);
    ASSERT_EQ(Register(kScript), S_OK) << "again";
    EXPECT_EQ(Text(u"AppID\\{1}"), u"Sample");
    EXPECT_EQ(Text(u"AppID\\Sample.dll", u"AppID"), u"{1}");

    ASSERT_EQ(Unregister(kScript), S_OK);
    ASSERT_EQ(Unregister(kScript), S_OK) << "again";
    std::vector<std::u16string> names;
    EXPECT_EQ(Registry::SubKeys(Hive::ClassesRoot, u"AppID", names), S_OK);
    EXPECT_THAT(names, ElementsAre(u"Other.dll"));
    EXPECT_EQ(Registry::Values(Hive::CurrentUser, u"Software", names), S_OK);
    EXPECT_THAT(names, ElementsAre()) << "a listed value of a key that stays";
}

TEST_F(RegistryScriptTest, ReadsNamesAndValues)
{
    ASSERT_EQ(Register(u"HKCR { Key = s 'it''s %% {' {\n"
                       u"  val 'two words' = s ''\n"
                       u"  val decimal = d 4294967295 val hexadecimal = d 0xffFF0001 val replaced = d '%NUMBER%'\n"
                       u"  'val' = s 'quoted' 'NoRemove' { } '}' Two\\Levels\n"
                       u"  %ID%-%ID% = s '%PATH%%EMPTY%'\n"
                       u"} }"),
              S_OK);
    EXPECT_EQ(Text(u"Key"), u"it's % {");
    RegistryValue empty = ULONG{1};
    EXPECT_EQ(Registry::Query(Hive::ClassesRoot, u"Key", u"two words", empty), S_OK);
    EXPECT_EQ(empty, RegistryValue(std::u16string()));
    EXPECT_EQ(Number(u"Key", u"decimal"), 0xffffffffu);
    EXPECT_EQ(Number(u"Key", u"hexadecimal"), 0xffff0001u);
    EXPECT_EQ(Number(u"Key", u"replaced"), 0x10u);
    EXPECT_EQ(Text(u"Key\\{1}-{1}"), u"C:\\it's } %ID% here") << "a replacement is taken as it is";
    std::vector<std::u16string> names;
    EXPECT_EQ(Registry::SubKeys(Hive::ClassesRoot, u"Key", names), S_OK);
    EXPECT_THAT(names, ElementsAre(u"NoRemove", u"Two", u"val", u"{1}-{1}", u"}"));
    EXPECT_EQ(Text(u"Key\\val"), u"quoted");
}

TEST_F(RegistryScriptTest, FindsEveryHive)
{
    const std::tuple<Hive, std::u16string, std::u16string> hives[] = {
        {Hive::ClassesRoot, u"HKCR", u"HKEY_CLASSES_ROOT"},
        {Hive::CurrentUser, u"HKCU", u"HKEY_CURRENT_USER"},
        {Hive::LocalMachine, u"HKLM", u"HKEY_LOCAL_MACHINE"},
        {Hive::Users, u"HKU", u"HKEY_USERS"},
        {Hive::CurrentConfig, u"HKCC", u"HKEY_CURRENT_CONFIG"}};
    for (const auto& [hive, name, longName] : hives) {
        EXPECT_EQ(Register(name + u" { Short } " + longName + u" { Long }"), S_OK);
        EXPECT_TRUE(Exists(u"Short", hive));
        EXPECT_TRUE(Exists(u"Long", hive));
        EXPECT_EQ(Unregister(longName + u" { Short Long }"), S_OK);
        EXPECT_FALSE(Exists(u"Short", hive));
    }
}

TEST_F(RegistryScriptTest, MarksTellWhatBecomesOfAKey)
{
    constexpr std::u16string_view script = u"HKCR { Plain { val New = s 'n' } ForceRemove Force = s 'n' { Below }\n"
                                           u"       Delete Gone { val New = s 'n' } NoRemove Stays { Leaf } }";
    for (const std::u16string_view key : {u"Plain\\Old", u"Force\\Old", u"Gone\\Old", u"Stays\\Old"})
        Put(key);
    Put(u"Force", u"Old");
    ASSERT_EQ(Register(script), S_OK);
    EXPECT_TRUE(Exists(u"Plain\\Old"));
    EXPECT_EQ(Text(u"Plain", u"New"), u"n");
    EXPECT_FALSE(Exists(u"Force\\Old"));
    EXPECT_EQ(Text(u"Force", u"Old"), u"");
    EXPECT_TRUE(Exists(u"Force\\Below"));
    EXPECT_EQ(Text(u"Force"), u"n");
    EXPECT_FALSE(Exists(u"Gone"));
    EXPECT_TRUE(Exists(u"Stays\\Old"));
    EXPECT_TRUE(Exists(u"Stays\\Leaf"));

    ASSERT_EQ(Unregister(script), S_OK);
    EXPECT_FALSE(Exists(u"Plain"));
    EXPECT_FALSE(Exists(u"Force"));
    EXPECT_TRUE(Exists(u"Stays\\Old"));
    EXPECT_FALSE(Exists(u"Stays\\Leaf"));
}

TEST_F(RegistryScriptTest, MalformedScriptsChangeNothing)
{
    std::u16string deep = u"HKCR { ";
    for (int i = 0; i < 100; ++i)
        deep += u"a { ";
    const std::u16string tail = u" }";
    const std::u16string scripts[] = {
        u"HKCR",
        u"HKCR {",
        u"HKXX { New }",
        u"'HKCR' { New }",
        u"{ New }",
        u"HKCR { New } }",
        u"HKCR { New } %EMPTY% }",
        u"HKCR { New { }",
        u"HKCR { val New = s 'x' }",
        u"HKCR { New { val } }",
        u"HKCR { New { val Name s 'x' } }",
        u"HKCR { New { val Name = } }",
        u"HKCR { New { val Name = x 'x' } }",
        u"HKCR { New = }",
        u"HKCR { = s 'x' }",
        u"HKCR { New = s 'open }",
        u"HKCR { 'New }",
        u"HKCR { '' }",
        u"HKCR { NoRemove }",
        u"HKCR { New = d }",
        u"HKCR { New = d -1 }",
        u"HKCR { New = d 0x }",
        u"HKCR { New = d 12x }",
        u"HKCR { New = d 4294967296 }",
        u"HKCR { New = d 99999999999999999999999999 }",
        u"HKCR { New = s '%UNKNOWN%' }",
        u"HKCR { New = s '50% }",
        u"HKCR { %id% }",
        u"HKCR { New 'a\\\\b' }",
        u"HKCR { New " + std::u16string(300, u'a') + tail,
        deep,
    };
    for (const std::u16string& script : scripts) {
        SCOPED_TRACE(kv::ToUtf8(script));
        Registry::UseMemory();
        Put(u"Old");
        // What stands in front of the mistake is as void as what it spoils.
        const std::u16string prefixed = u"HKCR { First ForceRemove Old } " + script;
        EXPECT_EQ(Register(prefixed), E_INVALIDARG);
        EXPECT_FALSE(Exists(u"First"));
        EXPECT_FALSE(Exists(u"New"));
        EXPECT_EQ(Text(u"Old"), u"x");
    }
    for (const std::u16string_view script : {u"HKCR { Old } HKCR { Old", u"HKCR { Old } HKCR { '%UNKNOWN%' }"}) {
        EXPECT_EQ(Unregister(script), E_INVALIDARG);
        EXPECT_TRUE(Exists(u"Old"));
    }
    EXPECT_EQ(Register(u" \r\n\t"), S_OK) << "an empty script";
}

TEST_F(RegistryScriptTest, KeysOfTheUserAloneDoNotHinderTheMachines)
{
    constexpr std::u16string_view script = u"HKCR { UserOnly NoRemove Shared { val Name = s 'n' } ForceRemove Last }";
    Registry::SetPerUser(true);
    Put(u"UserOnly");
    Put(u"Shared", u"Name");
    Put(u"Last");
    Registry::SetPerUser(false);
    EXPECT_EQ(Register(u"HKCR { ForceRemove UserOnly Delete Last }"), S_OK);
    EXPECT_TRUE(Exists(u"Software\\Classes\\UserOnly", Hive::LocalMachine));
    EXPECT_EQ(Unregister(u"HKCR { UserOnly }"), S_OK);
    EXPECT_FALSE(Exists(u"Software\\Classes\\UserOnly", Hive::LocalMachine));

    Put(u"Last");
    EXPECT_EQ(Unregister(script), S_OK);
    EXPECT_FALSE(Exists(u"Software\\Classes\\Last", Hive::LocalMachine));
    for (const std::u16string_view key : {u"UserOnly", u"Shared", u"Last"})
        EXPECT_TRUE(Exists(u"Software\\Classes\\" + std::u16string(key), Hive::CurrentUser));
    EXPECT_EQ(Text(u"Shared", u"Name"), u"x");
}

TEST_F(RegistryScriptTest, PerUserRegistrationLeavesTheMachineAlone)
{
    Put(u"AppID\\Sample.dll");
    Registry::SetPerUser(true);
    ASSERT_EQ(Register(kScript), S_OK);
    EXPECT_EQ(Text(u"AppID\\{1}"), u"Sample");
    EXPECT_FALSE(Exists(u"Software\\Classes\\AppID\\{1}", Hive::LocalMachine));
    EXPECT_EQ(Unregister(kScript), S_OK);
    EXPECT_EQ(Text(u"AppID\\{1}"), u"");
    EXPECT_TRUE(Exists(u"AppID\\Sample.dll"));
}

} // namespace
