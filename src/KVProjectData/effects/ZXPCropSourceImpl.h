#pragma once
// The part of its source that an effect shows, over time.

#include "KVProjectData/effects/KeyFrames.h"
#include "KVProjectData/effects/StackObject.h"

#include <mutex>

namespace kv {

struct CropSettings {
    ULONG editMode = 0;
    ULONG presetID = 0;
    bool cropMode = false;

    friend bool operator==(const CropSettings&, const CropSettings&) = default;
};

class CZXPCropSourceImpl final : public StackObject<IZXPCropSource> {
public:
    HRESULT get_EditMode(ULONG* pVal) override { return HandOut(m_settings.editMode, pVal); }
    HRESULT put_EditMode(ULONG newVal) override;
    HRESULT get_PresetID(ULONG* pVal) override { return HandOut(m_settings.presetID, pVal); }
    HRESULT put_PresetID(ULONG newVal) override;
    HRESULT get_CropMode(VARIANT_BOOL* pVal) override { return HandOut(m_settings.cropMode, pVal); }
    HRESULT put_CropMode(VARIANT_BOOL newVal) override;
    HRESULT put_CropRect(FloatRect newVal) override { return SetKeyRect(0, ZXP_FROM_START, newVal, ZXP_ALL_CAPS); }

    HRESULT SetKeyRect(double dTime, ULONG ulList, FloatRect rect, ULONG ulCaps) override;
    HRESULT GetKeyRect(double dTime, ULONG ulList, FloatRect* pRect, ULONG* pulCaps) override;
    HRESULT GetKeyCount(ULONG ulList, ULONG* pulCount) override;
    HRESULT GetKeyTime(ULONG ulList, ULONG ulIndex, double* pdTime) override;
    HRESULT MoveKey(ULONG ulList, double dFrom, double dTo) override;
    HRESULT DeleteKey(ULONG ulList, double dTime) override;
    HRESULT ClearKeys() override;
    HRESULT ShiftKeys(double dOffset) override;

    HRESULT GetSourceFrame(LONG* plWidth, LONG* plHeight, LONGLONG* pllFrames) override;
    HRESULT SetSourceFrame(LONG lWidth, LONG lHeight, LONGLONG llFrames) override;

    HRESULT Load(IUnknown* pNode) override;
    HRESULT Save(IUnknown* pNode) override;

    /// As the above; throw Error.
    void Load(const XmlElement& pluginData);
    void Save(XmlElement& pluginData);

private:
    /// Runs a body on the keys, under their lock.
    template <class Body>
    HRESULT OnKeys(Body&& body);

    KeyFrames<FloatRect> m_keys;
    std::mutex m_lock;
    CropSettings m_settings;
    LONG m_sourceWidth = 0;
    LONG m_sourceHeight = 0;
    LONGLONG m_sourceFrames = 0;
};

} // namespace kv
