#include "engine/import/ClipImporter.h"

#include "KVProjectData/Engine/Media.h"
#include "KVProjectData/Engine/Production.h"
#include "engine/import/ClipList.h"
#include "engine/media/MediaFile.h"
#include "engine/media/MediaProbe.h"
#include "platform/automation/Variant.h"
#include "platform/system/Paths.h"

#include <algorithm>

namespace kv {
namespace {

constexpr HRESULT kFileNotFound = MakeResult(0x80070002);

std::optional<std::vector<ListedClip>> ClipsOf(std::u16string_view name)
{
    if (!PathFileExists(name)) return std::nullopt;
    const std::string path = ToHostPath(name);
    auto clips = ClipsInFolder(path);
    return clips ? clips : ClipsInPlaylist(path);
}

/// Opens a clip and gives the title that it tells of itself. Throws Error for what is none.
std::u16string TitleOf(std::u16string_view path)
{
    if (!PathFileExists(path)) throw Error(kFileNotFound);
    const MediaFile file(path);
    const MediaProperties media = Describe(file);
    if (std::ranges::none_of(media.pictures, &PictureStream::moving)) throw Error(ZXE_E_NO_STREAM);
    const AVDictionaryEntry* title = av_dict_get(file.Format().metadata, "title", nullptr, 0);
    return title && title->value ? ToUtf16(title->value) : std::u16string();
}

bool IsClip(const ListedClip& clip)
{
    return SUCCEEDED(Guarded([&] {
        TitleOf(clip.path);
        return S_OK;
    }));
}

/// Whatever happens before the import is done, the titles that it added go again.
class AddedTitles {
public:
    explicit AddedTitles(IKVProjectData& project) : m_project(project) {}
    AddedTitles(const AddedTitles&) = delete;
    AddedTitles& operator=(const AddedTitles&) = delete;
    ~AddedTitles()
    {
        for (const LONG id : m_ids)
            m_project.RemoveTitle(id, nullptr);
    }

    void Add(const std::u16string& path, const std::u16string& label)
    {
        ComPtr<IKVTitle> title;
        ComPtr<IUnknown> production;
        LONG id = 0;
        const Bstr source(path);
        ThrowIfFailed(m_project.AddTitle(0, title.Put()));
        ThrowIfFailed(title->get_ID(&id));
        m_ids.push_back(id);
        ThrowIfFailed(title->put_Source(source.Get()));
        ThrowIfFailed(title->put_Label(Bstr(label).Get()));
        ThrowIfFailed(title->GetProduction(production.Put()));
        const auto content = Query<IEditData>(production);
        ThrowIfFailed(content ? content->AddSourceFile(0, source.Get(), 0.0, 0.0, -1, nullptr) : E_NOINTERFACE);
    }
    bool Empty() const { return m_ids.empty(); }
    void Keep() { m_ids.clear(); }

private:
    IKVProjectData& m_project;
    std::vector<LONG> m_ids;
};

} // namespace

HRESULT CClipImporter::IsLoadable(BSTR bstrFileName, LONG* pbIsLoadable)
{
    return Guarded([&] {
        if (!pbIsLoadable) return E_POINTER;
        *pbIsLoadable = 0;
        const auto clips = ClipsOf(View(bstrFileName));
        if (!clips) return S_OK;
        const bool isFolder = PathIsDirectory(View(bstrFileName));
        *pbIsLoadable = !isFolder || std::ranges::any_of(*clips, IsClip);
        return S_OK;
    });
}

HRESULT CClipImporter::Import(BSTR bstrFileName, IUnknown* pUnkProjectData, BSTR, BSTR)
{
    return Guarded([&] {
        const auto project = Query<IKVProjectData>(pUnkProjectData);
        if (!project) return E_POINTER;
        const auto clips = ClipsOf(View(bstrFileName));
        if (!clips) return ZXE_E_NOT_MEDIA;
        const auto tell = [this](auto method, auto... arguments) {
            ThrowIfFailed(m_point.ForEachSink([&](IUnknown& sink) {
                const HRESULT answer = (static_cast<IKVProjectImportEvents&>(sink).*method)(arguments...);
                return FAILED(answer) ? answer : S_OK;
            }));
        };
        const LONG total = static_cast<LONG>(clips->size());
        AddedTitles added(*project);
        LONG step = 0;
        for (const ListedClip& clip : *clips) {
            constexpr LONG kWhole = 100;
            const auto percent = [&](LONG done) { return static_cast<LONG>(LONGLONG{kWhole} * done / total); };
            tell(&IKVProjectImportEvents::ReportProgress, step + 1, total, LONG{0}, percent(step));
            std::u16string label;
            const HRESULT looked = Guarded([&] {
                label = TitleOf(clip.path);
                return S_OK;
            });
            if (looked == E_OUTOFMEMORY) return looked;
            if (FAILED(looked)) {
                const Variant name(clip.path);
                tell(&IKVProjectImportEvents::ReportError, looked, static_cast<const VARIANT&>(name));
            } else {
                if (!clip.label.empty()) label = clip.label;
                if (label.empty()) label = PathRemoveExtension(PathFindFileName(clip.path));
                added.Add(ToUtf16(ToHostPath(clip.path)), label);
            }
            ++step;
            tell(&IKVProjectImportEvents::ReportProgress, step, total, kWhole, percent(step));
        }
        if (added.Empty()) return S_FALSE;
        added.Keep();
        return S_OK;
    });
}

} // namespace kv
