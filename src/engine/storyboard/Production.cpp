#include "engine/storyboard/Production.h"

#include <algorithm>
#include <cmath>

namespace kv {
namespace {

using Events = IZXEProductionDataEvents;

VARIANT_BOOL ToVariantBool(bool value)
{
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

template <class T>
HRESULT Give(T value, T* out)
{
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
}

/// A panel of a source that cannot be read, because it is offline or a moniker, stands there all the same.
MediaProperties ProbeIfReadable(std::u16string_view source)
{
    try {
        return ProbeMedia(source);
    } catch (const Error&) {
        return {};
    }
}

bool IsTime(double seconds)
{
    return std::isfinite(seconds) && seconds >= 0.0;
}

HRESULT DescribeUndo(bool can, Bstr description, VARIANT_BOOL* canOut, BSTR* descriptionOut)
{
    *canOut = ToVariantBool(can);
    if (can && descriptionOut) *descriptionOut = description.Detach();
    return S_OK;
}

} // namespace

// Life

HRESULT CProduction::Initialise()
{
    const SectionLock lock(m_section);
    return std::exchange(m_open, true) ? S_FALSE : S_OK;
}

HRESULT CProduction::Close()
{
    {
        const SectionLock lock(m_section);
        if (!std::exchange(m_open, false)) return S_FALSE;
    }
    m_history.Clear();
    m_sinks.Tell(&Events::OnClosed);
    return S_OK;
}

bool CProduction::IsOpen()
{
    const SectionLock lock(m_section);
    return m_open;
}

HRESULT CProduction::GetProductionObj(IUnknown** ppProduction)
{
    return ComPtr<IUnknown>(Controlling()).CopyTo(ppProduction);
}

HRESULT CProduction::get_Flags(ULONG* pdwFlags)
{
    const SectionLock lock(m_section);
    return Give(m_modified ? ZXE_PRODUCTION_MODIFIED : 0, pdwFlags);
}

HRESULT CProduction::ClearModified()
{
    {
        const SectionLock lock(m_section);
        if (!std::exchange(m_modified, false)) return S_OK;
    }
    m_sinks.Tell(&Events::OnModifiedChanged, 0);
    return S_OK;
}

HRESULT CProduction::Notify(ULONG ulEvent, LONG lFirst, LONG lSecond)
{
    return m_sinks.TellByPosition(ulEvent, lFirst, lSecond);
}

// Panels

HRESULT CProduction::GetPanelCount(LONG* plCount)
{
    const SectionLock lock(m_section);
    return Give(static_cast<LONG>(m_panels.size()), plCount);
}

HRESULT CProduction::GetPanelBaseObject(LONG lIndex, IUnknown** ppPanel)
{
    if (!ppPanel) return E_POINTER;
    *ppPanel = nullptr;
    const SectionLock lock(m_section);
    if (lIndex < 0 || static_cast<std::size_t>(lIndex) >= m_panels.size()) return E_INVALIDARG;
    return ComPtr<IUnknown>(m_panels[static_cast<std::size_t>(lIndex)]->Controlling()).CopyTo(ppPanel);
}

HRESULT CProduction::DeletePanel(LONG lIndex)
{
    return Guarded([&]() -> HRESULT {
        if (!IsOpen()) return ZXE_E_NOT_OPEN;
        PanelEdit edit{nullptr, lIndex, false};
        return Apply(edit);
    });
}

HRESULT CProduction::AddSourceFile(LONG lTrack, BSTR bstrSource, double dInPoint, double dOutPoint, LONG lPosition,
                                   IUnknown** ppPanel)
{
    if (ppPanel) *ppPanel = nullptr;
    return Guarded([&]() -> HRESULT {
        if (!IsOpen()) return ZXE_E_NOT_OPEN;
        LONG count = 0;
        GetPanelCount(&count);
        if (lTrack != 0 || lPosition < -1 || lPosition > count || View(bstrSource).empty()) return E_INVALIDARG;
        if (!IsTime(dInPoint) || !IsTime(dOutPoint) || (dOutPoint > 0.0 && dOutPoint <= dInPoint)) return E_INVALIDARG;
        const auto panel = Make<CPanel>(View(bstrSource), dInPoint, dOutPoint, ProbeIfReadable(View(bstrSource)));
        PanelEdit edit{panel, lPosition, true};
        const HRESULT result = Apply(edit);
        return SUCCEEDED(result) && ppPanel ? ComPtr<IUnknown>(panel->Controlling()).CopyTo(ppPanel) : result;
    });
}

HRESULT CProduction::Apply(PanelEdit& edit)
{
    const bool adds = edit.adds;
    bool wasModified = false;
    LONG index = 0;
    {
        const SectionLock lock(m_section);
        if (adds) {
            const auto end = static_cast<LONG>(m_panels.size());
            index = edit.index < 0 ? end : std::min(edit.index, end);
            m_panels.insert(m_panels.begin() + index, edit.panel);
        } else {
            if (!edit.panel) {
                if (edit.index < 0 || static_cast<std::size_t>(edit.index) >= m_panels.size()) return E_INVALIDARG;
                edit.panel = m_panels[static_cast<std::size_t>(edit.index)];
            }
            const auto found = std::ranges::find(m_panels, edit.panel);
            if (found == m_panels.end()) return E_UNEXPECTED;
            index = static_cast<LONG>(found - m_panels.begin());
            m_panels.erase(found);
        }
        edit.index = index;
        edit.adds = !adds;
        wasModified = std::exchange(m_modified, true);
        m_history.Record([this, back = edit]() mutable { return Apply(back); });
    }
    m_sinks.Tell(adds ? &Events::OnPanelAdded : &Events::OnPanelRemoved, index);
    if (edit.panel->Duration() > 0.0) m_sinks.Tell(&Events::OnDurationChanged);
    if (!wasModified) m_sinks.Tell(&Events::OnModifiedChanged, 1);
    return S_OK;
}

HRESULT CProduction::GetSourceList(LONG lReserved1, LONG lReserved2, LONG lReserved3, SAFEARRAY** ppSources)
{
    if (!ppSources) return E_POINTER;
    *ppSources = nullptr;
    if (lReserved1 != 0 || lReserved2 != 0 || lReserved3 != 0) return E_INVALIDARG;
    const SectionLock lock(m_section);
    SafeArray sources(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(m_panels.size())));
    if (!sources.Get()) return E_OUTOFMEMORY;
    LONG index = 0;
    for (const auto& panel : m_panels) {
        const HRESULT stored = SafeArrayPutElement(sources.Get(), &index, panel->Source());
        if (FAILED(stored)) return stored;
        ++index;
    }
    *ppSources = sources.Detach();
    return S_OK;
}

HRESULT CProduction::get_Duration(double* pdSeconds)
{
    const SectionLock lock(m_section);
    double seconds = 0.0;
    for (const auto& panel : m_panels)
        seconds += panel->Duration();
    return Give(seconds, pdSeconds);
}

HRESULT CProduction::get_EditingFrameRate(double* pdFrameRate)
{
    const SectionLock lock(m_section);
    const auto first = std::ranges::find_if(m_panels, [](const auto& panel) { return panel->FrameRate() > 0.0; });
    return Give(first == m_panels.end() ? 0.0 : (*first)->FrameRate(), pdFrameRate);
}

// Settings

CProduction::Settings CProduction::GetSettings()
{
    const SectionLock lock(m_section);
    return m_settings;
}

template <class T>
HRESULT CProduction::PutSetting(T Settings::*setting, T value)
{
    return Guarded([&] {
        {
            const SectionLock lock(m_section);
            T& current = m_settings.*setting;
            if (current == value) return S_OK;
            m_history.Record([this, setting, next = current, other = value]() mutable {
                const HRESULT result = PutSetting(setting, next);
                std::swap(next, other);
                return result;
            });
            current = value;
        }
        m_sinks.Tell(&Events::OnSettingsChanged);
        return S_OK;
    });
}

HRESULT CProduction::get_UseSourceAspectRatio(VARIANT_BOOL* pVal)
{
    return Give(ToVariantBool(GetSettings().useSourceAspectRatio), pVal);
}

HRESULT CProduction::put_UseSourceAspectRatio(VARIANT_BOOL newVal)
{
    return PutSetting(&Settings::useSourceAspectRatio, newVal != VARIANT_FALSE);
}

HRESULT CProduction::get_AspectRatio(double* pdAspectRatio)
{
    return Give(GetSettings().aspectRatio, pdAspectRatio);
}

HRESULT CProduction::put_AspectRatio(double dAspectRatio)
{
    if (!std::isfinite(dAspectRatio) || dAspectRatio <= 0.0) return E_INVALIDARG;
    return PutSetting(&Settings::aspectRatio, dAspectRatio);
}

HRESULT CProduction::get_Stereoscopic(VARIANT_BOOL* pVal)
{
    return Give(ToVariantBool(GetSettings().stereoscopic), pVal);
}

HRESULT CProduction::put_Stereoscopic(VARIANT_BOOL newVal)
{
    return PutSetting(&Settings::stereoscopic, newVal != VARIANT_FALSE);
}

// Undo

HRESULT CProduction::OpenUndoBlock()
{
    return Guarded([&] { return IsOpen() ? m_history.Open() : ZXE_E_NOT_OPEN; });
}

HRESULT CProduction::CloseUndoBlock(VARIANT_BOOL bCommit)
{
    if (!IsOpen()) return ZXE_E_NOT_OPEN;
    const HRESULT result = m_history.Close(bCommit != VARIANT_FALSE);
    return result == ZXE_E_NO_UNDO_BLOCK ? result : UndoStateChanged(result);
}

HRESULT CProduction::AddUndoUnit(IUnknown* pUnit)
{
    if (!pUnit) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        if (!IsOpen()) return ZXE_E_NOT_OPEN;
        const auto unit = Query<IOleUndoUnit>(pUnit);
        return unit ? m_history.Add(unit) : E_NOINTERFACE;
    });
}

