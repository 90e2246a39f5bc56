// What a menu plays, and where: in a production of its own, or in native mode in its fields and a background
// production.

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/content/DocumentPaths.h"
#include "KVProjectData/content/FilePlace.h"
#include "KVProjectData/menus/Menu.h"
#include "KVProjectData/menus/MenuBackground.h"
#include "KVProjectData/tree/AttributeArchive.h"
#include "SbdUtils/EngineCalls.h"
#include "SbdUtils/SbdUtils.h"
#include "platform/system/Case.h"
#include "platform/system/Paths.h"

#include <cmath>

namespace kv {
namespace {

/// What project files call a menu's productions.
constexpr std::string_view kStoryboard = "Storyboard";
constexpr std::string_view kBackground = "Background";

/// The path that a text with macros stands for; nothing where no file is.
std::optional<Bstr> ExistingFile(CProjectNode& node, std::u16string_view text)
{
    const std::u16string path = node.FullPathOf(SharedContentPaths()->Resolve(text));
    if (!PathFileExists(path) || PathIsDirectory(path)) return std::nullopt;
    return Bstr(path);
}

bool IsMonikerText(std::u16string_view text)
{
    return StartsWithText(text, std::u16string_view(u"moniker:"));
}

bool IsLength(double seconds)
{
    return std::isfinite(seconds) && seconds >= 0.0;
}

Bstr Translated(const Bstr& text, HRESULT (DocumentPaths::*translate)(BSTR, BSTR*))
{
    Bstr translated;
    if (text) ThrowIfFailed(((*Make<DocumentPaths>()).*translate)(text.Get(), translated.Put()));
    return translated;
}

} // namespace

// Audio, background, duration

ComPtr<IUnknown> CKVMenu::AudioProduction() const
{
    return KeepsPlaying() ? m_productions.Background() : m_productions.Menu();
}

ComPtr<IUnknown> CKVMenu::BackgroundSourceProduction() const
{
    return m_native ? m_productions.Background() : m_productions.Menu();
}

HRESULT CKVMenu::get_Audio(BSTR* pVal)
{
    return Read([&] {
        if (!pVal) return E_POINTER;
        *pVal = nullptr;
        const auto production = AudioProduction();
        return production ? sbd::GetBackgroundAudio(production.Get(), pVal) : S_FALSE;
    });
}

HRESULT CKVMenu::put_Audio(BSTR newVal)
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        const auto file = View(newVal).empty() ? Bstr() : ExistingFile(*this, View(newVal));
        if (!file) return KV_E_NO_AUDIO_FILE;
        Bstr copy = Bstr::CopyOf(newVal);
        const auto production = AudioProduction();
        RecordState(production != nullptr);
        if (production) ThrowIfFailed(sbd::SetBackgroundAudio(production.Get(), file->Get(), false));
        m_audio = std::move(copy);
        edit.Changed(302);
        return production ? S_OK : S_FALSE;
    });
}

HRESULT CKVMenu::get_Background(BSTR* pVal)
{
    return Read([&] {
        if (!pVal) return E_POINTER;
        *pVal = nullptr;
        if (m_native) return Get(pVal, m_background);
        const auto production = m_productions.Menu();
        return production ? sbd::GetVideoSource(production.Get(), pVal) : S_FALSE;
    });
}

HRESULT CKVMenu::put_Background(BSTR newVal)
{
    return PutBackground(newVal, 0.0, 0.0);
}

HRESULT CKVMenu::PutBackgroundWithTrim(BSTR bstrBackground, double dIn, double dOut)
{
    return PutBackground(bstrBackground, dIn, dOut);
}

HRESULT CKVMenu::PutBackground(BSTR source, double inPoint, double outPoint)
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        const auto shown = IsMonikerText(View(source)) ? Bstr::CopyOf(source) : ExistingFile(*this, View(source));
        if (!shown) return KV_E_NO_BACKGROUND_FILE;
        Bstr copy = Bstr::CopyOf(source);
        RecordState(true);
        const auto production = BackgroundSourceProduction();
        if (production) {
            double duration = m_duration;
            if (!KeepsPlaying()) ThrowIfFailed(GetPlayedDuration(production.Get(), &duration));
            MenuBackground(production.Get()).SetSource(shown->Get(), inPoint, outPoint, {duration, m_loopPlay});
        }
        m_background = std::move(copy);
        m_bkgndID = 0;
        edit.Changed(301);
        return production ? S_OK : S_FALSE;
    });
}

