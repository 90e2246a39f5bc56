// What a menu plays, and where: in a production of its own, or in native mode in its fields and a background
// production.

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/content/DocumentPaths.h"
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
std::optional<Bstr> ExistingFile(std::u16string_view text)
{
    const std::u16string path = SharedContentPaths()->Resolve(text);
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

/// Calls `visit` with each element of a list, and of the lists of its buttons, inside the sections of the element and
/// of what it stands in.
template <class Visit>
void ForEachElement(CProjectNode& list, Visit&& visit)
{
    constexpr LONG kElementList = 3;
    const SectionLock listLock(list.Section());
    for (LONG i = 0; i < list.ChildCount(); ++i) {
        CProjectNode& element = *list.GetChild(i);
        const SectionLock lock(element.Section());
        visit(element);
        CProjectNode* inner = element.Type() == typeButton ? element.GetChild(kElementList) : nullptr;
        if (inner) ForEachElement(*inner, visit);
    }
}

Bstr Translated(const Bstr& text, HRESULT (DocumentPaths::*translate)(BSTR, BSTR*))
{
    Bstr translated;
    if (text) ThrowIfFailed(((*Make<DocumentPaths>()).*translate)(text.Get(), translated.Put()));
    return translated;
}

} // namespace

/// The mode that a menu is not in: what is let go with it, or comes back by undo.
class CKVMenu::OtherMode final : public KeptMode {
public:
    explicit OtherMode(CKVMenu& menu) : m_menu(menu) {}

    HRESULT Exchange() override { return m_menu.ExchangeMode(*this); }

    /// False until a switch succeeded.
    bool isFilled = false;
    bool native = false;
    /// That of the mode.
    ProductionUse production;

private:
    CKVMenu& m_menu;
};

/// The mode that a menu was in, with the production that showed it.
class CKVMenu::ShownMode final : public ModeImage {
public:
    explicit ShownMode(CKVMenu& menu) : m_menu(menu), m_native(menu.m_native), m_production(menu.ModeProduction()) {}

    bool Enter() const override { return m_menu.EnterMode(m_native, m_production); }
    void Bind() const override
    {
        if (!m_native && m_production) ForEachElement(m_menu.Elements(), AttachNowOrLater);
    }

private:
    CKVMenu& m_menu;
    const bool m_native;
    const ProductionUse m_production;
};

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
        const auto file = View(newVal).empty() ? Bstr() : ExistingFile(View(newVal));
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
        const auto shown = IsMonikerText(View(source)) ? Bstr::CopyOf(source) : ExistingFile(View(source));
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
    const Bstr source = Translated(playing.background, &DocumentPaths::FromDocument);
    const Bstr audio = Translated(playing.audio, &DocumentPaths::FromDocument);
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
            name, [&] { return Translated(text, &DocumentPaths::ToDocument); },
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

// The mode

HRESULT CKVMenu::SetNative(VARIANT_BOOL bNative)
{
    return Edit([&](EditScope&) {
        EngineCalls::Begin();
        if (bNative != VARIANT_TRUE && bNative != VARIANT_FALSE) return E_INVALIDARG;
        const bool native = bNative == VARIANT_TRUE;
        if (native == m_native) return S_FALSE;
        RecordState(true);
        const auto left = std::make_shared<OtherMode>(*this);
        RecordMode(left);
        return native ? TurnNative(*left) : TurnToProduction(*left);
    });
}

