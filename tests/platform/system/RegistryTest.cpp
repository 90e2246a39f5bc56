#include "platform/system/Registry.h"

#include "support/Files.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using kv::Hive;
using kv::REGISTRY_E_CORRUPT;
using kv::REGISTRY_E_NOT_FOUND;
using kv::RegistryValue;
using kv::test::FileSizeLimit;
using kv::test::TemporaryFolder;
using testing::ElementsAre;
namespace Registry = kv::Registry;

using Names = std::vector<std::u16string>;

constexpr std::string_view kSignature = "KVProjectData Registry 1\n";

RegistryValue Text(std::u16string_view text)
{
    return std::u16string(text);
}

HRESULT SetUser(std::u16string_view key, std::u16string_view text)
{
    return Registry::Set(Hive::CurrentUser, key, {}, Text(text));
}

std::u16string UserText(std::u16string_view key)
{
    return Registry::QueryText(Hive::CurrentUser, key, {});
}

Names Listed(HRESULT (*list)(Hive, std::u16string_view, Names&), Hive hive, std::u16string_view key)
{
    Names names{u"left over"};
    EXPECT_EQ(list(hive, key, names), S_OK);
    return names;
}

Names SubKeys(Hive hive, std::u16string_view key)
{
    return Listed(&Registry::SubKeys, hive, key);
}

Names Values(Hive hive, std::u16string_view key)
{
    return Listed(&Registry::Values, hive, key);
}

/// What holds for a registry in memory holds for one in a file.
class RegistryTest : public testing::TestWithParam<bool> {
protected:
    RegistryTest()
    {
        Registry::UseMemory();
        Reopen();
    }
    ~RegistryTest() override
    {
        Registry::SetPerUser(false);
        Registry::UseMemory();
    }

    /// Makes sure that a file is read, and not what is remembered of it.
    void Reopen()
    {
        if (GetParam()) Registry::UseFile(folder.PathOf("below/registry.txt"));
    }

    TemporaryFolder folder;
};

INSTANTIATE_TEST_SUITE_P(, RegistryTest, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "File" : "Memory"; });

TEST_P(RegistryTest, KeepsValuesOfEveryKind)
{
    const std::pair<std::u16string_view, RegistryValue> values[] = {
        {u"", Text(u"default")},
        {u"empty", Text(u"")},
        {u"text", Text(u"\"quotes\" back\\slash \\n\r\n\ttab \u00e4\U0001f3b5 = [x]")},
        {u"zero", Text(std::u16string_view(u"a\0b\0", 4))},
        {u"zero and digit", Text(std::u16string_view(u"\0001", 2))},
        {u"odd \"name\\\r\n=]", Text(u"x")},
        {u"@", Text(u"at")},
        {u"least", ULONG{0}},
        {u"greatest", ULONG{0xffffffff}},
        {u"no bytes", std::vector<std::byte>{}},
        {u"bytes", std::vector{std::byte{0}, std::byte{0x7f}, std::byte{0xff}}}};
    for (const auto& [name, value] : values)
        ASSERT_EQ(Registry::Set(Hive::LocalMachine, u"Software\\[a] \u00e4]", name, value), S_OK);
    Reopen();
    for (const auto& [name, value] : values) {
        RegistryValue found;
        EXPECT_EQ(Registry::Query(Hive::LocalMachine, u"Software\\[a] \u00e4]", name, found), S_OK);
        EXPECT_EQ(found, value) << "value " << std::filesystem::path(name);
    }
    EXPECT_EQ(Registry::QueryText(Hive::LocalMachine, u"Software\\[a] \u00e4]", u"least"), u"") << "not a text";
}

