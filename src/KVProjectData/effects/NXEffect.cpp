#include "KVProjectData/effects/NXEffect.h"

#include "KVProjectData/effects/EffectState.h"
#include "KVProjectData/effects/MaskParameters.h"
#include "KVProjectData/effects/ZXPTransformImpl.h"
#include "SbdUtils/ProductionObject.h"

#include <optional>

namespace kv {
namespace {

constexpr EngineCalls kEngine("NXEffect");
constexpr std::string_view kPluginData = "plugin_data";

// While a call of the engine runs, its sinks may have the wrapper let go of the effect: every operation holds what it
// works on.

ComPtr<IEffectInfo> InfoOf(const ComPtr<IUnknown>& effect)
{
    if (!effect) throw Error(E_UNEXPECTED);
    return kEngine.Need<IEffectInfo>(effect.Get(), "(IEffectInfo*)spEffectInfo");
}

/// The storyboard that holds an effect; null without a way to it.
ComPtr<IUnknown> StoryboardOf(const ComPtr<IUnknown>& effect)
{
    ComPtr<IUnknown> spSbd;
    if (const auto spParentProd = Query<IParentProduction>(effect))
        kEngine.Need(spParentProd->get_ParentProduction(spSbd.Put()), "spParentProd->get_ParentProduction(&spSbd)");
    return spSbd;
}

ProductionObject ProductionOf(const ComPtr<IUnknown>& storyboard)
{
    const auto data = kEngine.Need<IZXEProductionData>(storyboard.Get(), "(IZXEProductionData*)spSbd");
    return ProductionObject(kEngine, *data);
}

// The span

template <class Call>
HRESULT CallSubObject(const ComPtr<IUnknown>& effect, std::string_view text, Call&& call)
{
    return Guarded([&] {
        kEngine.NeedPointer(effect.Get(), "(IUnknown*)m_pUnkEffect");
        const auto spSubObject = kEngine.Need<ISubObject>(effect.Get(), "(ISubObject*)spSubObject");
        return kEngine.Checked(call(*spSubObject), text);
    });
}

HRESULT PutStartOffset(const ComPtr<IUnknown>& effect, double startSecs)
{
    return CallSubObject(effect, "spSubObject->put_StartOffset(startSecs)",
                         [=](ISubObject& object) { return object.put_StartOffset(startSecs); });
}

HRESULT PutEndOffset(const ComPtr<IUnknown>& effect, double endSecs)
{
    return CallSubObject(effect, "spSubObject->put_EndOffset(endSecs)",
                         [=](ISubObject& object) { return object.put_EndOffset(endSecs); });
}

// The document

/// Null when the effect has none.
ComPtr<IXMLDOMNode> LiveDocument(IEffectInfo& info)
{
    ComPtr<IXMLDOMNode> document;
    kEngine.Need(info.GetParameterDocument(document.Put()));
    return document;
}

/// A document is an element, or holds one.
XmlElement RootOf(IXMLDOMNode* document)
{
    ComPtr<IXMLDOMElement> element;
    if (const auto whole = Query<IXMLDOMDocument>(document)) whole->get_documentElement(element.Put());
    return XmlElement(element ? element.Get() : document);
}

XmlElement PluginDataOf(IXMLDOMNode* document)
{
    const XmlElement root = RootOf(document);
    XmlElement pluginData = root.Name() == kPluginData ? root : root.Child(kPluginData);
    if (!pluginData) throw Error(kEngine.Checked(E_FAIL));
    return pluginData;
}

void Push(IEffectInfo& info, IXMLDOMNode* document)
{
    const bool refresh = SharedEffectState().saveThemeMode == 0;
    kEngine.Need(info.SetParameterDocument(document, refresh ? VARIANT_TRUE : VARIANT_FALSE));
}

/// What an effect shows that has no key for a channel.
std::optional<ZXPVector> WithoutKey(ULONG channel)
{
    switch (channel) {
    case ZXP_TRANSLATION:
    case ZXP_ROTATION:
        return ZXPVector{0, 0, 0};
    case ZXP_SCALING:
        return ZXPVector{1, 1, 1};
    default:
        return std::nullopt;
    }
}

HRESULT ReadKey(CZXPTransformImpl& transform, ULONG channel, double time, ULONG list, ZXPVector& value)
{
    ULONG caps = 0;
    const HRESULT result = transform.GetKeyValue(channel, time, list, &value.x, &value.y, &value.z, &caps);
    const auto usual = WithoutKey(channel);
    if (SUCCEEDED(result) || !usual) return result;
    value = *usual;
    return S_OK;
}

ULONG ChannelsOf(const std::vector<CNXEffect::ChannelValue>& values)
{
    ULONG channels = 0;
    for (const auto& each : values)
        channels |= each.channel;
    return channels;
}

/// What a layer shows at the start; null for nothing.
ComPtr<IUnknown> EffectOn(IUnknown* pUnkSbd, LONG layer)
{
    const ProductionObject production = ProductionOf(ComPtr(pUnkSbd));
    ComPtr<IUnknown> effect;
    kEngine.Need(production.Objects()->GetEffect(layer, production.Clock().FrameMid(0.0), effect.Put()));
    return effect;
}

} // namespace

HRESULT CNXEffect::Create(IUnknown* pUnkSbd, LONG eType, LONG layer, IXMLDOMNode* spXMLParams)
{
    return EngineCalls::Operation([&] {
        if (m_pUnkEffect) return S_FALSE;
        if (!pUnkSbd) return E_POINTER;
        const ComPtr<IUnknown> storyboard(pUnkSbd);
        const auto spEditData = kEngine.Need<IEditData>(pUnkSbd, "(IEditData*)spEditData");
        ComPtr<IUnknown> effect;
        kEngine.Need(spEditData->AddProductionEffect(layer, eType, spXMLParams, nullptr, 0, 0.0, effect.Put()),
                     "spEditData->AddProductionEffect(layer, eType, spXMLParams, NULL, 0, 0.0, &m_pUnkEffect)");
        m_pUnkEffect = effect;
        const ProductionObject production = ProductionOf(storyboard);
        const FrameClock ta = production.Clock();
        // One that cannot be told leaves the end open.
        double dDuration = 0.0;
        if (FAILED(production.Info()->get_Duration(&dDuration))) dDuration = 0.0;
        kEngine.Need(PutStartOffset(effect, ta.FrameMid(0.0)), "setStartOffset(ta.FrameMid(0.0))");
        if (dDuration > 0.0) {
            kEngine.Need(PutEndOffset(effect, ta.FrameMid(dDuration)), "setEndOffset(ta.FrameMid(dDuration))");
        }
        return S_OK;
    });
}

HRESULT CNXEffect::Attach(IUnknown* pUnkSbd, LONG layer)
{
    return EngineCalls::Operation([&] {
        if (m_pUnkEffect) return S_FALSE;
        kEngine.NeedPointer(pUnkSbd, "(IUnknown*)pUnkSbd");
        m_pUnkEffect = EffectOn(pUnkSbd, layer);
        return m_pUnkEffect ? S_OK : S_FALSE;
    });
}

void CNXEffect::LeaveGone(IUnknown* pUnkSbd, LONG layer)
{
    if (!m_pUnkEffect) return;
    EngineCalls::Operation([&] {
        if (!IsSameObject(EffectOn(pUnkSbd, layer).Get(), m_pUnkEffect.Get())) Detach();
        return S_OK;
    });
}

HRESULT CNXEffect::Remove()
{
    return EngineCalls::Operation([&] {
        if (!m_pUnkEffect) return S_FALSE;
        const auto effect = m_pUnkEffect;
        const auto info = InfoOf(effect);
        LONG id = -1;
        LONG layer = -1;
        kEngine.Need(info->get_EffectID(&id));
        kEngine.Need(info->get_Layer(&layer));
        const auto storyboard = StoryboardOf(effect);
        const auto spEditData = kEngine.Need<IEditData>(storyboard.Get(), "(IEditData*)spEditData");
        kEngine.Need(spEditData->DeleteProductionEffect(layer, id));
        if (m_pUnkEffect == effect) m_pUnkEffect.Reset();
        return S_OK;
    });
}

HRESULT CNXEffect::getEffectID(LONG& id) const
{
    id = 0;
    return EngineCalls::Operation([&] { return kEngine.Checked(InfoOf(m_pUnkEffect)->get_EffectID(&id)); });
}

HRESULT CNXEffect::setGroupID(LONG id)
{
    return EngineCalls::Operation([&] { return kEngine.Checked(InfoOf(m_pUnkEffect)->SetGroupID(id)); });
}

HRESULT CNXEffect::setLayer(LONG layer)
{
    return EngineCalls::Operation([&] {
        const auto place = Query<IEffectLayer>(m_pUnkEffect);
        return place ? kEngine.Checked(place->put_Layer(layer)) : S_FALSE;
    });
}

HRESULT CNXEffect::getStartOffset(double& startSecs) const
{
    startSecs = 0.0;
    EngineCalls::Begin();
    return CallSubObject(m_pUnkEffect, "spSubObject->get_StartOffset(&startSecs)",
                         [&](ISubObject& object) { return object.get_StartOffset(&startSecs); });
}

HRESULT CNXEffect::setStartOffset(double startSecs)
{
    EngineCalls::Begin();
    return PutStartOffset(m_pUnkEffect, startSecs);
}

HRESULT CNXEffect::getEndOffset(double& endSecs) const
{
    endSecs = 0.0;
    EngineCalls::Begin();
    return CallSubObject(m_pUnkEffect, "spSubObject->get_EndOffset(&endSecs)",
                         [&](ISubObject& object) { return object.get_EndOffset(&endSecs); });
}

HRESULT CNXEffect::setEndOffset(double endSecs)
{
    EngineCalls::Begin();
    return PutEndOffset(m_pUnkEffect, endSecs);
}

HRESULT CNXEffect::getAspectRatio(double& dAspectRatio) const
{
    constexpr double kUsual = 4.0 / 3.0;
    dAspectRatio = kUsual;
    return EngineCalls::Operation([&] {
        const auto storyboard = StoryboardOf(m_pUnkEffect);
        if (!storyboard) return S_FALSE;
        const auto spProdInfo = ProductionOf(storyboard).Info();
        double found = 0.0;
        kEngine.Need(spProdInfo->get_AspectRatio(&found), "spProdInfo->get_AspectRatio(&dAspectRatio)");
        dAspectRatio = found;
        return S_OK;
    });
}

// The parameter document

HRESULT CNXEffect::getDocument(ComPtr<IXMLDOMNode>& document) const
{
    document.Reset();
    return EngineCalls::Operation([&] {
        document = LiveDocument(*InfoOf(m_pUnkEffect));
        return document ? S_OK : S_FALSE;
    });
}

HRESULT CNXEffect::setDocument(IXMLDOMNode* document)
{
    return EngineCalls::Operation([&] {
        Push(*InfoOf(m_pUnkEffect), document);
        return S_OK;
    });
}

HRESULT CNXEffect::getPluginData(XmlElement& pluginData) const
{
    pluginData = {};
    return EngineCalls::Operation([&] {
        pluginData = PluginDataOf(LiveDocument(*InfoOf(m_pUnkEffect)).Get());
        return S_OK;
    });
}

HRESULT CNXEffect::Edit(const Change& change)
{
    return EngineCalls::Operation([&] {
        const auto info = InfoOf(m_pUnkEffect);
        const auto live = LiveDocument(*info);
        if (!live) return kEngine.Checked(E_FAIL);
        ComPtr<IXMLDOMNode> copy;
        kEngine.Need(live->cloneNode(VARIANT_TRUE, copy.Put()));
        XmlElement pluginData = PluginDataOf(copy.Get());
        if (!change(pluginData)) return S_FALSE;
        XmlElement root = RootOf(copy.Get());
        if (root != pluginData) root.MoveLast(kPluginData);
        Push(*info, copy.Get());
        return S_OK;
    });
}

// The transform

HRESULT CNXEffect::getChannel(ULONG channel, double time, ULONG list, ZXPVector& value) const
{
    value = {};
    return EngineCalls::Operation([&] {
        const XmlElement pluginData = PluginDataOf(LiveDocument(*InfoOf(m_pUnkEffect)).Get());
        CZXPTransformImpl transform;
        kEngine.Reporting([&] { transform.LoadChannels(pluginData, channel); });
        return kEngine.Checked(ReadKey(transform, channel, time, list, value));
    });
}

HRESULT CNXEffect::getChannels(std::vector<ChannelValue>& values) const
{
    const HRESULT result = EngineCalls::Operation([&] {
        const XmlElement pluginData = PluginDataOf(LiveDocument(*InfoOf(m_pUnkEffect)).Get());
        CZXPTransformImpl transform;
        kEngine.Reporting([&] { transform.LoadChannels(pluginData, ChannelsOf(values)); });
        for (auto& [channel, value] : values)
            kEngine.Need(ReadKey(transform, channel, 0.0, ZXP_FROM_START, value));
        return S_OK;
    });
    if (FAILED(result)) {
        for (ChannelValue& each : values)
            each.value = {};
    }
    return result;
}

HRESULT CNXEffect::setChannel(ULONG channel, double time, ULONG list, const ZXPVector& value, ULONG caps)
{
    return Edit([&](XmlElement& pluginData) {
        CZXPTransformImpl transform;
        kEngine.Reporting([&] { transform.LoadChannels(pluginData, channel); });
        kEngine.Need(transform.SetKeyValue(channel, time, list, value.x, value.y, value.z, caps));
        kEngine.Reporting([&] { transform.SaveChannels(pluginData, channel); });
        return true;
    });
}

HRESULT CNXEffect::setChannels(const std::vector<ChannelValue>& values)
{
    const HRESULT result = Edit([&](XmlElement& pluginData) {
        const ULONG channels = ChannelsOf(values);
        CZXPTransformImpl transform;
        kEngine.Reporting([&] { transform.LoadChannels(pluginData, channels); });
        bool changed = false;
        for (const auto& [channel, value] : values) {
            ZXPVector old{};
            ULONG caps = 0;
            const bool is =
                SUCCEEDED(transform.GetKeyValue(channel, 0.0, ZXP_FROM_START, &old.x, &old.y, &old.z, &caps));
            if (is && old == value) continue;
            kEngine.Need(transform.SetKeyValue(channel, 0.0, ZXP_FROM_START, value.x, value.y, value.z, ZXP_ALL_CAPS));
            changed = true;
        }
        if (changed) kEngine.Reporting([&] { transform.SaveChannels(pluginData, channels); });
        return changed;
    });
    return result == S_FALSE ? S_OK : result;
}

HRESULT CNXEffect::getHandles(std::array<ZXPVector, 4>& handles) const
{
    handles = {};
    return EngineCalls::Operation([&] {
        if (!m_pUnkEffect) return E_UNEXPECTED;
        // No document tells of them.
        CZXPTransformImpl transform;
        ZXPReferenceFrame reference{};
        return kEngine.Checked(transform.GetHandles(handles.data(), &reference));
    });
}

// The mask

HRESULT CNXEffect::getMaskFile(Bstr& file) const
{
    file = {};
    return EngineCalls::Operation([&] {
        ComPtr<IUnknown> mask;
        kEngine.Need(InfoOf(m_pUnkEffect)->GetSourceObject(mask.Put()));
        const auto source = Query<ISourceFile>(mask);
        return source ? kEngine.Checked(source->get_FileName(file.Put())) : S_FALSE;
    });
}

HRESULT CNXEffect::setMaskFile(BSTR file)
{
    const auto effect = m_pUnkEffect;
    return Edit([&](XmlElement& pluginData) {
        kEngine.Reporting([&] { SetMaskParameters(pluginData, View(file)); });
        const HRESULT result = InfoOf(effect)->SetMaskFile(file, ZXE_MASK_ALPHA);
        if (result != ZXE_E_MASK_NOT_READ) kEngine.Need(result);
        return true;
    });
}

HRESULT CNXEffect::getMaskSize(double& width, double& height) const
{
    width = 0.0;
    height = 0.0;
    return EngineCalls::Operation([&] {
        const XmlElement pluginData = PluginDataOf(LiveDocument(*InfoOf(m_pUnkEffect)).Get());
        bool isSet = false;
        kEngine.Reporting([&] { isSet = ReadMaskSize(pluginData, width, height); });
        return isSet ? S_OK : S_FALSE;
    });
}

HRESULT CNXEffect::setMaskSize(double width, double height)
{
    const HRESULT result = Edit([&](XmlElement& pluginData) {
        bool changed = false;
        kEngine.Reporting([&] { changed = SetMaskParameters(pluginData, width, height); });
        return changed;
    });
    return result == S_FALSE ? S_OK : result;
}

} // namespace kv
