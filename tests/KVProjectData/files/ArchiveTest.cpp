// Projects with their media files in one place.

#include "KVProjectData/Engine.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/xml/Element.h"
#include "support/Contents.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace kv::test {
namespace {

using testing::ElementsAre;

/// One frame of grey.
std::string Clip()
{
    return "YUV4MPEG2 W64 H36 F25:1 Ip A1:1 C420jpeg\nFRAME\n" + std::string(64 * 36 * 3 / 2, '\x80');
}

/// Keeps what arrives, without the folder of the test. The callback with a number fails.
class Report final : public Object<IKVArchiveEvents> {
public:
    explicit Report(std::filesystem::path folder) : m_folder(folder.string() + "/") {}

    HRESULT OnStart(LONG count, LONGLONG bytes) override
    {
        lines.push_back(std::to_string(count) + " files, " + std::to_string(bytes));
        return Answer();
    }
    HRESULT OnProgress(BSTR, LONGLONG bytes) override
    {
        progress.push_back(bytes);
        return Answer();
    }
    HRESULT OnFile(BSTR source, BSTR copy, ArchivedFile outcome, HRESULT result, LONGLONG) override
    {
        EXPECT_EQ(outcome == ArchivedFile_NotRead, FAILED(result));
        lines.push_back(Short(source) + " " + Short(copy) + " " + std::to_string(outcome));
        return Answer();
    }

    std::vector<std::string> lines;
    std::vector<LONGLONG> progress;
    int failsAt = -1;

private:
    HRESULT Answer() { return failsAt-- == 0 ? E_ABORT : S_OK; }
    std::string Short(BSTR path) const
    {
        const std::string text = ToUtf8(View(path));
        return text.starts_with(m_folder) ? text.substr(m_folder.size()) : text;
    }

    const std::string m_folder;
};

class ArchiveTest : public testing::Test {
protected:
    ArchiveTest()
    {
        for (const char* name : {"clips", "others"})
            std::filesystem::create_directory(folder.Path() / name);
        folder.Write("clips/a.y4m", Clip());
        folder.Write("clips/b.txt", "b");
        folder.Write("others/b.txt", "another b");
    }

    HRESULT Archive(const char* name = "Trip.xml") { return files->Archive(folder.File(name).Get(), project.Get()); }
    void AddFile(std::string_view path)
    {
        EXPECT_EQ(S_OK, AddDataFile(*project.Get())->put_SourcePath(Bstr(ToUtf16(path)).Get())) << path;
    }
    void AddClip(const ComPtr<IKVTitle>& title, const Bstr& source)
    {
        ComPtr<IUnknown> production;
        ASSERT_EQ(S_OK, title->GetProduction(production.Put()));
        ASSERT_EQ(S_OK, Query<IEditData>(production)->AddSourceFile(0, source.Get(), 0.0, 0.0, -1, nullptr));
    }
    /// The sources of the data files, of the project as it is.
    std::vector<std::u16string> Sources(IKVProjectData& of)
    {
        std::vector<std::u16string> sources;
        ComPtr<IKVDataFile> file;
        for (LONG i = 1; SUCCEEDED(of.GetDataFile(i, file.Put())); ++i)
            sources.push_back(Text(*file.Get(), &IKVDataFile::get_SourcePath));
        return sources;
    }
    std::u16string Directory() { return Text(*project.Get(), &IKVProjectData::get_ProjectDirectory); }
    std::u16string In(std::string_view name) { return std::u16string(folder.File(name).View()); }

