#include "KVProjectData/menus/MenuOverlayImpl.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/EffectTemplates.h"
#include "KVProjectData/menus/MenuPaths.h"
#include "KVProjectData/menus/SourceMedia.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {
namespace {

constexpr EngineCalls kEngine("MenuOverlayImpl");
constexpr double kUsualAspect = 4.0 / 3.0;

FloatRect AreaOf(const CropArea& crop)
{
    return {static_cast<float>(crop.centreX - crop.sizeX / 2), static_cast<float>(crop.centreY - crop.sizeY / 2),
            static_cast<float>(crop.centreX + crop.sizeX / 2), static_cast<float>(crop.centreY + crop.sizeY / 2)};
}

/// What an effect cannot do is no failure of the element.
HRESULT Forgiven(HRESULT result)
{
    return result == E_NOTIMPL ? S_OK : result;
}

} // namespace

template <class T>
HRESULT CMenuOverlayImpl::Current(HRESULT (CNXEffect::*getter)(T&) const, const T& stored, T& value) const
{
    value = stored;
    const HRESULT result = m_effect ? kEngine.Checked((m_effect.*getter)(value)) : S_OK;
    return FAILED(result) ? result : S_OK;
}

template <class Set>
HRESULT CMenuOverlayImpl::Apply(DISPID propId, Set&& set)
{
    Node().RecordState(HasEffect());
    const HRESULT result = kEngine.Checked(set());
    if (SUCCEEDED(result)) onPropertyChanged(propId);
    return FAILED(result) ? result : S_OK;
}

// Size

HRESULT CMenuOverlayImpl::getScale(FloatPoint& scale)
{
    ZXPVector value;
    const HRESULT result = getChannel(m_scaling, value);
    scale = {value.x, value.y};
    return result;
}

HRESULT CMenuOverlayImpl::getSize(float& width, float& height)
{
    FloatPoint scale;
    const HRESULT result = getScale(scale);
    width = scale.x * 2;
    height = scale.y * 2;
    return result;
}

HRESULT CMenuOverlayImpl::setSize(float width, float height)
{
    if (width < 0 || height < 0) return E_INVALIDARG;
    return Apply(807, [&] { return setChannel(m_scaling, {width / 2, height / 2, 1}); });
}

HRESULT CMenuOverlayImpl::getHandles(Corners& corners)
{
    HRESULT result = CMenuElementImpl::getHandles(corners);
    double source = 0;
    if (SUCCEEDED(result)) result = SourceAspect(source);
    if (FAILED(result)) return result;
    const double display = DisplayAspect();
    for (FloatPoint& corner : corners) {
        if (source > display) corner.y = static_cast<float>(corner.y * (display / source));
        if (source < display) corner.x = static_cast<float>(corner.x * (source / display));
    }
    return S_OK;
}

void CMenuOverlayImpl::AddChannels(std::vector<CNXEffect::ChannelValue>& values) const
{
    values.push_back({ZXP_SCALING, {m_scaling.stored.x, m_scaling.stored.y, 1}});
}

HRESULT CMenuOverlayImpl::SourceAspect(double& aspect)
{
    if (m_effect) {
        const HRESULT result = kEngine.Checked(m_effect.getSourceAspectRatio(aspect));
        if (aspect <= 0) aspect = kUsualAspect;
        return result;
    }
    if (!m_sourceAspect) m_sourceAspect = PictureAspect(Node().FullPathOf(m_media.source.View()), kUsualAspect);
    aspect = *m_sourceAspect;
    return S_OK;
}

// The source

HRESULT CMenuOverlayImpl::getSource(Bstr& source) const
{
    return Current(&CNXEffect::getSourceFile, m_media.source, source);
}

HRESULT CMenuOverlayImpl::setSource(const Bstr& source)
{
    return Apply(200, [&]() -> HRESULT {
        if (!m_effect) {
            m_media.source = source;
            m_sourceAspect.reset();
            return S_OK;
        }
        Bstr current;
        const Bstr shown = source ? Bstr(Node().FullPathOf(source.View())) : Bstr();
        const HRESULT result = getSource(current);
        if (FAILED(result) || current.View() == shown.View()) return result;
        return m_effect.setSourceFile(shown.Get());
    });
}

