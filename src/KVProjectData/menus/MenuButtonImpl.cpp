#include "KVProjectData/menus/MenuButtonImpl.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/MenuNode.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {
namespace {

constexpr EngineCalls kEngine("MenuButtonImpl");

} // namespace

template <class Call>
bool CMenuButtonImpl::Any(Call&& call) const
{
    for (LONG i = 0; i < List().ChildCount(); ++i) {
        CProjectNode& node = *List().GetChild(i);
        const SectionLock lock(node.Section());
        if (call(*ElementOf(node))) return true;
    }
    return false;
}

template <class Call>
HRESULT CMenuButtonImpl::ForEach(std::string_view text, Call&& call) const
{
    HRESULT result = S_OK;
    const bool failed = Any([&](CMenuElementImpl& child) {
        result = call(child);
        return FAILED(result);
    });
    return failed ? kEngine.Checked(result, text) : S_OK;
}

// The effects

HRESULT CMenuButtonImpl::InsertEffect(IUnknown* pUnkSbd, LONG, ULONG tagFilter)
{
    // Until all effects are there, the elements are put in relation to where the button stands itself.
    m_anchored = Anchor() != nullptr;
    const HRESULT result =
        ForEach("pChildElem->InsertEffect(spUnkSbd, m_pElemNode->GetID(), dwTagFilter)",
                [&](CMenuElementImpl& child) { return child.InsertEffect(pUnkSbd, Node().ID(), tagFilter); });
    SelectAnchor(true);
    return result;
}

HRESULT CMenuButtonImpl::RemoveEffect()
{
    // Without effects there is nothing to let go of.
    if (HasEffect()) SelectAnchor(false);
    const HRESULT result =
        ForEach("pChildElem->RemoveEffect()", [](CMenuElementImpl& child) { return child.RemoveEffect(); });
    if (FAILED(result)) SelectAnchor(true);
    return result;
}

HRESULT CMenuButtonImpl::AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter)
{
    // One that the storyboard has no effect for does not keep the others from theirs.
    HRESULT first = S_OK;
    ForEach({}, [&](CMenuElementImpl& child) {
        const HRESULT result = child.AttachEffect(pUnkSbd, tagFilter);
        if (FAILED(result) && SUCCEEDED(first)) first = result;
        return S_OK;
    });
    // As long as there are no effects, the anchor is the one that a document told.
    if (Any([](const CMenuElementImpl& child) { return child.HasEffect(); })) SelectAnchor(true);
    return first;
}

HRESULT CMenuButtonImpl::DetachEffect()
{
    if (HasEffect()) SelectAnchor(false);
    return ForEach("pChildElem->DetachEffect()", [](CMenuElementImpl& child) { return child.DetachEffect(); });
}

void CMenuButtonImpl::ForgetEffect()
{
    Any([](CMenuElementImpl& child) {
        child.ForgetEffect();
        return false;
    });
}

void CMenuButtonImpl::LeaveGoneEffect(IUnknown* pUnkSbd)
{
    Any([pUnkSbd](CMenuElementImpl& child) {
        child.LeaveGoneEffect(pUnkSbd);
        return false;
    });
}

bool CMenuButtonImpl::IsBound() const
{
    return !Any([](const CMenuElementImpl& child) { return !child.IsBound(); });
}

HRESULT CMenuButtonImpl::RenameEffect(LONG id)
{
    return ForEach("pChildElem->setGroupID(id)", [id](CMenuElementImpl& child) { return child.RegroupEffect(id); });
}

// The anchor

CMenuElementImpl* CMenuButtonImpl::Anchor() const
{
    CProjectNode* node = m_anchored && m_anchorID != 0 ? List().FindChildByID(m_anchorID) : nullptr;
    CMenuElementImpl* anchor = node ? ElementOf(*node) : nullptr;
    return anchor && anchor->HasEffect() ? anchor : nullptr;
}