    TemporaryFolder folder;
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVFileService> files = Create<IKVFileService>(CLSID_KVFileService);
};

TEST_F(ArchiveTest, CanBeCarriedAway)
{
    folder.Write("clips/c.y4m", Clip());
    folder.Write("clips/back.y4m", Clip());
    folder.Write("clips/p\u00edcture.png", "no picture");
    folder.Write("clips/mask.png", "no mask");
    project->put_Label(Str(u"Trip").Get());
    project->put_DisplayName(Str(u"Trip").Get());
    const auto title = AddTitle(*project.Get());
    title->put_Source(folder.File("clips/a.y4m").Get());
    AddClip(title, folder.File("clips/a.y4m"));
    // Only the production shows this one.
    AddClip(title, folder.File("clips/c.y4m"));
    ComPtr<IKVMenu> menu;
    ComPtr<IKVMenuElement> element;
    ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put()));
    ASSERT_EQ(S_OK, menu->SetNative(VARIANT_TRUE));
    menu->put_Background(folder.File("clips/back.y4m").Get());
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuOverlay::IID, element.Put()));
    const auto overlay = Query<IKVMenuOverlay>(element);
    ASSERT_EQ(S_OK, overlay->put_Source(folder.File("clips/p\u00edcture.png").Get()));
    ASSERT_EQ(S_OK, overlay->put_AlphaMask(folder.File("clips/mask.png").Get()));
    AddFile(folder.PathOf("clips/b.txt"));
    AddFile(folder.PathOf("others/b.txt"));
    ComPtr<IKVMenu> shown;
    ASSERT_EQ(S_OK, project->AddMenu(0, shown.Put()));
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(shown)->AddElement(&IKVMenuOverlay::IID, element.Put()));
    ASSERT_EQ(S_OK, Query<IKVMenuOverlay>(element)->put_Source(folder.File("clips/p\u00edcture.png").Get()));

    ASSERT_EQ(S_OK, Archive());
    EXPECT_EQ(In("Trip_Files"), Directory());
    EXPECT_EQ(u"Trip_Files\\a.y4m", Text(*title.Get(), &IKVTitle::get_Source));
    EXPECT_EQ(u"Trip_Files\\back.y4m", Text(*menu.Get(), &IKVMenu::get_Background));
    EXPECT_EQ(u"Trip_Files\\p\u00edcture.png", Text(*overlay.Get(), &IKVMenuOverlay::get_Source));
    EXPECT_EQ(u"Trip_Files\\mask.png", Text(*overlay.Get(), &IKVMenuOverlay::get_AlphaMask));
    EXPECT_THAT(Sources(*project), ElementsAre(u"Trip_Files\\b.txt", In("others/b.txt")));
    EXPECT_EQ("b", folder.Read("Trip_Files/b.txt"));
    // Its effects begin with a picture that every installation has.
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "Trip_Files" / "PlaceHolder.jpg"));
    const std::string archived = folder.Read("Trip.xml");

    // A save in the same place keeps the archive, one in another place leads to the copies.
    ASSERT_EQ(S_OK, files->SaveProject(folder.File("Trip.xml").Get(), project.Get()));
    EXPECT_TRUE(archived == folder.Read("Trip.xml"));
    ASSERT_EQ(S_OK, files->SaveProject(folder.File("others/Else.xml").Get(), project.Get()));

    std::filesystem::create_directory(folder.Path() / "moved");
    for (const char* name : {"Trip.xml", "Trip_Files"})
        std::filesystem::rename(folder.Path() / name, folder.Path() / "moved" / name);
    std::filesystem::remove_all(folder.Path() / "clips");
    project = NewProject();
    ASSERT_EQ(S_OK, files->LoadProject(folder.File("moved/Trip.xml").Get(), project.Get()));
    EXPECT_THAT(Sources(*project), ElementsAre(In("moved/Trip_Files/b.txt"), In("others/b.txt")));
    Bstr source;
    ComPtr<IUnknown> production;
    EXPECT_EQ(S_OK, TitleAt(*project, 1)->GetProduction(production.Put()));
    for (LONG i : {0, 1}) {
        ComPtr<IUnknown> panel;
        ASSERT_EQ(S_OK, Query<IZXEProductionData>(production)->GetPanelBaseObject(i, panel.Put()));
        ASSERT_EQ(S_OK, Query<ISourceFile>(panel)->get_FileName(source.Put()));
        EXPECT_EQ(In(i ? "moved/Trip_Files/c.y4m" : "moved/Trip_Files/a.y4m"), source.View());
    }
    ASSERT_EQ(S_OK, project->GetMenu(1, menu.Put()));
    EXPECT_EQ(In("moved/Trip_Files/back.y4m"), Text(*menu.Get(), &IKVMenu::get_Background));
    ASSERT_EQ(S_OK, files->SaveProject(folder.File("moved/Trip.xml").Get(), project.Get()));
    EXPECT_TRUE(archived == folder.Read("moved/Trip.xml"));
    project = NewProject();
    ASSERT_EQ(S_OK, files->LoadProject(folder.File("others/Else.xml").Get(), project.Get()));
    EXPECT_EQ(In("Trip_Files/b.txt"), Sources(*project).front());
}

