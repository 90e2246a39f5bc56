// Projects made by importers.

#include "KVProjectData/Engine/Import.h"
#include "KVProjectData/Engine.h"
#include "platform/automation/TypeInfo.h"
#include "support/Contents.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace kv::test {
namespace {

using testing::ElementsAre;

/// Keeps what arrives; every callback returns `answer` from the one with that number on.
class Listener final : public Object<IKVProjectImportEvents> {
public:
    HRESULT ReportProgress(LONG step, LONG steps, LONG percent, LONG total) override
    {
        progress.push_back({step, steps, percent, total});
        return Answer();
    }
    HRESULT ReportErrorMsg(HRESULT, BSTR) override { return Answer(); }
    HRESULT ReportError(HRESULT error, VARIANT context) override
    {
        const auto name = std::filesystem::path(View(context.bstrVal)).filename().string();
        errors.emplace_back(name, error);
        return Answer();
    }

    std::vector<std::vector<LONG>> progress;
    std::vector<std::pair<std::string, HRESULT>> errors;
    int failsAt = -1;

private:
    HRESULT Answer() { return failsAt-- == 0 ? E_ABORT : S_FALSE; }
};

class ImportTest : public testing::Test {
protected:
    ImportTest()
    {
        for (const char* name : {"clip10.y4m", "clip2.y4m", "Clip1.y4m", "caf\u00e9 & more.y4m"}) {
            folder.Write(name,
                         "YUV4MPEG2 W64 H36 F25:1 Ip A1:1 C420jpeg\nFRAME\n" + std::string(64 * 36 * 3 / 2, '\x80'));
        }
    }

    HRESULT Import(const Bstr& file)
    {
        ComPtr<IConnectionPoint> point;
        DWORD cookie = 0;
        DWORD second = 0;
        EXPECT_EQ(S_OK, Query<IConnectionPointContainer>(importer)->FindConnectionPoint(IKVProjectImportEvents::IID,
                                                                                        point.Put()));
        EXPECT_EQ(S_OK, point->Advise(listener.Get(), &cookie));
        const auto other = Make<Listener>();
        EXPECT_EQ(S_OK, point->Advise(other.Get(), &second));
        const auto told = listener->progress.size();
        const HRESULT result = importer->Import(file.Get(), project.Get(), nullptr, nullptr);
        EXPECT_TRUE(FAILED(result) || listener->progress.size() == told + other->progress.size());
        EXPECT_EQ(S_OK, point->Unadvise(cookie));
        EXPECT_EQ(S_OK, point->Unadvise(second));
        return result;
    }
    LONG Loadable(const Bstr& file)
    {
        LONG loadable = -1;
        EXPECT_EQ(S_OK, importer->IsLoadable(file.Get(), &loadable));
        return loadable;
    }
    std::vector<std::u16string> Labels()
    {
        std::vector<std::u16string> labels;
        for (LONG i = 1; const auto title = TitleAt(*project, i); ++i)
            labels.push_back(Text(*title.Get(), &IKVTitle::get_Label));
        return labels;
    }

