#pragma once
// The effect by which a menu element is shown on its menu's storyboard.

#include "KVProjectData/Engine/Effects.h"
#include "KVProjectData/Engine/Parameters.h"
#include "KVProjectData/Engine/Sources.h"
#include "platform/com/ComPtr.h"
#include "platform/xml/Element.h"

#include <array>
#include <functional>
#include <vector>

namespace kv {

/// Holds one effect of the engine, or none; belongs to one menu element, whose section guards it. The effect lives in
/// its production: it may be deleted there while it is held, and come back by undo as the same object.
///
/// Times are seconds. Failures of the engine are reported to the host, and its results pass through. An operation that
/// needs an effect is E_UNEXPECTED without one, or E_POINTER where it says so; an object of the engine without an
/// interface that is needed is E_POINTER. An out-value is set to nothing when the call fails.
class CNXEffect {
public:
    CNXEffect() = default;
    CNXEffect(const CNXEffect&) = delete;
    CNXEffect& operator=(const CNXEffect&) = delete;

    /// Whether an effect is held.
    explicit operator bool() const { return static_cast<bool>(m_pUnkEffect); }

    /// Adds an effect of a ZXE_EFFECT_ type, which spans the production from the middle of its first frame to that of
    /// its last. S_FALSE, and nothing happens, while one is held. E_POINTER without a storyboard. When the span cannot
    /// be set the effect is held all the same.
    HRESULT Create(IUnknown* pUnkSbd, LONG eType, LONG layer, IXMLDOMNode* spXMLParams);

    /// Finds the effect that a layer shows at the start, as after loading. S_FALSE while one is held, and when the
    /// layer shows none. E_POINTER without a storyboard.
    HRESULT Attach(IUnknown* pUnkSbd, LONG layer);
    /// Lets go of an effect that the layer does not show any more, since the storyboard's history has taken it away.
    void LeaveGone(IUnknown* pUnkSbd, LONG layer);

    /// Deletes the effect and lets go of it; it is still held when deleting fails. S_FALSE without one.
    HRESULT Remove();

    /// Lets go of the effect, which stays where it is.
    void Detach() { m_pUnkEffect.Reset(); }

    HRESULT getEffectID(LONG& id) const;
    /// The ID of the button that holds the element.
    HRESULT setGroupID(LONG id);
    /// S_FALSE where the engine's effects stay on their layers.
    HRESULT setLayer(LONG layer);

    // The span. E_POINTER without an effect.

    HRESULT getStartOffset(double& startSecs) const;
    HRESULT setStartOffset(double startSecs);
    HRESULT getEndOffset(double& endSecs) const;
    HRESULT setEndOffset(double endSecs);

    /// Width to height of the production. S_FALSE, and 4/3, without an effect or a way from it to its production.
    HRESULT getAspectRatio(double& dAspectRatio) const;

    // The parameter document. E_FAIL for an effect whose document has no "plugin_data".

    /// The live document, read only; empty and S_FALSE when the effect has none.
    HRESULT getDocument(ComPtr<IXMLDOMNode>& document) const;

    /// Puts a whole document, which must not be changed from now on, in the place of the live one.
    HRESULT setDocument(IXMLDOMNode* document);

    /// The live "plugin_data", read only.
    HRESULT getPluginData(XmlElement& pluginData) const;

    /// Changes a copy of "plugin_data", or says false when there is nothing to change. May throw Error; then nothing
    /// has changed.
    using Change = std::function<bool(XmlElement& pluginData)>;

    /// The one way to edit a document: copies the live one, has the copy changed, puts it in the place of the live one
    /// and has the engine take it. The edited "plugin_data" stands last in it. S_FALSE when nothing was to change.
    HRESULT Edit(const Change& change);

    // The transform: the key of a channel in a list, at exactly a time.

    /// Without such a key 0, 0, 0 for translation and rotation, 1, 1, 1 for scaling; for other channels a failure.
    HRESULT getChannel(ULONG channel, double time, ULONG list, ZXPVector& value) const;
    HRESULT setChannel(ULONG channel, double time, ULONG list, const ZXPVector& value, ULONG caps = ZXP_ALL_CAPS);

    struct ChannelValue {
        ULONG channel;
        ZXPVector value;
    };
    /// The keys at the start of several channels, each as getChannel tells it, by one look at the document.
    HRESULT getChannels(std::vector<ChannelValue>& values) const;
    /// Sets the keys at the start of several channels in one edit. Pushes nothing when they are that already.
    HRESULT setChannels(const std::vector<ChannelValue>& values);

    /// The corners of the effect's own square.
    HRESULT getHandles(std::array<ZXPVector, 4>& handles) const;

    // The mask of an overlay.

    /// Null without a mask. S_FALSE then.
    HRESULT getMaskFile(Bstr& file) const;
    /// An empty name takes the mask away. A picture that cannot be read is one all the same.
    HRESULT setMaskFile(BSTR file);
    /// S_FALSE, and 0, where no size was set.
    HRESULT getMaskSize(double& width, double& height) const;
    /// Pushes nothing when the size is that already. E_INVALIDARG unless finite.
    HRESULT setMaskSize(double width, double height);

    // The source of an overlay. S_FALSE, and nothing happens, for an effect that has none to show.

    /// S_OK and null for an effect that has none to show.
    HRESULT getSourceFile(Bstr& file) const;
    /// The source plays over and over, without its sound.
    HRESULT setSourceFile(BSTR file);
    /// Width to height of the source's picture; 0 when it has none.
    HRESULT getSourceAspectRatio(double& dAspectRatio) const;
    /// E_POINTER without an effect, as the three below.
    HRESULT getInPoint(double& seconds) const;
    HRESULT setInPoint(double seconds);
    HRESULT getOutPoint(double& seconds) const;
    HRESULT setOutPoint(double seconds);
    /// Degrees, clockwise.
    HRESULT getSourceRotation(LONG& degrees) const;
    HRESULT setSourceRotation(LONG degrees);
    /// The part of the source's frame that is shown. Getting: S_FALSE, and 0, where none was set.
    HRESULT getSourceCrop(FloatRect& crop) const;
    HRESULT setSourceCrop(double left, double top, double right, double bottom);

private:
    ComPtr<IUnknown> m_pUnkEffect;
};

} // namespace kv
