#include "KVProjectData/menus/MenuTextImpl.h"

#include "KVProjectData/Engine/Text.h"
#include "KVProjectData/effects/KeyFrames.h"
#include "KVProjectData/menus/EffectTemplates.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "SbdUtils/EngineCalls.h"
#include "platform/com/Activation.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

constexpr EngineCalls kEngine("MenuTextImpl");

/// From the document's root to a text of a button.
constexpr int kLevelsAbove = 8;

/// By handle, from 1.
constexpr FloatPoint kAnchors[]{{1, -1}, {0, -1}, {-1, -1}, {1, 0}, {0, 0}, {-1, 0}, {1, 1}, {0, 1}, {-1, 1}};

FloatPoint AnchorOf(LONG handle)
{
    return handle >= Handle_TopLeft && handle <= Handle_BottomRight ? kAnchors[handle - 1] : FloatPoint{};
}

/// 0 for a point that is none of the handles'.
LONG HandleAt(const FloatPoint& anchor)
{
    const auto* const found = std::ranges::find(kAnchors, anchor);
    return found == std::end(kAnchors) ? 0 : static_cast<LONG>(found - kAnchors) + 1;
}

/// A document is an element, or holds one.
XmlElement RootOf(IXMLDOMNode* document)
{
    ComPtr<IXMLDOMElement> root;
    if (const auto whole = Query<IXMLDOMDocument>(document)) whole->get_documentElement(root.Put());
    return XmlElement(root ? root.Get() : document);
}

XmlElement PluginDataOf(const XmlElement& document)
{
    constexpr std::string_view kPluginData = "plugin_data";
    return document.Name() == kPluginData ? document : document.Child(kPluginData);
}

/// The point that stands at the place of an effect's text.
HRESULT ReadAnchor(const XmlElement& pluginData, FloatPoint& anchor)
{
    anchor = {};
    const XmlView handles = pluginData.View("Handles");
    // Without keys the middle does.
    if (!handles) return S_OK;
    return kEngine.Checked(Guarded([&] {
        const ZXPVector value = KeyFrames<ZXPVector>::Read(handles).At(ZXP_FROM_START, 0.0).value;
        anchor = {value.x, value.y};
        return S_OK;
    }));
}

bool NamesLegacyPlugIn(const XmlElement& document)
{
    if (document.Name() != "effect") return false;
    CLSID plugIn{};
    const std::u16string text = ToUtf16(document.Child("uuid").Text());
    return SUCCEEDED(CLSIDFromString(text.c_str(), &plugIn)) &&
           std::ranges::find(kLegacyTextPlugIns, plugIn) != kLegacyTextPlugIns.end();
}

/// The document for the text plug-in of today.
XmlElement ForCurrentPlugIn(const XmlElement& document)
{
    if (!NamesLegacyPlugIn(document)) return document;
    XmlElement copy = document.Copy();
    copy.Replace("uuid", XmlValue(GuidText(CLSID_ZXTextPlugIn)));
    return copy;
}

} // namespace

// The document

XmlElement CMenuTextImpl::LiveDocument() const
{
    ComPtr<IXMLDOMNode> document;
    kEngine.Checked(m_effect.getDocument(document));
    return RootOf(document.Get());
}

XmlElement CMenuTextImpl::CopyOfDocument() const
{
    if (!m_effect && !m_loaded.Empty()) return m_loaded.Copy();
    const XmlElement document = m_effect ? LiveDocument() : m_document;
    return document ? document.Copy() : document;
}

XmlElement CMenuTextImpl::Document()
{
    if (m_effect) return LiveDocument();
    if (!m_loaded.Empty()) StoreDocument(m_loaded.Copy());
    return m_document;
}

XmlElement CMenuTextImpl::ShownDocument()
{
    XmlElement document = Document();
    if (document || m_effect) return document;
    ComPtr<IXMLDOMNode> made;
    kEngine.Need(NewTextDocument(made));
    return XmlElement(made.Get());
}

void CMenuTextImpl::StoreDocument(const XmlElement& document)
{
    m_document = document;
    m_loaded = {};
}

