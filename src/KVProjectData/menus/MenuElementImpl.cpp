#include "KVProjectData/menus/MenuElementImpl.h"

#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/menus/MenuNode.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "SbdUtils/EngineCalls.h"
#include "platform/system/KeptErrors.h"

#include <cmath>

namespace kv {
namespace {

constexpr EngineCalls kEngine("MenuElementImpl");
constexpr LONG kNoGroup = -1;

constexpr std::string_view kButtonTypes[]{"Next", "Prev", "Home", "Up", "ChapterIndex", "Command"};
constinit const FlagNames kButtonTypeNames(kButtonTypes);

DISPID ChangeEvent(NodeType type)
{
    switch (type) {
    case typeButton:
        return EVENT_ButtonChanged;
    case typeOverlay:
        return EVENT_OverlayChanged;
    default:
        return EVENT_TextChanged;
    }
}

const FlagNames& TagNames(NodeType type)
{
    switch (type) {
    case typeButton:
        return kButtonTypeNames;
    case typeOverlay:
        return kOverlayTypeNames;
    case typeText:
        return kTextTypeFlagNames;
    default:
        throw Error(E_UNEXPECTED);
    }
}

/// Deletes an effect that did not take all that is stored, which stays stored.
void Drop(CNXEffect& effect)
{
    const KeptErrors report;
    if (effect) kEngine.Checked(effect.Remove());
    effect.Detach();
}

} // namespace

CMenuElementImpl* ElementOf(CProjectNode& node)
{
    return dynamic_cast<CMenuElementImpl*>(&node);
}

CMenuElementImpl* CMenuElementImpl::Holder() const
{
    CProjectNode* button = ButtonOf(m_node);
    return button ? ElementOf(*button) : nullptr;
}

double CMenuElementImpl::DisplayAspect() const
{
    CMenuNode* menu = MenuOf(m_node);
    return menu && menu->IsWide() ? 16.0 / 9.0 : 4.0 / 3.0;
}

// The effect

HRESULT CMenuElementImpl::InsertEffect(IUnknown* pUnkSbd, LONG groupID, ULONG tagFilter)
{
    if (m_effect || (tagFilter != 0 && tagFilter == m_tag)) return S_FALSE;
    ComPtr<IXMLDOMNode> params;
    HRESULT result = kEngine.Checked(createEffectParams(params));
    if (SUCCEEDED(result))
        result = kEngine.Checked(m_effect.Create(pUnkSbd, getEffectType(), m_node.ID(), params.Get()));
    if (SUCCEEDED(result) && groupID != kNoGroup) result = kEngine.Checked(m_effect.setGroupID(groupID));
    if (SUCCEEDED(result)) result = Guarded([&] { return syncEffect(false); });
    if (FAILED(result)) Drop(m_effect);
    return result;
}

HRESULT CMenuElementImpl::RemoveEffect()
{
    if (!m_effect) return S_FALSE;
    const HRESULT stored = syncEffect(true);
    return FAILED(stored) ? stored : kEngine.Checked(m_effect.Remove());
}

HRESULT CMenuElementImpl::AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter)
{
    if (tagFilter != 0 && tagFilter == m_tag) return S_OK;
    const HRESULT result = kEngine.Checked(m_effect.Attach(pUnkSbd, m_node.ID()));
    if (FAILED(result)) return result;
    return m_effect ? S_OK : E_FAIL;
}

HRESULT CMenuElementImpl::DetachEffect()
{
    if (m_effect) kEngine.Checked(Guarded([&] { return syncEffect(true); }));
    m_effect.Detach();
    return S_OK;
}

HRESULT CMenuElementImpl::syncEffect(bool capture)
{
    if (!capture) return PushTransform();
    FloatPoint position;
    float degrees = 0;
    HRESULT result = getRotation(degrees);
    if (SUCCEEDED(result)) result = getPosition(position);
    if (FAILED(result)) return result;
    m_rotation.stored = {0, 0, degrees};
    m_translation.stored = {position.x, position.y, 0};
    return S_OK;
}

HRESULT CMenuElementImpl::PushTransform()
{
    FloatPoint origin;
    float angle = 0;
    HRESULT result = GetOrigin(angle);
    if (SUCCEEDED(result)) result = GetOrigin(origin);
    if (FAILED(result)) return result;
    const ZXPVector& place = m_translation.stored;
    // One edit of the document for all.
    std::vector<CNXEffect::ChannelValue> values{
        {ZXP_ROTATION, {0, 0, m_rotation.stored.z + angle}},
        {ZXP_TRANSLATION, {place.x + origin.x, place.y + origin.y, 0}},
    };
    AddChannels(values);
    m_node.RecordState(HasEffect());
    if (m_effect) result = kEngine.Checked(m_effect.setChannels(values));
    if (FAILED(result)) return result;
    onPropertyChanged(500);
    result = setZOrder(m_zOrder);
    if (SUCCEEDED(result)) onPropertyChanged(504);
    return result;
}

