// What a host is told, and what it tells about itself: messages, errors, paths and its language.

#include "platform/automation/Bstr.h"
#include "platform/system/ErrorReporter.h"
#include "platform/system/FileCopy.h"
#include "platform/system/Locale.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Paths.h"
#include "support/Files.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>

namespace {

using kv::test::TemporaryFolder;
using testing::ElementsAre;

TEST(MessageBoxTest, TheHostShowsIt)
{
    std::u16string shown;
    kv::SetMessageBoxHook([&](std::u16string_view text, std::u16string_view caption) {
        shown.append(caption).append(u"|").append(text);
        // A host may show its own messages once and for all.
        kv::SetMessageBoxHook(nullptr);
    });
    kv::ShowMessageBox(u"Text \u00e4", u"Caption");
    EXPECT_EQ(shown, u"Caption|Text \u00e4");

    testing::internal::CaptureStderr();
    kv::ShowMessageBox(u"Text \u00e4", u"Caption");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Caption: Text \u00e4\n");
    EXPECT_EQ(shown, u"Caption|Text \u00e4") << "the hook was not taken back";
}

class ErrorReporterTest : public testing::Test {
protected:
    ErrorReporterTest()
    {
        kv::ZXUClearErrorStack();
        kv::SetErrorReporter([this](std::string_view line) { lines.emplace_back(line); });
    }
    ~ErrorReporterTest() override { kv::SetErrorReporter(nullptr); }

