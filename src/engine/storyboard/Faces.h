#pragma once
// The interfaces that several kinds of items answer for.

#include "KVProjectData/Engine/Audio.h"
#include "KVProjectData/Engine/Effects.h"
#include "KVProjectData/Engine/Sources.h"
#include "engine/storyboard/Item.h"

namespace kv {

/// A clip of an item, as a file.
class SourceFace : public ISourceFile {
public:
    HRESULT get_FileName(BSTR* pbstrFileName) override;
    HRESULT put_FileName(BSTR bstrFileName) override;
    HRESULT get_InPoint(double* pdSeconds) override;
    HRESULT put_InPoint(double dSeconds) override;
    HRESULT get_OutPoint(double* pdSeconds) override;
    HRESULT put_OutPoint(double dSeconds) override;
    HRESULT get_Length(double* pdSeconds) override;
    HRESULT get_AspectRatio(double* pdAspectRatio) override;
    HRESULT get_Repeat(VARIANT_BOOL* pbRepeat) override;
    HRESULT put_Repeat(VARIANT_BOOL bRepeat) override;
    HRESULT get_Rotation(LONG* plDegrees) override;
    HRESULT put_Rotation(LONG lDegrees) override;
    HRESULT GetPanZoom(IXMLDOMNode** ppElement) override;
    HRESULT SetPanZoom(IXMLDOMNode* pElement) override;

protected:
    ~SourceFace() = default;
    virtual Item& Self() = 0;
    virtual Clip ItemState::*Which() const { return &ItemState::clip; }
    /// Whether a moniker can stand for the file.
    virtual bool TakesMonikers() const { return true; }

private:
    Clip Now() { return Self().State().*Which(); }
    /// What was found in the source; nothing without one.
    SourceFacts Facts();
    HRESULT PutPoint(double Clip::*point, double seconds);
    template <class T>
    HRESULT Put(T Clip::*member, T value);
};

/// The place of an item in time.
class SubObjectFace : public ISubObject {
public:
    HRESULT get_ID(LONG* plID) override;
    HRESULT get_StartOffset(double* pdSeconds) override;
    HRESULT put_StartOffset(double dSeconds) override;
    HRESULT get_EndOffset(double* pdSeconds) override;
    HRESULT put_EndOffset(double dSeconds) override;
    HRESULT get_Mute(VARIANT_BOOL* pbMute) override;
    HRESULT put_Mute(VARIANT_BOOL bMute) override;

protected:
    ~SubObjectFace() = default;
    virtual Item& Self() = 0;

private:
    HRESULT PutOffset(double ItemState::*offset, double seconds);
};

/// The sound of an item.
class AudioPropsFace : public IAudioProps {
public:
    HRESULT get_Level(double* pdLevel) override { return Get(&Sound::level, pdLevel); }
    HRESULT put_Level(double dLevel) override { return Put(&Sound::level, dLevel); }
    HRESULT get_FadeIn(double* pdSeconds) override { return Get(&Sound::fadeIn, pdSeconds); }
    HRESULT put_FadeIn(double dSeconds) override { return Put(&Sound::fadeIn, dSeconds); }
    HRESULT get_FadeOut(double* pdSeconds) override { return Get(&Sound::fadeOut, pdSeconds); }
    HRESULT put_FadeOut(double dSeconds) override { return Put(&Sound::fadeOut, dSeconds); }
    HRESULT get_FadeInGain(double* pdGain) override { return Get(&Sound::fadeInGain, pdGain); }
    HRESULT put_FadeInGain(double dGain) override { return Put(&Sound::fadeInGain, dGain); }
    HRESULT get_FadeOutGain(double* pdGain) override { return Get(&Sound::fadeOutGain, pdGain); }
    HRESULT put_FadeOutGain(double dGain) override { return Put(&Sound::fadeOutGain, dGain); }

protected:
    ~AudioPropsFace() = default;
    virtual Item& Self() = 0;

private:
    HRESULT Get(double Sound::*member, double* out);
    HRESULT Put(double Sound::*member, double value);
};

/// A member of an item that is an object of its own to those who look at it: references to it count on the item.
template <class First, class... Others>
class ItemPart : public First, public Others... {
public:
    explicit ItemPart(Item& item) : m_item(item) {}
    ItemPart(const ItemPart&) = delete;
    ItemPart& operator=(const ItemPart&) = delete;

    HRESULT QueryInterface(REFIID iid, void** out) override
    {
        if (!out) return E_POINTER;
        *out = nullptr;
        (Offer<First>(iid, out) || ... || Offer<Others>(iid, out));
        if (!*out && iid == IUnknown::IID) *out = Unknown();
        if (!*out) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return m_item.AddRef(); }
    ULONG Release() override { return m_item.Release(); }

    HRESULT CopyTo(IUnknown** out) { return ComPtr<IUnknown>(Unknown()).CopyTo(out); }

protected:
    ~ItemPart() = default;
    Item& Self() override { return m_item; }

private:
    IUnknown* Unknown() { return static_cast<First*>(this); }

    template <class Interface>
    bool Offer(REFIID iid, void** out)
    {
        if (iid == Interface::IID) *out = static_cast<Interface*>(this);
        return *out != nullptr;
    }

    Item& m_item;
};

/// The sound that the clip of a panel or an effect brings along: it has no place of its own in time.
class NativeAudio final : public ItemPart<SubObjectFace, AudioPropsFace> {
public:
    using ItemPart::ItemPart;

    HRESULT get_ID(LONG* plID) override { return Give(LONG{0}, plID); }
    HRESULT put_StartOffset(double) override { return E_NOTIMPL; }
    HRESULT put_EndOffset(double) override { return E_NOTIMPL; }
};

/// The file of an effect's mask.
class MaskSource final : public ItemPart<SourceFace> {
public:
    using ItemPart::ItemPart;

private:
    Clip ItemState::*Which() const override { return &ItemState::mask; }
};

/// What a panel or an effect tells of its sound.
class NativeInfoFace : public INativeInfo {
public:
    HRESULT GetNativeAudio(IUnknown** ppAudio) override { return Part().CopyTo(ppAudio); }
    HRESULT get_UseNativeAudio(VARIANT_BOOL* pbUse) override;
    HRESULT put_UseNativeAudio(VARIANT_BOOL bUse) override;

protected:
    ~NativeInfoFace() = default;
    virtual Item& Self() = 0;
    virtual NativeAudio& Part() = 0;
};

} // namespace kv
