#include "engine/storyboard/ProductionForm.h"

#include "engine/storyboard/PartReader.h"
#include "engine/storyboard/PartWriter.h"

#include <unordered_map>

namespace kv {
namespace {

constexpr const char* kPanel = "Panel";
constexpr const char* kEffect = "Effect";
constexpr const char* kAudio = "Audio";

void ListSettings(PartArchive& part, Settings& settings)
{
    part.Value("aspectRatio", settings, &Settings::aspectRatio);
    PartArchive::Require(settings.aspectRatio > 0.0);
    part.Value("stereoscopic", settings, &Settings::stereoscopic);
    part.Value("useSourceAspectRatio", settings, &Settings::useSourceAspectRatio);
    part.Value("duration", settings, &Settings::blankDuration);
}

/// A source by its name alone.
void ListFile(PartArchive& part, const char* name, SourcePtr& file)
{
    Bstr path = file ? file->Name() : Bstr();
    part.Path(name, path);
    if (part.IsReading() && path.Get()) file = std::make_shared<Source>(path.View());
}

/// A source and what was found in it.
void ListSource(PartArchive& part, SourcePtr& source)
{
    Bstr path = source ? source->Name() : Bstr();
    SourceFacts known = source ? source->Remembered() : SourceFacts{};
    part.Path("source", path);
    if (!path.Get()) return;
    part.Value("length", known, &SourceFacts::length);
    part.Value("frameRate", known, &SourceFacts::frameRate);
    part.Value("sourceAspect", known, &SourceFacts::aspectRatio);
    if (part.IsReading() && path.Get()) source = std::make_shared<Source>(path.View(), known);
}

void ListPoints(PartArchive& part, Clip& clip)
{
    part.Value("in", clip, &Clip::inPoint);
    part.Value("out", clip, &Clip::outPoint);
    part.Value("repeat", clip, &Clip::repeat);
    part.Value("rotation", clip, &Clip::rotation);
}

void ListPanZoom(PartArchive& part, Clip& clip)
{
    part.Document("PanZoom", clip.panZoom);
}

void ListSound(PartArchive& part, Sound& sound)
{
    part.Part("Sound", [&sound](PartArchive& element) {
        element.Value("level", sound, &Sound::level);
        element.Value("mute", sound, &Sound::mute);
        element.Value("fadeIn", sound, &Sound::fadeIn);
        element.Value("fadeOut", sound, &Sound::fadeOut);
        element.Value("fadeInGain", sound, &Sound::fadeInGain);
        element.Value("fadeOutGain", sound, &Sound::fadeOutGain);
    });
}

void ListSpan(PartArchive& part, ItemState& state)
{
    part.Value("start", state, &ItemState::start);
    part.Value("end", state, &ItemState::end);
}

void ListMask(PartArchive& part, Clip& mask)
{
    part.Part("Mask", [&mask](PartArchive& element) {
        ListPoints(element, mask);
        ListPanZoom(element, mask);
    });
}

void ListPanel(PartArchive& part, ItemState& state)
{
    ListSource(part, state.clip.source);
    PartArchive::Require(state.clip.source != nullptr);
    ListPoints(part, state.clip);
    part.Value("useNativeAudio", state, &ItemState::useNativeAudio);
    ListSound(part, state.sound);
    ListPanZoom(part, state.clip);
}

void ListEffect(PartArchive& part, LONG& type, ItemState& state)
{
    part.Always("layer", state.layer);
    part.Always("type", type);
    PartArchive::Require(type >= 0);
    ListSpan(part, state);
    part.Value("group", state, &ItemState::group);
    ListFile(part, "mask", state.mask.source);
    ListSource(part, state.clip.source);
    PartArchive::Require(!state.clip.source || type == ZXE_EFFECT_OVERLAY);
    ListPoints(part, state.clip);
    part.Value("useNativeAudio", state, &ItemState::useNativeAudio);
    ListSound(part, state.sound);
    ListPanZoom(part, state.clip);
    ListMask(part, state.mask);
    part.Document("Parameters", state.parameters);
}

void ListAudio(PartArchive& part, ItemState& state)
{
    LONG kind = ZXE_KIND_BACKGROUND_AUDIO;
    ListSource(part, state.clip.source);
    PartArchive::Require(state.clip.source != nullptr);
    part.Always("kind", kind);
    PartArchive::Require(kind == ZXE_KIND_BACKGROUND_AUDIO);
    ListSpan(part, state);
    ListPoints(part, state.clip);
    ListSound(part, state.sound);
    ListPanZoom(part, state.clip);
}

/// Behind what stands in an element.
template <class List>
void Write(PartWriter& above, const char* name, const Leftovers& rest, IZXEContentPaths* paths, List&& list)
{
    PartWriter writer(above.Content(), name, rest, paths);
    writer.Begin();
    list(writer);
    writer.End();
}

void WriteBoard(BoardImage& board, std::string_view name, XmlBuffer& target, IZXEContentPaths* paths)
{
    PartWriter writer(target, name, board.rest, paths);
    writer.Begin();
    ListSettings(writer, board.settings);
    for (auto& [panel, state] : board.panels) {
        ItemState& listed = state;
        Write(writer, kPanel, panel->Rest(), paths, [&](PartArchive& item) { ListPanel(item, listed); });
    }
    for (auto& [effect, state] : board.effects) {
        LONG type = effect->Type();
        ItemState& listed = state;
        Write(writer, kEffect, effect->Rest(), paths, [&](PartArchive& item) { ListEffect(item, type, listed); });
    }
    for (auto& [audio, state] : board.audio) {
        ItemState& listed = state;
        Write(writer, kAudio, audio->Rest(), paths, [&](PartArchive& item) { ListAudio(item, listed); });
    }
    writer.End();
}

/// Gives an element what another one has, whose markup this is.
void Fill(XmlElement& element, std::string_view markup)
{
    // Within the attributes it stands as a reference.
    const std::size_t end = markup.find('>');
    const bool isEmpty = markup[end - 1] == '/';
    const XmlElement tag = XmlElement::Parse(std::string(markup.substr(0, isEmpty ? end - 1 : end)) + "/>");
    for (const auto& [name, text] : tag.View().Attributes())
        element.SetAttribute(name, text);
    if (!isEmpty) element.AddMarkup(markup.substr(end + 1, markup.rfind("</") - end - 1));
}

class BoardLoader {
public:
    BoardLoader(const std::shared_ptr<Storyboard>& board, IZXEContentPaths* paths) : m_board(board), m_paths(paths) {}