    std::vector<std::string> lines;
};

TEST_F(ErrorReporterTest, HandsOverLinesOfThreeForms)
{
    const kv::ErrorPlace place{"Source", 12};
    kv::ZXUReportError(kv::ZXUErrStr(place, "Something failed"));
    kv::ZXUReportError(kv::ZXUErrNullStr(place, "pParameter"));
    kv::ZXUReportError(kv::ZXUErrResultStr(place, "hr", E_FAIL));
    kv::ZXUReportError(kv::ZXUErrResultStr(place, "Call(100%s)", S_FALSE));
    EXPECT_THAT(lines,
                ElementsAre("Source(12): *** Error Something failed\n", "Source(12): *** Error NULL = pParameter\n",
                            "Source(12): *** Error 0x80004005 = hr\n",
                            "Source(12): *** Error 0x00000001 = Call(100%s)\n"));
    EXPECT_EQ(kv::ZXUErrorStack(), lines);

    kv::SetErrorReporter(nullptr);
    kv::ZXUReportError("unseen");
    EXPECT_EQ(lines.size(), 4u);
    EXPECT_EQ(kv::ZXUErrorStack().back(), "unseen");
    kv::ZXUClearErrorStack();
    EXPECT_THAT(kv::ZXUErrorStack(), ElementsAre());
}

TEST_F(ErrorReporterTest, KeepsTheNewestLines)
{
    constexpr std::size_t kReported = 5000;
    for (std::size_t i = 0; i < kReported; ++i)
        kv::ZXUReportError(std::to_string(i));
    EXPECT_EQ(lines.size(), kReported) << "the host sees every line";
    const std::vector<std::string> kept = kv::ZXUErrorStack();
    ASSERT_FALSE(kept.empty());
    EXPECT_LT(kept.size(), kReported) << "the stack is bounded";
    EXPECT_EQ(kept, std::vector(lines.end() - static_cast<std::ptrdiff_t>(kept.size()), lines.end()));
}

TEST(PathsTest, TakeApartAndJoin)
{
    const std::tuple<std::u16string_view, std::u16string_view, std::u16string_view, std::u16string_view> cases[]{
        {u"C:\\a\\b.txt", u"C:\\a", u"b.txt", u"C:\\a\\b"},
        {u"/a/b.tar.gz", u"/a", u"b.tar.gz", u"/a/b.tar"},
        {u"/a\\b/c", u"/a\\b", u"c", u"/a\\b/c"},
        {u"a.b/c", u"a.b", u"c", u"a.b/c"},
        {u"a.b\\", u"a.b", u"", u"a.b\\"},
        {u"file", u"", u"file", u"file"},
        {u".hidden", u"", u".hidden", u""},
        {u"/file.", u"/", u"file.", u"/file"},
        {u"", u"", u"", u""}};
    for (const auto& [path, folder, name, withoutExtension] : cases) {
        SCOPED_TRACE(kv::ToUtf8(path));
        EXPECT_EQ(kv::PathRemoveFileSpec(path), folder);
        EXPECT_EQ(kv::PathFindFileName(path), name);
        EXPECT_EQ(kv::PathRemoveExtension(path), withoutExtension);
    }
    const std::tuple<std::u16string_view, std::u16string_view, std::u16string_view> joined[]{
        {u"C:\\a", u"b\\c", u"C:\\a\\b\\c"},
        {u"C:\\a\\", u"\\b", u"C:\\a\\b"},
        {u"/a", u"b", u"/a/b"},
        {u"/a/", u"\\b", u"/a/b"},
        {u"a", u"b", u"a\\b"},
        {u"", u"b", u"b"}};
    for (const auto& [path, more, expected] : joined)
        EXPECT_EQ(kv::PathAppend(path, more), expected);
}

TEST(PathsTest, AreUnderstoodWithEitherSeparator)
{
    const TemporaryFolder folder;
    const std::u16string root = folder.Path().u16string();
    std::u16string backward = root;
    std::ranges::replace(backward, u'/', u'\\');

    EXPECT_EQ(kv::CreateDirectoryTree(backward + u"\\sub\\below"), S_OK);
    EXPECT_EQ(kv::CreateDirectoryTree(root + u"/sub/other/"), S_OK);
    EXPECT_EQ(kv::CreateDirectoryTree(root + u"/sub/below"), MakeResult(0x800700B7));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "sub" / "below"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "sub" / "other"));

    folder.Write("sub/file", "x");
    // A backslash is a name's own where such a name exists.
    folder.Write("odd\\name", "y");
    EXPECT_TRUE(kv::PathFileExists(backward + u"\\sub\\file"));
    EXPECT_TRUE(kv::PathFileExists(root + u"/sub\\file"));
    EXPECT_TRUE(kv::PathFileExists(root + u"/odd\\name"));
    EXPECT_EQ(kv::ToHostPath(root + u"/odd\\name"), folder.PathOf("odd\\name"));
    EXPECT_EQ(kv::ToHostPath(root + u"/sub\\new"), folder.PathOf("sub/new")) << "as a reader will look for it";
    EXPECT_EQ(kv::ToHostPath(root + u"/none\\new"), folder.PathOf("none/new"));
    EXPECT_EQ(kv::ToHostPath(root + u"/odd\\name\\new"), folder.PathOf("odd\\name/new"));
    EXPECT_EQ(kv::ToHostPath(backward + u"\\sub\\new"), folder.PathOf("sub/new"));

    EXPECT_FALSE(kv::PathFileExists(root + u"/sub/none"));
    EXPECT_FALSE(kv::PathFileExists(u""));
    EXPECT_FALSE(kv::PathFileExists(root + u'\0' + u"x"));
    EXPECT_TRUE(kv::PathIsDirectory(backward + u"\\sub"));
    EXPECT_FALSE(kv::PathIsDirectory(root + u"/sub/file"));
}