void CMenuButtonImpl::SelectAnchor(bool reselect)
{
    m_anchored = true;
    CMenuElementImpl* anchor = Anchor();
    if (!anchor) m_anchorID = 0;
    if (!reselect && anchor) {
        // From now on the button itself knows where it stands.
        FloatPoint position;
        if (SUCCEEDED(anchor->getRawPosition(position))) setRawPosition(position);
    }
    if (reselect && !anchor) {
        Any([&](CMenuElementImpl& child) {
            if (child.HasEffect()) anchor = &child;
            return anchor != nullptr;
        });
        if (anchor) m_anchorID = anchor->Node().ID();
    }
    m_anchored = reselect;
}

void CMenuButtonImpl::ReturnAnchor(LONG id)
{
    m_anchorID = id;
    m_anchored = true;
    const CProjectNode* const node = id != 0 ? List().FindChildByID(id) : nullptr;
    bool isAny = false;
    bool isAwaited = false;
    Any([&](const CMenuElementImpl& child) {
        isAny = isAny || child.HasEffect();
        isAwaited = isAwaited || (&child.Node() == node && !child.IsBound());
        return false;
    });
    if (isAny && !isAwaited) SelectAnchor(true);
}

void CMenuButtonImpl::ReturnStand(const Stand& stand)
{
    m_translation.stored = stand.place;
    ReturnAnchor(stand.anchorID);
}

// Geometry

HRESULT CMenuButtonImpl::getPosition(FloatPoint& position)
{
    CMenuElementImpl* anchor = Anchor();
    return anchor ? kEngine.Checked(anchor->getRawPosition(position)) : getRawPosition(position);
}

HRESULT CMenuButtonImpl::setPosition(const FloatPoint& position)
{
    const bool anchored = HasEffect();
    FloatPoint before;
    HRESULT result = getPosition(before);
    if (FAILED(result) || (anchored && IsSamePlace(position, before))) return result;
    Node().RecordState(anchored);
    result = PlaceAt(position);
    if (SUCCEEDED(result)) onPropertyChanged(504);
    return result;
}

HRESULT CMenuButtonImpl::PlaceAt(const FloatPoint& position)
{
    CMenuElementImpl* anchor = Anchor();
    if (!anchor) return setRawPosition(position);
    FloatPoint before;
    const HRESULT result = kEngine.Checked(anchor->getRawPosition(before));
    if (FAILED(result)) return result;
    return ForEach({}, [&](CMenuElementImpl& child) {
        // Without a rounding error where the button is to stand.
        if (&child == anchor) return child.setRawPosition(position);
        return child.HasEffect() ? child.moveRawPosition(position - before) : S_OK;
    });
}

HRESULT CMenuButtonImpl::moveBy(const FloatPoint& distance)
{
    const bool anchored = HasEffect();
    if (anchored && IsSamePlace(distance, {})) return S_OK;
    Node().RecordState(anchored);
    const HRESULT moved = anchored ? ForEach({},
                                             [&](CMenuElementImpl& child) {
                                                 return child.HasEffect() ? child.moveRawPosition(distance) : S_OK;
                                             })
                                   : MoveAlone(distance);
    if (SUCCEEDED(moved)) onPropertyChanged(504);
    return moved;
}

HRESULT CMenuButtonImpl::MoveAlone(const FloatPoint& distance)
{
    // The texts of a button stay where they are in the menu, unless a text is all that moves.
    if (List().ChildCount() != 1 || CountOfType(typeText) != 1) {
        ForEach({}, [&](CMenuElementImpl& child) {
            if (child.Node().Type() != typeText) return S_OK;
            child.Node().RecordState(false);
            return child.moveRawPosition(FloatPoint{} - distance);
        });
    }
    return moveRawPosition(distance);
}

HRESULT CMenuButtonImpl::getBoundingBox(Corners&)
{
    return KV_E_BUTTON_HAS_NO_BOX;
}

HRESULT CMenuButtonImpl::getExtent(FloatRect& extent)
{
    extent = {};
    FloatRect united{};
    const HRESULT result = ForEach({}, [&](CMenuElementImpl& child) {
        FloatRect rect;
        const HRESULT asked = child.getExtent(rect);
        if (SUCCEEDED(asked)) united = Union(united, rect);
        return asked;
    });
    if (SUCCEEDED(result)) extent = united;
    return result;
}