TEST_F(ArchiveTest, TakesWhatRelativePathsAndProductionsThatAreNotLoadedName)
{
    folder.Write("Kept.xml", "<Root><Project Version='900'><DataFiles><File sourcePath='others/b.txt'/></DataFiles>"
                             "</Project><Productions><Production ownerID='9' name='Storyboard'><Storyboard>"
                             "<Panel source='clips\\a.y4m'/><Effect mask='clips/b.txt'><effect><alphaFile>clips/c.png"
                             "</alphaFile></effect></Effect><Audio source='title:3'/>"
                             "</Storyboard></Production></Productions></Root>");
    folder.Write("clips/c.png", "no picture");
    ASSERT_EQ(S_OK, files->LoadProject(folder.File("Kept.xml").Get(), project.Get()));
    EXPECT_THAT(Sources(*project), ElementsAre(In("others/b.txt")));
    ASSERT_EQ(S_OK, files->SaveProject(folder.File("Kept.xml").Get(), project.Get()));
    ASSERT_EQ(S_OK, files->SaveProject(folder.File("clips/Kept.xml").Get(), project.Get()));
    ASSERT_EQ(S_OK, Archive("others/Trip.xml"));
    const std::string clips = folder.PathOf("clips/");
    const std::string data = folder.PathOf("others/b.txt");
    using Texts = std::array<std::string, 4>;
    for (const auto& [file, texts] :
         {std::pair("Kept.xml", Texts{"clips\\a.y4m", "clips/b.txt", "clips/c.png", "others/b.txt"}),
          {"clips/Kept.xml", Texts{clips + "a.y4m", clips + "b.txt", clips + "c.png", data}},
          {"others/Trip.xml", Texts{"Trip_Files\\a.y4m", clips + "b.txt", "Trip_Files\\c.png", "Trip_Files\\b.txt"}}}) {
        const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
        VARIANT_BOOL parsed = VARIANT_FALSE;
        ASSERT_EQ(S_OK, document->load(Variant(folder.File(file).View()), &parsed));
        const std::string text = ToUtf8(XmlOf(*document));
        for (const std::string& part :
             {"<Panel source=\"" + texts[0] + '"', "<Effect mask=\"" + texts[1] + '"', "<alphaFile>" + texts[2] + '<',
              "sourcePath=\"" + texts[3] + '"', std::string("<Audio source=\"title:3\"")})
            EXPECT_NE(text.npos, text.find(part)) << part << " in " << text;
    }
}

