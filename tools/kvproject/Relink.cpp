#include "Relink.h"

#include "Failure.h"
#include "KVProjectData/Engine.h"
#include "KVProjectData/KVProjectData.h"
#include "MediaFiles.h"
#include "MenuView.h"
#include "Storyboard.h"
#include "Text.h"
#include "platform/system/Paths.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Query;

constexpr std::string_view kSeparators = "/\\";

bool IsSeparator(char c)
{
    return kSeparators.find(c) != kSeparators.npos;
}

bool SameLetter(char a, char b)
{
    return a == b || (IsSeparator(a) && IsSeparator(b));
}

/// Neither from a root nor with a drive, a scheme or a macro in front.
bool IsRelative(std::string_view path)
{
    const std::string_view first = path.substr(0, path.find_first_of(kSeparators));
    return !first.empty() && first.front() != '%' && first.find(':') == first.npos;
}

/// Without the separators at its end.
std::string_view WithoutEnd(std::string_view path)
{
    return path.substr(0, path.find_last_not_of(kSeparators) + 1);
}

/// The files of a production: of its panels, its background audio, its effects and their masks.
std::vector<ComPtr<ISourceFile>> SourcesOf(IUnknown* production)
{
    std::vector<ComPtr<ISourceFile>> sources;
    const auto add = [&sources](const ComPtr<IUnknown>& object) {
        // A moniker stands in no file.
        if (const auto source = Query<ISourceFile>(object)) sources.push_back(source);
    };
    const auto data = Query<IZXEProductionData>(production);
    LONG panels = 0;
    if (!data || FAILED(data->GetPanelCount(&panels))) return sources;
    ComPtr<IUnknown> object;
    for (LONG i = 0; i < panels; ++i) {
        if (SUCCEEDED(data->GetPanelBaseObject(i, object.Put()))) add(object);
    }
    ComPtr<IUnknown> holder;
    data->GetProductionObj(holder.Put());
    const auto objects = Query<IProductionObjects>(holder);
    for (LONG i = 0; objects && objects->GetObject(ZXE_KIND_BACKGROUND_AUDIO, i, object.Put()) == S_OK; ++i)
        add(object);
    for (LONG i = 0; objects && objects->GetObject(ZXE_KIND_EFFECT, i, object.Put()) == S_OK; ++i) {
        add(object);
        ComPtr<IUnknown> mask;
        if (const auto effect = Query<IEffectInfo>(object); effect && effect->GetSourceObject(mask.Put()) == S_OK)
            add(mask);
    }
    return sources;
}

/// The first panel of a production, or its first background audio; null where there is none.
ComPtr<IUnknown> FirstPanel(IUnknown* production)
{
    ComPtr<IUnknown> panel;
    const auto data = Query<IZXEProductionData>(production);
    if (data) data->GetPanelBaseObject(0, panel.Put());
    return panel;
}

ComPtr<IUnknown> FirstAudio(IUnknown* production)
{
    ComPtr<IUnknown> holder;
    ComPtr<IUnknown> audio;
    const auto data = Query<IZXEProductionData>(production);
    if (data) data->GetProductionObj(holder.Put());
    if (const auto objects = Query<IProductionObjects>(holder))
        objects->GetObject(ZXE_KIND_BACKGROUND_AUDIO, 0, audio.Put());
    return audio;
}

/// How the first panel shows its clip, to hand it on to the one that takes its place.
class ClipSettings {
public:
    explicit ClipSettings(IUnknown* production)
    {
        const auto clip = Query<ISourceFile>(FirstPanel(production));
        if (!clip) return;
        clip->get_InPoint(&m_in);
        clip->get_OutPoint(&m_out);
        clip->get_Rotation(&m_rotation);
        clip->GetPanZoom(m_panZoom.Put());
    }

    double In() const { return m_in; }
    double Out() const { return m_out > m_in ? m_out : 0.0; }

    void GiveTo(IUnknown* production) const
    {
        const auto clip = Query<ISourceFile>(FirstPanel(production));
        if (!clip) return;
        if (m_rotation != 0) clip->put_Rotation(m_rotation);
        if (m_panZoom) clip->SetPanZoom(m_panZoom.Get());
    }

private:
    double m_in = 0.0;
    double m_out = 0.0;
    LONG m_rotation = 0;
    ComPtr<IXMLDOMNode> m_panZoom;
};

/// The same for the first background audio.
class SoundSettings {
public:
    explicit SoundSettings(IUnknown* production)
    {
        const auto sound = Query<IAudioProps>(FirstAudio(production));
        for (std::size_t i = 0; sound && i < kSettings.size(); ++i) {
            double value = 0.0;
            if (SUCCEEDED(((*sound).*kSettings[i].get)(&value))) m_values[i] = value;
        }
    }

