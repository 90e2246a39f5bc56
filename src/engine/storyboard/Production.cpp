#include "engine/storyboard/Production.h"

#include "engine/render/Renderer.h"
#include "engine/storyboard/BlankPanel.h"
#include "engine/storyboard/ProductionForm.h"
#include "engine/storyboard/SceneBuilder.h"

#include <cmath>

namespace kv {
namespace {

/// A source, or null for an empty name.
SourcePtr SourceOf(BSTR name)
{
    return View(name).empty() ? nullptr : std::make_shared<Source>(View(name));
}

/// Hands out a new item. The out-pointer may be null.
HRESULT HandOut(HRESULT result, const ComPtr<Item>& item, IUnknown** out)
{
    return SUCCEEDED(result) && out ? Query<IUnknown>(item).CopyTo(out) : result;
}

template <class T>
HRESULT HandOut(const std::vector<ComPtr<T>>& row, LONG index, HRESULT missing, IUnknown** out)
{
    if (index < 0 || static_cast<std::size_t>(index) >= row.size()) return missing;
    return Query<IUnknown>(row[static_cast<std::size_t>(index)]).CopyTo(out);
}

/// Whether a production may be written into an element.
bool IsFree(const XmlElement& element)
{
    const XmlView place = element.View();
    return element && !place.FirstChild() && place.Attributes().empty();
}

HRESULT DescribeUndo(bool can, Bstr description, VARIANT_BOOL* canOut, BSTR* descriptionOut)
{
    *canOut = ToVariantBool(can);
    if (can && descriptionOut) *descriptionOut = description.Detach();
    return S_OK;
}

} // namespace

HRESULT CProduction::GetProductionObj(IUnknown** ppProduction)
{
    return ComPtr<IUnknown>(Controlling()).CopyTo(ppProduction);
}

HRESULT CProduction::get_Flags(ULONG* pdwFlags)
{
    return Give(m_board->IsModified() ? ZXE_PRODUCTION_MODIFIED : 0, pdwFlags);
}

HRESULT CProduction::ClearModified()
{
    m_board->ClearModified();
    return S_OK;
}

HRESULT CProduction::Notify(ULONG ulEvent, LONG lFirst, LONG lSecond)
{
    const ComPtr<IUnknown> self(Controlling());
    return m_sinks.TellByPosition(ulEvent, lFirst, lSecond);
}

// Panels

HRESULT CProduction::GetPanelCount(LONG* plCount)
{
    return Guarded([&] { return Give(static_cast<LONG>(m_board->Panels().size()), plCount); });
}

HRESULT CProduction::GetPanelBaseObject(LONG lIndex, IUnknown** ppPanel)
{
    if (!ppPanel) return E_POINTER;
    *ppPanel = nullptr;
    return Guarded([&]() -> HRESULT {
        const std::vector<ComPtr<CPanel>> panels = m_board->Panels();
        if (panels.empty() && lIndex == 0) return Query<IUnknown>(Make<CBlankPanel>(m_board)).CopyTo(ppPanel);
        return HandOut(panels, lIndex, E_INVALIDARG, ppPanel);
    });
}

HRESULT CProduction::DeletePanel(LONG lIndex)
{
    return Guarded([&] {
        return m_board->Remove([=](const BoardContents& contents) -> Item* {
            const bool isThere = lIndex >= 0 && static_cast<std::size_t>(lIndex) < contents.panels.size();
            return isThere ? contents.panels[static_cast<std::size_t>(lIndex)].Get() : nullptr;
        });
    });
}

HRESULT CProduction::AddSourceFile(LONG lTrack, BSTR bstrSource, double dInPoint, double dOutPoint, LONG lPosition,
                                   IUnknown** ppPanel)
{
    if (ppPanel) *ppPanel = nullptr;
    return Guarded([&]() -> HRESULT {
        ItemState state;
        state.clip.source = SourceOf(bstrSource);
        state.clip.inPoint = dInPoint;
        state.clip.outPoint = dOutPoint;
        if (!m_board->IsOpen()) return ZXE_E_NOT_OPEN;
        if (lTrack != 0 || !state.clip.source) return E_INVALIDARG;
        if (!IsAmount(dInPoint) || !IsAmount(dOutPoint) || (dOutPoint > 0.0 && dOutPoint <= dInPoint))
            return E_INVALIDARG;
        const ComPtr<Item> panel = Make<CPanel>(m_board, m_board->NewID(), std::move(state));
        return HandOut(m_board->Add(panel, lPosition), panel, ppPanel);
    });
}

HRESULT CProduction::GetSourceList(LONG lReserved1, LONG lReserved2, LONG lReserved3, SAFEARRAY** ppSources)
{
    if (!ppSources) return E_POINTER;
    *ppSources = nullptr;
    if (lReserved1 != 0 || lReserved2 != 0 || lReserved3 != 0) return E_INVALIDARG;
    return Guarded([&]() -> HRESULT {
        const std::vector<ComPtr<CPanel>> panels = m_board->Panels();
        SafeArray sources(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(panels.size())));
        if (!sources.Get()) return E_OUTOFMEMORY;
        LONG index = 0;
        for (const ComPtr<CPanel>& panel : panels) {
            ThrowIfFailed(SafeArrayPutElement(sources.Get(), &index, panel->State().clip.source->Name().Get()));
            ++index;
        }
        *ppSources = sources.Detach();
        return S_OK;
    });
}