void CMenuTextImpl::StoreDocument(XmlFragment document)
{
    m_document = {};
    m_loaded = std::move(document);
}

void CMenuTextImpl::StorePlace(const XmlView& document, const XmlView& attributes)
{
    const XmlView pluginData = document.Child("plugin_data");
    const auto store = [&](const char* channel, std::string_view attribute, auto&& take) {
        if (attributes.Attribute(attribute)) return;
        // A document that cannot be read, or has no key, tells nothing.
        Guarded([&] {
            take(KeyFrames<ZXPVector>::Read(pluginData.Child(channel)).At(ZXP_FROM_START, 0.0).value);
            return S_OK;
        });
    };
    store("Translation", "x", [this](const ZXPVector& value) { m_translation.stored = {value.x, value.y, 0}; });
    store("Rotation", "rotation", [this](const ZXPVector& value) { m_rotation.stored = {0, 0, value.z}; });
    store("Handles", "handle", [this](const ZXPVector& value) { m_handle = HandleAt({value.x, value.y}); });
}

HRESULT CMenuTextImpl::ReplaceDocument(const XmlElement& document)
{
    if (!m_effect) {
        StoreDocument(document);
        return S_OK;
    }
    return Guarded([&] { return kEngine.Checked(m_effect.setDocument(ForCurrentPlugIn(document).Get())); });
}

void CMenuTextImpl::RecordDocument()
{
    const XmlElement document = Document();
    Node().RecordTextEffect(HasEffect(), m_documentKeptIn, document);
}

HRESULT CMenuTextImpl::askText(const Use& ask)
{
    return Guarded([&] {
        const XmlElement document = ShownDocument();
        kEngine.NeedPointer(document.Get(), "spTextXML.p");
        CZXPTextPlugInHelper text;
        kEngine.Need(text.Attach(PluginDataOf(document)));
        return kEngine.Need(ask(text));
    });
}

HRESULT CMenuTextImpl::changeText(const Use& change)
{
    return Guarded([&] {
        const XmlElement document = ShownDocument();
        kEngine.NeedPointer(document.Get(), "spTextXML.p");
        const XmlElement edited = document.Copy();
        CZXPTextPlugInHelper text;
        ThrowIfFailed(text.Attach(PluginDataOf(edited)));
        ThrowIfFailed(change(text));
        RecordDocument();
        return ReplaceDocument(edited);
    });
}

HRESULT CMenuTextImpl::getEffectXML(ComPtr<IXMLDOMNode>& document)
{
    return Guarded([&] {
        const XmlElement shown = ShownDocument();
        kEngine.NeedPointer(shown.Get(), "spTextXML.p");
        document = shown.Copy().Get();
        return S_OK;
    });
}

HRESULT CMenuTextImpl::setEffectXML(IXMLDOMNode* document)
{
    return Guarded([&] {
        const XmlElement given = RootOf(document);
        if (!given || !given.FitsBelow(kLevelsAbove)) return E_INVALIDARG;
        const XmlElement copy = given.Copy();
        RecordDocument();
        return ReplaceDocument(copy);
    });
}

// The handle

HRESULT CMenuTextImpl::GetAnchor(FloatPoint& anchor)
{
    anchor = AnchorOf(m_handle);
    if (!m_effect) return S_OK;
    anchor = {};
    XmlElement pluginData;
    const HRESULT result = kEngine.Checked(m_effect.getPluginData(pluginData));
    return FAILED(result) ? result : ReadAnchor(pluginData, anchor);
}

HRESULT CMenuTextImpl::getHandle(TextHandles& handle)
{
    handle = static_cast<TextHandles>(m_handle);
    if (!m_effect) return S_OK;
    FloatPoint anchor;
    const HRESULT result = GetAnchor(anchor);
    const LONG found = HandleAt(anchor);
    handle = found ? static_cast<TextHandles>(found) : Handle_TopLeft;
    return result;
}