HRESULT CKVMenu::TurnNative(OtherMode& left)
{
    ThrowIfFailed(m_productions.MakeBackground());
    const auto background = m_productions.Background();
    const auto menu = m_productions.Menu();
    const HRESULT turned = Guarded([&] {
        Playing playing{m_background, m_audio, m_duration};
        if (menu) {
            // They keep what their effects told from here on.
            ForEachElement(Elements(), [](CProjectNode& element) { element.RecordState(true); });
            {
                const RecordingOff off;
                ThrowIfFailed(Elements().RemoveEffects());
            }
            if (m_bkgndID == 0) playing = PlayingOf(menu.Get());
        }
        if (m_bkgndID == 0) Play(background.Get(), playing);
        const AspectRatio aspect = menu ? m_productions.AspectFromMenu(EncodingParams()) : AspectRatio_None;
        ThrowIfFailed(m_productions.ExchangeMenu(left.production));
        // Last, since nothing can fail any more but the lack of memory.
        if (aspect != AspectRatio_None) {
            const HRESULT told = EncodingParams().put_AspectRatio(aspect);
            if (FAILED(told)) {
                m_productions.ExchangeMenu(left.production);
                throw Error(told);
            }
        }
        m_background = std::move(playing.background);
        m_audio = std::move(playing.audio);
        m_duration = playing.duration;
        return S_OK;
    });
    if (FAILED(turned)) {
        // The menu goes on as it was.
        ProductionUse none;
        m_productions.ExchangeBackground(none);
        none.reset();
        if (menu) Elements().InsertEffects(menu.Get());
        return turned;
    }
    left.isFilled = true;
    m_native = true;
    return S_OK;
}

HRESULT CKVMenu::TurnToProduction(OtherMode& left)
{
    ThrowIfFailed(m_productions.MakeMenu());
    const auto menu = m_productions.Menu();
    const HRESULT turned = Guarded([&] {
        {
            const RecordingOff off;
            ThrowIfFailed(Elements().InsertEffects(menu.Get()));
        }
        if (m_bkgndID == 0) Play(menu.Get(), {m_background, m_audio, m_duration});
        ThrowIfFailed(m_productions.AspectToMenu(EncodingParams()));
        return S_OK;
    });
    if (FAILED(turned)) {
        // The menu stays as it was.
        Elements().RemoveEffects();
        ProductionUse none;
        m_productions.ExchangeMenu(none);
        return turned;
    }
    m_productions.ExchangeBackground(left.production);
    left.native = true;
    left.isFilled = true;
    m_native = false;
    return S_OK;
}

HRESULT CKVMenu::ExchangeMode(OtherMode& other)
{
    return Read([&] {
        if (!other.isFilled || other.native == m_native) return S_FALSE;
        const RecordingOff off;
        ProductionUse left;
        if (other.native) {
            // The effects stay in the production, which undo and redo change by its own blocks; what the elements keep
            // besides is exchanged by their own records.
            std::vector<std::pair<CProjectNode*, RecordedValues>> kept;
            ForEachElement(Elements(),
                           [&](CProjectNode& element) { kept.emplace_back(&element, element.GetRecord()); });
            Elements().DetachEffects();
            for (auto& [element, values] : kept) {
                const SectionLock lock(element->Section());
                element->ExchangeRecord(values);
            }
            const HRESULT exchanged = m_productions.ExchangeMenu(left);
            if (FAILED(exchanged)) {
                Elements().AttachEffects(m_productions.Menu().Get());
                return exchanged;
            }
            m_productions.ExchangeBackground(other.production);
        } else {
            left = other.production;
            const HRESULT exchanged = m_productions.ExchangeMenu(left);
            if (FAILED(exchanged)) return exchanged;
            other.production.reset();
            m_productions.ExchangeBackground(left);
            // Those whose effects the storyboard has not brought back yet are bound when it has.
            ForEachElement(Elements(), [](CProjectNode& element) { element.AttachEffect(); });
        }
        other.production = std::move(left);
        other.native = m_native;
        m_native = !m_native;
        return S_OK;
    });
}

std::shared_ptr<const ModeImage> CKVMenu::PresentMode()
{
    return std::make_shared<ShownMode>(*this);
}