TEST_P(RegistryTest, NamesCompareWithoutCaseAndKeepTheirSpelling)
{
    ASSERT_EQ(Registry::Set(Hive::CurrentUser, u"Key\\Sub", u"Name", Text(u"first")), S_OK);
    ASSERT_EQ(Registry::Set(Hive::CurrentUser, u"KEY\\sub", u"nAME", Text(u"second")), S_OK);
    ASSERT_EQ(Registry::CreateKey(Hive::CurrentUser, u"key\\SUB\\\u00c4"), S_OK);
    ASSERT_EQ(Registry::CreateKey(Hive::CurrentUser, u"key\\SUB\\\u00e4"), S_OK);
    Reopen();
    EXPECT_EQ(Registry::QueryText(Hive::CurrentUser, u"kEy\\sUB", u"NAME"), u"second");
    EXPECT_THAT(SubKeys(Hive::CurrentUser, u"KEY"), ElementsAre(u"Sub"));
    EXPECT_THAT(Values(Hive::CurrentUser, u"KEY\\SUB"), ElementsAre(u"Name"));
    EXPECT_THAT(SubKeys(Hive::CurrentUser, u"KEY\\SUB"), ElementsAre(u"\u00c4", u"\u00e4")) << "ASCII alone";
    EXPECT_EQ(Registry::DeleteTree(Hive::CurrentUser, u"KEY"), S_OK);
    EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, u"Key"));
    // They come in order.
    for (const std::u16string_view name : {u"b", u"C", u"a", u"D", u"aa", u"10", u"9"}) {
        ASSERT_EQ(Registry::CreateKey(Hive::Users, u"Key\\" + std::u16string(name)), S_OK);
        ASSERT_EQ(Registry::Set(Hive::Users, u"Key", name, ULONG{1}), S_OK);
    }
    Reopen();
    for (const auto list : {&SubKeys, &Values})
        EXPECT_THAT(list(Hive::Users, u"Key"), ElementsAre(u"10", u"9", u"a", u"aa", u"b", u"C", u"D"));
}

TEST_P(RegistryTest, WhatIsMissingIsNotFound)
{
    ASSERT_EQ(Registry::Set(Hive::CurrentUser, u"Key\\Sub", u"Name", Text(u"x")), S_OK);
    RegistryValue value;
    EXPECT_EQ(Registry::Query(Hive::CurrentUser, u"Key", u"Name", value), REGISTRY_E_NOT_FOUND);
    EXPECT_EQ(Registry::Query(Hive::CurrentUser, u"Key\\Sub", u"", value), REGISTRY_E_NOT_FOUND);
    EXPECT_EQ(Registry::Query(Hive::LocalMachine, u"Key\\Sub", u"Name", value), REGISTRY_E_NOT_FOUND);
    EXPECT_EQ(Registry::QueryText(Hive::CurrentUser, u"Key\\Other", u"Name"), u"");
    EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, u"Key\\Su"));
    Names names{u"left over"};
    EXPECT_EQ(Registry::SubKeys(Hive::CurrentUser, u"Other", names), REGISTRY_E_NOT_FOUND);
    EXPECT_THAT(names, ElementsAre());
    EXPECT_EQ(Registry::DeleteTree(Hive::CurrentUser, u"Sub"), REGISTRY_E_NOT_FOUND);
    EXPECT_EQ(Registry::QueryText(Hive::CurrentUser, u"Key\\Sub", u"Name"), u"x");
}

TEST_P(RegistryTest, AValueGoesWithTheKeysThatThenHoldNothing)
{
    for (const std::u16string_view key : {u"A", u"A\\B\\C", u"A\\B\\C\\D", u"E\\F"})
        ASSERT_EQ(SetUser(std::u16string(key), u"x"), S_OK);
    ASSERT_EQ(Registry::Set(Hive::CurrentUser, u"A\\B\\C\\D", u"other", ULONG{1}), S_OK);
    const auto remove = [](std::u16string_view key) { return Registry::DeleteValue(Hive::CurrentUser, key, u""); };
    EXPECT_EQ(remove(u"A\\B\\C\\D"), S_OK) << "a value is left";
    EXPECT_EQ(remove(u"A\\B\\C"), S_OK) << "a key is left";
    EXPECT_EQ(remove(u"A\\B\\C"), REGISTRY_E_NOT_FOUND);
    EXPECT_EQ(remove(u"E\\F"), S_OK);
    Reopen();
    EXPECT_THAT(Values(Hive::CurrentUser, u"A\\B\\C\\D"), ElementsAre(u"other"));
    EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, u"E"));
    EXPECT_EQ(Registry::DeleteValue(Hive::CurrentUser, u"A\\B\\C\\D", u"other"), S_OK);
    EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, u"A\\B"));
    EXPECT_EQ(UserText(u"A"), u"x");
}