    TemporaryFolder folder;
    ComPtr<IKVProjectData> project = NewProject();
    ComPtr<IKVProjectImport> importer = Create<IKVProjectImport>(CLSID_ZXClipImporter);
    ComPtr<Listener> listener = Make<Listener>();
};

TEST_F(ImportTest, MakesTitlesOfAFolderInOrder)
{
    folder.Write("notes.txt", "no clip");
    folder.Write(".hidden.y4m", "no clip");
    std::filesystem::create_directory(folder.Path() / "below.y4m");
    std::filesystem::create_symlink("gone", folder.Path() / "dangling");
    mkfifo(folder.PathOf("pipe").c_str(), 0600);
    AddTitle(*project)->put_Label(Str(u"before").Get());
    const Bstr name(folder.Path().u16string());
    EXPECT_EQ(1, Loadable(name));
    EXPECT_EQ(S_OK, Import(name));
    EXPECT_THAT(Labels(), ElementsAre(u"before", u"caf\u00e9 & more", u"Clip1", u"clip2", u"clip10"));
    constexpr HRESULT kNotFound = MakeResult(0x80070002);
    EXPECT_THAT(listener->errors,
                ElementsAre(std::pair("below.y4m", ZXE_E_NOT_MEDIA), std::pair("dangling", kNotFound),
                            std::pair("notes.txt", ZXE_E_NOT_MEDIA), std::pair("pipe", ZXE_E_NOT_MEDIA)));
    EXPECT_EQ((std::vector<LONG>{1, 8, 0, 0}), listener->progress.front());
    EXPECT_EQ((std::vector<LONG>{8, 8, 100, 100}), listener->progress.back());
    const auto title = TitleAt(*project, 3);
    Bstr shown;
    ComPtr<IUnknown> production;
    EXPECT_EQ(S_OK, title->GetProduction(production.Put()));
    EXPECT_EQ(S_OK, title->GetSourceFromProd(shown.Put()));
    EXPECT_EQ(folder.File("Clip1.y4m").View(), shown.View());
    EXPECT_EQ(shown.View(), Text(*title.Get(), &IKVTitle::get_Source));
}

TEST_F(ImportTest, MakesTitlesOfAPlaylistAsItSays)
{
    const std::string command = "ffmpeg -v error -nostdin -i '" + folder.PathOf("clip2.y4m") +
                                "' -metadata title='The Sea' -c:v mpeg4 '" + folder.PathOf("tagged.mkv") + "'";
    ASSERT_EQ(0, std::system(command.c_str()));
    folder.Write("list.M3U",
                 "\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:5,A name, with a comma\r\nclip10.y4m\r\n\r\n# a comment\r\n"
                 "tagged.mkv\r\n.\\Clip1.y4m\r\nfile://" +
                     folder.PathOf("caf%C3%A9%20&%20more.y4m") +
                     "\r\nnone.y4m\r\nhttp://example.org/a.mpg\r\nE:\\a.mpg\r\n" + folder.PathOf("clip2.y4m"));
    folder.Write("plain", "#EXTM3U\n#EXTINF:1\ncaf\xE9\nclip2.y4m");
    EXPECT_EQ(1, Loadable(folder.File("list.M3U")));
    EXPECT_EQ(S_OK, Import(folder.File("list.M3U")));
    EXPECT_THAT(Labels(), ElementsAre(u"A name, with a comma", u"The Sea", u"Clip1", u"caf\u00e9 & more", u"clip2"));
    constexpr HRESULT kNotFound = MakeResult(0x80070002);
    EXPECT_THAT(listener->errors, ElementsAre(std::pair("none.y4m", kNotFound), std::pair("a.mpg", kNotFound),
                                              std::pair("E:\\a.mpg", kNotFound)));
    EXPECT_EQ(S_OK, Import(folder.File("plain")));
    EXPECT_EQ(u"clip2", Labels().back());
    EXPECT_EQ("caf\u00e9", listener->errors.back().first);
    for (const auto& [mark, shift] : {std::pair("\xFF\xFE", 0), {"\xFE\xFF", 1}}) {
        std::string text = mark;
        for (const char c : std::string_view("#EXTM3U\r\n#EXTINF:1,Caf\xE9\r\nclip2.y4m\r\n"))
            text += {shift ? '\0' : c, shift ? c : '\0'};
        folder.Write("wide", text);
        EXPECT_EQ(S_OK, Import(folder.File("wide")));
        EXPECT_EQ(u"Caf\u00e9", Labels().back());
    }
}

TEST_F(ImportTest, TakesNothingElse)
{
    folder.Write("empty.m3u", "#EXTM3U\n# nothing\n");
    folder.Write("text", "clip2.y4m\n");
    std::filesystem::create_directory(folder.Path() / "empty");
    folder.Write("empty/text", "no clip");
    for (const auto& [file, result] : {std::pair(folder.File("none"), ZXE_E_NOT_MEDIA),
                                       {folder.File("text"), ZXE_E_NOT_MEDIA},
                                       {folder.File("clip2.y4m"), ZXE_E_NOT_MEDIA},
                                       {Str(u"/dev/zero"), ZXE_E_NOT_MEDIA},
                                       {Bstr(), ZXE_E_NOT_MEDIA},
                                       {folder.File("empty.m3u"), S_FALSE},
                                       {folder.File("empty"), S_FALSE}}) {
        EXPECT_EQ(file.View() == folder.File("empty.m3u").View(), Loadable(file)) << ToUtf8(file.View());
        EXPECT_EQ(result, Import(file)) << ToUtf8(file.View());
    }
    EXPECT_EQ(E_POINTER, importer->IsLoadable(nullptr, nullptr));
    EXPECT_EQ(E_POINTER, importer->Import(folder.File("empty").Get(), listener.Get(), nullptr, nullptr));
    EXPECT_TRUE(Labels().empty());
}

TEST_F(ImportTest, IsCancelledByACallbackThatFails)
{
    folder.Write("clip3.y4m", "broken");
    AddTitle(*project)->put_Label(Str(u"before").Get());
    for (int call = 0; call < 11; ++call) {
        listener->failsAt = call;
        EXPECT_EQ(E_ABORT, Import(Bstr(folder.Path().u16string()))) << call;
        EXPECT_THAT(Labels(), ElementsAre(u"before")) << call;
    }
    EXPECT_EQ(S_OK, Import(Bstr(folder.Path().u16string())));
    EXPECT_EQ(5U, Labels().size());
}

TEST_F(ImportTest, FindsImportersByTheirCategory)
{
    EXPECT_THAT(ClassesOfCategory(CATID_KVProjectImport), ElementsAre(CLSID_ZXClipImporter));
    EXPECT_TRUE(ClassesOfCategory(CLSID_ZXClipImporter).empty());
    const auto least = Create<IKVProjectImport>(CLSID_KVTestImporter);
    LONG loadable = 0;
    EXPECT_EQ(S_OK, least->IsLoadable(nullptr, nullptr));
    EXPECT_EQ(S_OK, least->IsLoadable(Str(u"any").Get(), &loadable));
    EXPECT_EQ(1, loadable);
    EXPECT_EQ(S_OK, least->Import(Bstr(folder.Path().u16string()).Get(), project.Get(), nullptr, nullptr));
    EXPECT_TRUE(Labels().empty());
    ComPtr<ITypeInfo> info;
    Bstr name;
    EXPECT_EQ(S_OK, Query<IProvideClassInfo>(least)->GetClassInfo(info.Put()));
    EXPECT_EQ(S_OK, info->GetDocumentation(DISPID_UNKNOWN, name.Put(), nullptr));
    EXPECT_EQ(u"CKVTestImporter", name.View());
    EXPECT_EQ(E_POINTER, Query<IProvideClassInfo>(least)->GetClassInfo(nullptr));
}

TEST_F(ImportTest, ReadsProjectsOfOlderVersions)
{
    folder.Write("Old.xml",
                 "<Root><Project><Titles><Title ID='5'><Encoding syncToProject='0' HDVideoFormat='1'/></Title>"
                 "</Titles><Menus><Menu native='1'><Elements><Overlay zoomToFill='1' zoomSource='0'/>"
                 "<Text/></Elements></Menu></Menus></Project><Productions><Production ownerID='5' "
                 "name='Storyboard'><Storyboard><Panel source='clip2.y4m'/></Storyboard></Production>"
                 "</Productions></Root>");
    const auto files = Create<IKVFileService>(CLSID_KVFileService);
    ASSERT_EQ(S_OK, files->LoadProject(folder.File("Old.xml").Get(), project.Get()));
    EXPECT_EQ(u"Old", Text(*project.Get(), &IKVProjectData::get_Label));
    const auto title = TitleAt(*project, 1);
    EXPECT_EQ(VideoFormat_AVC, ValueOf(*Query<IKVEncodingParams>(title), &IKVEncodingParams::get_VideoFormat));
    Bstr source;
    ComPtr<IUnknown> production;
    EXPECT_EQ(S_OK, title->GetProduction(production.Put()));
    EXPECT_EQ(S_OK, title->GetSourceFromProd(source.Put()));
    EXPECT_EQ(folder.File("clip2.y4m").View(), source.View());
    ComPtr<IKVMenu> menu;
    ComPtr<IKVMenuElement> overlay;
    ComPtr<IKVMenuElement> text;
    ASSERT_EQ(S_OK, project->GetMenu(1, menu.Put()));
    ASSERT_EQ(S_OK, Query<IKVMenuElementList>(menu)->GetElement(1, overlay.Put()));
    EXPECT_EQ(VARIANT_TRUE, ValueOf(*Query<IKVMenuOverlay>(overlay), &IKVMenuOverlay::get_ZoomSource));
    EXPECT_EQ(S_OK, Query<IKVMenuElementList>(menu)->GetElement(2, text.Put()));
    const auto legacy = Create<IQ71ProjectImport>(CLSID_Q71ProjectImport);
    EXPECT_EQ(E_POINTER, legacy->ImportXML(nullptr, project.Get()));
    EXPECT_EQ(E_POINTER, legacy->ImportXML(ParseElement(u"<Root/>").Get(), listener.Get()));
}

} // namespace
} // namespace kv::test