TEST(PathsTest, CopyingOverwritesNothing)
{
    const TemporaryFolder folder;
    folder.Write("source", "new");
    folder.Write("target", "old");
    std::filesystem::create_symlink("behind", folder.Path() / "dangling");
    mkfifo(folder.PathOf("pipe").c_str(), 0600);
    const auto copy = [&](std::string_view from, std::string_view to, const kv::FileCopy::Progress& progress = {}) {
        kv::FileCopy file;
        HRESULT result = file.Open(folder.PathOf(from));
        if (SUCCEEDED(result)) result = file.CopyTo(folder.PathOf(to), progress);
        if (SUCCEEDED(result)) result = file.WaitForDisk();
        if (SUCCEEDED(result)) result = file.Sync();
        return SUCCEEDED(result) ? file.TakeName() : result;
    };
    for (const char* taken : {"target", "dangling", "pipe"})
        EXPECT_EQ(copy("source", taken), MakeResult(0x800700B7)) << taken;
    EXPECT_EQ(folder.Read("target"), "old");
    EXPECT_EQ(copy("source", std::string(255, 'n')), S_OK);
    EXPECT_EQ(folder.Read(std::string(255, 'n')), "new");
    EXPECT_EQ(copy("source", std::string(256, 'n')), MakeResult(0x800700CE));
    EXPECT_EQ(copy("missing", "other"), MakeResult(0x80070002));
    for (const char* none : {".", "pipe", "/dev/zero"})
        EXPECT_EQ(copy(none, "other"), E_ACCESSDENIED) << none;
    // Its end comes when it is read, whatever its size says.
    EXPECT_EQ(copy("/proc/self/status", "other"), MakeResult(0x80070020));
    const auto isInTheWay = [&](LONGLONG) {
        folder.Write("source", "changed");
        folder.Write("other", "first");
        return S_OK;
    };
    EXPECT_EQ(copy("source", "other", isInTheWay), MakeResult(0x80070020));
    EXPECT_EQ(copy("source", "late",
                   [&](LONGLONG) {
                       folder.Write("late", "first");
                       return S_OK;
                   }),
              MakeResult(0x800700B7));
    EXPECT_EQ(folder.Read("late"), "first");
    EXPECT_EQ(copy("source", "cancelled", [](LONGLONG) { return E_ABORT; }), E_ABORT);
    EXPECT_EQ(folder.Entries(), 7) << "nothing half is left";
}

TEST(PathsTest, KnowTheFoldersOfTheSystem)
{
    const std::u16string temporary = kv::TemporaryFolder();
    EXPECT_TRUE(kv::PathIsDirectory(temporary) && temporary.back() == u'/');
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_TRUE(kv::PathFileExists(kv::PathAppend(kv::HostFolder(), program.filename().u16string())));
}

class LocaleTest : public testing::Test {
protected:
    /// The user's language is read once, on first use.
    static void SetUpTestSuite() { setenv("LC_ALL", "C.UTF-8", 1); }
};

TEST_F(LocaleTest, ReadsNumbers)
{
    const std::tuple<std::u16string_view, std::optional<double>> cases[]{{u"1.5", 1.5},
                                                                         {u" \t-0.25\r\n", -0.25},
                                                                         {u"+3", 3.0},
                                                                         {u".5", .5},
                                                                         {u"5.", 5.0},
                                                                         {u"1e3", 1000.0},
                                                                         {u"29.97002997002997", 29.97002997002997}};
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(kv::ToUtf8(text));
        EXPECT_EQ(kv::ParseDoubleUS(text), expected);
        EXPECT_EQ(kv::ParseDoubleUserLocale(text), expected);
    }
    using namespace std::string_view_literals;
    for (const auto text : {u""sv, u"  "sv, u"+"sv, u"+-1"sv, u"++1"sv, u"1.2.3"sv, u"1 2"sv, u"0x10"sv, u"inf"sv,
                            u"nan"sv, u"1e999"sv, u"12 fps"sv, u"\u0661"sv, u"1\0"sv}) {
        SCOPED_TRACE(kv::ToUtf8(text));
        EXPECT_EQ(kv::ParseDoubleUS(text), std::nullopt);
        EXPECT_EQ(kv::ParseDoubleUserLocale(text), std::nullopt);
    }

    // The user's language has no separators.
    const std::tuple<std::u16string_view, std::optional<double>> grouped[]{
        {u"1,234", 1234.0},       {u" -12,345,678.25 ", -12345678.25}, {u"+1,000e-3", 1.0},
        {u"1,2,3", std::nullopt}, {u"1234,567", std::nullopt},         {u"1,23", std::nullopt},
        {u",123", std::nullopt},  {u"1,,234", std::nullopt},           {u"1,234,", std::nullopt},
        {u"1,-23", std::nullopt}, {u"1.234,567", std::nullopt},        {u"1e1,000", std::nullopt}};
    for (const auto& [text, expected] : grouped) {
        SCOPED_TRACE(kv::ToUtf8(text));
        EXPECT_EQ(kv::ParseDoubleUS(text), expected);
        EXPECT_EQ(kv::ParseDoubleUserLocale(text), std::nullopt);
    }
}

} // namespace