    void GiveTo(IUnknown* production) const
    {
        const auto sound = Query<IAudioProps>(FirstAudio(production));
        for (std::size_t i = 0; sound && i < kSettings.size(); ++i) {
            if (m_values[i]) ((*sound).*kSettings[i].put)(*m_values[i]);
        }
    }

private:
    struct Setting {
        HRESULT (IAudioProps::*get)(double*);
        HRESULT (IAudioProps::*put)(double);
    };
    static constexpr std::array<Setting, 5> kSettings{{{&IAudioProps::get_Level, &IAudioProps::put_Level},
                                                       {&IAudioProps::get_FadeIn, &IAudioProps::put_FadeIn},
                                                       {&IAudioProps::get_FadeOut, &IAudioProps::put_FadeOut},
                                                       {&IAudioProps::get_FadeInGain, &IAudioProps::put_FadeInGain},
                                                       {&IAudioProps::get_FadeOutGain, &IAudioProps::put_FadeOutGain}}};

    std::array<std::optional<double>, kSettings.size()> m_values;
};

/// Where a file is named.
struct Place {
    std::string path;
    std::function<HRESULT(BSTR*)> get;
    std::function<HRESULT(BSTR)> put;
    bool orFolder = false;
    /// What is named before anything is relinked.
    kv::Bstr file;
};

class Relinker {
public:
    Relinker(IKVProjectData& project, const std::vector<Relocation>& relocations, InStep inStep, std::ostream& out)
        : m_project(project), m_relocations(relocations), m_inStep(inStep), m_out(out), m_used(relocations.size())
    {
        kv::Bstr directory;
        std::error_code error;
        if (SUCCEEDED(project.get_ProjectDirectory(directory.Put())))
            m_folder = std::filesystem::current_path(error) / kv::ToHostPath(directory.View());
    }

    Relinked Run()
    {
        ComPtr<IKVTitle> title;
        for (LONG i = 1; SUCCEEDED(m_project.GetTitle(i, title.Put())); ++i)
            RelinkTitle(title, "titles[" + std::to_string(i) + "]");
        ComPtr<IKVMenu> menu;
        for (LONG i = 1; SUCCEEDED(m_project.GetMenu(i, menu.Put())); ++i)
            RelinkMenu(menu, "menus[" + std::to_string(i) + "]");
        ComPtr<IKVDataFile> file;
        for (LONG i = 1; SUCCEEDED(m_project.GetDataFile(i, file.Put())); ++i) {
            Add("dataFiles[" + std::to_string(i) + "]", file, &IKVDataFile::get_SourcePath,
                &IKVDataFile::put_SourcePath, true);
            RelinkPlaces();
        }
        for (std::size_t i = 0; i < m_relocations.size(); ++i) {
            if (!m_used[i]) Refuse("no source begins with " + m_relocations[i].from);
        }
        return m_result;
    }

private:
    void RelinkTitle(const ComPtr<IKVTitle>& title, const std::string& path)
    {
        Add(path, title, &IKVTitle::get_Source, &IKVTitle::put_Source);
        ComPtr<IUnknown> production;
        bool joined = m_inStep == InStep::No;
        if (SUCCEEDED(title->GetProduction(production.Put()))) {
            AddProduction(production.Get(), path, [&] {
                if (!std::exchange(joined, true)) JoinStep(m_project, *title);
            });
        }
        RelinkPlaces();
    }

    void RelinkMenu(const ComPtr<IKVMenu>& menu, const std::string& path)
    {
        VARIANT_BOOL isNative = VARIANT_FALSE;
        menu->get_IsNative(&isNative);
        AddElements(menu.Get(), path + ".");
        ComPtr<IUnknown> shown;
        ComPtr<IUnknown> background;
        menu->GetProduction(shown.Put());
        menu->GetBackgroundProduction(background.Put());
        if (isNative) AddNative(menu, background, path);
        // The storyboards of menus take part in every step.
        AddProduction(shown.Get(), path, [] {});
        if (!isNative) AddProduction(background.Get(), path, [] {});
        RelinkPlaces();
        if (!isNative) return;
        // What it plays has taken the place of what it played.
        AddProduction(background.Get(), path, [] {});
        std::erase_if(m_places,
                      [&](const Place& place) { return m_played.contains(std::u16string(place.file.View())); });
        m_played.clear();
        RelinkPlaces();
    }

    /// What a native menu plays stands in itself, too, which puts a new clip and sound into its production.
    void AddNative(const ComPtr<IKVMenu>& menu, const ComPtr<IUnknown>& production, const std::string& path)
    {
        Add(path, menu, &IKVMenu::get_Background, [this, menu, production](BSTR name) {
            const ClipSettings clip(production.Get());
            const HRESULT put = menu->PutBackgroundWithTrim(name, clip.In(), clip.Out());
            clip.GiveTo(production.Get());
            m_played.emplace(kv::View(name));
            return put;
        });
        Add(path, menu, &IKVMenu::GetSmartAudio, [this, menu, production](BSTR name) {
            const SoundSettings sound(production.Get());
            const HRESULT put = menu->put_Audio(name);
            sound.GiveTo(production.Get());
            m_played.emplace(kv::View(name));
            return put;
        });
    }

