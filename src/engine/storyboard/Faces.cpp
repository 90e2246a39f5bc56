#include "engine/storyboard/Faces.h"

namespace kv {

// Sources

SourceFacts SourceFace::Facts()
{
    const Clip clip = Now();
    return clip.source ? clip.source->Facts() : SourceFacts{};
}

template <class T>
HRESULT SourceFace::Put(T Clip::*member, T value)
{
    return Guarded([&] {
        return Self().Edit([this, member, &value](ItemState& state) {
            state.*Which().*member = std::move(value);
            return S_OK;
        });
    });
}

HRESULT SourceFace::get_FileName(BSTR* pbstrFileName)
{
    if (!pbstrFileName) return E_POINTER;
    *pbstrFileName = nullptr;
    return Guarded([&] {
        const Clip clip = Now();
        if (clip.source) *pbstrFileName = Bstr::Copy(clip.source->Name().Get());
        return S_OK;
    });
}

HRESULT SourceFace::put_FileName(BSTR bstrFileName)
{
    if (View(bstrFileName).empty()) return E_INVALIDARG;
    if (IsMoniker(View(bstrFileName)) && !TakesMonikers()) return E_INVALIDARG;
    return Guarded([&] { return Put(&Clip::source, std::make_shared<Source>(View(bstrFileName))); });
}

HRESULT SourceFace::get_InPoint(double* pdSeconds)
{
    return Give(Now().inPoint, pdSeconds);
}

HRESULT SourceFace::get_OutPoint(double* pdSeconds)
{
    return Give(EndOf(Now()), pdSeconds);
}

HRESULT SourceFace::put_InPoint(double dSeconds)
{
    return PutPoint(&Clip::inPoint, dSeconds);
}

HRESULT SourceFace::put_OutPoint(double dSeconds)
{
    return PutPoint(&Clip::outPoint, dSeconds);
}

HRESULT SourceFace::PutPoint(double Clip::*point, double seconds)
{
    if (!IsAmount(seconds)) return E_INVALIDARG;
    const double length = Facts().length;
    return length > 0.0 && seconds > length ? E_FAIL : Put(point, seconds);
}

HRESULT SourceFace::get_Length(double* pdSeconds)
{
    return Give(Facts().length, pdSeconds);
}

HRESULT SourceFace::get_AspectRatio(double* pdAspectRatio)
{
    return Give(Facts().aspectRatio, pdAspectRatio);
}

HRESULT SourceFace::get_Repeat(VARIANT_BOOL* pbRepeat)
{
    return Give(ToVariantBool(Now().repeat), pbRepeat);
}

HRESULT SourceFace::put_Repeat(VARIANT_BOOL bRepeat)
{
    return Put(&Clip::repeat, bRepeat != VARIANT_FALSE);
}

HRESULT SourceFace::get_Rotation(LONG* plDegrees)
{
    return Give(Now().rotation, plDegrees);
}

HRESULT SourceFace::put_Rotation(LONG lDegrees)
{
    return Put(&Clip::rotation, lDegrees);
}

HRESULT SourceFace::GetPanZoom(IXMLDOMNode** ppElement)
{
    return Now().panZoom.Give(ppElement);
}

HRESULT SourceFace::SetPanZoom(IXMLDOMNode* pElement)
{
    return Guarded([&] { return Put(&Clip::panZoom, StoredDocument(pElement)); });
}

// Places in time

HRESULT SubObjectFace::get_ID(LONG* plID)
{
    return Give(Self().ID(), plID);
}

HRESULT SubObjectFace::get_StartOffset(double* pdSeconds)
{
    return Guarded([&] { return Give(Self().Time().start, pdSeconds); });
}

HRESULT SubObjectFace::get_EndOffset(double* pdSeconds)
{
    return Guarded([&] { return Give(Self().Time().end, pdSeconds); });
}

HRESULT SubObjectFace::put_StartOffset(double dSeconds)
{
    return PutOffset(&ItemState::start, dSeconds);
}

HRESULT SubObjectFace::put_EndOffset(double dSeconds)
{
    return PutOffset(&ItemState::end, dSeconds);
}

HRESULT SubObjectFace::PutOffset(double ItemState::*offset, double seconds)
{
    if (!IsAmount(seconds)) return E_INVALIDARG;
    return Self().Edit([=](ItemState& state) {
        state.*offset = seconds;
        return S_OK;
    });
}

HRESULT SubObjectFace::get_Mute(VARIANT_BOOL* pbMute)
{
    return Give(ToVariantBool(Self().State().sound.mute), pbMute);
}

HRESULT SubObjectFace::put_Mute(VARIANT_BOOL bMute)
{
    return Self().Edit([=](ItemState& state) {
        state.sound.mute = bMute != VARIANT_FALSE;
        return S_OK;
    });
}

// Sound

HRESULT AudioPropsFace::Get(double Sound::*member, double* out)
{
    return Give(Self().State().sound.*member, out);
}

HRESULT AudioPropsFace::Put(double Sound::*member, double value)
{
    if (!IsAmount(value)) return E_INVALIDARG;
    return Self().Edit([=](ItemState& state) {
        state.sound.*member = value;
        return S_OK;
    });
}

HRESULT NativeInfoFace::get_UseNativeAudio(VARIANT_BOOL* pbUse)
{
    return Give(ToVariantBool(Self().State().useNativeAudio), pbUse);
}

HRESULT NativeInfoFace::put_UseNativeAudio(VARIANT_BOOL bUse)
{
    return Self().Edit([=](ItemState& state) {
        state.useNativeAudio = bUse != VARIANT_FALSE;
        return S_OK;
    });
}

} // namespace kv
