// Loading and saving.

#include "Bench.h"

#include <fcntl.h>
#include <filesystem>
#include <malloc.h>
#include <pugixml.hpp>
#include <unistd.h>

namespace kv::bench {
namespace {

class Folder {
public:
    explicit Folder(const std::filesystem::path& parent)
        : path(parent / ("kv_bench." + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count())))
    {
        std::filesystem::create_directory(path);
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    const std::filesystem::path path;
};

ComPtr<IKVFileService> Files()
{
    ComPtr<IKVFileService> files;
    Must(CreateInstance(CLSID_KVFileService, files));
    return files;
}

ComPtr<IKVProjectData> ProjectOf(int titles)
{
    const auto project = NewProject();
    for (int i = 0; i < titles; ++i) {
        ComPtr<IKVTitle> title;
        Must(project->AddTitle(0, title.Put()));
        Must(title->put_Label(Bstr(u"Title " + ToUtf16(std::to_string(i))).Get()));
        DiscCommandParams command{PlayTitleFromChapter, i, 1, nullptr};
        Must(Query<IKVCommandList>(title)->SetCommandList(1, &command));
    }
    return project;
}

/// Each load starts as in a program that was just started: without memory that an earlier one has left behind, whose
/// pages the system would not have to make anew.
double LoadSeconds(IKVFileService& files, const Bstr& file)
{
    const auto project = NewProject();
    malloc_trim(0);
    return Time([&] { Must(files.LoadProject(file.Get(), project.Get())); });
}

/// How time grows with the project is measured from the same start, for the same reason.
double FreshSaveSeconds(IKVFileService& files, IKVProjectData& project, const Bstr& file)
{
    malloc_trim(0);
    return Time([&] { Must(files.SaveProject(file.Get(), &project)); });
}

double BareLoadSeconds(pugi::xml_document& bare, const std::string& path)
{
    bare.reset();
    malloc_trim(0);
    return Time([&] { Must(bare.load_file(path.c_str()) ? S_OK : E_FAIL); });
}

double SaveSeconds(IKVFileService& files, IKVProjectData& project, const Bstr& file)
{
    return Time([&] { Must(files.SaveProject(file.Get(), &project)); });
}

void SaveBare(const pugi::xml_document& bare, const std::string& path)
{
    Must(bare.save_file(path.c_str(), "  ", pugi::format_default, pugi::encoding_utf16_le) ? S_OK : E_FAIL);
}

void SyncFile(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool synced = file >= 0 && fsync(file) == 0;
    if (file >= 0) close(file);
    Must(synced ? S_OK : E_FAIL);
}

/// As safe as a save of ours: a file of another name is synced and gets the name, and the folder is synced.
void SaveBareSafely(const pugi::xml_document& bare, const std::filesystem::path& path)
{
    const std::string temporary = path.string() + ".new";
    SaveBare(bare, temporary);
    SyncFile(temporary);
    std::filesystem::rename(temporary, path);
    SyncFile(path.parent_path().string());
}

/// What a save costs by itself, with files in memory; and what with the disk, which has to have what is saved before
/// the call returns. There each save starts when all earlier ones are on the disk.
void MeasureSaves(std::vector<Row>& rows, IKVFileService& files, IKVProjectData& project,
                  const pugi::xml_document& bare, const std::filesystem::path& onDisk)
{
    const Folder memory("/dev/shm");
    const Bstr file((memory.path / "Measured.xml").u16string());
    const std::string barePath = (memory.path / "Bare.xml").string();
    const Medians alone = InTurn(
        7, [&] { return 1e3 * SaveSeconds(files, project, file); },
        [&] { return 1e3 * Time([&] { SaveBare(bare, barePath); }); });
    rows.push_back({"save of 20,000 titles in memory | bare save of the tree", "ms", alone.ours, alone.yardstick, 2});

    const Bstr safeFile((onDisk / "Measured.xml").u16string());
    const Medians safe = InTurn(
        7,
        [&] {
            sync();
            return 1e3 * SaveSeconds(files, project, safeFile);
        },
        [&] {
            sync();
            return 1e3 * Time([&] { SaveBareSafely(bare, onDisk / "Bare.xml"); });
        });
    rows.push_back(
        {"save of 20,000 titles to a disk | bare save, synced and renamed", "ms", safe.ours, safe.yardstick, 2});
}

} // namespace

void MeasureDocuments(std::vector<Row>& rows)
{
    constexpr int kTitles = 20'000;
    constexpr int kFew = 1'000;
    constexpr int kMany = 100'000;
    const Folder folder(std::filesystem::temp_directory_path());
    const auto files = Files();
    const std::string path = (folder.path / "Measured.xml").string();
    const Bstr file(ToUtf16(path));

    const auto project = ProjectOf(kTitles);
    Must(files->SaveProject(file.Get(), project.Get()));
    pugi::xml_document bare;
    const Medians load = InTurn(
        7, [&] { return 1e3 * LoadSeconds(*files, file); }, [&] { return 1e3 * BareLoadSeconds(bare, path); });
    rows.push_back({"load of 20,000 titles | bare parse of the file", "ms", load.ours, load.yardstick, 1.5});

    MeasureSaves(rows, *files, *project, bare, folder.path);

    const Bstr fewFile((folder.path / "Few.xml").u16string());
    const Bstr manyFile((folder.path / "Many.xml").u16string());
    const auto few = ProjectOf(kFew);
    const auto many = ProjectOf(kMany);
    const Medians saves = InTurn(
        5, [&] { return 1e6 / kMany * FreshSaveSeconds(*files, *many, manyFile); },
        [&] { return Median(21, [&] { return 1e6 / kFew * FreshSaveSeconds(*files, *few, fewFile); }); });
    rows.push_back({"save, a title of 100,000 | a title of 1,000", "us", saves.ours, saves.yardstick, 1.3});
    const Medians loads = InTurn(
        5, [&] { return 1e6 / kMany * LoadSeconds(*files, manyFile); },
        [&] { return Median(21, [&] { return 1e6 / kFew * LoadSeconds(*files, fewFile); }); });
    rows.push_back({"load, a title of 100,000 | a title of 1,000", "us", loads.ours, loads.yardstick, 1.3});
}

} // namespace kv::bench
