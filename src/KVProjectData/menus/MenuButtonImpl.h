#pragma once
// What a button shows: the effects of its elements.

#include "KVProjectData/menus/MenuElementImpl.h"

namespace kv {

/// The children of a button node.
enum ButtonChild : LONG { kButtonLinks, kButtonRegion, kButtonCommands, kButtonElements };

/// A button has no effect of its own. While its elements have theirs, one of them is its anchor: the button stands
/// where the anchor does, and moves all of them.
class CMenuButtonImpl : public CMenuElementImpl {
public:
    HRESULT InsertEffect(IUnknown* pUnkSbd, LONG groupID, ULONG tagFilter) override;
    HRESULT RemoveEffect() override;
    /// Finds the effects of all elements that have one; the first failure is returned.
    HRESULT AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter) override;
    HRESULT DetachEffect() override;
    void ForgetEffect() override;
    void LeaveGoneEffect(IUnknown* pUnkSbd) override;
    bool HasEffect() const override { return Anchor() != nullptr; }
    bool IsBound() const override;
    HRESULT RenameEffect(LONG id) override;

    HRESULT getPosition(FloatPoint& position) override;
    HRESULT setPosition(const FloatPoint& position) override;
    /// KV_E_BUTTON_HAS_NO_BOX.
    HRESULT getBoundingBox(Corners& corners) override;
    HRESULT getExtent(FloatRect& extent) override;
    HRESULT getWidthHeight(float& width, float& height) override;
    HRESULT setWidthHeight(float width, float height) override;
    HRESULT setTimeOffsets(double startSecs, double endSecs) override;
    virtual HRESULT moveBy(const FloatPoint& distance);

    LONG getEffectType() const override { return ZXE_EFFECT_TEXT; }
    void attributes(AttributeArchive& archive) override;

    void SelectAnchor(bool reselect) override;
    LONG AnchorID() const override { return m_anchorID; }
    void ReturnAnchor(LONG id) override;
    void MovedByHand() override;

    /// Null while no element has an effect.
    CMenuElementImpl* Anchor() const;
    /// The anchor when the elements get their effects.
    void SetAnchorID(LONG id) { m_anchorID = id; }

    /// What an edit of its elements changes of the button itself.
    struct Stand {
        LONG anchorID;
        ZXPVector place;
    };
    Stand PresentStand() const { return {m_anchorID, m_translation.stored}; }
    void ReturnStand(const Stand& stand);

    /// Moves the button, with neither record nor event.
    HRESULT PlaceAt(const FloatPoint& position);

    /// The rectangle around the elements that are highlighted; S_FALSE when there is none.
    HRESULT getHighlightRegion(FloatRect& region);
    bool AnySourceContains(std::u16string_view text) const;
    /// The element at a position among those of a type, from 0; null when there is none.
    CMenuElementImpl* ElementOfType(NodeType type, LONG index) const;
    LONG CountOfType(NodeType type) const;

protected:
    using CMenuElementImpl::CMenuElementImpl;

    bool WritesAll(const AttributeArchive& archive) const override;

private:
    CProjectNode& List() const { return *Node().GetChild(kButtonElements); }
    /// Calls for one element after the other, inside its section, until a call gives true.
    template <class Call>
    bool Any(Call&& call) const;
    /// The same until one fails, whose result it reports, by the text of the call, and gives.
    template <class Call>
    HRESULT ForEach(std::string_view text, Call&& call) const;
    /// The element whose size is the button's: its last picture that is not highlighted.
    CMenuElementImpl* Face() const;
    /// Moves a button whose elements have no effects.
    HRESULT MoveAlone(const FloatPoint& distance);

    LONG m_anchorID = 0;
    /// The elements are not about to lose their effects.
    bool m_anchored = true;
};

} // namespace kv
