#include "KVProjectData/effects/ZXPCropSourceImpl.h"

namespace kv {
namespace {

/// Reads a setting where it stands for the crop, else for the whole effect.
template <class T>
void ReadSetting(const XmlView& pluginData, const XmlView& crop, const char* name, T& value)
{
    if (!ReadParameter(crop, name, value)) ReadParameter(pluginData, name, value);
}

/// The crop's own setting, which reading prefers, follows the one of the whole effect.
template <class T>
void WriteSetting(XmlElement& pluginData, XmlElement& crop, const char* name, T value)
{
    WriteParameter(pluginData, name, value);
    if (crop.Child(name)) crop.Set(name, value);
}

CropSettings ReadSettings(const XmlView& pluginData)
{
    const XmlView crop = pluginData.Child("Crop");
    CropSettings settings;
    ReadSetting(pluginData, crop, "PresetID", settings.presetID);
    ReadSetting(pluginData, crop, "EditMode", settings.editMode);
    ReadSetting(pluginData, crop, "CropMode", settings.cropMode);
    return settings;
}

void WriteSettings(XmlElement& pluginData, const CropSettings& settings)
{
    XmlElement crop = pluginData.Child("Crop");
    // A document that says nothing of a crop stays as it is.
    if (!crop && settings == ReadSettings(pluginData.View())) return;
    WriteSetting(pluginData, crop, "PresetID", settings.presetID);
    WriteSetting(pluginData, crop, "EditMode", settings.editMode);
    WriteSetting(pluginData, crop, "CropMode", settings.cropMode);
}

void WriteKeys(XmlElement& pluginData, const KeyFrames<FloatRect>& keys)
{
    XmlElement crop = pluginData.Child("Crop");
    if (!crop && keys.Empty()) return;
    if (!crop) crop = pluginData.Add("Crop");
    keys.Write(crop);
}

} // namespace

template <class Body>
HRESULT CZXPCropSourceImpl::OnKeys(Body&& body)
{
    return Guarded([&] {
        const std::lock_guard lock(m_lock);
        body();
        return S_OK;
    });
}

HRESULT CZXPCropSourceImpl::put_EditMode(ULONG newVal)
{
    m_settings.editMode = newVal;
    return S_OK;
}

HRESULT CZXPCropSourceImpl::put_PresetID(ULONG newVal)
{
    m_settings.presetID = newVal;
    return S_OK;
}

HRESULT CZXPCropSourceImpl::put_CropMode(VARIANT_BOOL newVal)
{
    m_settings.cropMode = newVal != VARIANT_FALSE;
    return S_OK;
}

HRESULT CZXPCropSourceImpl::SetKeyRect(double dTime, ULONG ulList, FloatRect rect, ULONG ulCaps)
{
    return OnKeys([&] { m_keys.Set(ulList, {dTime, ulCaps, rect}); });
}

HRESULT CZXPCropSourceImpl::GetKeyRect(double dTime, ULONG ulList, FloatRect* pRect, ULONG* pulCaps)
{
    if (!pRect || !pulCaps) return E_POINTER;
    *pRect = {};
    *pulCaps = 0;
    return OnKeys([&] {
        const auto& key = m_keys.At(ulList, dTime);
        *pRect = key.value;
        *pulCaps = key.caps;
    });
}

HRESULT CZXPCropSourceImpl::GetKeyCount(ULONG ulList, ULONG* pulCount)
{
    if (!pulCount) return E_POINTER;
    *pulCount = 0;
    return OnKeys([&] { *pulCount = static_cast<ULONG>(m_keys.Keys(ulList).size()); });
}

HRESULT CZXPCropSourceImpl::GetKeyTime(ULONG ulList, ULONG ulIndex, double* pdTime)
{
    if (!pdTime) return E_POINTER;
    *pdTime = 0;
    return OnKeys([&] { *pdTime = m_keys.AtIndex(ulList, ulIndex).time; });
}

HRESULT CZXPCropSourceImpl::MoveKey(ULONG ulList, double dFrom, double dTo)
{
    return OnKeys([&] { m_keys.Move(ulList, dFrom, dTo); });
}

HRESULT CZXPCropSourceImpl::DeleteKey(ULONG ulList, double dTime)
{
    return OnKeys([&] { m_keys.Delete(ulList, dTime); });
}

HRESULT CZXPCropSourceImpl::ClearKeys()
{
    return OnKeys([&] { m_keys = {}; });
}

HRESULT CZXPCropSourceImpl::ShiftKeys(double dOffset)
{
    return OnKeys([&] { m_keys.Shift(dOffset); });
}

HRESULT CZXPCropSourceImpl::GetSourceFrame(LONG* plWidth, LONG* plHeight, LONGLONG* pllFrames)
{
    if (!plWidth || !plHeight || !pllFrames) return E_POINTER;
    *plWidth = m_sourceWidth;
    *plHeight = m_sourceHeight;
    *pllFrames = m_sourceFrames;
    return S_OK;
}

HRESULT CZXPCropSourceImpl::SetSourceFrame(LONG lWidth, LONG lHeight, LONGLONG llFrames)
{
    m_sourceWidth = lWidth;
    m_sourceHeight = lHeight;
    m_sourceFrames = llFrames;
    return S_OK;
}

HRESULT CZXPCropSourceImpl::Load(IUnknown* pNode)
{
    return Guarded([&] {
        Load(ElementOf(pNode));
        return S_OK;
    });
}

HRESULT CZXPCropSourceImpl::Save(IUnknown* pNode)
{
    return Guarded([&] {
        XmlElement element = ElementOf(pNode);
        Save(element);
        return S_OK;
    });
}

void CZXPCropSourceImpl::Load(const XmlElement& pluginData)
{
    const CropSettings settings = ReadSettings(pluginData.View());
    auto keys = KeyFrames<FloatRect>::Read(pluginData.View("Crop"));
    const std::lock_guard lock(m_lock);
    m_keys = std::move(keys);
    m_settings = settings;
}

void CZXPCropSourceImpl::Save(XmlElement& pluginData)
{
    const std::lock_guard lock(m_lock);
    WriteKeys(pluginData, m_keys);
    WriteSettings(pluginData, m_settings);
}

} // namespace kv