TEST_P(RegistryTest, UnusableKeysAreRefused)
{
    std::u16string deep;
    for (int i = 0; i < 100; ++i)
        deep += u"a\\";
    for (const std::u16string& key : {std::u16string(u"a\\\\b"), std::u16string(u"\\a"), std::u16string(u"a\nb"),
                                      std::u16string(256, u'a'), deep + u"a"}) {
        EXPECT_EQ(SetUser(key, u"x"), E_INVALIDARG);
        EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, key));
    }
    EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, u"a")) << "a refused key left those above it";
    EXPECT_EQ(SetUser(std::u16string(255, u'a'), u"x"), S_OK);
}

TEST_P(RegistryTest, ClassesOfTheUserLieOverThoseOfTheMachine)
{
    ASSERT_EQ(Registry::Set(Hive::ClassesRoot, u"Both", u"", Text(u"machine")), S_OK);
    ASSERT_EQ(Registry::Set(Hive::ClassesRoot, u"Both", u"Only machine", Text(u"m")), S_OK);
    ASSERT_EQ(Registry::CreateKey(Hive::ClassesRoot, u"Both\\Machine"), S_OK);
    Registry::SetPerUser(true);
    ASSERT_EQ(Registry::Set(Hive::ClassesRoot, u"both", u"", Text(u"user")), S_OK);
    ASSERT_EQ(Registry::CreateKey(Hive::ClassesRoot, u"Both\\User"), S_OK);
    ASSERT_EQ(Registry::CreateKey(Hive::ClassesRoot, u"Both\\MACHINE\\Below"), S_OK);
    Reopen();

    EXPECT_EQ(Registry::QueryText(Hive::ClassesRoot, u"Both", u""), u"user");
    EXPECT_EQ(Registry::QueryText(Hive::ClassesRoot, u"Both", u"Only machine"), u"m");
    EXPECT_EQ(Registry::QueryText(Hive::LocalMachine, u"Software\\Classes\\Both", u""), u"machine");
    EXPECT_EQ(Registry::QueryText(Hive::CurrentUser, u"Software\\Classes\\Both", u""), u"user");
    EXPECT_THAT(SubKeys(Hive::ClassesRoot, u"Both"), ElementsAre(u"MACHINE", u"User"));
    EXPECT_THAT(Values(Hive::ClassesRoot, u"Both"), ElementsAre(u"", u"Only machine"));

    EXPECT_EQ(Registry::DeleteTree(Hive::ClassesRoot, u"Both"), S_OK);
    EXPECT_EQ(Registry::QueryText(Hive::ClassesRoot, u"Both", u""), u"machine");
    Registry::SetPerUser(false);
    EXPECT_EQ(Registry::DeleteTree(Hive::ClassesRoot, u"Both"), S_OK);
    EXPECT_FALSE(Registry::KeyExists(Hive::ClassesRoot, u"Both"));
}

TEST_P(RegistryTest, ABatchIsWrittenAsAWholeOrNotAtAll)
{
    ASSERT_EQ(SetUser(u"Key", u"old"), S_OK);
    {
        const Registry::Batch dropped;
        ASSERT_EQ(SetUser(u"Key", u"new"), S_OK);
        EXPECT_EQ(UserText(u"Key"), u"new") << "a batch sees what it is about to write";
        std::u16string elsewhere;
        std::thread([&] { elsewhere = UserText(u"Key"); }).join();
        EXPECT_EQ(elsewhere, u"old") << "another thread saw it too early";
    }
    EXPECT_EQ(UserText(u"Key"), u"old");
    {
        Registry::Batch failing;
        SetUser(u"Key", u"new");
        Registry::DeleteTree(Hive::CurrentUser, u"Missing");
        SetUser(u"a\\\\b", u"never reached");
        EXPECT_EQ(failing.Commit(), REGISTRY_E_NOT_FOUND);
    }
    EXPECT_EQ(UserText(u"Key"), u"old");
    {
        Registry::Batch outer;
        {
            Registry::Batch inner;
            SetUser(u"Key", u"new");
            EXPECT_EQ(inner.Commit(), S_OK);
        }
        SetUser(u"Other", u"more");
        std::u16string elsewhere;
        std::thread([&] { elsewhere = UserText(u"Key"); }).join();
        EXPECT_EQ(elsewhere, u"old") << "the inner batch wrote for the outer one";
        EXPECT_EQ(outer.Commit(), S_OK);
        EXPECT_EQ(outer.Commit(), S_OK) << "nothing is left to write";
    }
    Reopen();
    EXPECT_EQ(UserText(u"Key"), u"new");
    EXPECT_EQ(UserText(u"Other"), u"more");
}