HRESULT CMenuElementImpl::createEffectParams(ComPtr<IXMLDOMNode>&)
{
    return S_FALSE;
}

HRESULT CMenuElementImpl::getChannel(const StoredChannel& channel, ZXPVector& value) const
{
    if (m_effect) return kEngine.Checked(m_effect.getChannel(channel.channel, 0.0, ZXP_FROM_START, value));
    value = channel.stored;
    return S_OK;
}

HRESULT CMenuElementImpl::setChannel(StoredChannel& channel, const ZXPVector& value)
{
    if (m_effect) return kEngine.Checked(m_effect.setChannel(channel.channel, 0.0, ZXP_FROM_START, value));
    channel.stored = value;
    return S_OK;
}

// Place

HRESULT CMenuElementImpl::GetOrigin(FloatPoint& origin) const
{
    origin = {};
    CMenuElementImpl* button = m_effect ? Holder() : nullptr;
    return button ? button->getPosition(origin) : S_OK;
}

HRESULT CMenuElementImpl::GetOrigin(float& degrees) const
{
    degrees = 0;
    CMenuElementImpl* button = m_effect ? Holder() : nullptr;
    return button ? button->getRotation(degrees) : S_OK;
}

HRESULT CMenuElementImpl::getRawPosition(FloatPoint& position) const
{
    ZXPVector value;
    const HRESULT result = getChannel(m_translation, value);
    position = {value.x, value.y};
    return result;
}

HRESULT CMenuElementImpl::setRawPosition(const FloatPoint& position)
{
    return setChannel(m_translation, {position.x, position.y, 0});
}

HRESULT CMenuElementImpl::moveRawPosition(const FloatPoint& distance)
{
    FloatPoint position;
    const HRESULT result = getRawPosition(position);
    return FAILED(result) ? result : setRawPosition(position + distance);
}

HRESULT CMenuElementImpl::getPosition(FloatPoint& position)
{
    FloatPoint origin;
    HRESULT result = GetOrigin(origin);
    if (SUCCEEDED(result)) result = getRawPosition(position);
    position = SUCCEEDED(result) ? position - origin : FloatPoint{};
    return result;
}

HRESULT CMenuElementImpl::setPosition(const FloatPoint& position)
{
    FloatPoint origin;
    HRESULT result = GetOrigin(origin);
    if (FAILED(result)) return result;
    m_node.RecordState(HasEffect());
    result = setRawPosition(position + origin);
    if (SUCCEEDED(result)) onPropertyChanged(504);
    return result;
}

HRESULT CMenuElementImpl::getRotation(float& degrees)
{
    float origin = 0;
    ZXPVector value{};
    HRESULT result = GetOrigin(origin);
    if (SUCCEEDED(result)) result = getChannel(m_rotation, value);
    degrees = SUCCEEDED(result) ? value.z - origin : 0;
    return result;
}

HRESULT CMenuElementImpl::setRotation(float degrees)
{
    float origin = 0;
    HRESULT result = GetOrigin(origin);
    if (FAILED(result)) return result;
    m_node.RecordState(HasEffect());
    result = setChannel(m_rotation, {0, 0, degrees + origin});
    if (SUCCEEDED(result)) onPropertyChanged(500);
    return result;
}

HRESULT CMenuElementImpl::setZOrder(LONG zOrder)
{
    if (zOrder < 0) return E_INVALIDARG;
    m_node.RecordState(false);
    m_zOrder = zOrder;
    onPropertyChanged(501);
    return S_OK;
}

// Size

HRESULT CMenuElementImpl::getHandles(Corners& corners)
{
    corners = kOwnSquare;
    if (!m_effect) return S_OK;
    std::array<ZXPVector, 4> handles;
    const HRESULT result = kEngine.Checked(m_effect.getHandles(handles));
    if (FAILED(result)) return result;
    for (std::size_t i = 0; i < corners.size(); ++i)
        corners[i] = {handles[i].x, handles[i].y};
    return S_OK;
}

HRESULT CMenuElementImpl::getScale(FloatPoint& scale)
{
    ZXPVector value;
    const HRESULT result = getChannel({ZXP_SCALING, {1, 1, 1}}, value);
    scale = {value.x, value.y};
    return result;
}

