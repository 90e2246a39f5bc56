#include "Relink.h"

#include "Failure.h"
#include "KVProjectData/Engine.h"
#include "KVProjectData/KVProjectData.h"
#include "Markup.h"
#include "MediaFiles.h"
#include "MenuView.h"
#include "Storyboard.h"
#include "Text.h"
#include "platform/com/Activation.h"

#include <algorithm>
#include <array>
#include <cstdlib>
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

/// Without the separators at its end.
std::string_view WithoutEnd(std::string_view path)
{
    return path.substr(0, path.find_last_not_of(kSeparators) + 1);
}

/// What an effect is found by in its production.
struct EffectPlace {
    LONG layer = 0;
    double start = 0.0;
};

double NumberIn(const std::map<std::string, std::string>& attributes, const char* name)
{
    const auto found = attributes.find(name);
    return found == attributes.end() ? 0.0 : std::strtod(found->second.c_str(), nullptr);
}

/// As the engine writes them.
std::vector<EffectPlace> EffectsOf(IUnknown* production)
{
    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMElement> root;
    Require(kv::CreateInstance(CLSID_DOMDocument, document), "cannot create a document");
    Require(document->createElement(kv::Bstr(u"Root").Get(), root.Put()), "cannot create a document");
    Require(document->putref_documentElement(root.Get()), "cannot create a document");
    AddStoryboard(production, *root);
    std::vector<EffectPlace> places;
    for (const Element& storyboard : Element(root).Children()) {
        for (const Element& part : storyboard.Children()) {
            if (part.Name() != "Effect") continue;
            const auto attributes = part.Attributes();
            places.push_back({static_cast<LONG>(NumberIn(attributes, "layer")), NumberIn(attributes, "start")});
        }
    }
    return places;
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
    if (!objects) return sources;
    for (const EffectPlace& place : EffectsOf(production)) {
        if (objects->GetEffect(place.layer, place.start, object.Put()) != S_OK) continue;
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

class Relinker {
public:
    Relinker(IKVProjectData& project, const std::vector<Relocation>& relocations, InStep inStep, std::ostream& out)
        : m_project(project), m_relocations(relocations), m_inStep(inStep), m_out(out), m_used(relocations.size())
    {
    }

    Relinked Run()
    {
        ComPtr<IKVTitle> title;
        for (LONG i = 1; SUCCEEDED(m_project.GetTitle(i, title.Put())); ++i)
            RelinkTitle(*title, "titles[" + std::to_string(i) + "]");
        ComPtr<IKVMenu> menu;
        for (LONG i = 1; SUCCEEDED(m_project.GetMenu(i, menu.Put())); ++i)
            RelinkMenu(*menu, "menus[" + std::to_string(i) + "]");
        ComPtr<IKVDataFile> file;
        for (LONG i = 1; SUCCEEDED(m_project.GetDataFile(i, file.Put())); ++i) {
            RelinkValue("dataFiles[" + std::to_string(i) + "]", *file, &IKVDataFile::get_SourcePath,
                        &IKVDataFile::put_SourcePath, true);
        }
        for (std::size_t i = 0; i < m_relocations.size(); ++i) {
            if (!m_used[i]) Refuse("no source begins with " + m_relocations[i].from);
        }
        return m_result;
    }

private:
    void RelinkTitle(IKVTitle& title, const std::string& path)
    {
        RelinkValue(path, title, &IKVTitle::get_Source, &IKVTitle::put_Source);
        ComPtr<IUnknown> production;
        if (FAILED(title.GetProduction(production.Put()))) return;
        bool joined = m_inStep == InStep::No;
        RelinkProduction(production.Get(), path, [&] {
            if (!std::exchange(joined, true)) JoinStep(m_project, title);
        });
    }

    void RelinkMenu(IKVMenu& menu, const std::string& path)
    {
        RelinkElements(&menu, path + ".");
        ComPtr<IUnknown> shown;
        ComPtr<IUnknown> background;
        menu.GetProduction(shown.Put());
        menu.GetBackgroundProduction(background.Put());
        VARIANT_BOOL isNative = VARIANT_FALSE;
        menu.get_IsNative(&isNative);
        if (isNative) RelinkNative(menu, background.Get(), path);
        // The storyboards of menus take part in every step.
        RelinkProduction(shown.Get(), path, [] {});
        RelinkProduction(background.Get(), path, [] {});
    }

    /// What a native menu plays stands in itself, too, which puts a new clip and sound into its production.
    void RelinkNative(IKVMenu& menu, IUnknown* production, const std::string& path)
    {
        RelinkValue(path, menu, &IKVMenu::get_Background, [&](BSTR name) {
            const ClipSettings clip(production);
            const HRESULT put = menu.PutBackgroundWithTrim(name, clip.In(), clip.Out());
            clip.GiveTo(production);
            return put;
        });
        RelinkValue(path, menu, &IKVMenu::GetSmartAudio, [&](BSTR name) {
            const SoundSettings sound(production);
            const HRESULT put = menu.put_Audio(name);
            sound.GiveTo(production);
            return put;
        });
    }

    void RelinkElements(IUnknown* owner, const std::string& prefix)
    {
        std::map<const ElementKind*, int> counts;
        for (const auto& element : ElementsOf(owner)) {
            const ElementKind* kind = KindOf(*element);
            if (!kind) continue;
            const std::string path = prefix + std::string(kind->list) + "[" + std::to_string(++counts[kind]) + "]";
            if (const auto overlay = Query<IKVMenuOverlay>(element)) {
                RelinkValue(path, *overlay, &IKVMenuOverlay::get_Source, &IKVMenuOverlay::put_Source);
                RelinkValue(path, *overlay, &IKVMenuOverlay::get_AlphaMask, &IKVMenuOverlay::put_AlphaMask);
            }
            RelinkElements(element.Get(), path + ".");
        }
    }

    template <class Join>
    void RelinkProduction(IUnknown* production, const std::string& path, Join&& join)
    {
        if (!production) return;
        for (const auto& source : SourcesOf(production)) {
            kv::Bstr file;
            if (source->get_FileName(file.Put()) != S_OK) continue;
            Replace(path, file, false, [&](BSTR name) {
                join();
                return source->put_FileName(name);
            });
        }
    }

    template <class Object, class Put>
    void RelinkValue(const std::string& path, Object& object, HRESULT (Object::*get)(BSTR*), Put put,
                     bool orFolder = false)
    {
        kv::Bstr file;
        if ((object.*get)(file.Put()) != S_OK) return;
        if constexpr (std::is_member_pointer_v<Put>) {
            Replace(path, file, orFolder, [&](BSTR name) { return (object.*put)(name); });
        } else {
            Replace(path, file, orFolder, put);
        }
    }

    template <class Put>
    void Replace(const std::string& path, const kv::Bstr& file, bool orFolder, Put&& put)
    {
        const std::string old = kv::ToUtf8(file.View());
        for (std::size_t i = 0; i < m_relocations.size(); ++i) {
            const std::string now = Relocated(old, m_relocations[i]);
            if (now.empty()) continue;
            m_used[i] = true;
            const kv::Bstr name(kv::ToUtf16(now));
            const std::string fault = m_files.Fault(name.View(), orFolder);
            if (!fault.empty()) return Refuse(path + ": " + now + ' ' + fault + "; " + old + " stays");
            Require(put(name.Get()), path + ": " + now);
            ++m_result.count;
            m_out << path << ": " << Shown(old) << " is now " << Shown(now) << '\n';
            return;
        }
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
    if (path.size() < from.size() || !std::equal(from.begin(), from.end(), path.begin(), SameLetter)) return {};
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