HRESULT CMenuTextImpl::setHandle(TextHandles handle)
{
    return Guarded([&] {
        RecordDocument();
        Node().RecordState(HasEffect());
        if (!m_effect) {
            m_handle = handle;
            return S_OK;
        }
        const FloatPoint anchor = AnchorOf(handle);
        return m_effect.setChannel(ZXP_HANDLES, 0.0, ZXP_FROM_START, {anchor.x, anchor.y, 0});
    });
}

void CMenuTextImpl::AddChannels(std::vector<CNXEffect::ChannelValue>& values) const
{
    if (m_handle == 0) return;
    const FloatPoint anchor = AnchorOf(m_handle);
    values.push_back({ZXP_HANDLES, {anchor.x, anchor.y, 0}});
}

HRESULT CMenuTextImpl::getHandles(Corners& corners)
{
    return Guarded([&] {
        constexpr ULONG kHeight = 480;
        constexpr double kSame[16]{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        const XmlElement document = ShownDocument();
        kEngine.NeedPointer(document.Get(), "spTextXML.p");
        const XmlElement pluginData = PluginDataOf(document);
        FloatPoint anchor;
        kEngine.Need(m_effect && pluginData ? ReadAnchor(pluginData, anchor) : GetAnchor(anchor));
        double aspect = DisplayAspect();
        if (m_effect) kEngine.Need(m_effect.getAspectRatio(aspect));
        ComPtr<IZXTextPlugIn> plugIn;
        kEngine.Need(CreateInstance(CLSID_ZXTextPlugIn, plugIn));
        kEngine.Need(plugIn->SetUp(static_cast<ULONG>(std::lround(aspect * kHeight)), kHeight, kSame, kSame));
        kEngine.Need(plugIn->SetText(pluginData.Get()));
        std::array<ZXTextPoint, 4> points;
        kEngine.Need(plugIn->GetCorners(points.data()));
        const double x = (points[3].x - points[0].x) * anchor.x / 2 - (points[3].x + points[0].x) / 2;
        const double y = (points[3].y - points[2].y) * anchor.y / 2 - (points[1].y + points[0].y) / 2;
        std::ranges::transform(points, corners.begin(), [&](const ZXTextPoint& point) {
            return FloatPoint{static_cast<float>(point.x + x), static_cast<float>(point.y + y)};
        });
        return S_OK;
    });
}

// The effect

HRESULT CMenuTextImpl::createEffectParams(ComPtr<IXMLDOMNode>& document)
{
    return NewTextDocument(document);
}

HRESULT CMenuTextImpl::AttachEffect(IUnknown* pUnkSbd, ULONG tagFilter)
{
    const HRESULT result = CMenuElementImpl::AttachEffect(pUnkSbd, tagFilter);
    if (HasEffect()) StoreDocument(XmlElement());
    return result;
}

HRESULT CMenuTextImpl::syncEffect(bool capture)
{
    HRESULT result = S_OK;
    if (capture) {
        FloatPoint anchor;
        const XmlElement document = Document();
        if (document) StoreDocument(document);
        result = GetAnchor(anchor);
        if (SUCCEEDED(result)) m_handle = HandleAt(anchor);
        return FAILED(result) ? result : CMenuElementImpl::syncEffect(true);
    }
    if (!m_loaded.Empty()) StoreDocument(m_loaded.Copy());
    if (m_document) result = ReplaceDocument(m_document);
    if (SUCCEEDED(result)) result = CMenuElementImpl::syncEffect(false);
    // The text keeps it until the effect holds everything.
    if (SUCCEEDED(result)) StoreDocument(XmlElement());
    return result;
}

// Documents

void CMenuTextImpl::attributes(AttributeArchive& archive)
{
    CMenuElementImpl::attributes(archive);
    if (archive.Writes() && !WritesAll(archive)) return;
    auto handle = static_cast<TextHandles>(m_handle);
    if (archive.Writes()) ThrowIfFailed(getHandle(handle));
    archive("handle", Enumeration(handle, kTextHandleNames));
    archive("height", m_boxHeight);
    archive("width", m_boxWidth);
    if (!archive.Writes()) m_handle = handle;
}

} // namespace kv
