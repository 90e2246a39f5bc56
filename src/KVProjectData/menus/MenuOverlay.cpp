#include "KVProjectData/menus/MenuOverlay.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/content/FilePlace.h"
#include "KVProjectData/menus/DocumentText.h"
#include "KVProjectData/menus/MenuPaths.h"
#include "KVProjectData/menus/SourceMedia.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/tree/AttributeTexts.h"
#include "platform/automation/SafeArray.h"
#include "platform/com/TaskMemory.h"

#include <algorithm>

namespace kv {
namespace {

/// The path of a file that exists. Throws Error where it does not.
Bstr ExistingFile(CProjectNode& node, std::u16string_view path, HRESULT missing)
{
    Bstr file(ExpandPath(path));
    if (!LeadsAnywhere(node, file.View())) throw Error(missing);
    return file;
}

/// A number that is written plainly, and read from the front of any text.
class PlainNumber final : public ValueNames {
public:
    void AppendText(ULONG value, std::string& text) const override { AppendNumber(static_cast<LONG>(value), text); }
};
constinit const PlainNumber kPlainNumber;

} // namespace

void CKVMenuOverlay::Attributes(AttributeArchive& archive)
{
    archive.ID(*this);
    archive("OverlayType", NamedField<OverlayTypes>{m_overlayType, kPlainNumber});
    archive("dynamicScalingFactor", m_dynamicScalingFactor);
    archive("highlight", Enumeration(m_highlight, kOverlayHighlightNames));
    archive("label", m_label);
    archive("privateID", m_privateID);
    archive("sourceID", m_sourceID);
    archive("sourceType", Enumeration(m_sourceType, kSourceTypeNames));
    archive("stillImage", OneOrZero{m_stillImage});
    archive("zoomMask", OneOrZero{m_zoomMask});
    // What older documents call it goes before.
    archive.OnlyRead("zoomToFill", OneOrZero{m_zoomSource});
    bool zoomSource = m_zoomSource;
    archive("zoomSource", OneOrZero{zoomSource});
    m_zoomSource = archive.Reads() ? m_zoomSource || zoomSource : zoomSource;
    attributes(archive);
}

// Size and source

HRESULT CKVMenuOverlay::GetSize(float* pwidth, float* pHeight)
{
    return AskPair(pwidth, "pWidth", pHeight, "pHeight",
                   [this](float& width, float& height) { return getSize(width, height); });
}

HRESULT CKVMenuOverlay::SetSize(float width, float height)
{
    return Change([&] { return AreFinite(width, height) ? setSize(width, height) : E_INVALIDARG; });
}

HRESULT CKVMenuOverlay::get_Source(BSTR* pVal)
{
    return Ask([&] {
        if (!pVal) return kCalls.NullArgument("pbstrSource");
        Bstr source;
        const HRESULT result = getSource(source);
        *pVal = source.Detach();
        return result;
    });
}

HRESULT CKVMenuOverlay::put_Label(BSTR newVal)
{
    const HRESULT checked = Guarded([&] {
        RequireDocumentText(newVal);
        return S_OK;
    });
    return FAILED(checked) ? checked : Put(m_label, newVal, Undo, Fires(4));
}

HRESULT CKVMenuOverlay::put_Source(BSTR newVal)
{
    return Change([&] {
        RequireDocumentText(newVal);
        m_thumbnailStale = true;
        const std::u16string_view value = newVal ? View(newVal) : kPlaceHolder;
        return setSource(IsMonikerSource(value) ? Bstr(value) : ExistingFile(*this, value, KV_E_NO_OVERLAY_SOURCE));
    });
}

HRESULT CKVMenuOverlay::RefreshSource()
{
    return Change([&] {
        m_thumbnailStale = true;
        return refreshSource();
    });
}

HRESULT CKVMenuOverlay::get_AlphaMask(BSTR* pVal)
{
    return Ask([&] {
        if (!pVal) return kCalls.NullArgument("pbstrSource");
        Bstr mask;
        const HRESULT result = getAlphaMask(mask);
        *pVal = mask.Detach();
        return result;
    });
}

HRESULT CKVMenuOverlay::put_AlphaMask(BSTR newVal)
{
    return Change([&] {
        RequireDocumentText(newVal);
        const std::u16string_view value = View(newVal);
        return setAlphaMask(value.empty() ? Bstr() : ExistingFile(*this, value, KV_E_NO_ALPHA_MASK));
    });
}

HRESULT CKVMenuOverlay::get_InPoint(double* pVal)
{
    return Ask([&] { return pVal ? getInPoint(*pVal) : kCalls.NullArgument("pInPointSecs"); });
}

HRESULT CKVMenuOverlay::put_InPoint(double newVal)
{
    return Change([&] { return AreFinite(newVal) ? setInPoint(newVal) : E_INVALIDARG; });
}

HRESULT CKVMenuOverlay::get_OutPoint(double* pVal)
{
    return Ask([&] { return pVal ? getOutPoint(*pVal) : kCalls.NullArgument("pOutPointSecs"); });
}

HRESULT CKVMenuOverlay::put_OutPoint(double newVal)
{
    return Change([&] { return AreFinite(newVal) ? setOutPoint(newVal) : E_INVALIDARG; });
}

HRESULT CKVMenuOverlay::get_SourceRotation(LONG* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = 0;
    const HRESULT result = Ask([&] { return getSourceRotation(*pVal); });
    return result == E_OUTOFMEMORY ? result : S_OK;
}

HRESULT CKVMenuOverlay::put_SourceRotation(LONG newVal)
{
    const HRESULT result = Ask([&] { return setSourceRotation(newVal); });
    return result == E_OUTOFMEMORY ? result : S_OK;
}

HRESULT CKVMenuOverlay::GetCropedRect(double* pCX, double* pCY, double* pSX, double* pSY)
{
    return Ask([&]() -> HRESULT {
        if (!pCX || !pCY || !pSX || !pSY) return E_POINTER;
        const CropArea& crop = Crop();
        *pCX = crop.centreX;
        *pCY = crop.centreY;
        *pSX = crop.sizeX;
        *pSY = crop.sizeY;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::SetCropedRect(double cx, double cy, double sx, double sy)
{
    return Change([&] { return AreFinite(cx, cy, sx, sy) ? setCrop({cx, cy, sx, sy}) : E_INVALIDARG; });
}

// What the overlay itself keeps

HRESULT CKVMenuOverlay::put_StillImage(VARIANT_BOOL newVal)
{
    return Edit([&](EditScope& edit) {
        RecordState(true);
        m_stillImage = newVal == VARIANT_TRUE;
        edit.Changed(804);
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::SetSourceType(SourceTypes type, LONG ID)
{
    return Edit([&](EditScope& edit) {
        edit.Record();
        m_sourceType = type;
        m_sourceID = ID;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::GetSourceType(SourceTypes* pType, LONG* pID)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!pType) return kCalls.NullArgument("pType");
        *pType = m_sourceType;
        if (pID) *pID = m_sourceID;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::get_DynamicScalingFactor(double* pVal)
{
    return Tell(pVal, "pdblDynamicScalingFactor", m_dynamicScalingFactor);
}

HRESULT CKVMenuOverlay::put_DynamicScalingFactor(double newVal)
{
    return AreFinite(newVal) ? Put(m_dynamicScalingFactor, newVal, Undo, Fires(810))
                             : Edit([](EditScope&) { return E_INVALIDARG; });
}

HRESULT CKVMenuOverlay::SetMaskSize(double dblMaskX, double dblMaskY)
{
    return Change([&] { return AreFinite(dblMaskX, dblMaskY) ? setMaskSize(dblMaskX, dblMaskY) : E_INVALIDARG; });
}

HRESULT CKVMenuOverlay::GetMaskSize(double* pX, double* pY)
{
    return AskPair(pX, "pdblMaskX", pY, "pdblMaskY", [this](double& x, double& y) {
        ReadBack();
        x = m_maskWidth;
        y = m_maskHeight;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::SetSourceScale(double x, double y)
{
    return Edit([&](EditScope&) {
        if (!AreFinite(x, y)) return E_INVALIDARG;
        m_sourceScaleX = x;
        m_sourceScaleY = y;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::GetSourceScale(double* pX, double* pY)
{
    return AskPair(pX, "pdblSourceScaleX", pY, "pdblSourceScaleY", [this](double& x, double& y) {
        x = m_sourceScaleX;
        y = m_sourceScaleY;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::ClearForResolve()
{
    return Change([this] {
        ReadBack();
        m_maskWidth = m_maskHeight = 1;
        m_sourceScaleX = m_sourceScaleY = -1;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::put_OverlayType(OverlayTypes newVal)
{
    const SectionLock lock(Section());
    m_overlayType = newVal;
    return S_OK;
}

// The media

Bstr CKVMenuOverlay::Source() const
{
    Bstr source;
    ThrowIfFailed(getSource(source));
    return source;
}

HRESULT CKVMenuOverlay::GetSourceMediaSize(LONG* pW, LONG* pH)
{
    return Guarded([&] {
        if (!pW || !pH) return E_POINTER;
        *pW = *pH = 0;
        Bstr source;
        const HRESULT asked = Ask([&] { return getSource(source); });
        if (FAILED(asked)) return asked;
        // A file may be far away: it is looked into outside of the sections.
        const PictureExtent size = PictureSize(FullPathOf(source.View()));
        *pW = size.width;
        *pH = size.height;
        return S_OK;
    });
}

HRESULT CKVMenuOverlay::TryGetSourceMediaSize(LONG* pW, LONG* pH)
{
    const HRESULT result = GetSourceMediaSize(pW, pH);
    if (SUCCEEDED(result) || !pW || !pH) return result;
    *pW = 16;
    *pH = 9;
    return S_OK;
}

IZXMediaInformation& CKVMenuOverlay::OpenSource()
{
    Bstr source = Source();
    if (!m_media) m_media = NewMediaInformation();
    if (m_thumbnailStale || !m_openSource || m_openSource.View() != source.View()) {
        m_openSource = {};
        OpenMedia(*m_media, FullPathOf(source.View()));
        m_openSource = std::move(source);
    }
    return *m_media;
}

HRESULT CKVMenuOverlay::ExtractThumbnail(BYTE** ppBits, LONG* pWidth, LONG* pHeight)
{
    // Menus go on while a picture is read.
    return Read([&]() -> HRESULT {
        EngineCalls::Begin();
        if (!ppBits || !pWidth || !pHeight) return E_POINTER;
        *ppBits = nullptr;
        *pWidth = *pHeight = 0;
        IZXMediaInformation& media = OpenSource();
        const PictureExtent size = PictureSize(media);
        const auto frames = kCalls.Need<IZXMediaFrames>(&media, "(IZXMediaFrames*)spFrames");
        ULONG width = 0;
        ULONG height = 0;
        ULONG stride = 0;
        SafeArray pixels;
        kCalls.Need(frames->GetFrame(0.0, static_cast<ULONG>(size.width), static_cast<ULONG>(size.height), &width,
                                     &height, &stride, pixels.Put()));
        const std::size_t row = std::size_t{width} * 4;
        UniqueTaskMem<BYTE> bits(static_cast<BYTE*>(CoTaskMemAlloc(std::max<std::size_t>(row * height, 1))));
        if (!bits) return E_OUTOFMEMORY;
        const auto* const from = static_cast<const BYTE*>(pixels.Get()->pvData);
        for (std::size_t y = 0; y < height; ++y)
            std::copy_n(from + y * stride, row, bits.get() + y * row);
        *ppBits = bits.release();
        *pWidth = static_cast<LONG>(width);
        *pHeight = static_cast<LONG>(height);
        m_thumbnailStale = false;
        return S_OK;
    });
}

// Copies

HRESULT CKVMenuOverlay::Copy(IKVMenuElement** pp)
{
    return Ask([&] {
        if (!pp) return kCalls.NullArgument("ppNewElem");
        *pp = nullptr;
        const auto copy = Make<CKVMenuOverlay>();
        CopyFieldsTo(*copy);
        CopyRestTo(*copy);
        copy->AssignID();
        return ComPtr<IKVMenuElement>(copy.Get()).CopyTo(pp);
    });
}

} // namespace kv