HRESULT CProduction::get_Duration(double* pdSeconds)
{
    return Guarded([&] { return Give(m_board->Duration(), pdSeconds); });
}

HRESULT CProduction::get_EditingFrameRate(double* pdFrameRate)
{
    return Guarded([&] { return Give(m_board->FrameRate(), pdFrameRate); });
}

// Effects and audio

HRESULT CProduction::AddProductionEffect(LONG lLayer, LONG lType, IXMLDOMNode* pParameters, BSTR bstrSource,
                                         LONG lReserved, double dStart, IUnknown** ppEffect)
{
    if (ppEffect) *ppEffect = nullptr;
    return Guarded([&]() -> HRESULT {
        ItemState state;
        state.clip.source = SourceOf(bstrSource);
        state.layer = lLayer;
        state.start = dStart;
        if (!m_board->IsOpen()) return ZXE_E_NOT_OPEN;
        if (lType < 0 || lReserved != 0 || !IsAmount(dStart)) return E_INVALIDARG;
        if (state.clip.source && lType != ZXE_EFFECT_OVERLAY) return E_INVALIDARG;
        state.parameters = StoredDocument(pParameters);
        const ComPtr<Item> effect = Make<CEffect>(m_board, m_board->NewID(), lType, std::move(state));
        return HandOut(m_board->Add(effect), effect, ppEffect);
    });
}

HRESULT CProduction::DeleteProductionEffect(LONG lLayer, LONG lEffectID)
{
    return Guarded([&] {
        return m_board->Remove(
            [=](const BoardContents& contents) -> Item* { return contents.effects.Find(lLayer, lEffectID); });
    });
}

HRESULT CProduction::AddProductionAudio(BSTR bstrSource, LONG lKind, double dStart, IUnknown** ppAudio)
{
    if (ppAudio) *ppAudio = nullptr;
    return Guarded([&]() -> HRESULT {
        ItemState state;
        state.clip.source = SourceOf(bstrSource);
        state.start = dStart;
        if (!m_board->IsOpen()) return ZXE_E_NOT_OPEN;
        if (!state.clip.source || lKind != ZXE_KIND_BACKGROUND_AUDIO || !IsAmount(dStart)) return E_INVALIDARG;
        const ComPtr<Item> audio = Make<CAudio>(m_board, m_board->NewID(), std::move(state));
        return HandOut(m_board->Add(audio), audio, ppAudio);
    });
}

HRESULT CProduction::DeleteProductionAudio(LONG lAudioID)
{
    return Guarded([&] {
        return m_board->Remove([=](const BoardContents& contents) -> Item* {
            const auto found =
                std::ranges::find(contents.audio, lAudioID, [](const auto& audio) { return audio->ID(); });
            return found == contents.audio.end() ? nullptr : found->Get();
        });
    });
}

HRESULT CProduction::GetEffect(LONG lLayer, double dTime, IUnknown** ppEffect)
{
    if (!ppEffect) return E_POINTER;
    *ppEffect = nullptr;
    if (!IsAmount(dTime)) return E_INVALIDARG;
    return Guarded([&]() -> HRESULT {
        const ComPtr<CEffect> effect = m_board->EffectAt(lLayer, dTime);
        return effect ? Query<IUnknown>(effect).CopyTo(ppEffect) : S_FALSE;
    });
}

HRESULT CProduction::GetObject(LONG lKind, LONG lIndex, IUnknown** ppObject)
{
    if (!ppObject) return E_POINTER;
    *ppObject = nullptr;
    return Guarded([&]() -> HRESULT {
        if (lKind == ZXE_KIND_BACKGROUND_AUDIO) return HandOut(m_board->Audio(), lIndex, S_FALSE, ppObject);
        const ComPtr<CEffect> effect = lKind == ZXE_KIND_EFFECT ? m_board->Effect(lIndex) : nullptr;
        return effect ? Query<IUnknown>(effect).CopyTo(ppObject) : S_FALSE;
    });
}

// Settings

HRESULT CProduction::get_UseSourceAspectRatio(VARIANT_BOOL* pVal)
{
    return Give(ToVariantBool(m_board->GetSettings().useSourceAspectRatio), pVal);
}

HRESULT CProduction::put_UseSourceAspectRatio(VARIANT_BOOL newVal)
{
    return m_board->PutSetting(&Settings::useSourceAspectRatio, newVal != VARIANT_FALSE);
}

HRESULT CProduction::get_AspectRatio(double* pdAspectRatio)
{
    return Give(m_board->GetSettings().aspectRatio, pdAspectRatio);
}