    NewBoard Run(const XmlView& place)
    {
        PartReader part(place, m_paths);
        ListSettings(part, m_new.settings);
        for (const char* name : {kPanel, kEffect, kAudio})
            part.PassOver(name);
        for (XmlView child = place.FirstChild(); child; child = child.Next()) {
            if (!child.IsElement()) continue;
            if (child.Name() == kPanel) Panel(child);
            if (child.Name() == kEffect) Effect(child);
            if (child.Name() == kAudio) Audio(child);
        }
        m_new.rest = part.TakeRest();
        return std::move(m_new);
    }

private:
    void Panel(const XmlView& place)
    {
        PartReader part(place, m_paths);
        ItemState state;
        ListPanel(part, state);
        Share(state.clip.source);
        Take<CPanel>(std::move(state), part.TakeRest());
    }

    void Effect(const XmlView& place)
    {
        PartReader part(place, m_paths);
        LONG type = 0;
        ItemState state;
        ListEffect(part, type, state);
        Share(state.clip.source);
        Share(state.mask.source);
        Make<CEffect>(m_board, m_board->NewID(), type, std::move(state), part.TakeRest())->Enter(m_new.contents, -1);
    }

    void Audio(const XmlView& place)
    {
        PartReader part(place, m_paths);
        ItemState state;
        ListAudio(part, state);
        Share(state.clip.source);
        Take<CAudio>(std::move(state), part.TakeRest());
    }

    /// What shows the same file shares the source that knows anything of it: a bad file is looked into once.
    void Share(SourcePtr& source)
    {
        if (!source) return;
        SourcePtr& shared = m_sources[std::u16string(source->Name().View())];
        const bool tellsMore = source->Known() != SourceFacts{};
        if (!shared || (tellsMore && shared->Known() == SourceFacts{})) shared = source;
        source = shared;
    }

    template <class T>
    void Take(ItemState state, Leftovers rest)
    {
        Make<T>(m_board, m_board->NewID(), std::move(state), std::move(rest))->Enter(m_new.contents, -1);
    }

    const std::shared_ptr<Storyboard>& m_board;
    IZXEContentPaths* m_paths;
    std::unordered_map<std::u16string, SourcePtr> m_sources;
    NewBoard m_new;
};

} // namespace

std::string BoardMarkup(BoardImage board, std::string_view name, IZXEContentPaths* paths)
{
    std::string markup;
    XmlBuffer target([&markup](std::string_view piece) { markup += piece; });
    WriteBoard(board, name, target, paths);
    target.Flush();
    return markup;
}

void SaveBoard(BoardImage board, XmlElement& element, IZXEContentPaths* paths)
{
    try {
        Fill(element, BoardMarkup(std::move(board), element.Name(), paths));
    } catch (...) {
        element.Clear();
        throw;
    }
}

NewBoard LoadBoard(const std::shared_ptr<Storyboard>& board, const XmlElement& element, IZXEContentPaths* paths)
{
    return BoardLoader(board, paths).Run(element.View());
}

} // namespace kv