CMenuElementImpl* CMenuButtonImpl::Face() const
{
    CMenuElementImpl* face = nullptr;
    Any([&](CMenuElementImpl& child) {
        if (child.Node().Type() == typeOverlay && !child.CountsAsHighlight()) face = &child;
        return false;
    });
    return face;
}

HRESULT CMenuButtonImpl::getWidthHeight(float& width, float& height)
{
    if (CMenuElementImpl* face = Face())
        return kEngine.Checked(face->getSize(width, height), "pOverlay->getSize(width, height)");
    FloatRect extent;
    const HRESULT result = kEngine.Checked(getExtent(extent), "getExtent(extent)");
    width = extent.fRight - extent.fLeft;
    height = extent.fTop - extent.fBottom;
    return result;
}

HRESULT CMenuButtonImpl::setWidthHeight(float width, float height)
{
    if (width < 0 || height < 0) return E_INVALIDARG;
    Node().RecordState(HasEffect());
    CMenuElementImpl* face = Face();
    const HRESULT result = face ? kEngine.Checked(face->setSize(width, height), "pOverlay->setSize(w,h)") : S_OK;
    if (SUCCEEDED(result)) onPropertyChanged(512);
    return result;
}

HRESULT CMenuButtonImpl::setTimeOffsets(double startSecs, double endSecs)
{
    HRESULT result = S_OK;
    Any([&](CMenuElementImpl& child) {
        if (!child.HasEffect()) return false;
        double start = 0;
        double end = 0;
        result = kEngine.Checked(child.getTimeOffsets(start, end), "pChildElem->getTimeOffsets(oldStart, oldEnd)");
        if (SUCCEEDED(result) && (start != startSecs || end != endSecs)) {
            result = kEngine.Checked(child.setTimeOffsets(startSecs, endSecs),
                                     "pChildElem->setTimeOffsets(startSecs, endSecs)");
        }
        return FAILED(result);
    });
    return result;
}

// What the button knows of its elements

HRESULT CMenuButtonImpl::getHighlightRegion(FloatRect& region)
{
    region = {};
    bool isAny = false;
    Any([&](CMenuElementImpl& child) {
        FloatRect rect;
        if (child.CountsAsHighlight() && SUCCEEDED(child.getExtent(rect))) {
            region = Union(region, rect);
            isAny = true;
        }
        return false;
    });
    return isAny ? S_OK : S_FALSE;
}

bool CMenuButtonImpl::AnySourceContains(std::u16string_view text) const
{
    return Any([&](const CMenuElementImpl& child) { return child.SourceContains(text); });
}

CMenuElementImpl* CMenuButtonImpl::ElementOfType(NodeType type, LONG index) const
{
    CMenuElementImpl* found = nullptr;
    Any([&](CMenuElementImpl& child) {
        if (child.Node().Type() == type && index-- == 0) found = &child;
        return found != nullptr;
    });
    return found;
}

LONG CMenuButtonImpl::CountOfType(NodeType type) const
{
    LONG count = 0;
    Any([&](const CMenuElementImpl& child) {
        if (child.Node().Type() == type) ++count;
        return false;
    });
    return count;
}

void CMenuButtonImpl::MovedByHand()
{
    // A menu that is locked is not told; its buttons can be moved all the same.
    if (CMenuNode* menu = MenuOf(Node())) menu->MarkButtonsMoved();
}

bool CMenuButtonImpl::WritesAll(const AttributeArchive& archive) const
{
    CMenuNode* menu = MenuOf(Node());
    return !menu || menu->IsNativeMenu() || CMenuElementImpl::WritesAll(archive);
}

void CMenuButtonImpl::attributes(AttributeArchive& archive)
{
    CMenuElementImpl::attributes(archive);
    archive("anchor", m_anchorID);
}

} // namespace kv
