#pragma once
// What a menu element shows: its effect on the menu's storyboard, and its place, whether it has an effect or not.

#include "KVProjectData/effects/NXEffect.h"
#include "KVProjectData/menus/ElementGeometry.h"
#include "KVProjectData/tree/AttributeArchive.h"
#include "KVProjectData/tree/ProjectNode.h"

namespace kv {

/// Elements with this tag show what a player draws itself, and have no effect.
inline constexpr ULONG kHighlightTag = 8;

/// A channel of the effect's transform, and what stands for it while there is no effect.
struct StoredChannel {
    const ULONG channel;
    ZXPVector stored;
};

/// Base of the element classes beside CProjectNode. A value that effects know is the effect's while there is one, and
/// is stored before it goes; with a place inside a button an element without effect stores what is relative to the
/// button, while effects hold what is absolute.
///
/// Called with the sections of the element and of those above it held (LineageLock). Failures of the effect are
/// reported, and returned.
class CMenuElementImpl {
public:
    CMenuElementImpl(const CMenuElementImpl&) = delete;
    CMenuElementImpl& operator=(const CMenuElementImpl&) = delete;
    virtual ~CMenuElementImpl() = default;

    CProjectNode& Node() const { return m_node; }

    // The life of the effect, on the layer of the element's ID.

    /// Makes an effect and gives it the stored values; `groupID` is -1 for none. S_FALSE for an element that has one,
    /// or whose tag is `tagFilter`.
    virtual HRESULT InsertEffect(IUnknown* pUnkSbd, LONG groupID, ULONG tagFilter);
    /// Stores what the effect holds, and deletes it. S_FALSE without one.
    virtual HRESULT RemoveEffect();
    /// Finds the effect that the storyboard has for the element. E_FAIL when there is none; S_OK for an element whose
    /// tag is `tagFilter`.
    virtual HRESULT AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter);
    /// Stores what the effect holds, and lets go of it. Never fails.
    virtual HRESULT DetachEffect();
    /// Lets go of the effect and of what it told.
    virtual void ForgetEffect() { m_effect.Detach(); }
    /// Lets go of an effect that the storyboard's history has taken away, and of what it told.
    virtual void LeaveGoneEffect(IUnknown* pUnkSbd) { m_effect.LeaveGone(pUnkSbd, m_node.ID()); }
    /// Whether there is an effect that holds the element's place.
    virtual bool HasEffect() const { return static_cast<bool>(m_effect); }
    /// The element has an effect, or is not to have one.
    virtual bool IsBound() const { return HasEffect() || m_tag == kHighlightTag; }
    HRESULT getEffectID(LONG& id) const { return m_effect.getEffectID(id); }

    /// What the effect bears of the element's ID becomes that of another one.
    virtual HRESULT RenameEffect(LONG id) { return m_effect ? m_effect.setLayer(id) : S_FALSE; }
    HRESULT RegroupEffect(LONG id) { return m_effect ? m_effect.setGroupID(id) : S_FALSE; }

    // Geometry. Setters record before they change, and tell afterwards.

    virtual HRESULT getPosition(FloatPoint& position);
    virtual HRESULT setPosition(const FloatPoint& position);
    HRESULT getRotation(float& degrees);
    HRESULT setRotation(float degrees);
    virtual HRESULT getBoundingBox(Corners& corners);
    virtual HRESULT getExtent(FloatRect& extent);
    virtual HRESULT getWidthHeight(float& width, float& height);
    /// E_INVALIDARG below 0. Nothing is stored without an effect.
    virtual HRESULT setWidthHeight(float width, float height);
    /// Seconds. E_POINTER without an effect.
    HRESULT getTimeOffsets(double& startSecs, double& endSecs);
    virtual HRESULT setTimeOffsets(double startSecs, double endSecs);

    /// The place in the menu, and moving there with neither record nor event.
    HRESULT getRawPosition(FloatPoint& position) const;
    HRESULT setRawPosition(const FloatPoint& position);
    HRESULT moveRawPosition(const FloatPoint& distance);

    ULONG Tag() const { return m_tag; }
    /// Of a new element.
    void StartTag(ULONG tag) { m_tag = tag; }
    HRESULT setZOrder(LONG zOrder);

    /// Stores what the effect holds (`capture`), or gives the effect what is stored.
    virtual HRESULT syncEffect(bool capture);
    /// The parameter document of a new effect; S_FALSE, and none, for an element without.
    virtual HRESULT createEffectParams(ComPtr<IXMLDOMNode>& document);
    /// A ZXE_EFFECT_ type.
    virtual LONG getEffectType() const = 0;
    /// Lists the common attributes and those of the kind.
    virtual void attributes(AttributeArchive& archive);

    // What buttons ask of their elements.

    /// Whether the element is highlighted with its button.
    virtual bool CountsAsHighlight() const { return false; }
    virtual HRESULT getSize(float& width, float& height);
    virtual HRESULT setSize(float width, float height);
    /// Whether the element's source has a text in its name.
    virtual bool SourceContains(std::u16string_view) const { return false; }

    /// The elements of the list that belongs to this one changed: finds out whose place is the place of all. Without
    /// `reselect` they are about to lose their effects.
    virtual void SelectAnchor(bool) {}
    /// 0 for none.
    virtual LONG AnchorID() const { return 0; }
    /// Undo says whose place it is, or was: one that gets its effect later is waited for.
    virtual void ReturnAnchor(LONG) {}

    /// A person is about to move or resize the element.
    virtual void MovedByHand() {}

    /// Tells of a changed property.
    virtual void onPropertyChanged(DISPID propId);

protected:
    explicit CMenuElementImpl(CProjectNode& node) : m_node(node) {}

    virtual HRESULT getHandles(Corners& corners);
    virtual HRESULT getScale(FloatPoint& scale);
    /// Documents say what the effect holds: it has none, or they are to be complete.
    virtual bool WritesAll(const AttributeArchive& archive) const { return archive.ForcesNative() || !HasEffect(); }

    /// Names further channels of the effect that are stored, for syncEffect to give them to it.
    virtual void AddChannels(std::vector<CNXEffect::ChannelValue>&) const {}

    HRESULT getChannel(const StoredChannel& channel, ZXPVector& value) const;
    HRESULT setChannel(StoredChannel& channel, const ZXPVector& value);
    /// The button whose element this one is; null for every other.
    CMenuElementImpl* Holder() const;
    /// 16/9, or else 4/3.
    double DisplayAspect() const;

    CNXEffect m_effect;
    ULONG m_tag = 0;
    ULONG m_flags = 0;
    bool m_dirty = false;
    LONG m_templateID = 0;
    LONG m_zOrder = 0;
    StoredChannel m_translation{ZXP_TRANSLATION, {}};
    StoredChannel m_rotation{ZXP_ROTATION, {}};

private:
    /// Gives the effect what is stored of its transform.
    HRESULT PushTransform();
    /// What places and angles are relative to: the button's, for an element in a button that has an effect.
    HRESULT GetOrigin(FloatPoint& origin) const;
    HRESULT GetOrigin(float& degrees) const;
    /// Of the element's own square in the menu, by one look at the effect's document.
    HRESULT GetPlacement(Placement& placement);

    CProjectNode& m_node;
};

/// The element that a node is; null for any other.
CMenuElementImpl* ElementOf(CProjectNode& node);

} // namespace kv