HRESULT CKVMenu::NameBackground(BSTR path)
{
    return Edit([&](EditScope& edit) {
        if (!m_native) return S_FALSE;
        Bstr copy = Bstr::CopyOf(path);
        edit.Record();
        m_background = std::move(copy);
        edit.Changed(301);
        return S_OK;
    });
}

HRESULT CKVMenu::GetPlayedDuration(IUnknown* production, double* duration) const
{
    const HRESULT asked = sbd::GetDuration(production, duration);
    if (FAILED(asked)) return asked;
    if (*duration == 0.0 && MenuBackground(production).PanelCount() == 0) *duration = m_duration;
    return S_OK;
}

HRESULT CKVMenu::get_Duration(double* pVal)
{
    return Read([&] {
        if (!pVal) return E_POINTER;
        *pVal = 0.0;
        if (KeepsPlaying()) return Get(pVal, m_duration);
        const auto production = m_productions.Menu();
        return production ? GetPlayedDuration(production.Get(), pVal) : S_FALSE;
    });
}

HRESULT CKVMenu::put_Duration(double newVal)
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        if (!IsLength(newVal)) return E_INVALIDARG;
        const bool isPlayed = !KeepsPlaying();
        RecordState(isPlayed);
        const auto production = isPlayed ? m_productions.Menu() : nullptr;
        if (production) ThrowIfFailed(sbd::SetDuration(production.Get(), newVal));
        m_duration = newVal;
        edit.Changed(308);
        return isPlayed && !production ? S_FALSE : S_OK;
    });
}

HRESULT CKVMenu::AdjustNativeDuration()
{
    return Edit([&](EditScope& edit) {
        EngineCalls::Begin();
        const auto production = m_native ? m_productions.Background() : nullptr;
        if (!production || MenuBackground(production.Get()).PanelCount() == 0) return S_FALSE;
        double duration = 0.0;
        ThrowIfFailed(sbd::GetDuration(production.Get(), &duration));
        RecordState(true);
        m_duration = duration;
        edit.Changed(308);
        return S_OK;
    });
}

CKVMenu::Playing CKVMenu::Played() const
{
    const auto production = m_native ? nullptr : m_productions.Menu();
    return production ? PlayingOf(production.Get()) : Playing{m_background, m_audio, m_duration};
}

CKVMenu::Playing CKVMenu::PlayingOf(IUnknown* production) const
{
    Playing playing;
    ThrowIfFailed(sbd::GetVideoSource(production, playing.background.Put()));
    ThrowIfFailed(sbd::GetBackgroundAudio(production, playing.audio.Put()));
    ThrowIfFailed(GetPlayedDuration(production, &playing.duration));
    return playing;
}

void CKVMenu::Play(IUnknown* production, const Playing& playing)
{
    MenuBackground background(production);
    const auto full = [this](const Bstr& text) {
        const Bstr path = Translated(text, &DocumentPaths::FromDocument);
        return path ? Bstr(FullPathOf(path.View())) : path;
    };
    const Bstr source = full(playing.background);
    const Bstr audio = full(playing.audio);
    if (source.View().empty()) {
        background.Clear();
    } else {
        background.SetSource(source.Get(), 0.0, 0.0, {playing.duration, m_loopPlay});
    }
    ThrowIfFailed(sbd::SetBackgroundAudio(production, audio.Get(), false));
    if (playing.duration > 0.0) ThrowIfFailed(sbd::SetDuration(production, playing.duration));
}

// Documents