HRESULT CProduction::put_AspectRatio(double dAspectRatio)
{
    if (!std::isfinite(dAspectRatio) || dAspectRatio <= 0.0) return E_INVALIDARG;
    return m_board->PutSetting(&Settings::aspectRatio, dAspectRatio);
}

HRESULT CProduction::get_Stereoscopic(VARIANT_BOOL* pVal)
{
    return Give(ToVariantBool(m_board->GetSettings().stereoscopic), pVal);
}

HRESULT CProduction::put_Stereoscopic(VARIANT_BOOL newVal)
{
    return m_board->PutSetting(&Settings::stereoscopic, newVal != VARIANT_FALSE);
}

// Documents

HRESULT CProduction::Save(IXMLDOMElement* pElement, IZXEContentPaths* pPaths)
{
    if (!pElement) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        XmlElement element(pElement);
        if (!IsFree(element)) return E_INVALIDARG;
        SaveBoard(m_board->Image(), element, pPaths);
        return S_OK;
    });
}

HRESULT CProduction::SaveMarkup(IXMLDOMElement* pElement, IZXEContentPaths* pPaths, ZXEMarkupTarget* pTarget)
{
    if (!pElement || !pTarget) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        const XmlElement element(pElement);
        if (!IsFree(element)) return E_INVALIDARG;
        pTarget->Take(BoardMarkup(m_board->Image(), element.Name(), pPaths));
        return S_OK;
    });
}

HRESULT CProduction::Load(IXMLDOMElement* pElement, IZXEContentPaths* pPaths)
{
    if (!pElement) return E_POINTER;
    const ComPtr<IUnknown> self(Controlling());
    return Guarded([&]() -> HRESULT {
        const XmlElement element(pElement);
        if (!element) return E_INVALIDARG;
        const HRESULT ready = m_board->ReadyToLoad();
        return FAILED(ready) ? ready : m_board->Load(LoadBoard(m_board, element, pPaths));
    });
}

// Pictures

HRESULT CProduction::GetFrame(double dSeconds, ULONG ulWidth, ULONG ulHeight, ULONG* pulWidth, ULONG* pulHeight,
                              ULONG* pulStride, SAFEARRAY** ppPixels)
{
    for (ULONG* out : {pulWidth, pulHeight, pulStride}) {
        if (out) *out = 0;
    }
    if (ppPixels) *ppPixels = nullptr;
    if (!pulWidth || !pulHeight || !pulStride || !ppPixels) return E_POINTER;
    const ULONG most = std::max(ulWidth, ulHeight);
    if (!IsAmount(dSeconds) || most == 0 || most > static_cast<ULONG>(kMaxBitmapSide)) return E_INVALIDARG;
    return Guarded([&] {
        const Scene scene = SceneOf(m_board->Image(), dSeconds);
        const auto [width, height] = SizeOf(scene.aspectRatio, static_cast<int>(ulWidth), static_cast<int>(ulHeight));
        SafeArray pixels = NewPixels(width, height);
        SharedRenderer().Draw(scene, width, height, PixelsIn(pixels));
        *pulWidth = static_cast<ULONG>(width);
        *pulHeight = static_cast<ULONG>(height);
        *pulStride = *pulWidth * sizeof(std::uint32_t);
        *ppPixels = pixels.Detach();
        return S_OK;
    });
}

// Undo

HRESULT CProduction::OpenUndoBlock()
{
    return Guarded([&] { return m_board->OpenUndoBlock(); });
}

HRESULT CProduction::CloseUndoBlock(VARIANT_BOOL bCommit)
{
    return Guarded([&] { return m_board->CloseUndoBlock(bCommit != VARIANT_FALSE); });
}

HRESULT CProduction::AddUndoUnit(IUnknown* pUnit)
{
    if (!pUnit) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        if (!m_board->IsOpen()) return ZXE_E_NOT_OPEN;
        const auto unit = Query<IOleUndoUnit>(pUnit);
        return unit ? m_board->History().Add(unit) : E_NOINTERFACE;
    });
}

HRESULT CProduction::CanUndo(VARIANT_BOOL* pbCanUndo, BSTR* pbstrDescription)
{
    if (pbstrDescription) *pbstrDescription = nullptr;
    if (!pbCanUndo) return E_POINTER;
    UndoHistory& history = m_board->History();
    return DescribeUndo(history.CanUndo(), history.UndoDescription(), pbCanUndo, pbstrDescription);
}

HRESULT CProduction::CanRedo(VARIANT_BOOL* pbCanRedo, BSTR* pbstrDescription)
{
    if (pbstrDescription) *pbstrDescription = nullptr;
    if (!pbCanRedo) return E_POINTER;
    UndoHistory& history = m_board->History();
    return DescribeUndo(history.CanRedo(), history.RedoDescription(), pbCanRedo, pbstrDescription);
}

HRESULT CProduction::Undo()
{
    return m_board->Undo();
}

HRESULT CProduction::Redo()
{
    return m_board->Redo();
}

} // namespace kv
