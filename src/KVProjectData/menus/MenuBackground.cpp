#include "KVProjectData/menus/MenuBackground.h"

#include "KVProjectData/Engine/Frames.h"
#include "KVProjectData/effects/ZXPPlugInHelper.h"
#include "SbdUtils/EngineCalls.h"
#include "SbdUtils/SbdUtils.h"
#include "platform/automation/SafeArray.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

constexpr EngineCalls kEngine("KVMenu");

constexpr FloatRect kWholeSource{0, 0, 1, 1};

/// A clip's pan-zoom as one operation reads and edits it.
class PanZoom {
public:
    explicit PanZoom(ISourceFile& clip) : m_clip(clip)
    {
        ComPtr<IXMLDOMNode> element;
        kEngine.Need(clip.GetPanZoom(element.Put()), "spSrc->GetPanZoom(&spPanZoom)");
        m_isNew = !element;
        m_isLoaded = SUCCEEDED(m_helper.Load(element ? XmlElement(element.Get()) : XmlElement::New("ZXFPanZoom")));
    }

    /// False for one that cannot be read, which is left as it is.
    explicit operator bool() const { return m_isLoaded; }
    bool IsNew() const { return m_isNew; }

    CZXPCropSourceImpl& CropSource() { return m_helper.CropSource(); }

    std::optional<FloatRect> Crop()
    {
        FloatRect rect{};
        ULONG caps = 0;
        if (FAILED(CropSource().GetKeyRect(0.0, ZXP_FROM_START, &rect, &caps))) return std::nullopt;
        return rect;
    }

    void SetCrop(const FloatRect& rect) { kEngine.Need(CropSource().put_CropRect(rect)); }

    /// How wide the clip is shown: 1 for as much as fits into the frame.
    float Scale()
    {
        ZXPVector value{};
        ULONG caps = 0;
        const HRESULT found =
            m_helper.Transform().GetKeyValue(ZXP_SCALING, 0.0, ZXP_FROM_START, &value.x, &value.y, &value.z, &caps);
        return SUCCEEDED(found) ? value.x : 1.0F;
    }

    void SetScale(float scale)
    {
        kEngine.Need(
            m_helper.Transform().SetKeyValue(ZXP_SCALING, 0.0, ZXP_FROM_START, scale, scale, 1.0F, ZXP_ALL_CAPS));
    }

    void Push()
    {
        XmlElement edited;
        kEngine.Need(m_helper.Save(edited));
        kEngine.Need(m_clip.SetPanZoom(edited.Get()), "spSrc->SetPanZoom(spPanZoom)");
    }

private:
    ISourceFile& m_clip;
    CZXPPlugInHelper m_helper;
    bool m_isNew = false;
    bool m_isLoaded = false;
};

/// The scale at which a clip fills the frame; nothing for a source without pictures.
std::optional<float> FillingScale(ISourceFile& clip, PanZoom& panZoom, double frameAspect)
{
    double aspect = 0.0;
    if (FAILED(clip.get_AspectRatio(&aspect)) || !(aspect > 0.0)) return std::nullopt;
    const FloatRect crop = panZoom.Crop().value_or(kWholeSource);
    const double across = double{crop.fRight} - crop.fLeft;
    const double down = double{crop.fBottom} - crop.fTop;
    // A part without a width or height shows the whole.
    if (across > 0.0 && down > 0.0) aspect *= across / down;
    return static_cast<float>(std::max(frameAspect / aspect, 1.0));
}

} // namespace

MenuBackground::MenuBackground(IUnknown* production)
    : m_data(kEngine.Need<IZXEProductionData>(production, "(IZXEProductionData*)spSbd"))
{
}

template <class Visit>
void MenuBackground::ForEachClip(Visit&& visit) const
{
    const LONG count = PanelCount();
    for (LONG i = 0; i < count; ++i) {
        ComPtr<IUnknown> panel;
        kEngine.Need(m_data->GetPanelBaseObject(i, panel.Put()), "spSbd->GetPanelBaseObject(i, &spUnkPanel)");
        const auto clip = Query<ISourceFile>(panel);
        if (clip && !visit(*clip)) return;
    }
}

ComPtr<ISourceFile> MenuBackground::FirstClip() const
{
    ComPtr<ISourceFile> first;
    ForEachClip([&](ISourceFile& clip) {
        first = &clip;
        return false;
    });
    return first;
}

ComPtr<IProductionInfo> MenuBackground::Info() const
{
    ComPtr<IUnknown> object;
    kEngine.Need(m_data->GetProductionObj(object.Put()), "spSbd->GetProductionObj(&spUnkProdObj)");
    return kEngine.Need<IProductionInfo>(object.Get(), "(IProductionInfo*)spProdInfo");
}

LONG MenuBackground::PanelCount() const
{
    LONG count = 0;
    kEngine.Need(m_data->GetPanelCount(&count), "spSbd->GetPanelCount(&lCount)");
    return count;
}