HRESULT CMenuElementImpl::GetPlacement(Placement& placement)
{
    std::vector<CNXEffect::ChannelValue> values{
        {ZXP_ROTATION, m_rotation.stored}, {ZXP_TRANSLATION, m_translation.stored}, {ZXP_SCALING, {}}};
    HRESULT result = m_effect ? kEngine.Checked(m_effect.getChannels(values)) : getScale(placement.scale);
    if (m_effect) placement.scale = {values[2].value.x, values[2].value.y};
    placement.degrees = values[0].value.z;
    placement.position = {values[1].value.x, values[1].value.y};
    CMenuElementImpl* button = Holder();
    if (FAILED(result) || !button) return result;
    float angle = 0;
    FloatPoint origin;
    result = button->getRotation(angle);
    if (SUCCEEDED(result)) result = button->getPosition(origin);
    if (FAILED(result)) return result;
    // What effects hold is absolute.
    placement.offset = m_effect ? placement.position - origin : placement.position;
    placement.position = origin;
    if (!m_effect) placement.degrees += angle;
    return S_OK;
}

HRESULT CMenuElementImpl::getBoundingBox(Corners& corners)
{
    Placement placement{DisplayAspect()};
    HRESULT result = getHandles(corners);
    if (SUCCEEDED(result)) result = GetPlacement(placement);
    if (SUCCEEDED(result)) corners = Place(corners, placement);
    return result;
}

HRESULT CMenuElementImpl::getExtent(FloatRect& extent)
{
    extent = {};
    Corners corners;
    const HRESULT result = getBoundingBox(corners);
    if (SUCCEEDED(result)) extent = ExtentOf(corners);
    return result;
}

HRESULT CMenuElementImpl::getWidthHeight(float& width, float& height)
{
    Placement placement;
    Corners corners;
    HRESULT result = getHandles(corners);
    if (SUCCEEDED(result)) result = getScale(placement.scale);
    if (FAILED(result)) return result;
    // Where the element stands makes no difference.
    const FloatRect extent = ExtentOf(Place(corners, placement));
    width = std::fabs(extent.fRight - extent.fLeft);
    height = std::fabs(extent.fTop - extent.fBottom);
    return S_OK;
}

HRESULT CMenuElementImpl::setWidthHeight(float width, float height)
{
    if (width < 0 || height < 0) return E_INVALIDARG;
    m_node.RecordState(HasEffect());
    StoredChannel nowhere{ZXP_SCALING, {}};
    const HRESULT result = setChannel(nowhere, {width / 2, height / 2, 1});
    if (SUCCEEDED(result)) onPropertyChanged(512);
    return result;
}

HRESULT CMenuElementImpl::getSize(float& width, float& height)
{
    return getWidthHeight(width, height);
}

HRESULT CMenuElementImpl::setSize(float width, float height)
{
    return setWidthHeight(width, height);
}

// Time

HRESULT CMenuElementImpl::getTimeOffsets(double& startSecs, double& endSecs)
{
    const HRESULT result = kEngine.Checked(m_effect.getStartOffset(startSecs), "m_effect.getStartOffset(oldStart)");
    return FAILED(result) ? result : kEngine.Checked(m_effect.getEndOffset(endSecs), "m_effect.getEndOffset(oldEnd)");
}

HRESULT CMenuElementImpl::setTimeOffsets(double startSecs, double endSecs)
{
    double old = 0;
    HRESULT result = kEngine.Checked(m_effect.getStartOffset(old), "m_effect.getStartOffset(oldStart)");
    if (SUCCEEDED(result) && old != startSecs)
        result = kEngine.Checked(m_effect.setStartOffset(startSecs), "m_effect.setStartOffset(startSecs)");
    if (SUCCEEDED(result)) result = kEngine.Checked(m_effect.getEndOffset(old), "m_effect.getEndOffset(oldEnd)");
    if (SUCCEEDED(result) && old != endSecs)
        result = kEngine.Checked(m_effect.setEndOffset(endSecs), "m_effect.setEndOffset(endSecs)");
    return result;
}

// The element among others

void CMenuElementImpl::onPropertyChanged(DISPID propId)
{
    m_node.FireEvent(ChangeEvent(m_node.Type()), m_node.ID(), propId, 0);
}

void CMenuElementImpl::attributes(AttributeArchive& archive)
{
    archive("flags", m_flags);
    archive("tag", Flags(m_tag, TagNames(m_node.Type())));
    archive("templateID", m_templateID);
    archive.OnlyRecord(m_dirty);
    if (archive.Writes() && !WritesAll(archive)) return;

    ZXPVector rotation = m_rotation.stored;
    FloatPoint position{m_translation.stored.x, m_translation.stored.y};
    if (archive.Writes()) {
        ThrowIfFailed(getRotation(rotation.z));
        ThrowIfFailed(getPosition(position));
    }
    archive("rotation", rotation.z);
    archive("x", position.x);
    archive("y", position.y);
    LONG zOrder = m_zOrder;
    archive("zOrder", zOrder);
    if (archive.Writes()) return;
    if (zOrder >= 0) m_zOrder = zOrder;
    m_rotation.stored.z = rotation.z;
    m_translation.stored.x = position.x;
    m_translation.stored.y = position.y;
}

} // namespace kv
