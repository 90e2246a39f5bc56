#pragma once
// The transform of an effect: its size, place, opacity and handles over time.

#include "KVProjectData/effects/KeyFrames.h"
#include "KVProjectData/effects/StackObject.h"

#include <mutex>

namespace kv {

/// What a document holds of a transform.
struct TransformDocument {
    KeyFrames<ZXPVector> scaling;
    KeyFrames<ZXPVector> translation;
    KeyFrames<ZXPVector> rotation;
    KeyFrames<ULONG> opacity;
    KeyFrames<ZXPVector> handles;

    ULONG startPathID = 0;
    ULONG endPathID = 0;
    ULONG percentPathID = 0;
    double speed = 0;
    bool isSelectable = true;
    bool isEditable = true;
    ULONG caps = 0x1333;
    ZXPVector handlesDelta{};
    ZXPVector translationDelta{};
    ZXPVector rotationDelta{};
    ZXPVector scalingDelta{};
    ULONG opacityDelta = 0;
};

class CZXPTransformImpl final : public StackObject<IZXPTransform> {
public:
    HRESULT SetKeyValue(ULONG ulChannel, double dTime, ULONG ulList, float x, float y, float z, ULONG ulCaps) override;
    HRESULT GetKeyValue(ULONG ulChannel, double dTime, ULONG ulList, float* px, float* py, float* pz,
                        ULONG* pulCaps) override;
    HRESULT GetKeyCount(ULONG ulChannel, ULONG ulList, ULONG* pulCount) override;
    HRESULT GetKeyTime(ULONG ulChannel, ULONG ulList, ULONG ulIndex, double* pdTime) override;
    HRESULT MoveKey(ULONG ulChannel, ULONG ulList, double dFrom, double dTo) override;
    HRESULT DeleteKey(ULONG ulChannel, ULONG ulList, double dTime) override;
    HRESULT ClearChannels(ULONG ulChannels) override;
    HRESULT ShiftKeys(double dOffset) override;

    HRESULT get_PathID(ULONG ulList, ULONG* pVal) override { return HandOut(PathID(ulList), pVal); }
    HRESULT put_PathID(ULONG ulList, ULONG newVal) override;
    HRESULT get_Speed(double* pVal) override { return HandOut(m_document.speed, pVal); }
    HRESULT put_Speed(double newVal) override;
    HRESULT GetDelta(ULONG ulChannel, float* px, float* py, float* pz) override;
    HRESULT SetDelta(ULONG ulChannel, float x, float y, float z) override;
    HRESULT get_IsSelectable(VARIANT_BOOL* pVal) override { return HandOut(m_document.isSelectable, pVal); }
    HRESULT put_IsSelectable(VARIANT_BOOL newVal) override;
    HRESULT get_IsEditable(VARIANT_BOOL* pVal) override { return HandOut(m_document.isEditable, pVal); }
    HRESULT put_IsEditable(VARIANT_BOOL newVal) override;
    HRESULT get_Caps(ULONG* pVal) override { return HandOut(m_document.caps, pVal); }
    HRESULT put_Caps(ULONG newVal) override;
    HRESULT get_IsLocked(VARIANT_BOOL* pVal) override { return HandOut(m_isLocked, pVal); }
    HRESULT put_IsLocked(VARIANT_BOOL newVal) override;
    HRESULT get_MaxOpacity(ULONG* pVal) override { return HandOut(m_maxOpacity, pVal); }
    HRESULT put_MaxOpacity(ULONG newVal) override;
    HRESULT put_FirstHandle(FloatPoint newVal) override;
    HRESULT put_ReferenceFrame(ZXPReferenceFrame newVal) override;
    HRESULT GetHandles(ZXPVector* pHandles, ZXPReferenceFrame* pReference) override;
    HRESULT Load(IUnknown* pNode) override;
    HRESULT Save(IUnknown* pNode) override;

    /// As the above; throw Error.
    void Load(const XmlElement& pluginData);
    void Save(XmlElement& pluginData);

    /// The keys of some channels, for who wants no more: the rest of the document is not read. A document that these
    /// were saved to stands in the order of one that a whole transform was saved to. Throw Error.
    void LoadChannels(const XmlElement& pluginData, ULONG channels);
    void SaveChannels(XmlElement& pluginData, ULONG channels);
    /// The same without any channel: for who has changed nothing.
    void Keep(XmlElement& pluginData);

private:
    ULONG& PathID(ULONG list);

    TransformDocument m_document;
    /// One for each channel, in the order of the document.
    std::array<std::mutex, 5> m_locks;
    bool m_isLocked = false;
    ULONG m_maxOpacity = 255;
    FloatPoint m_firstHandle{-1, 1};
    ZXPReferenceFrame m_reference{640, 480, 30.0, 4.0 / 3.0};

    /// Shows the keys of a channel, under their lock. E_INVALIDARG for none.
    template <class Visit>
    HRESULT OnChannel(ULONG channel, Visit&& visit);
    auto LockAll();
};

} // namespace kv
