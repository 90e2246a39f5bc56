#include "KVProjectData/menus/MenuButtonImpl.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/MenuNode.h"
#include "SbdUtils/EngineCalls.h"

namespace kv {
namespace {

constexpr EngineCalls kEngine("MenuButtonImpl");

} // namespace

template <class Call>
HRESULT CMenuButtonImpl::ForEach(std::string_view text, Call&& call)
{
    for (LONG i = 0; i < List().ChildCount(); ++i) {
        const HRESULT result = call(At(i));
        if (FAILED(result)) return kEngine.Checked(result, text);
    }
    return S_OK;
}

// The effects

HRESULT CMenuButtonImpl::InsertEffect(IUnknown* pUnkSbd, LONG, ULONG tagFilter)
{
    const HRESULT result =
        ForEach("pChildElem->InsertEffect(spUnkSbd, m_pElemNode->GetID(), dwTagFilter)",
                [&](CMenuElementImpl& child) { return child.InsertEffect(pUnkSbd, Node().ID(), tagFilter); });
    SelectAnchor(true);
    return result;
}

HRESULT CMenuButtonImpl::RemoveEffect()
{
    SelectAnchor(false);
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
    SelectAnchor(true);
    return first;
}

HRESULT CMenuButtonImpl::DetachEffect()
{
    SelectAnchor(false);
    return ForEach("pChildElem->DetachEffect()", [](CMenuElementImpl& child) { return child.DetachEffect(); });
}

bool CMenuButtonImpl::IsBound() const
{
    for (LONG i = 0; i < List().ChildCount(); ++i)
        if (!At(i).IsBound()) return false;
    return true;
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
    for (LONG i = 0; reselect && !anchor && i < List().ChildCount(); ++i) {
        if (!At(i).HasEffect()) continue;
        anchor = &At(i);
        m_anchorID = anchor->Node().ID();
    }
    m_anchored = reselect && anchor;
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
    return FAILED(result) ? result : MoveElements(anchor, position - before);
}

HRESULT CMenuButtonImpl::moveBy(const FloatPoint& distance)
{
    CMenuElementImpl* anchor = Anchor();
    if (anchor && IsSamePlace(distance, {})) return S_OK;
    Node().RecordState(anchor != nullptr);
    const HRESULT moved = MoveElements(anchor, distance);
    if (SUCCEEDED(moved)) onPropertyChanged(504);
    return moved;
}

HRESULT CMenuButtonImpl::MoveElements(CMenuElementImpl* anchor, const FloatPoint& distance)
{
    const auto move = [](CMenuElementImpl& element, const FloatPoint& by) {
        FloatPoint position;
        const HRESULT result = element.getRawPosition(position);
        return FAILED(result) ? result : element.setRawPosition(position + by);
    };
    if (anchor) {
        return ForEach({}, [&](CMenuElementImpl& child) { return child.HasEffect() ? move(child, distance) : S_OK; });
    }
    // The texts of a button stay where they are in the menu, unless a text is all that moves.
    const bool isText = List().ChildCount() == 1 && CountOfType(typeText) == 1;
    for (LONG i = 0; !isText && i < List().ChildCount(); ++i) {
        CMenuElementImpl& child = At(i);
        if (child.Node().Type() != typeText) continue;
        child.Node().RecordState(child.HasEffect());
        move(child, FloatPoint{} - distance);
    }
    return move(*this, distance);
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
    for (LONG i = List().ChildCount(); i-- > 0;)
        if (At(i).Node().Type() == typeOverlay && !At(i).CountsAsHighlight()) return &At(i);
    return nullptr;
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
    for (LONG i = 0; i < List().ChildCount(); ++i) {
        CMenuElementImpl& child = At(i);
        if (!child.HasEffect()) continue;
        double start = 0;
        double end = 0;
        HRESULT result =
            kEngine.Checked(child.getTimeOffsets(start, end), "pChildElem->getTimeOffsets(oldStart, oldEnd)");
        if (SUCCEEDED(result) && (start != startSecs || end != endSecs)) {
            result = kEngine.Checked(child.setTimeOffsets(startSecs, endSecs),
                                     "pChildElem->setTimeOffsets(startSecs, endSecs)");
        }
        if (FAILED(result)) return result;
    }
    return S_OK;
}

// What the button knows of its elements

HRESULT CMenuButtonImpl::getHighlightRegion(FloatRect& region)
{
    region = {};
    bool isAny = false;
    for (LONG i = 0; i < List().ChildCount(); ++i) {
        FloatRect rect;
        if (!At(i).CountsAsHighlight() || FAILED(At(i).getExtent(rect))) continue;
        region = Union(region, rect);
        isAny = true;
    }
    return isAny ? S_OK : S_FALSE;
}

bool CMenuButtonImpl::AnySourceContains(std::u16string_view text) const
{
    for (LONG i = 0; i < List().ChildCount(); ++i)
        if (At(i).SourceContains(text)) return true;
    return false;
}

CMenuElementImpl* CMenuButtonImpl::ElementOfType(NodeType type, LONG index) const
{
    if (index < 0) return nullptr;
    for (LONG i = 0; i < List().ChildCount(); ++i)
        if (At(i).Node().Type() == type && index-- == 0) return &At(i);
    return nullptr;
}

LONG CMenuButtonImpl::CountOfType(NodeType type) const
{
    LONG count = 0;
    for (LONG i = 0; i < List().ChildCount(); ++i)
        if (At(i).Node().Type() == type) ++count;
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
    // It follows from the elements when they have their effects again.
    if (!archive.Records()) archive("anchor", m_anchorID);
}

} // namespace kv
