#include "SbdUtils/SbdUtils.h"

#include "KVProjectData/Engine/Audio.h"
#include "KVProjectData/Engine/Effects.h"
#include "KVProjectData/Engine/Sources.h"
#include "SbdUtils/ProductionObject.h"

#include <algorithm>
#include <vector>

namespace kv::sbd {
namespace {

constexpr EngineCalls kEngine("SbdUtils");
/// A fade of this length only keeps the sound from clicking.
constexpr double kNoFade = 0.1;

using Objects = std::vector<ComPtr<IUnknown>>;

/// A storyboard on its way through one operation. Failures are thrown as Error.
class Board {
public:
    explicit Board(IUnknown* pUnkSbd)
    {
        kEngine.NeedPointer(pUnkSbd, "pUnkSbd");
        m_data = kEngine.Need<IZXEProductionData>(pUnkSbd, "(IZXEProductionData*)spSbd");
    }

    IZXEProductionData& Data() const { return *m_data; }
    ComPtr<IEditData> Edits() const { return kEngine.Need<IEditData>(m_data.Get(), "(IEditData*)spEditData"); }
    ProductionObject Production() const { return ProductionObject(kEngine, *m_data); }

    LONG PanelCount() const
    {
        LONG count = 0;
        kEngine.Need(m_data->GetPanelCount(&count));
        return count;
    }