    void AddElements(IUnknown* owner, const std::string& prefix)
    {
        std::map<const ElementKind*, int> counts;
        for (const auto& element : ElementsOf(owner)) {
            const ElementKind* kind = KindOf(*element);
            if (!kind) continue;
            const std::string path = prefix + std::string(kind->list) + "[" + std::to_string(++counts[kind]) + "]";
            if (const auto overlay = Query<IKVMenuOverlay>(element)) {
                Add(path, overlay, &IKVMenuOverlay::get_Source, &IKVMenuOverlay::put_Source);
                Add(path, overlay, &IKVMenuOverlay::get_AlphaMask, &IKVMenuOverlay::put_AlphaMask);
            }
            AddElements(element.Get(), path + ".");
        }
    }

    template <class Join>
    void AddProduction(IUnknown* production, const std::string& path, Join join)
    {
        if (!production) return;
        for (const auto& source : SourcesOf(production)) {
            Add(path, source, &ISourceFile::get_FileName, [source, join](BSTR name) {
                join();
                return source->put_FileName(name);
            });
        }
    }

    template <class Object, class Put>
    void Add(const std::string& path, const ComPtr<Object>& object, HRESULT (Object::*get)(BSTR*), Put put,
             bool orFolder = false)
    {
        Place place{path, [object, get](BSTR* file) { return (object.Get()->*get)(file); }, {}, orFolder, {}};
        if constexpr (std::is_member_pointer_v<Put>) {
            place.put = [object, put](BSTR name) { return (object.Get()->*put)(name); };
        } else {
            place.put = std::move(put);
        }
        if (place.get(place.file.Put()) == S_OK && !place.file.Empty()) m_places.push_back(std::move(place));
    }

    /// Each once, whatever it begins with then.
    void RelinkPlaces()
    {
        for (const Place& place : std::exchange(m_places, {})) {
            kv::Bstr now;
            // An object that a production shows has changed that, too.
            if (place.get(now.Put()) == S_OK && now.View() == place.file.View()) RelinkPlace(place);
        }
    }

    void RelinkPlace(const Place& place)
    {
        const std::string old = kv::ToUtf8(place.file.View());
        const std::string full = IsRelative(old) ? FullPath(old) : old;
        for (std::size_t i = 0; i < m_relocations.size(); ++i) {
            std::string now = Relocated(old, m_relocations[i]);
            if (now.empty()) now = Relocated(full, m_relocations[i]);
            if (now.empty()) continue;
            m_used[i] = true;
            if (now == old) return;
            const kv::Bstr name(kv::ToUtf16(now));
            const std::string fault = m_files.Fault(name.View(), place.orFolder);
            if (!fault.empty()) return Refuse(place.path + ": " + now + ' ' + fault + "; " + old + " stays");
            Require(place.put(name.Get()), place.path + ": " + now);
            const std::string line = place.path + ": " + Shown(old) + " is now " + Shown(now) + '\n';
            // A title may show the file several times.
            if (!m_told.insert(line).second) return;
            ++m_result.count;
            m_out << line;
            return;
        }
    }

    /// Where a relative path leads from the folder of the project.
    std::string FullPath(std::string path) const
    {
        std::ranges::replace_if(path, &IsSeparator, '/');
        return (m_folder / path).lexically_normal().string();
    }

    void Refuse(const std::string& why)
    {
        m_result.complete = false;
        // Several places may name the same file.
        if (m_told.insert(why).second) TellFailure(why);
    }

    IKVProjectData& m_project;
    const std::vector<Relocation>& m_relocations;
    const InStep m_inStep;
    std::ostream& m_out;
    std::filesystem::path m_folder;
    std::vector<Place> m_places;
    /// What a native menu was given to play.
    std::set<std::u16string> m_played;
    MediaFiles m_files;
    std::vector<bool> m_used;
    std::set<std::string> m_told;
    Relinked m_result;
};

} // namespace

Relocation ParseRelocation(std::string_view text)
{
    const std::size_t equals = text.find('=');
    if (equals == text.npos || equals == 0 || equals + 1 == text.size())
        throw Failure("'" + std::string(text) + "' is not of the form OLD=NEW");
    Relocation relocation{std::string(text.substr(0, equals)), std::string(text.substr(equals + 1))};
    RequireStorableName(relocation.to);
    return relocation;
}

std::string Relocated(std::string_view path, const Relocation& relocation)
{
    const std::string_view from = WithoutEnd(relocation.from);
    if (path.empty() || path.size() < from.size() || !std::equal(from.begin(), from.end(), path.begin(), SameLetter))
        return {};
    std::string rest(path.substr(from.size()));
    if (!rest.empty() && !IsSeparator(rest.front())) return {};
    if (rest.empty()) return relocation.to;
    // The separators of the new place.
    const std::size_t first = relocation.to.find_first_of(kSeparators);
    if (first != relocation.to.npos) {
        std::ranges::replace_if(rest, &IsSeparator, relocation.to[first]);
    }
    return std::string(WithoutEnd(relocation.to)) + rest;
}

Relinked Relink(IKVProjectData& project, const std::vector<Relocation>& relocations, InStep inStep, std::ostream& out)
{
    return Relinker(project, relocations, inStep, out).Run();
}

} // namespace kvproject