TEST_F(ArchiveTest, TellsWhatBecomesOfEachFile)
{
    std::filesystem::create_directory(folder.Path() / "Trip_Files");
    folder.Write("Trip_Files/there.txt", "there");
    folder.Write("Trip_Files/taken.txt", "taken");
    folder.Write("clips/taken.txt", "not this one");
    folder.Write("clips/" + std::string(255, 'n'), "long");
    std::filesystem::create_symlink("b.txt", folder.Path() / "clips" / "link.txt");
    std::filesystem::create_directory_symlink("clips", folder.Path() / "linked");
    mkfifo(folder.PathOf("clips/pipe").c_str(), 0600);
    folder.Write("clips/gone.txt", "gone");
    for (const char* name :
         {"clips/b.txt", "others/b.txt", "others/../clips/a.y4m", "linked/b.txt", "clips/link.txt", "clips", "clips/..",
          "clips/pipe", "Trip_Files/there.txt", "clips/taken.txt", "clips/gone.txt", "clips/b.txt"})
        AddFile(folder.PathOf(name));
    AddFile("/dev/zero");
    AddFile("/proc/self/status");
    AddFile(folder.PathOf("clips/" + std::string(255, 'n')));
    const auto drive = AddTitle(*project.Get());
    const auto share = AddTitle(*project.Get());
    drive->put_Source(Str(u"E:\\Clips\\a.mpg").Get());
    share->put_Source(Str(u"\\\\server\\share\\a.mpg").Get());
    AddTitle(*project.Get())->put_Source(Str(u"moniker::title:3").Get());
    std::filesystem::remove(folder.Path() / "clips" / "gone.txt");

    const auto archive = Query<IKVProjectArchive>(files);
    std::vector<std::string> told;
    for (const bool runs : {false, true}) {
        const auto report = Make<Report>(folder.Path());
        const auto call = runs ? &IKVProjectArchive::ArchiveProject : &IKVProjectArchive::PlanArchive;
        ASSERT_EQ(S_OK, (archive.Get()->*call)(folder.File("Trip.xml").Get(), project.Get(), report.Get()));
        EXPECT_EQ(runs, std::filesystem::exists(folder.Path() / "Trip.xml"));
        EXPECT_EQ(runs, !report->progress.empty());
        // A file that only says so when it is read.
        for (std::string& line : report->lines) {
            if (line.find("status") != line.npos) line.back() = '5';
        }
        EXPECT_TRUE(!runs || told == report->lines);
        told = report->lines;
    }
    std::erase_if(told, [](const std::string& line) { return line.find("nnn") != line.npos; });
    EXPECT_THAT(told, testing::UnorderedElementsAre(
                          testing::StartsWith("16 files, "), "clips/b.txt Trip_Files/b.txt 0",
                          "others/b.txt Trip_Files/b.txt 4", "others/../clips/a.y4m Trip_Files/a.y4m 0",
                          "linked/b.txt Trip_Files/b.txt 4", "clips/link.txt Trip_Files/link.txt 0",
                          "clips Trip_Files/clips 3", "clips/.. Trip_Files/.. 3", "clips/pipe Trip_Files/pipe 3",
                          "Trip_Files/there.txt Trip_Files/there.txt 1", "clips/taken.txt Trip_Files/taken.txt 4",
                          "clips/gone.txt Trip_Files/gone.txt 2", "/dev/zero Trip_Files/zero 3",
                          "/proc/self/status Trip_Files/status 5", "E:\\Clips\\a.mpg Trip_Files/a.mpg 2",
                          "\\\\server\\share\\a.mpg Trip_Files/a.mpg 2"));
    EXPECT_EQ(u"E:\\Clips\\a.mpg", Text(*drive.Get(), &IKVTitle::get_Source));
    EXPECT_EQ(u"\\\\server\\share\\a.mpg", Text(*share.Get(), &IKVTitle::get_Source));
    const auto sources = Sources(*project);
    EXPECT_EQ(u"Trip_Files\\b.txt", sources.front());
    EXPECT_EQ(u"Trip_Files\\there.txt", sources[8]);
    EXPECT_EQ(u"Trip_Files\\b.txt", sources[11]) << "the same file once more";
    EXPECT_EQ("taken", folder.Read("Trip_Files/taken.txt"));
    EXPECT_EQ("b", folder.Read("Trip_Files/link.txt"));
    EXPECT_EQ("long", folder.Read("Trip_Files/" + std::string(255, 'n')));
}

TEST_F(ArchiveTest, LeavesEverythingAsItWasWhenItFails)
{
    AddFile(folder.PathOf("clips/b.txt"));
    AddFile(folder.PathOf("clips/a.y4m"));
    ASSERT_EQ(S_OK, files->SaveProject(folder.File("Trip.xml").Get(), project.Get()));
    const std::string before = folder.Read("Trip.xml");
    const std::u16string directory = Directory();
    folder.Write("file", "in the way");
    const auto archive = Query<IKVProjectArchive>(files);
    const auto report = Make<Report>(folder.Path());
    const auto expectFailure = [&](HRESULT expected, const char* name, rlim_t room = RLIM_INFINITY) {
        HRESULT result = S_OK;
        {
            const FileSizeLimit full(room);
            result = archive->ArchiveProject(folder.File(name).Get(), project.Get(), report.Get());
        }
        EXPECT_EQ(expected, result) << name;
        EXPECT_EQ(directory, Directory());
        EXPECT_THAT(Sources(*project), ElementsAre(In("clips/b.txt"), In("clips/a.y4m")));
        EXPECT_TRUE(before == folder.Read("Trip.xml"));
        EXPECT_EQ(4, folder.Entries()) << name;
    };
    expectFailure(KV_E_NO_ARCHIVE_FOLDER, "file/Trip.xml");
    expectFailure(KV_E_NO_ARCHIVE_FOLDER, "/proc/none/Trip.xml");
    // The disk is full in a file, and behind the last one.
    expectFailure(MakeResult(0x800700DF), "Trip.xml", 1000);
    std::filesystem::resize_file(folder.Path() / "clips" / "a.y4m", 1);
    expectFailure(MakeResult(0x800700DF), "new/below/Trip.xml", 1000);
    // In front of the first file, while it is copied, while the disk writes both, and behind each.
    for (const int call : {0, 1, 2, 3, 4, 5, 6}) {
        report->failsAt = call;
        expectFailure(E_ABORT, "Trip.xml");
    }
    EXPECT_EQ(E_INVALIDARG, files->Archive(nullptr, project.Get()));
    EXPECT_EQ(E_POINTER, files->Archive(folder.File("Trip.xml").Get(), report.Get()));
    EXPECT_EQ(E_POINTER, archive->PlanArchive(folder.File("Trip.xml").Get(), nullptr, nullptr));
    EXPECT_EQ(S_OK, Archive());
}

