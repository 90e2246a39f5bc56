// What a menu tells of its background production, and changes there.

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/Menu.h"
#include "KVProjectData/menus/MenuBackground.h"
#include "SbdUtils/EngineCalls.h"
#include "SbdUtils/SbdUtils.h"

#include <cmath>

namespace kv {

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