    ComPtr<IUnknown> Panel(LONG index) const
    {
        const std::string_view call = index == 0 ? "spSbd->GetPanelBaseObject(0, &pUnkPanel)" : "";
        ComPtr<IUnknown> panel;
        kEngine.Need(m_data->GetPanelBaseObject(index, panel.Put()), call);
        return panel;
    }

private:
    ComPtr<IZXEProductionData> m_data;
};

/// The background audio at an index; null when there is none.
ComPtr<IUnknown> BackgroundAudio(const ProductionObject& production, LONG index = 0)
{
    ComPtr<IUnknown> audio;
    kEngine.Need(production.Objects()->GetObject(ZXE_KIND_BACKGROUND_AUDIO, index, audio.Put()));
    return audio;
}

ComPtr<ISubObject> Place(IUnknown* audio)
{
    return kEngine.Need<ISubObject>(audio, "(ISubObject*)spAudioSubObj");
}

ComPtr<IAudioProps> Props(IUnknown* audio)
{
    return kEngine.Need<IAudioProps>(audio, "(IAudioProps*)spAudioProps");
}

void UseNativeAudio(IUnknown* panel, bool use, std::string_view interface, std::string_view call)
{
    const auto spNativeInfo = kEngine.Need<INativeInfo>(panel, interface);
    kEngine.Need(spNativeInfo->put_UseNativeAudio(use ? VARIANT_TRUE : VARIANT_FALSE), call);
}

/// The background audio, where there is one, plays over and over for as long as the production does.
HRESULT MatchBackgroundAudioDuration(const ProductionObject& production)
{
    return Guarded([&] {
        const double dDuration = production.Duration();
        const auto audio = BackgroundAudio(production);
        if (!audio) return S_FALSE;
        if (const auto spAudioSource = Query<ISourceFile>(audio)) {
            kEngine.Need(spAudioSource->put_Repeat(VARIANT_TRUE), "spAudioSource->put_Repeat(VARIANT_TRUE)");
        }
        return kEngine.Need(Place(audio.Get())->put_EndOffset(dDuration), "spAudioSubObj->put_EndOffset(dDuration)");
    });
}

void Match(const ProductionObject& production)
{
    kEngine.Need(MatchBackgroundAudioDuration(production), "_matchBkgndAudioDuration(spUnkProdObj)");
}

/// Ends a clip at a time of its source, or in its last frame.
HRESULT EndClip(IUnknown* panel, double dDuration, const FrameClock& clock)
{
    const auto spSrc = kEngine.Need<ISourceFile>(panel, "(ISourceFile*)spSrc");
    const HRESULT result = spSrc->put_OutPoint(dDuration);
    if (result != E_FAIL) return result;
    double length = 0.0;
    kEngine.Need(spSrc->get_Length(&length));
    return spSrc->put_OutPoint(clock.LastFrameMid(length));
}

/// The sounds of a kind, or the first one of them.
Objects Sounds(const Board& board, SoundOf kind, bool all)
{
    Objects sounds;
    if (kind == SoundOf::BackgroundAudio) {
        if (auto audio = BackgroundAudio(board.Production())) sounds.push_back(std::move(audio));
        return sounds;
    }
    if (kind != SoundOf::Panels) throw Error(kEngine.Checked(E_INVALIDARG));
    const LONG count = board.PanelCount();
    for (LONG i = 0; i < (all ? count : std::min(count, LONG{1})); ++i) {
        const auto spNativeInfo = Query<INativeInfo>(board.Panel(i));
        ComPtr<IUnknown> sound;
        if (spNativeInfo) kEngine.Need(spNativeInfo->GetNativeAudio(sound.Put()));
        if (sound) sounds.push_back(std::move(sound));
    }
    return sounds;
}

/// Asks the first sound of a kind, where there is one that answers for the interface. The value is nothing else.
template <class Interface, class T, class Out, class Find>
HRESULT AskSound(IUnknown* pUnkSbd, SoundOf kind, HRESULT (Interface::*getter)(T*), Out* out, std::string_view outName,
                 Find&& find)
{
    return EngineCalls::Operation([&] {
        kEngine.NeedPointer(out, outName);
        *out = {};
        const Objects sounds = Sounds(Board(pUnkSbd), kind, false);
        const auto asked = Query<Interface>(sounds.empty() ? nullptr : sounds.front());
        if (!asked) return S_OK;
        T value{};
        kEngine.Need((*asked.*getter)(&value));
        *out = find(value);
        return S_OK;
    });
}

/// Changes every sound of a kind. S_FALSE when there is none.
template <class Change>
HRESULT ChangeSounds(IUnknown* pUnkSbd, SoundOf kind, Change&& change)
{
    return EngineCalls::Operation([&] {
        const Objects sounds = Sounds(Board(pUnkSbd), kind, true);
        for (const auto& sound : sounds)
            change(sound.Get());
        return sounds.empty() ? S_FALSE : S_OK;
    });
}

double FadeLength(ISubObject& sound)
{
    constexpr double kLongest = 3.0;
    double start = 0.0;
    double end = 0.0;
    kEngine.Need(sound.get_StartOffset(&start));
    kEngine.Need(sound.get_EndOffset(&end));
    return std::clamp((end - start) / 2, 0.0, kLongest);
}

} // namespace

HRESULT GetDuration(IUnknown* pUnkSbd, double* pdDuration)
{
    return EngineCalls::Operation([&] {
        kEngine.NeedPointer(pdDuration, "pdDuration");
        *pdDuration = 0.0;
        const Board board(pUnkSbd);
        ComPtr<IUnknown> production;
        board.Data().GetProductionObj(production.Put());
        const auto spProdInfo = Query<IProductionInfo>(production);
        double dDuration = 0.0;
        if (spProdInfo && SUCCEEDED(spProdInfo->get_Duration(&dDuration))) *pdDuration = dDuration;
        return S_OK;
    });
}

HRESULT SetDuration(IUnknown* pUnkSbd, double dDuration)
{
    return EngineCalls::Operation([&] {
        const Board board(pUnkSbd);
        const ProductionObject production = board.Production();
        const FrameClock clock = production.Clock();
        const auto panel = board.Panel(0);
        const auto spBaseObj = kEngine.Need<IBaseObject>(panel.Get(), "(IBaseObject*)spBaseObj");
        HRESULT result = spBaseObj->put_Duration(dDuration);
        if (result == E_NOTIMPL) result = EndClip(panel.Get(), dDuration, clock);
        kEngine.Need(result);
        Match(production);
        return S_OK;
    });
}

HRESULT GetVideoSource(IUnknown* pUnkSbd, BSTR* pbstrVideoSource)
{
    return EngineCalls::Operation([&] {
        kEngine.NeedPointer(pbstrVideoSource, "pbstrVideoSource");
        *pbstrVideoSource = nullptr;
        const Board board(pUnkSbd);
        ComPtr<IUnknown> panel;
        board.Data().GetPanelBaseObject(0, panel.Put());
        const auto source = Query<ISourceFile>(panel);
        Bstr name;
        if (!source || FAILED(source->get_FileName(name.Put())) || !name) name = Bstr(u"");
        *pbstrVideoSource = name.Detach();
        return S_OK;
    });
}

HRESULT SetVideoSource(IUnknown* pUnkSbd, BSTR bstrSource, bool bUseSourceAspectRatio, double dinPoint,
                       double dOoutPoint, bool bUseNativeAudio)
{
    return EngineCalls::Operation([&] {
        constexpr std::string_view kAddSourceFile =
            "spEditSbd->AddSourceFile(0, bstrSource, dinPoint, dOoutPoint, VARIANT_TRUE, &spUnkPanel)";
        const Board board(pUnkSbd);
        if (View(bstrSource).empty()) return S_FALSE;
        // What the engine would refuse must not cost the panels that are there.
        const bool amounts =
            std::isfinite(dinPoint) && dinPoint >= 0.0 && std::isfinite(dOoutPoint) && dOoutPoint >= 0.0;
        if (!amounts || (dOoutPoint > 0.0 && dOoutPoint <= dinPoint))
            return kEngine.Checked(E_INVALIDARG, kAddSourceFile);
        IZXEProductionData& data = board.Data();
        const auto edits = board.Edits();
        for (LONG left = board.PanelCount(); left > 0; --left)
            kEngine.Need(data.DeletePanel(0), "spSbd->DeletePanel(0)");
        kEngine.Need(data.put_UseSourceAspectRatio(bUseSourceAspectRatio ? VARIANT_TRUE : VARIANT_FALSE),
                     "spSbd->put_UseSourceAspectRatio(bUseSourceAspectRatio ? VARIANT_TRUE : VARIANT_FALSE)");
        ComPtr<IUnknown> panel;
        constexpr LONG kLast = -1;
        kEngine.Need(edits->AddSourceFile(0, bstrSource, dinPoint, dOoutPoint, kLast, panel.Put()), kAddSourceFile);
        const ProductionObject production = board.Production();
        if (!BackgroundAudio(production)) return S_OK;
        UseNativeAudio(panel.Get(), bUseNativeAudio, "(INativeInfo*)spNativeInfo",
                       "spNativeInfo->put_UseNativeAudio(bUseNativeAudio ? VARIANT_TRUE : VARIANT_FALSE)");
        Match(production);
        return S_OK;
    });
}

HRESULT GetBackgroundAudio(IUnknown* pUnkSbd, BSTR* pbstrAudioSource)
{
    return EngineCalls::Operation([&] {
        kEngine.NeedPointer(pbstrAudioSource, "pbstrAudioSource");
        *pbstrAudioSource = nullptr;
        const auto audio = BackgroundAudio(Board(pUnkSbd).Production());
        Bstr source;
        if (const auto spAudioSource = Query<ISourceFile>(audio)) {
            kEngine.Need(spAudioSource->get_FileName(source.Put()), "spAudioSource->get_FileName(pbstrAudioSource)");
        } else if (audio) {
            const auto pSmartAudio = kEngine.Need<ISmartAudio>(audio.Get(), "(ISmartAudio*)pSmartAudio");
            kEngine.Need(pSmartAudio->get_Moniker(source.Put()), "pSmartAudio->get_Moniker(pbstrAudioSource)");
        }
        if (!source) source = Bstr(u"");
        *pbstrAudioSource = source.Detach();
        return S_OK;
    });
}

HRESULT SetBackgroundAudio(IUnknown* pUnkSbd, BSTR bstrSource, bool bKeepPanelAudio)
{
    return EngineCalls::Operation([&] {
        const Board board(pUnkSbd);
        const auto edits = board.Edits();
        const ProductionObject production = board.Production();
        const bool hasSource = !View(bstrSource).empty();

        std::vector<LONG> old;
        while (const auto audio = BackgroundAudio(production, static_cast<LONG>(old.size())))
            kEngine.Need(Place(audio.Get())->get_ID(&old.emplace_back()));
        for (const LONG lID : old)
            kEngine.Need(edits->DeleteProductionAudio(lID), "spEditData->DeleteProductionAudio(lID)");
        if (hasSource) {
            kEngine.Need(edits->AddProductionAudio(bstrSource, ZXE_KIND_BACKGROUND_AUDIO, 0.0, nullptr),
                         "spEditData->AddProductionAudio(bstrSource, enBackgroundAudio, 0.0, &spUnkAudio)");
            Match(production);
        }
        if (!bKeepPanelAudio && board.PanelCount() > 0) {
            UseNativeAudio(board.Panel(0).Get(), !hasSource, "(INativeInfo*)spPanelNativeInfo",
                           "spPanelNativeInfo->put_UseNativeAudio(bstrSource.Length() > 0 ? VARIANT_FALSE : "
                           "VARIANT_TRUE)");
        }
        return S_OK;
    });
}

// The sound

HRESULT GetMute(IUnknown* pUnkSbd, SoundOf kind, VARIANT_BOOL* pbMute)
{
    return AskSound(pUnkSbd, kind, &ISubObject::get_Mute, pbMute, "pbMute",
                    [](VARIANT_BOOL mute) { return mute == VARIANT_TRUE ? VARIANT_TRUE : VARIANT_FALSE; });
}

HRESULT GetLevel(IUnknown* pUnkSbd, SoundOf kind, double* pdLevel)
{
    return AskSound(pUnkSbd, kind, &IAudioProps::get_Level, pdLevel, "pdLevel", [](double level) { return level; });
}

HRESULT GetFadeEnable(IUnknown* pUnkSbd, SoundOf kind, VARIANT_BOOL* pbEnable)
{
    constexpr double kSame = 1e-8;
    return AskSound(pUnkSbd, kind, &IAudioProps::get_FadeIn, pbEnable, "pbEnable",
                    [](double fadeIn) { return std::fabs(fadeIn - kNoFade) <= kSame ? VARIANT_FALSE : VARIANT_TRUE; });
}

HRESULT PutMute(IUnknown* pUnkSbd, SoundOf kind, VARIANT_BOOL bMute)
{
    return ChangeSounds(pUnkSbd, kind, [=](IUnknown* sound) { kEngine.Need(Place(sound)->put_Mute(bMute)); });
}

HRESULT PutLevel(IUnknown* pUnkSbd, SoundOf kind, double dLevel)
{
    return ChangeSounds(pUnkSbd, kind, [=](IUnknown* sound) { kEngine.Need(Props(sound)->put_Level(dLevel)); });
}

HRESULT PutFadeEnable(IUnknown* pUnkSbd, SoundOf kind, bool bEnable)
{
    return ChangeSounds(pUnkSbd, kind, [=](IUnknown* sound) {
        const auto place = Place(sound);
        const auto props = Props(sound);
        const double fade = bEnable ? FadeLength(*place) : kNoFade;
        kEngine.Need(props->put_FadeIn(fade));
        kEngine.Need(props->put_FadeOut(fade));
        kEngine.Need(props->put_FadeInGain(1.0));
        kEngine.Need(props->put_FadeOutGain(1.0));
    });
}

} // namespace kv::sbd