bool CKVMenu::EnterMode(bool native, ProductionUse production)
{
    if (native == m_native && production == ModeProduction()) return false;
    EngineCalls::Begin();
    const RecordingOff off;
    // The effects stay in the production that is left.
    Elements().DetachEffects();
    ProductionUse background;
    if (native) std::swap(background, production);
    const HRESULT exchanged = m_productions.ExchangeMenu(production);
    if (FAILED(exchanged)) {
        if (const auto menu = m_productions.Menu()) Elements().AttachEffects(menu.Get());
        throw Error(exchanged);
    }
    m_productions.ExchangeBackground(background);
    m_native = native;
    return true;
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

// The background production

template <class Out, class Ask>
HRESULT CKVMenu::AskBackground(Out* out, Ask&& ask)
{
    return Guarded([&] {
        if (!out) return E_POINTER;
        *out = {};
        const auto production = m_productions.Background();
        return production ? ask(production.Get()) : S_FALSE;
    });
}

template <class Change>
HRESULT CKVMenu::EditBackground(Change&& change)
{
    return Guarded([&] {
        EngineCalls::Begin();
        ComPtr<IUnknown> production;
        {
            const SectionLock lock(Section());
            if (const HRESULT locked = CheckLocked(); FAILED(locked)) return locked;
            production = m_productions.Background();
            if (!production) return S_FALSE;
            RecordState(true);
        }
        return change(production.Get());
    });
}

template <class Change>
HRESULT CKVMenu::EditNativeBackground(Change&& change, bool isValid)
{
    {
        const SectionLock lock(Section());
        if (const HRESULT locked = CheckLocked(); FAILED(locked)) return locked;
        if (!m_native) return S_OK;
    }
    if (!Query<IZXEProductionData>(m_productions.Background())) return S_FALSE;
    if (!isValid) return E_INVALIDARG;
    return EditBackground([&](IUnknown* production) {
        change(MenuBackground(production));
        FirePropertyChanged(301);
        return S_OK;
    });
}

HRESULT CKVMenu::get_BackgroundMute(VARIANT_BOOL* pVal)
{
    return AskBackground(pVal,
                         [=](IUnknown* production) { return sbd::GetMute(production, sbd::SoundOf::Panels, pVal); });
}

HRESULT CKVMenu::put_BackgroundMute(VARIANT_BOOL newVal)
{
    return EditBackground([=](IUnknown* production) { return sbd::PutMute(production, sbd::SoundOf::Panels, newVal); });
}

HRESULT CKVMenu::get_BackgroundAudioMute(VARIANT_BOOL* pVal)
{
    return AskBackground(
        pVal, [=](IUnknown* production) { return sbd::GetMute(production, sbd::SoundOf::BackgroundAudio, pVal); });
}

HRESULT CKVMenu::put_BackgroundAudioMute(VARIANT_BOOL newVal)
{
    return EditBackground(
        [=](IUnknown* production) { return sbd::PutMute(production, sbd::SoundOf::BackgroundAudio, newVal); });
}

HRESULT CKVMenu::SetMenuBackgroundVolume(double dVolume)
{
    return EditBackground(
        [=](IUnknown* production) { return sbd::PutLevel(production, sbd::SoundOf::Panels, dVolume); });
}

HRESULT CKVMenu::GetMenuBackgroundVolume(double* pdVolume)
{
    return AskBackground(
        pdVolume, [=](IUnknown* production) { return sbd::GetLevel(production, sbd::SoundOf::Panels, pdVolume); });
}

HRESULT CKVMenu::SetMenuBackgroundAudioVolume(double dVolume)
{
    return EditBackground(
        [=](IUnknown* production) { return sbd::PutLevel(production, sbd::SoundOf::BackgroundAudio, dVolume); });
}

HRESULT CKVMenu::GetMenuBackgroundAudioVolume(double* pdVolume)
{
    return AskBackground(pdVolume, [=](IUnknown* production) {
        return sbd::GetLevel(production, sbd::SoundOf::BackgroundAudio, pdVolume);
    });
}

HRESULT CKVMenu::SetMenuBackgroundFadeInOut(VARIANT_BOOL bEnable)
{
    return EditBackground([=](IUnknown* production) {
        return sbd::PutFadeEnable(production, sbd::SoundOf::Panels, bEnable != VARIANT_FALSE);
    });
}

HRESULT CKVMenu::GetMenuBackgroundFadeInOut(VARIANT_BOOL* pbEnable)
{
    return AskBackground(
        pbEnable, [=](IUnknown* production) { return sbd::GetFadeEnable(production, sbd::SoundOf::Panels, pbEnable); });
}

HRESULT CKVMenu::SetMenuBackgroundAudioFadeEnable(VARIANT_BOOL bEnable)
{
    return EditBackground([this, bEnable](IUnknown* production) {
        const HRESULT set = sbd::PutFadeEnable(production, sbd::SoundOf::BackgroundAudio, bEnable != VARIANT_FALSE);
        if (SUCCEEDED(set)) FirePropertyChanged(356);
        return set;
    });
}

HRESULT CKVMenu::GetMenuBackgroundAudioFadeEnable(VARIANT_BOOL* pbEnable)
{
    return AskBackground(pbEnable, [=](IUnknown* production) {
        return sbd::GetFadeEnable(production, sbd::SoundOf::BackgroundAudio, pbEnable);
    });
}

HRESULT CKVMenu::SetMenuBackgroundCrop(float fTop, float fLeft, float fBottom, float fRight)
{
    const FloatRect rect{fLeft, fTop, fRight, fBottom};
    const bool isFinite =
        std::isfinite(fLeft) && std::isfinite(fTop) && std::isfinite(fRight) && std::isfinite(fBottom);
    return EditNativeBackground([&](MenuBackground background) { background.SetCrop(rect); }, isFinite);
}

HRESULT CKVMenu::GetMenuBackgroundCrop(float* fTop, float* fLeft, float* fBottom, float* fRight)
{
    if (!fTop || !fLeft || !fBottom || !fRight) return E_POINTER;
    FloatRect rect{};
    const HRESULT asked = AskBackground(&rect, [&](IUnknown* production) {
        const auto crop = MenuBackground(production).Crop();
        rect = crop.value_or(FloatRect{});
        return crop ? S_OK : S_FALSE;
    });
    *fTop = rect.fTop;
    *fLeft = rect.fLeft;
    *fBottom = rect.fBottom;
    *fRight = rect.fRight;
    return asked;
}

HRESULT CKVMenu::SetMenuBackgroundCropMode(VARIANT_BOOL bIsCrop)
{
    return EditNativeBackground([=](MenuBackground background) { background.SetCropMode(bIsCrop != VARIANT_FALSE); });
}

HRESULT CKVMenu::ResizeMenuBackground(VARIANT_BOOL isFit)
{
    return EditNativeBackground([=](MenuBackground background) { background.Resize(isFit != VARIANT_FALSE); });
}

HRESULT CKVMenu::GetMenuBackgroundAspectRatio(double* p)
{
    return AskBackground(p, [=](IUnknown* production) {
        const MenuBackground background(production);
        const auto aspect = background.SourceAspectRatio();
        *p = aspect ? *aspect : background.AspectRatio();
        return S_OK;
    });
}

HRESULT CKVMenu::IsMenuBackgroundFill(VARIANT_BOOL* p)
{
    return AskBackground(p, [=](IUnknown* production) {
        const auto fills = MenuBackground(production).Fills();
        if (fills && *fills) *p = VARIANT_TRUE;
        return fills ? S_OK : S_FALSE;
    });
}

HRESULT CKVMenu::GetMenuBackgroundPanelSource(BSTR* pbstr)
{
    if (!pbstr) return S_FALSE;
    return AskBackground(pbstr, [=](IUnknown* production) {
        auto source = MenuBackground(production).Source();
        if (!source) return S_FALSE;
        *pbstr = source->Detach();
        return S_OK;
    });
}

HRESULT CKVMenu::ExtractBackgroundThumbnail(LONG w, LONG h, BYTE** ppBits)
{
    return AskBackground(ppBits, [=](IUnknown* production) {
        *ppBits = MenuBackground(production).Thumbnail(w, h).release();
        return S_OK;
    });
}

} // namespace kv