TEST_F(ArchiveTest, CopiesManyFilesTogether)
{
    // More than are synced at once, with names that leave no room for many beside each other.
    constexpr int kFiles = 210;
    const std::string name = "others/" + std::string(245, 'n');
    for (int i = 0; i < kFiles; ++i) {
        const std::string file = i % 20 == 0 ? name + std::to_string(i) : "clips/" + std::to_string(i);
        folder.Write(file, std::to_string(i));
        AddFile(folder.PathOf(file));
    }
    const auto report = Make<Report>(folder.Path());
    ASSERT_EQ(S_OK, Query<IKVProjectArchive>(files)->ArchiveProject(folder.File("Trip.xml").Get(), project.Get(),
                                                                    report.Get()));
    ASSERT_EQ(1U + kFiles, report->lines.size());
    for (int i = 0; i < kFiles; ++i) {
        const std::string file = i % 20 == 0 ? name.substr(7) + std::to_string(i) : std::to_string(i);
        EXPECT_EQ(std::to_string(i), folder.Read("Trip_Files/" + file));
        EXPECT_TRUE(report->lines[1 + i].ends_with("/" + file + " Trip_Files/" + file + " 0")) << report->lines[1 + i];
    }
}

TEST_F(ArchiveTest, ArchivesAgain)
{
    AddFile(folder.PathOf("clips/b.txt"));
    AddFile(folder.PathOf("others/b.txt"));
    // Into the folder that the sources lie in, below the first archive, and in another place.
    for (const char* name : {"clips/Trip.xml", "clips/Trip.xml", "clips/Trip_Files/Trip.xml", "others/Trip.xml"}) {
        ASSERT_EQ(S_OK, Archive(name)) << name;
        EXPECT_THAT(Sources(*project), ElementsAre(u"Trip_Files\\b.txt", In("others/b.txt"))) << name;
        const auto again = NewProject();
        ASSERT_EQ(S_OK, files->LoadProject(folder.File(name).Get(), again.Get()));
        const auto copy = folder.Path() / std::filesystem::path(name).parent_path() / "Trip_Files" / "b.txt";
        EXPECT_EQ(copy.u16string(), Sources(*again).front());
    }
}