class RegistryFileTest : public testing::Test {
protected:
    RegistryFileTest() { Registry::UseFile(folder.PathOf("registry.txt")); }
    ~RegistryFileTest() override { Registry::UseMemory(); }

    TemporaryFolder folder;
};

TEST_F(RegistryFileTest, ProcessesLoseNothingOfEachOther)
{
    constexpr int kProcesses = 3;
    constexpr int kKeys = 40;
    std::vector<pid_t> children;
    for (int child = 0; child < kProcesses; ++child) {
        const pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            bool written = true;
            for (int i = 0; i < kKeys; ++i) {
                const std::string key = "K\\" + std::to_string(child) + "-" + std::to_string(i);
                written = written && SetUser(std::u16string(key.begin(), key.end()), u"x") == S_OK;
            }
            _exit(written ? 0 : 1);
        }
        children.push_back(pid);
    }
    for (const pid_t pid : children) {
        int status = -1;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0) << "a child could not write";
    }
    EXPECT_EQ(SubKeys(Hive::CurrentUser, u"K").size(), std::size_t{kProcesses * kKeys});
}

TEST_F(RegistryFileTest, WritingKeepsWhatCameWithinTheSameTickOfTheClock)
{
    ASSERT_EQ(SetUser(u"Mine", u"1"), S_OK);
    const auto time = std::filesystem::last_write_time(folder.PathOf("registry.txt"));
    folder.Write("other.txt", std::string(kSignature) + "[HKEY_CURRENT_USER\\Mine]\n@=\"1\"\n"
                                                        "[HKEY_CURRENT_USER\\Theirs]\n@=\"2\"\n");
    std::filesystem::rename(folder.PathOf("other.txt"), folder.PathOf("registry.txt"));
    std::filesystem::last_write_time(folder.PathOf("registry.txt"), time);
    ASSERT_EQ(SetUser(u"Mine", u"3"), S_OK);
    EXPECT_EQ(UserText(u"Mine"), u"3");
    EXPECT_EQ(UserText(u"Theirs"), u"2");
}

TEST_F(RegistryFileTest, AMalformedFileIsNeverOverwritten)
{
    std::string deep = "[HKEY_CURRENT_USER";
    for (int i = 0; i < 100; ++i)
        deep += "\\a";
    std::vector<std::string> contents = {"", "\n", "KVProjectData Registry 2\n[HKEY_CURRENT_USER\\Key]\n",
                                         std::string(kSignature) + "@=\"no key\"\n"};
    std::istringstream lines(
        R"(text|[|[]|[HKEY_CURRENT_USER\Half|@|@=|@=text|@="open|@="open\|@="text" more|"name="text"|)"
        "@=dword:|@=dword:x|@=dword:-1|@=dword:123456789|@=hex:123|@=hex:0x|"
        "[HKEY_CURRENT_USER\\\\Empty]|[" +
        std::string(300, 'a') + "]|" + deep + "]");
    for (std::string line; std::getline(lines, line, '|');)
        contents.push_back(std::string(kSignature) + "[HKEY_CURRENT_USER\\Key]\n" + line + "\n");
    for (const std::string& content : contents) {
        SCOPED_TRACE(content);
        folder.Write("registry.txt", content);
        Registry::UseFile(folder.PathOf("registry.txt"));
        RegistryValue value;
        EXPECT_EQ(Registry::Query(Hive::CurrentUser, u"Key", u"", value), REGISTRY_E_CORRUPT);
        EXPECT_EQ(SetUser(u"Key", u"new"), REGISTRY_E_CORRUPT);
        EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, u"Key"));
        EXPECT_EQ(folder.Read("registry.txt"), content);
    }
}