HRESULT CMenuOverlayImpl::refreshSource()
{
    return Apply(200, [&] {
        m_sourceAspect.reset();
        Bstr current;
        const HRESULT result = getSource(current);
        return FAILED(result) || !m_effect || current.Empty() ? result : m_effect.setSourceFile(current.Get());
    });
}

bool CMenuOverlayImpl::SourceContains(std::u16string_view text) const
{
    Bstr source;
    return SUCCEEDED(getSource(source)) && source.View().find(text) != std::u16string_view::npos;
}

HRESULT CMenuOverlayImpl::getAlphaMask(Bstr& mask) const
{
    return Current(&CNXEffect::getMaskFile, m_media.alphaMask, mask);
}

HRESULT CMenuOverlayImpl::setAlphaMask(const Bstr& mask)
{
    return Apply(800, [&]() -> HRESULT {
        if (m_effect) return m_effect.setMaskFile(mask ? Bstr(Node().FullPathOf(mask.View())).Get() : nullptr);
        m_media.alphaMask = mask.Empty() ? Bstr() : mask;
        return S_OK;
    });
}

HRESULT CMenuOverlayImpl::getInPoint(double& seconds) const
{
    return Current(&CNXEffect::getInPoint, m_media.inPoint, seconds);
}

HRESULT CMenuOverlayImpl::setInPoint(double seconds)
{
    if (seconds < 0) return KV_E_NEGATIVE_IN_POINT;
    return Apply(802, [&] {
        if (m_effect) return m_effect.setInPoint(seconds);
        m_media.inPoint = seconds;
        return S_OK;
    });
}

HRESULT CMenuOverlayImpl::getOutPoint(double& seconds) const
{
    return Current(&CNXEffect::getOutPoint, m_media.outPoint, seconds);
}

HRESULT CMenuOverlayImpl::setOutPoint(double seconds)
{
    if (seconds < 0) return KV_E_NEGATIVE_OUT_POINT;
    return Apply(803, [&] {
        if (m_effect) return m_effect.setOutPoint(seconds);
        m_media.outPoint = seconds;
        return S_OK;
    });
}

HRESULT CMenuOverlayImpl::getSourceRotation(LONG& degrees) const
{
    return Current(&CNXEffect::getSourceRotation, m_sourceRotation, degrees);
}

HRESULT CMenuOverlayImpl::setSourceRotation(LONG degrees)
{
    return m_effect ? kEngine.Checked(m_effect.setSourceRotation(degrees)) : S_OK;
}

// Crop and size of the mask

const CropArea& CMenuOverlayImpl::Crop()
{
    ReadBack();
    return m_media.crop;
}

HRESULT CMenuOverlayImpl::setCrop(const CropArea& crop)
{
    return Apply(822, [&] {
        const CropArea before = std::exchange(m_media.crop, crop);
        const HRESULT result = m_effect ? PushCrop() : S_OK;
        if (FAILED(result)) m_media.crop = before;
        return result;
    });
}

HRESULT CMenuOverlayImpl::PushCrop()
{
    const FloatRect area = AreaOf(m_media.crop);
    return kEngine.Checked(m_effect.setSourceCrop(area.fLeft, area.fTop, area.fRight, area.fBottom));
}

HRESULT CMenuOverlayImpl::setMaskSize(double width, double height)
{
    Node().RecordState(HasEffect());
    const HRESULT result = m_effect ? kEngine.Checked(m_effect.setMaskSize(width, height)) : S_OK;
    if (FAILED(result)) return result;
    m_maskWidth = width;
    m_maskHeight = height;
    return S_OK;
}

// The effect

HRESULT CMenuOverlayImpl::createEffectParams(ComPtr<IXMLDOMNode>& document)
{
    return NewOverlayDocument(document);
}

HRESULT CMenuOverlayImpl::AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter)
{
    const bool had = HasEffect();
    const HRESULT result = CMenuElementImpl::AttachEffect(pUnkSbd, tagFilter);
    if (!had && HasEffect()) m_isUnread = true;
    return result;
}

void CMenuOverlayImpl::ReadBack()
{
    if (!m_isUnread) return;
    m_isUnread = false;
    if (!m_effect) return;
    FloatRect area{};
    if (m_effect.getSourceCrop(area) == S_OK && area != AreaOf(m_media.crop)) {
        m_media.crop = {(double{area.fLeft} + area.fRight) / 2, (double{area.fTop} + area.fBottom) / 2,
                        double{area.fRight} - area.fLeft, double{area.fBottom} - area.fTop};
    }
    double width = 0;
    double height = 0;
    if (m_effect.getMaskSize(width, height) == S_OK) {
        m_maskWidth = width;
        m_maskHeight = height;
    }
}