void CKVMenu::ListPlaying(AttributeArchive& archive)
{
    if (archive.Records()) {
        // Mode and productions are exchanged by a record of their own.
        archive("audio", m_audio);
        archive("background", m_background);
        archive("duration", m_duration);
        return;
    }
    bool native = m_native;
    archive("native", native);
    const bool listsPlaying = archive.Reads() || m_native || archive.ForcesNative();
    if (!listsPlaying) return;
    Playing playing = archive.Reads() ? Playing{} : Played();
    const auto path = [&](std::string_view name, Bstr& text) {
        return archive.Value<Bstr>(
            name,
            [&] {
                // Whoever reads what is no file may stand in no project that knows the path.
                const Bstr full(FilePlace::Current() ? text.View() : FullPathOf(text.View()));
                return Translated(text ? full : text, &DocumentPaths::ToDocument);
            },
            [&](const Bstr& read) { text = Translated(read, &DocumentPaths::FromDocument); });
    };
    const bool tellsAudio = path("audio", playing.audio);
    const bool tellsBackground = path("background", playing.background);
    const bool tellsDuration = archive.Value<double>(
        "duration", [&] { return playing.duration; },
        [&](double read) {
            if (!IsLength(read)) throw Error(E_INVALIDARG);
            playing.duration = read;
        });
    const bool tellsAny = tellsAudio || tellsBackground || tellsDuration;
    if (!archive.Reads() || (!tellsAny && native == m_native)) return;
    Playing before{m_background, m_audio, m_duration};
    const HRESULT asked = Guarded([&] {
        before = Played();
        return S_OK;
    });
    if (asked == E_OUTOFMEMORY) throw Error(asked);
    if (!tellsAudio) playing.audio = before.audio;
    if (!tellsBackground) playing.background = before.background;
    if (!tellsDuration) playing.duration = before.duration;
    TakePlaying(native, std::move(playing), before);
}

void CKVMenu::TakePlaying(bool native, Playing loaded, const Playing& before)
{
    // What the engine does not take is told; the menu is what the document says all the same.
    if (native != m_native) {
        ProductionUse left;
        if (native) {
            m_productions.MakeBackground();
            Elements().RemoveEffects();
            m_productions.ExchangeMenu(left);
        } else {
            m_productions.MakeMenu();
            m_productions.ExchangeBackground(left);
        }
        m_native = native;
    } else {
        const bool isSame = loaded.background.View() == before.background.View() &&
                            loaded.audio.View() == before.audio.View() && loaded.duration == before.duration;
        if (isSame) return;
        RecordState(true);
    }
    m_background = std::move(loaded.background);
    m_audio = std::move(loaded.audio);
    m_duration = loaded.duration;
    const auto production = BackgroundSourceProduction();
    if (!production) return;
    const HRESULT played = Guarded([&] {
        Play(production.Get(), {m_background, m_audio, m_duration});
        return S_OK;
    });
    if (played == E_OUTOFMEMORY) throw Error(played);
}

// Productions

HRESULT CKVMenu::GetProduction(IUnknown** ppProduction)
{
    return Read([&] {
        if (!ppProduction) return E_POINTER;
        *ppProduction = nullptr;
        const auto production = m_productions.Menu();
        return production ? production.CopyTo(ppProduction) : S_FALSE;
    });
}

HRESULT CKVMenu::GetBackgroundProduction(IUnknown** ppProduction)
{
    return Read([&] {
        if (!ppProduction) return E_POINTER;
        *ppProduction = nullptr;
        const auto production = m_productions.Background();
        return production ? production.CopyTo(ppProduction) : S_FALSE;
    });
}

HRESULT CKVMenu::SetPreProduceProduction(IUnknown* pUnk)
{
    // What is let go is released when the section has been left.
    ComPtr<IUnknown> held = Query<IUnknown>(Query<IZXEProductionData>(pUnk));
    const SectionLock lock(Section());
    std::swap(m_preProduced, held);
    return S_OK;
}

HRESULT CKVMenu::GetPreProduceProduction(IUnknown** pp)
{
    return Read([&] { return m_preProduced.CopyTo(pp); });
}

std::vector<OwnedProduction> CKVMenu::Productions()
{
    const SectionLock lock(Section());
    return {{kStoryboard, m_productions.Menu(), m_productions.MenuIsMere()}, {kBackground, m_productions.Background()}};
}

HRESULT CKVMenu::TakeProduction(std::string_view name, IUnknown* production)
{
    return Read([&] {
        if (name != (m_native ? kBackground : kStoryboard)) return E_INVALIDARG;
        ProductionUse taken = UseProduction(Query<IUnknown>(production));
        if (m_native) {
            m_productions.ExchangeBackground(taken);
        } else {
            const HRESULT exchanged = m_productions.ExchangeMenu(taken);
            if (FAILED(exchanged)) return exchanged;
            Elements().DetachEffects();
            Elements().AttachEffects(production);
        }
        return S_OK;
    });
}

} // namespace kv