TEST_F(RegistryFileTest, AFailedWriteChangesNothingAndAFileThatIsGoneIsEmpty)
{
    ASSERT_EQ(SetUser(u"Key", u"old"), S_OK);
    const std::string before = folder.Read("registry.txt");
    {
        const FileSizeLimit limit(before.size() + 10);
        EXPECT_EQ(SetUser(u"Key", std::u16string(1000, u'x')), MakeResult(0x800700DF));
        EXPECT_EQ(UserText(u"Key"), u"old");
    }
    EXPECT_EQ(folder.Read("registry.txt"), before);
    EXPECT_EQ(SetUser(u"Key", u"new"), S_OK);
    EXPECT_EQ(UserText(u"Key"), u"new");
    std::filesystem::remove(folder.PathOf("registry.txt"));
    EXPECT_FALSE(Registry::KeyExists(Hive::CurrentUser, u"Key"));
    EXPECT_EQ(SetUser(u"Other", u"new"), S_OK);
    EXPECT_THAT(SubKeys(Hive::CurrentUser, u""), ElementsAre(u"Other"));
}

/// Sets variables of the environment for a scope; null takes one out.
class EnvironmentScope {
public:
    void Set(const char* name, const char* value)
    {
        const char* before = std::getenv(name);
        m_before.emplace(name, before ? std::optional<std::string>(before) : std::nullopt);
        Put(name, value);
    }
    ~EnvironmentScope()
    {
        for (const auto& [name, value] : m_before)
            Put(name.c_str(), value ? value->c_str() : nullptr);
    }

private:
    static void Put(const char* name, const char* value) { value ? setenv(name, value, 1) : unsetenv(name); }

    std::map<std::string, std::optional<std::string>> m_before;
};

TEST_F(RegistryFileTest, TheEnvironmentSaysWhereItIs)
{
    const std::string home = folder.PathOf("home");
    const std::string configuration = folder.PathOf("configuration");
    const std::string named = folder.PathOf("named.txt");
    const std::string working = folder.PathOf("working");
    std::filesystem::create_directory(working);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(working);
    // The variables, and what is written in the folder; none where there is no home.
    const std::tuple<const char*, const char*, const char*, std::string_view> cases[]{
        {named.c_str(), configuration.c_str(), home.c_str(), "named.txt"},
        {"", configuration.c_str(), home.c_str(), "configuration/KVProjectData/registry.txt"},
        {nullptr, configuration.c_str(), nullptr, "configuration/KVProjectData/registry.txt"},
        {"", "", home.c_str(), "home/.config/KVProjectData/registry.txt"},
        {nullptr, nullptr, home.c_str(), "home/.config/KVProjectData/registry.txt"},
        {"", "", "", "none"},
        {nullptr, nullptr, nullptr, "none"}};
    for (const auto& [variable, configured, at, written] : cases) {
        EnvironmentScope environment;
        environment.Set("KV_REGISTRY", variable);
        environment.Set("XDG_CONFIG_HOME", configured);
        environment.Set("HOME", at);
        Registry::UseFile({}); // asks the environment again
        SCOPED_TRACE(written);
        const bool has = written != "none";
        EXPECT_EQ(SetUser(u"Key", u"text"), has ? S_OK : kv::REGISTRY_E_NO_HOME);
        EXPECT_EQ(UserText(u"Key"), has ? u"text" : u"");
        EXPECT_EQ(std::filesystem::remove(folder.Path() / written), has);
    }
    EXPECT_TRUE(std::filesystem::is_empty(working)) << "nothing may land in the working folder";
    std::filesystem::current_path(before);
}

} // namespace