TEST_F(ArchiveTest, NativeMenusFindTheCopies)
{
    ComPtr<IKVMenu> menu;
    ComPtr<IKVMenuElement> element;
    ASSERT_EQ(S_OK, project->AddMenu(0, menu.Put()));
    ASSERT_EQ(S_OK, menu->SetNative(VARIANT_TRUE));
    ASSERT_EQ(S_OK, menu->put_Background(folder.File("clips/a.y4m").Get()));
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->AddElement(&IKVMenuOverlay::IID, element.Put()));
    const auto overlay = Query<IKVMenuOverlay>(element);
    ASSERT_EQ(S_OK, overlay->put_Source(folder.File("clips/a.y4m").Get()));
    ASSERT_EQ(S_OK, overlay->put_AlphaMask(folder.File("clips/a.y4m").Get()));
    ASSERT_EQ(S_OK, Archive());
    EXPECT_EQ(In("clips/a.y4m"), Text(*menu, &IKVMenu::GetMenuBackgroundPanelSource)) << "what is shown stays";
    std::filesystem::remove(folder.Path() / "clips" / "a.y4m");
    ASSERT_EQ(S_OK, files->SaveProject(folder.File("others/E.xml").Get(), project.Get()));

    // Setters take what getters tell, and what reads the file finds it.
    const Bstr relative(u"Trip_Files\\a.y4m");
    const std::u16string copy = In("Trip_Files/a.y4m");
    EXPECT_EQ(relative.View(), Text(*menu, &IKVMenu::get_Background));
    LONG width = 0;
    LONG height = 0;
    EXPECT_EQ(S_OK, overlay->GetSourceMediaSize(&width, &height));
    EXPECT_EQ(64, width);
    EXPECT_EQ(S_OK, menu->put_Background(relative.Get()));
    EXPECT_EQ(S_OK, overlay->put_Source(relative.Get()));
    EXPECT_EQ(S_OK, AddDataFile(*project)->put_SourcePath(relative.Get()));
    EXPECT_EQ(copy, Text(*menu, &IKVMenu::GetMenuBackgroundPanelSource));
    // A document that is no file can be read anywhere.
    const auto root = ParseElement(u"<Root/>");
    ASSERT_EQ(S_OK, menu->SaveXML(root.Get(), VARIANT_FALSE));
    EXPECT_NE(std::u16string::npos, XmlOf(*root).find(u"/Trip_Files/a.y4m\""));
    EXPECT_EQ(S_OK, menu->SetNative(VARIANT_FALSE));
    EXPECT_EQ(copy, Text(*menu, &IKVMenu::get_Background));
    EXPECT_EQ(copy, Text(*overlay, &IKVMenuOverlay::get_Source));
    EXPECT_EQ(copy, Text(*overlay, &IKVMenuOverlay::get_AlphaMask));

    const auto again = NewProject();
    ASSERT_EQ(S_OK, files->LoadProject(folder.File("others/E.xml").Get(), again.Get()));
    ASSERT_EQ(S_OK, again->GetMenu(1, menu.Put()));
    EXPECT_EQ(copy, Text(*menu, &IKVMenu::GetMenuBackgroundPanelSource));
}

TEST_F(ArchiveTest, NamesFilesOfRelativePathsWhereverTheProjectWent)
{
    struct Case {
        /// Archive and save, and a directory that the host sets.
        std::vector<std::string> steps;
        /// In the file that came last.
        std::u16string source;
    };
    for (const auto& [steps, source] :
         {Case{{"S others/E.xml", "S others/E.xml"}, In("clips/b.txt")},
          {{"S none/E.xml", "S others/E.xml"}, In("clips/b.txt")},
          {{"A T.xml", "S others/E.xml", "S others/E.xml"}, In("T_Files/b.txt")},
          {{"A T.xml", "S none/E.xml", "S others/E.xml"}, In("T_Files/b.txt")},
          {{"A T.xml", "D /nowhere", "S others/E.xml"}, In("T_Files/b.txt")},
          {{"A T.xml", "S others/E.xml", "A clips/T.xml", "S others/E.xml"}, In("clips/T_Files/b.txt")},
          {{"A others/../T.xml", "S others/E.xml", "S T.xml"}, u"T_Files\\b.txt"}}) {
        SCOPED_TRACE(testing::PrintToString(steps));
        for (const char* copies : {"T_Files", "clips/T_Files"})
            std::filesystem::remove_all(folder.Path() / copies);
        project = NewProject();
        const auto element =
            ParseElement(u"<Root><Project><DataFiles><File sourcePath='clips/b.txt'/></DataFiles></Project></Root>");
        ASSERT_EQ(S_OK, project->loadXML(element.Get()));
        project->put_ProjectDirectory(Bstr(folder.Path().u16string()).Get());
        for (const std::string& step : steps) {
            const std::string name = step.substr(2);
            if (step.front() == 'D') {
                project->put_ProjectDirectory(Bstr(ToUtf16(name)).Get());
            } else {
                const auto write = step.front() == 'A' ? &IKVFileService::Archive : &IKVFileService::SaveProject;
                EXPECT_EQ(name.starts_with("none"),
                          FAILED((files.Get()->*write)(folder.File(name).Get(), project.Get())));
            }
        }
        const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
        VARIANT_BOOL parsed = VARIANT_FALSE;
        ASSERT_EQ(S_OK, document->load(Variant(folder.File(steps.back().substr(2)).View()), &parsed));
        const std::u16string text = XmlOf(*document);
        EXPECT_NE(text.npos, text.find(u"sourcePath=\"" + source + u'"')) << ToUtf8(text);
    }
}

} // namespace
} // namespace kv::test
