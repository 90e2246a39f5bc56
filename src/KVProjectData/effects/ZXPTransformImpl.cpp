#include "KVProjectData/effects/ZXPTransformImpl.h"

#include <tuple>

namespace kv {
namespace {

/// Shows each channel to `visit(mask, element name, keys)`, in the order of the document.
template <class Document, class Visit>
void EachChannel(Document& document, Visit&& visit)
{
    visit(ZXP_SCALING, "Scaling", document.scaling);
    visit(ZXP_TRANSLATION, "Translation", document.translation);
    visit(ZXP_ROTATION, "Rotation", document.rotation);
    visit(ZXP_OPACITY, "Opacity", document.opacity);
    visit(ZXP_HANDLES, "Handles", document.handles);
}

std::size_t IndexOf(ULONG channel)
{
    static constexpr std::array kChannels{ZXP_SCALING, ZXP_TRANSLATION, ZXP_ROTATION, ZXP_OPACITY, ZXP_HANDLES};
    const auto found = std::ranges::find(kChannels, channel);
    if (found == kChannels.end()) throw Error(E_INVALIDARG);
    return static_cast<std::size_t>(found - kChannels.begin());
}

/// How the value of a channel passes as three numbers.
ZXPVector ToVector(const ZXPVector& value)
{
    return value;
}

ZXPVector ToVector(ULONG value)
{
    return {static_cast<float>(value), 0, 0};
}

void FromVector(const ZXPVector& vector, ZXPVector& value)
{
    if (!IsFinite(vector)) throw Error(E_INVALIDARG);
    value = vector;
}

void FromVector(const ZXPVector& vector, ULONG& value)
{
    constexpr float kEnd = 4294967296.0f;
    if (!(vector.x >= 0 && vector.x < kEnd)) throw Error(E_INVALIDARG);
    value = static_cast<ULONG>(std::llround(vector.x));
}

/// Shows the delta of a channel.
template <class Visit>
void OnDelta(TransformDocument& document, ULONG channel, Visit&& visit)
{
    switch (channel) {
    case ZXP_SCALING:
        return visit(document.scalingDelta);
    case ZXP_TRANSLATION:
        return visit(document.translationDelta);
    case ZXP_ROTATION:
        return visit(document.rotationDelta);
    case ZXP_OPACITY:
        return visit(document.opacityDelta);
    case ZXP_HANDLES:
        return visit(document.handlesDelta);
    default:
        throw Error(E_INVALIDARG);
    }
}

// The document

/// Shows all but the channels to `visit(element name, value, whether 0 is left out)`, in the order of the document.
template <class Document, class Visit>
void EachScalar(Document& document, Visit&& visit)
{
    visit("StartPathID", document.startPathID, true);
    visit("EndPathID", document.endPathID, true);
    visit("PercentPathID", document.percentPathID, true);
    visit("Speed", document.speed, true);
    visit("IsSelectable", document.isSelectable, false);
    visit("IsEditable", document.isEditable, false);
    visit("Caps", document.caps, false);
    visit("HandlesDelta", document.handlesDelta, false);
    visit("TranslationDelta", document.translationDelta, false);
    visit("RotationDelta", document.rotationDelta, false);
    visit("ScalingDelta", document.scalingDelta, false);
    visit("OpacityDelta", document.opacityDelta, false);
}

template <class T>
bool SaysNothing(const T& value)
{
    if constexpr (std::is_arithmetic_v<T>) return !(value > 0);
    return false;
}

TransformDocument Read(const XmlView& pluginData)
{
    TransformDocument document;
    EachChannel(document, [&pluginData](ULONG, const char* name, auto& keys) {
        keys = std::decay_t<decltype(keys)>::Read(pluginData.Child(name));
    });
    EachScalar(document,
               [&pluginData](const char* name, auto& value, bool) { ReadParameter(pluginData, name, value); });
    return document;
}

/// The mode of the crop, where there is one, which each channel bears: names and values.
using CropMode = std::vector<std::pair<const char*, ULONG>>;

CropMode CropModeOf(const XmlElement& pluginData)
{
    CropMode mode;
    for (const char* name : {"EditMode", "PresetID"}) {
        ULONG value = 0;
        if (ReadParameter(pluginData.View("Crop"), name, value)) mode.emplace_back(name, value);
    }
    return mode;
}

void BearCropMode(XmlElement channel, const CropMode& cropMode)
{
    for (const auto& [name, value] : cropMode)
        channel.Set(name, value);
}

template <class Value>
void WriteChannel(XmlElement& pluginData, const char* name, const KeyFrames<Value>& keys, const CropMode& cropMode)
{
    pluginData.Remove(name);
    if (keys.Empty()) return;
    XmlElement channel = pluginData.Add(name);
    BearCropMode(channel, cropMode);
    keys.Write(channel);
}

template <class T>
void WriteScalar(XmlElement& pluginData, const char* name, const T& value, bool omitsZero)
{
    if (omitsZero && SaysNothing(value)) {
        pluginData.Remove(name);
    } else {
        WriteParameter(pluginData, name, value);
    }
}

/// Leaves a channel as it is, in the place where it would be written.
void KeepChannel(XmlElement& pluginData, const char* name, const CropMode& cropMode)
{
    if (pluginData.MoveLast(name)) BearCropMode(pluginData.Child(name), cropMode);
}

/// The same of all but the channels; those that the document does not have are added.
void KeepScalars(XmlElement& pluginData, const TransformDocument& document)
{
    EachScalar(document, [&](const char* name, const auto& value, bool omitsZero) {
        if (!pluginData.MoveLast(name)) WriteScalar(pluginData, name, value, omitsZero);
    });
}

} // namespace

// Keys

template <class Visit>
HRESULT CZXPTransformImpl::OnChannel(ULONG channel, Visit&& visit)
{
    return Guarded([&] {
        const std::lock_guard lock(m_locks[IndexOf(channel)]);
        EachChannel(m_document, [&](ULONG mask, const char*, auto& keys) {
            if (mask == channel) visit(keys);
        });
        return S_OK;
    });
}

auto CZXPTransformImpl::LockAll()
{
    return std::apply([](auto&... locks) { return std::scoped_lock(locks...); }, m_locks);
}

HRESULT CZXPTransformImpl::SetKeyValue(ULONG ulChannel, double dTime, ULONG ulList, float x, float y, float z,
                                       ULONG ulCaps)
{
    return OnChannel(ulChannel, [&]<class Value>(KeyFrames<Value>& keys) {
        KeyFrame<Value> key{dTime, ulCaps, {}};
        FromVector({x, y, z}, key.value);
        keys.Set(ulList, key);
    });
}

HRESULT CZXPTransformImpl::GetKeyValue(ULONG ulChannel, double dTime, ULONG ulList, float* px, float* py, float* pz,
                                       ULONG* pulCaps)
{
    if (!px || !py || !pz || !pulCaps) return E_POINTER;
    ZXPVector value{};
    *pulCaps = 0;
    const HRESULT result = OnChannel(ulChannel, [&](const auto& keys) {
        const auto& key = keys.At(ulList, dTime);
        value = ToVector(key.value);
        *pulCaps = key.caps;
    });
    std::tie(*px, *py, *pz) = std::tie(value.x, value.y, value.z);
    return result;
}

HRESULT CZXPTransformImpl::GetKeyCount(ULONG ulChannel, ULONG ulList, ULONG* pulCount)
{
    if (!pulCount) return E_POINTER;
    *pulCount = 0;
    return OnChannel(ulChannel, [&](const auto& keys) { *pulCount = static_cast<ULONG>(keys.Keys(ulList).size()); });
}

HRESULT CZXPTransformImpl::GetKeyTime(ULONG ulChannel, ULONG ulList, ULONG ulIndex, double* pdTime)
{
    if (!pdTime) return E_POINTER;
    *pdTime = 0;
    return OnChannel(ulChannel, [&](const auto& keys) { *pdTime = keys.AtIndex(ulList, ulIndex).time; });
}

HRESULT CZXPTransformImpl::MoveKey(ULONG ulChannel, ULONG ulList, double dFrom, double dTo)
{
    return OnChannel(ulChannel, [&](auto& keys) { keys.Move(ulList, dFrom, dTo); });
}

HRESULT CZXPTransformImpl::DeleteKey(ULONG ulChannel, ULONG ulList, double dTime)
{
    return OnChannel(ulChannel, [&](auto& keys) { keys.Delete(ulList, dTime); });
}

HRESULT CZXPTransformImpl::ClearChannels(ULONG ulChannels)
{
    if (ulChannels != ZXP_ALL_CHANNELS) return OnChannel(ulChannels, [](auto& keys) { keys = {}; });
    const auto lock = LockAll();
    EachChannel(m_document, [](ULONG, const char*, auto& keys) { keys = {}; });
    return S_OK;
}

HRESULT CZXPTransformImpl::ShiftKeys(double dOffset)
{
    return Guarded([&] {
        const auto lock = LockAll();
        TransformDocument shifted = m_document;
        EachChannel(shifted, [dOffset](ULONG, const char*, auto& keys) { keys.Shift(dOffset); });
        m_document = std::move(shifted);
        return S_OK;
    });
}

// Fields

ULONG& CZXPTransformImpl::PathID(ULONG list)
{
    if (list == ZXP_FROM_START) return m_document.startPathID;
    return list == ZXP_FROM_END ? m_document.endPathID : m_document.percentPathID;
}

HRESULT CZXPTransformImpl::put_PathID(ULONG ulList, ULONG newVal)
{
    PathID(ulList) = newVal;
    return S_OK;
}

HRESULT CZXPTransformImpl::put_Speed(double newVal)
{
    if (!std::isfinite(newVal)) return E_INVALIDARG;
    m_document.speed = newVal;
    return S_OK;
}

HRESULT CZXPTransformImpl::GetDelta(ULONG ulChannel, float* px, float* py, float* pz)
{
    if (!px || !py || !pz) return E_POINTER;
    ZXPVector value{};
    const HRESULT result = Guarded([&] {
        OnDelta(m_document, ulChannel, [&value](const auto& delta) { value = ToVector(delta); });
        return S_OK;
    });
    std::tie(*px, *py, *pz) = std::tie(value.x, value.y, value.z);
    return result;
}

HRESULT CZXPTransformImpl::SetDelta(ULONG ulChannel, float x, float y, float z)
{
    return Guarded([&] {
        OnDelta(m_document, ulChannel, [&](auto& delta) { FromVector({x, y, z}, delta); });
        return S_OK;
    });
}

HRESULT CZXPTransformImpl::put_IsSelectable(VARIANT_BOOL newVal)
{
    m_document.isSelectable = newVal != VARIANT_FALSE;
    return S_OK;
}

HRESULT CZXPTransformImpl::put_IsEditable(VARIANT_BOOL newVal)
{
    m_document.isEditable = newVal != VARIANT_FALSE;
    return S_OK;
}

HRESULT CZXPTransformImpl::put_Caps(ULONG newVal)
{
    m_document.caps = newVal;
    return S_OK;
}

HRESULT CZXPTransformImpl::put_IsLocked(VARIANT_BOOL newVal)
{
    m_isLocked = newVal != VARIANT_FALSE;
    return S_OK;
}

HRESULT CZXPTransformImpl::put_MaxOpacity(ULONG newVal)
{
    m_maxOpacity = newVal;
    return S_OK;
}

HRESULT CZXPTransformImpl::put_FirstHandle(FloatPoint newVal)
{
    if (!std::isfinite(newVal.x) || !std::isfinite(newVal.y)) return E_INVALIDARG;
    m_firstHandle = newVal;
    return S_OK;
}

HRESULT CZXPTransformImpl::put_ReferenceFrame(ZXPReferenceFrame newVal)
{
    if (!std::isfinite(newVal.dFrameRate) || !std::isfinite(newVal.dAspectRatio)) return E_INVALIDARG;
    m_reference = newVal;
    return S_OK;
}

HRESULT CZXPTransformImpl::GetHandles(ZXPVector* pHandles, ZXPReferenceFrame* pReference)
{
    if (!pHandles || !pReference) return E_POINTER;
    const auto [x, y] = m_firstHandle;
    pHandles[0] = {x, y, 0};
    pHandles[1] = {x, -y, 0};
    pHandles[2] = {-x, -y, 0};
    pHandles[3] = {-x, y, 0};
    *pReference = m_reference;
    return S_OK;
}

// The document

HRESULT CZXPTransformImpl::Load(IUnknown* pNode)
{
    return Guarded([&] {
        Load(ElementOf(pNode));
        return S_OK;
    });
}

HRESULT CZXPTransformImpl::Save(IUnknown* pNode)
{
    return Guarded([&] {
        XmlElement element = ElementOf(pNode);
        Save(element);
        return S_OK;
    });
}

void CZXPTransformImpl::Load(const XmlElement& pluginData)
{
    TransformDocument document = Read(pluginData.View());
    const auto lock = LockAll();
    m_document = std::move(document);
}

void CZXPTransformImpl::Save(XmlElement& pluginData)
{
    // Read first: on failure nothing has changed.
    const auto cropMode = CropModeOf(pluginData);
    const auto lock = LockAll();
    EachChannel(m_document,
                [&](ULONG, const char* name, const auto& keys) { WriteChannel(pluginData, name, keys, cropMode); });
    EachScalar(m_document, [&](const char* name, const auto& value, bool omitsZero) {
        WriteScalar(pluginData, name, value, omitsZero);
    });
}

void CZXPTransformImpl::LoadChannels(const XmlElement& pluginData, ULONG channels)
{
    const auto lock = LockAll();
    EachChannel(m_document, [&](ULONG mask, const char* name, auto& keys) {
        if (mask & channels) keys = std::decay_t<decltype(keys)>::Read(pluginData.View(name));
    });
}

void CZXPTransformImpl::SaveChannels(XmlElement& pluginData, ULONG channels)
{
    const auto cropMode = CropModeOf(pluginData);
    const auto lock = LockAll();
    EachChannel(m_document, [&](ULONG mask, const char* name, const auto& keys) {
        mask& channels ? WriteChannel(pluginData, name, keys, cropMode) : KeepChannel(pluginData, name, cropMode);
    });
    KeepScalars(pluginData, m_document);
}

void CZXPTransformImpl::Keep(XmlElement& pluginData)
{
    const auto cropMode = CropModeOf(pluginData);
    EachChannel(m_document, [&](ULONG, const char* name, const auto&) { KeepChannel(pluginData, name, cropMode); });
    KeepScalars(pluginData, m_document);
}

} // namespace kv