HRESULT MenuBackground::SetSource(BSTR source, double inPoint, double outPoint, const Playback& playback)
{
    const HRESULT set = sbd::SetVideoSource(m_data.Get(), source, true, inPoint, outPoint, false);
    ThrowIfFailed(set);
    const auto clip = set == S_OK ? FirstClip() : nullptr;
    if (!clip) return set;
    double length = 0.0;
    kEngine.Need(clip->get_Length(&length), "spSrc->get_Length(&dLength)");
    if (length > 0.0) {
        kEngine.Need(clip->put_Repeat(playback.loops ? VARIANT_TRUE : VARIANT_FALSE), "spSrc->put_Repeat(bLoop)");
    } else if (outPoint == 0.0 && playback.seconds > 0.0) {
        ThrowIfFailed(sbd::SetDuration(m_data.Get(), playback.seconds));
    }
    return S_OK;
}

void MenuBackground::Clear()
{
    for (LONG left = PanelCount(); left > 0; --left)
        kEngine.Need(m_data->DeletePanel(0), "spSbd->DeletePanel(0)");
}

void MenuBackground::SetCrop(const FloatRect& rect)
{
    constexpr ULONG kCropped = 3;
    ForEachClip([&](ISourceFile& clip) {
        PanZoom panZoom(clip);
        if (!panZoom) return true;
        panZoom.CropSource().put_EditMode(kCropped);
        if (panZoom.IsNew()) panZoom.CropSource().put_CropMode(VARIANT_TRUE);
        panZoom.SetCrop(rect);
        panZoom.Push();
        return true;
    });
}

std::optional<FloatRect> MenuBackground::Crop() const
{
    const auto clip = FirstClip();
    if (!clip) return std::nullopt;
    PanZoom panZoom(*clip);
    if (!panZoom) return std::nullopt;
    return panZoom.Crop().value_or(kWholeSource);
}

void MenuBackground::SetCropMode(bool crops)
{
    ForEachClip([&](ISourceFile& clip) {
        PanZoom panZoom(clip);
        if (!panZoom) return true;
        panZoom.CropSource().put_CropMode(crops ? VARIANT_TRUE : VARIANT_FALSE);
        if (!panZoom.Crop()) panZoom.SetCrop(kWholeSource);
        panZoom.Push();
        return true;
    });
}

void MenuBackground::Resize(bool fits)
{
    const double frameAspect = AspectRatio();
    ForEachClip([&](ISourceFile& clip) {
        PanZoom panZoom(clip);
        const auto filling = panZoom ? FillingScale(clip, panZoom, frameAspect) : std::nullopt;
        if (!filling) return true;
        panZoom.SetScale(fits ? 1.0F : *filling);
        panZoom.Push();
        return true;
    });
}

std::optional<bool> MenuBackground::Fills() const
{
    constexpr float kSame = 1e-4F;
    const auto clip = FirstClip();
    if (!clip) return std::nullopt;
    PanZoom panZoom(*clip);
    if (!panZoom) return std::nullopt;
    const auto filling = FillingScale(*clip, panZoom, AspectRatio());
    return filling && panZoom.Scale() >= *filling - kSame;
}

std::optional<double> MenuBackground::SourceAspectRatio() const
{
    const auto clip = FirstClip();
    double aspect = 0.0;
    if (!clip || FAILED(clip->get_AspectRatio(&aspect)) || !(aspect > 0.0)) return std::nullopt;
    return aspect;
}

double MenuBackground::AspectRatio() const
{
    double dAspectRatio = 0.0;
    kEngine.Need(Info()->get_AspectRatio(&dAspectRatio), "spProdInfo->get_AspectRatio(&dAspectRatio)");
    return dAspectRatio;
}

std::optional<Bstr> MenuBackground::Source() const
{
    const auto clip = FirstClip();
    if (!clip) return std::nullopt;
    Bstr name;
    kEngine.Need(clip->get_FileName(name.Put()), "spSrc->get_FileName(&bsSource)");
    return name;
}

UniqueTaskMem<BYTE> MenuBackground::Thumbnail(LONG width, LONG height) const
{
    constexpr ULONG kPixel = 4;
    if (width <= 0 || height <= 0) throw Error(E_INVALIDARG);
    const auto frames = kEngine.Need<IZXEProductionFrames>(m_data.Get(), "(IZXEProductionFrames*)spFrames");
    ULONG columns = 0;
    ULONG rows = 0;
    ULONG stride = 0;
    SafeArray pixels;
    kEngine.Need(frames->GetFrame(0.0, static_cast<ULONG>(width), static_cast<ULONG>(height), &columns, &rows, &stride,
                                  pixels.Put()),
                 "spFrames->GetFrame(0.0, w, h, &w, &h, &stride, &psaPixels)");
    const std::size_t row = std::size_t{columns} * kPixel;
    const SAFEARRAY* array = pixels.Get();
    // An engine that hands out less than it tells must not be read past its end.
    const bool isWhole = array && columns == static_cast<ULONG>(width) && rows == static_cast<ULONG>(height) &&
                         stride >= row && array->rgsabound[0].cElements >= std::size_t{stride} * (rows - 1) + row;
    if (!isWhole) throw Error(kEngine.Checked(E_UNEXPECTED));
    UniqueTaskMem<BYTE> picture(static_cast<BYTE*>(CoTaskMemAlloc(row * rows)));
    if (!picture) throw Error(E_OUTOFMEMORY);
    const auto* from = static_cast<const BYTE*>(array->pvData);
    for (ULONG i = 0; i < rows; ++i)
        std::copy_n(from + std::size_t{stride} * i, row, picture.get() + row * i);
    return picture;
}

} // namespace kv
