// What an overlay's effect shows.

#include "KVProjectData/effects/NXEffect.h"

#include "KVProjectData/effects/ZXPPlugInHelper.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {
namespace {

constexpr EngineCalls kEngine("NXEffect");

/// Calls the source of an effect. S_FALSE when it has none to show.
template <class Call>
HRESULT CallSource(const ComPtr<IUnknown>& effect, Call&& call)
{
    return EngineCalls::Operation([&] {
        if (!effect) return E_UNEXPECTED;
        const auto source = Query<ISourceFile>(effect);
        return source ? kEngine.Checked(call(*source)) : S_FALSE;
    });
}

template <class T>
HRESULT Get(const ComPtr<IUnknown>& effect, HRESULT (ISourceFile::*getter)(T*), T& value)
{
    value = {};
    return CallSource(effect, [&](ISourceFile& source) { return (source.*getter)(&value); });
}

template <class T>
HRESULT Put(const ComPtr<IUnknown>& effect, HRESULT (ISourceFile::*setter)(T), T value)
{
    return CallSource(effect, [&](ISourceFile& source) { return (source.*setter)(value); });
}

/// A source that has no such points is for the caller to report.
HRESULT PutPoint(const ComPtr<IUnknown>& effect, HRESULT (ISourceFile::*setter)(double), double seconds)
{
    HRESULT result = S_OK;
    const HRESULT called = CallSource(effect, [&](ISourceFile& source) {
        result = (source.*setter)(seconds);
        return result == E_NOTIMPL ? S_OK : result;
    });
    return result == E_NOTIMPL ? result : called;
}

HRESULT NoEffect()
{
    EngineCalls::Begin();
    return kEngine.NullArgument("(IUnknown*)m_pUnkEffect");
}

} // namespace

HRESULT CNXEffect::getSourceFile(Bstr& file) const
{
    file = {};
    const HRESULT result = Get(m_pUnkEffect, &ISourceFile::get_FileName, *file.Put());
    return result == S_FALSE ? S_OK : result;
}

HRESULT CNXEffect::setSourceFile(BSTR file)
{
    const auto effect = m_pUnkEffect;
    return CallSource(effect, [&](ISourceFile& source) {
        kEngine.Need(source.put_FileName(file));
        kEngine.Need(source.put_Repeat(VARIANT_TRUE));
        const auto sound = kEngine.Need<INativeInfo>(effect.Get(), "(INativeInfo*)spNativeInfo");
        return sound->put_UseNativeAudio(VARIANT_FALSE);
    });
}

HRESULT CNXEffect::getSourceAspectRatio(double& dAspectRatio) const
{
    return Get(m_pUnkEffect, &ISourceFile::get_AspectRatio, dAspectRatio);
}

HRESULT CNXEffect::getInPoint(double& seconds) const
{
    seconds = 0.0;
    return m_pUnkEffect ? Get(m_pUnkEffect, &ISourceFile::get_InPoint, seconds) : NoEffect();
}

HRESULT CNXEffect::setInPoint(double seconds)
{
    return m_pUnkEffect ? PutPoint(m_pUnkEffect, &ISourceFile::put_InPoint, seconds) : NoEffect();
}

HRESULT CNXEffect::getOutPoint(double& seconds) const
{
    seconds = 0.0;
    return m_pUnkEffect ? Get(m_pUnkEffect, &ISourceFile::get_OutPoint, seconds) : NoEffect();
}

HRESULT CNXEffect::setOutPoint(double seconds)
{
    return m_pUnkEffect ? PutPoint(m_pUnkEffect, &ISourceFile::put_OutPoint, seconds) : NoEffect();
}

HRESULT CNXEffect::getSourceRotation(LONG& degrees) const
{
    return Get(m_pUnkEffect, &ISourceFile::get_Rotation, degrees);
}

HRESULT CNXEffect::setSourceRotation(LONG degrees)
{
    return Put(m_pUnkEffect, &ISourceFile::put_Rotation, degrees);
}

HRESULT CNXEffect::getSourceCrop(FloatRect& crop) const
{
    crop = {};
    return CallSource(m_pUnkEffect, [&](ISourceFile& source) {
        ComPtr<IXMLDOMNode> document;
        kEngine.Need(source.GetPanZoom(document.Put()));
        const XmlElement panZoom(document.Get());
        if (!panZoom) return S_FALSE;
        CZXPPlugInHelper helper;
        kEngine.Need(helper.Attach(panZoom));
        ULONG count = 0;
        ULONG caps = 0;
        helper.CropSource().GetKeyCount(ZXP_FROM_START, &count);
        return count > 0 ? helper.CropSource().GetKeyRect(0, ZXP_FROM_START, &crop, &caps) : S_FALSE;
    });
}

HRESULT CNXEffect::setSourceCrop(double left, double top, double right, double bottom)
{
    return CallSource(m_pUnkEffect, [&](ISourceFile& source) {
        constexpr ULONG kCropped = 3;
        CZXPPlugInHelper helper;
        XmlElement panZoom = XmlElement::New("ZXFPanZoom");
        kEngine.Need(helper.Attach(panZoom));
        helper.CropSource().put_EditMode(kCropped);
        helper.CropSource().put_CropMode(VARIANT_TRUE);
        kEngine.Need(helper.CropSource().put_CropRect({static_cast<float>(left), static_cast<float>(top),
                                                       static_cast<float>(right), static_cast<float>(bottom)}));
        kEngine.Need(helper.Save(panZoom));
        return source.SetPanZoom(panZoom.Get());
    });
}

} // namespace kv
