// Archives and the pruning of template menus.

#include "Bench.h"
#include "KVProjectData/files/TemplateMenus.h"
#include "platform/xml/Dom.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace kv::bench {
namespace {

constexpr int kFiles = 200;
constexpr std::size_t kFileSize = 5'000'000;

/// Files to copy, and room for their copies; removed with this object.
class Media {
public:
    explicit Media(const std::filesystem::path& parent)
        : m_path(parent / ("kv_bench." + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count())))
    {
        std::filesystem::create_directories(m_path / "clips");
        std::string content(kFileSize, '\0');
        unsigned random = 1;
        for (int i = 0; i < kFiles; ++i) {
            for (char& c : content)
                c = static_cast<char>((random = random * 1664525 + 1013904223) >> 24);
            std::ofstream(Clip(i), std::ios::binary) << content;
        }
        Sync();
    }
    ~Media()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::filesystem::path Clip(int i) const { return m_path / "clips" / (std::to_string(i) + ".mpg"); }

    double ArchiveSeconds(IKVFileService& files) const
    {
        const auto project = NewProject();
        for (int i = 0; i < kFiles; ++i) {
            ComPtr<IKVDataFile> file;
            Must(project->AddDataFile(0, file.Put()));
            Must(file->put_SourcePath(Bstr(Clip(i).u16string()).Get()));
        }
        std::filesystem::remove_all(m_path / "Trip_Files");
        Sync();
        const Bstr name((m_path / "Trip.xml").u16string());
        return Time([&] { Must(files.Archive(name.Get(), project.Get())); });
    }

    /// What is archived is on the disk afterwards; so is this.
    double CopySeconds() const
    {
        std::filesystem::remove_all(m_path / "copies");
        std::filesystem::create_directory(m_path / "copies");
        Sync();
        return Time([&] {
            const std::string target = m_path / "copies";
            const std::string source = m_path / "clips" / ".";
            const pid_t child = fork();
            if (child == 0) {
                execlp("cp", "cp", "-r", "--reflink=auto", source.c_str(), target.c_str(), nullptr);
                _exit(1);
            }
            int status = 1;
            Must(child > 0 && waitpid(child, &status, 0) == child && status == 0 ? S_OK : E_FAIL);
            Sync();
        });
    }

private:
    void Sync() const
    {
        const int folder = open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        syncfs(folder);
        close(folder);
    }

    const std::filesystem::path m_path;
};

/// Seconds that the pruning of 1,000 menus takes: templates each made from the next and the last from the first, of
/// which a menu uses one, so that all but a few go; or of which each is used.
double PruneSeconds(bool allUsed)
{
    constexpr int kMenus = 1000;
    std::u16string xml = u"<Project><Menus>";
    for (int i = 1; i <= kMenus; ++i) {
        const bool isUser = allUsed ? i % 2 == 0 : i == kMenus;
        const int madeFrom = isUser ? i - 1 : allUsed ? 0 : i % (kMenus - 1) + 1;
        xml += u"<Menu native='1' ID='" + ToUtf16(std::to_string(i)) + u"' tag='" +
               ToUtf16(std::to_string(isUser ? int{MenuType_Main} : int{MenuType_TemplateMain})) + u"' templateID='" +
               ToUtf16(std::to_string(madeFrom)) + u"'/>";
    }
    ComPtr<IXMLDOMDocument> document;
    VARIANT_BOOL parsed = VARIANT_FALSE;
    Must(CreateInstance(CLSID_DOMDocument, document));
    Must(document->loadXML(Bstr(xml + u"</Menus></Project>").Get(), &parsed));
    const auto project = NewProject();
    Must(project->loadXML(document.Get()));
    const double seconds = Time([&] { PruneTemplateMenus(*project.Get()); });
    LONG left = 0;
    Must(project->get_MenuCount(&left));
    constexpr LONG kLeft = 5;
    Must(left == (allUsed ? kMenus : kLeft) ? S_OK : E_FAIL);
    return seconds;
}

} // namespace

void MeasureArchives(std::vector<Row>& rows)
{
    constexpr double kAllowed = 5.0;
    for (const bool allUsed : {true, false}) {
        rows.push_back({std::string("prune 1000 menus, ") + (allUsed ? "none goes" : "nearly all go") +
                            " | the time allowed for it",
                        "ms", Median(7, [&] { return PruneSeconds(allUsed); }) * 1e3, kAllowed, 1.0});
    }
    ComPtr<IKVFileService> files;
    Must(CreateInstance(CLSID_KVFileService, files));
    for (const bool onDisk : {false, true}) {
        const Media media(onDisk ? std::filesystem::temp_directory_path() : "/dev/shm");
        const Medians medians = InTurn(
            3, [&] { return media.ArchiveSeconds(*files.Get()); }, [&] { return media.CopySeconds(); });
        rows.push_back({std::string("archive 200 files of 5 MB") + (onDisk ? " on disk" : " in memory") +
                            " | cp --reflink=auto and sync of the same",
                        "ms", medians.ours * 1e3, medians.yardstick * 1e3, 1.1});
    }
}

} // namespace kv::bench