HRESULT CMenuOverlayImpl::syncEffect(bool capture)
{
    HRESULT result = CMenuElementImpl::syncEffect(capture);
    if (FAILED(result)) return result;
    if (capture) return CaptureMedia();
    onPropertyChanged(807);
    if (m_media.source.Empty()) {
        onPropertyChanged(200);
    } else {
        result = setSource(m_media.source);
    }
    if (SUCCEEDED(result) && !m_media.alphaMask.Empty())
        result = setAlphaMask(Bstr(ExpandPath(m_media.alphaMask.View())));
    if (SUCCEEDED(result)) result = PushPoints();
    if (SUCCEEDED(result)) result = PushCrop();
    if (SUCCEEDED(result) && (m_maskWidth >= 0 || m_maskHeight >= 0))
        result = kEngine.Checked(m_effect.setMaskSize(m_maskWidth, m_maskHeight));
    if (SUCCEEDED(result) && m_sourceRotation != 0) result = setSourceRotation(m_sourceRotation);
    return FAILED(result) ? result : S_OK;
}

HRESULT CMenuOverlayImpl::PushPoints()
{
    if (m_media.inPoint < 0) return S_OK;
    const HRESULT result = Apply(802, [&] { return Forgiven(m_effect.setInPoint(m_media.inPoint)); });
    if (FAILED(result)) return result;
    if (m_media.outPoint < 0) return KV_E_NEGATIVE_OUT_POINT;
    return Apply(803, [&] { return Forgiven(m_effect.setOutPoint(m_media.outPoint)); });
}

HRESULT CMenuOverlayImpl::CaptureMedia()
{
    ReadBack();
    OverlayMedia media;
    ZXPVector scaling{};
    LONG rotation = 0;
    HRESULT result = getChannel(m_scaling, scaling);
    if (SUCCEEDED(result)) result = getInPoint(media.inPoint);
    if (SUCCEEDED(result)) result = getOutPoint(media.outPoint);
    if (SUCCEEDED(result)) result = getSource(media.source);
    if (SUCCEEDED(result)) result = getAlphaMask(media.alphaMask);
    if (SUCCEEDED(result)) result = getSourceRotation(rotation);
    if (FAILED(result)) return result;
    media.crop = m_media.crop;
    m_media = std::move(media);
    m_scaling.stored = scaling;
    m_sourceRotation = rotation;
    m_sourceAspect.reset();
    return S_OK;
}

// Documents

void CMenuOverlayImpl::attributes(AttributeArchive& archive)
{
    if (!archive.Reads() && !archive.Writes()) ReadBack();
    CMenuElementImpl::attributes(archive);
    archive.OnlyRecord(m_maskWidth);
    archive.OnlyRecord(m_maskHeight);
    if (archive.Writes()) {
        if (!WritesAll(archive)) return;
        if (HasEffect()) ThrowIfFailed(CaptureMedia());
    }
    float width = m_scaling.stored.x * 2;
    float height = m_scaling.stored.y * 2;
    const auto source = [&](std::string_view name, Bstr& field) {
        archive.Value<Bstr>(
            name, [&] { return archive.Writes() ? SourceToDocument(field) : field; },
            [&](Bstr value) { field = archive.Reads() ? SourceFromDocument(value) : std::move(value); });
    };
    archive("CropCenterX", m_media.crop.centreX);
    archive("CropCenterY", m_media.crop.centreY);
    archive("CropSizeX", m_media.crop.sizeX);
    archive("CropSizeY", m_media.crop.sizeY);
    source("alphaMask", m_media.alphaMask);
    archive("height", height);
    archive("inPoint", m_media.inPoint);
    archive("outPoint", m_media.outPoint);
    source("source", m_media.source);
    archive("width", width);
    if (archive.Writes()) return;
    if (!archive.Reads() || width >= 0) m_scaling.stored.x = width / 2;
    if (!archive.Reads() || height >= 0) m_scaling.stored.y = height / 2;
    m_scaling.stored.z = 1;
    m_sourceAspect.reset();
}

} // namespace kv