HRESULT CProduction::CanUndo(VARIANT_BOOL* pbCanUndo, BSTR* pbstrDescription)
{
    if (pbstrDescription) *pbstrDescription = nullptr;
    if (!pbCanUndo) return E_POINTER;
    return DescribeUndo(m_history.CanUndo(), m_history.UndoDescription(), pbCanUndo, pbstrDescription);
}

HRESULT CProduction::CanRedo(VARIANT_BOOL* pbCanRedo, BSTR* pbstrDescription)
{
    if (pbstrDescription) *pbstrDescription = nullptr;
    if (!pbCanRedo) return E_POINTER;
    return DescribeUndo(m_history.CanRedo(), m_history.RedoDescription(), pbCanRedo, pbstrDescription);
}

HRESULT CProduction::Undo()
{
    if (!IsOpen()) return ZXE_E_NOT_OPEN;
    const HRESULT result = m_history.Undo();
    return SUCCEEDED(result) ? UndoStateChanged(result) : result;
}

HRESULT CProduction::Redo()
{
    if (!IsOpen()) return ZXE_E_NOT_OPEN;
    const HRESULT result = m_history.Redo();
    return SUCCEEDED(result) ? UndoStateChanged(result) : result;
}

HRESULT CProduction::UndoStateChanged(HRESULT result)
{
    constexpr LONG kCanUndo = 1;
    constexpr LONG kCanRedo = 2;
    const LONG state = (m_history.CanUndo() ? kCanUndo : 0) | (m_history.CanRedo() ? kCanRedo : 0);
    m_sinks.Tell(&Events::OnUndoStateChanged, state);
    return result;
}

} // namespace kv
