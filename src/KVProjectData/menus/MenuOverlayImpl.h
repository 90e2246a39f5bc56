#pragma once
// What an overlay shows: a picture or a clip, in a size, through a mask.

#include "KVProjectData/menus/MenuElementImpl.h"

#include <optional>

namespace kv {

/// A part of a source that goes from 0 to 1.
struct CropArea {
    double centreX = 0.5;
    double centreY = 0.5;
    double sizeX = 1;
    double sizeY = 1;
};

/// What an overlay shows of which source, as documents tell it.
struct OverlayMedia {
    /// Null without one.
    Bstr source;
    Bstr alphaMask;
    double inPoint = 0;
    double outPoint = 0;
    CropArea crop;
};

/// The effect, while there is one, holds the size, the source, the mask, the points and the turn of the source; the
/// crop and the size of the mask are the element's own, and the effect is told of them. Setters record before they
/// change, and tell afterwards.
class CMenuOverlayImpl : public CMenuElementImpl {
public:
    HRESULT AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter) override;

    HRESULT getSize(float& width, float& height) override;
    /// E_INVALIDARG below 0.
    HRESULT setSize(float width, float height) override;

    /// A file or a moniker; null without one.
    HRESULT getSource(Bstr& source) const;
    HRESULT setSource(const Bstr& source);
    HRESULT refreshSource();
    HRESULT getAlphaMask(Bstr& mask) const;
    /// Empty for none.
    HRESULT setAlphaMask(const Bstr& mask);

    /// Seconds. KV_E_NEGATIVE_IN_POINT, KV_E_NEGATIVE_OUT_POINT.
    HRESULT getInPoint(double& seconds) const;
    HRESULT setInPoint(double seconds);
    HRESULT getOutPoint(double& seconds) const;
    HRESULT setOutPoint(double seconds);

    /// Neither recorded nor told; nothing is set without an effect.
    HRESULT getSourceRotation(LONG& degrees) const;
    HRESULT setSourceRotation(LONG degrees);

    const CropArea& Crop();
    HRESULT setCrop(const CropArea& crop);
    /// No event.
    HRESULT setMaskSize(double width, double height);

    HRESULT syncEffect(bool capture) override;
    HRESULT createEffectParams(ComPtr<IXMLDOMNode>& document) override;
    LONG getEffectType() const override { return ZXE_EFFECT_OVERLAY; }
    void attributes(AttributeArchive& archive) override;

    bool SourceContains(std::u16string_view text) const override;

protected:
    using CMenuElementImpl::CMenuElementImpl;

    HRESULT getHandles(Corners& corners) override;
    void AddChannels(std::vector<CNXEffect::ChannelValue>& values) const override;
    HRESULT getScale(FloatPoint& scale) override;

    /// What no document tells of, for a copy.
    void CopyRestTo(CMenuOverlayImpl& copy) const { copy.m_sourceRotation = m_sourceRotation; }

    /// Reads the crop and the size of the mask of an effect that was found, which what documents say of an overlay with
    /// an effect does not tell. Whoever needs them asks for that first: most overlays that are loaded are not asked.
    void ReadBack();

    double m_maskWidth = -1;
    double m_maskHeight = -1;

private:
    /// Of the effect where there is one, or else what is stored.
    template <class T>
    HRESULT Current(HRESULT (CNXEffect::*getter)(T&) const, const T& stored, T& value) const;
    /// Records, sets, and tells of it.
    template <class Set>
    HRESULT Apply(DISPID propId, Set&& set);
    HRESULT PushCrop();
    HRESULT PushPoints();
    HRESULT CaptureMedia();
    /// Width to height of what the source shows; 4/3 where nobody knows.
    HRESULT SourceAspect(double& aspect);

    StoredChannel m_scaling{ZXP_SCALING, {1, 1, 1}};
    OverlayMedia m_media;
    LONG m_sourceRotation = 0;
    /// Whether ReadBack is still to be done.
    bool m_isUnread = false;
    /// Of the stored source, once it was looked into.
    std::optional<double> m_sourceAspect;
};

} // namespace kv
