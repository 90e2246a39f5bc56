#include "KVProjectData/titles/Title.h"

#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/persistence/ValueTexts.h"
#include "KVProjectData/tree/ItemProject.h"
#include "SbdUtils/EngineCalls.h"
#include "platform/automation/SafeArray.h"
#include "platform/com/Activation.h"
#include "platform/system/Locale.h"

#include <cmath>

namespace kv {
namespace {

constexpr EngineCalls kEngine("KVTitle");

/// What project files call a title's production.
constexpr std::string_view kStoryboard = "Storyboard";

double RatioOf(AspectRatio aspect)
{
    return aspect == AspectRatio_16x9 ? 16.0 / 9.0 : 4.0 / 3.0;
}

/// Reads a size as it was written: by US-English rules where the text can only be meant so, else by the user's.
double ParseSize(std::u16string_view text)
{
    const bool point = text.find(u'.') != std::u16string_view::npos;
    const bool comma = text.find(u',') != std::u16string_view::npos;
    const std::optional<double> size = point && !comma ? ParseDoubleUS(text) : ParseDoubleUserLocale(text);
    if (!size) throw Error(DISP_E_TYPEMISMATCH);
    return *size;
}

} // namespace

CKVTitle::CKVTitle() : CProjectNode(typeTitle)
{
    // They get IDs with the title, or after all others of a document.
    AddChild(&MakePart<CKVEncodingParams>(static_cast<ProductionAspect*>(this)), false);
    AddChild(&MakePart<CKVCommandList>(), false);
    MakePart<CKVLocking>(this);
}

void CKVTitle::FinalRelease()
{
    ReleaseParts();
    DisconnectSink();
    if (const auto data = ProductionData()) data->Close();
    HoldProduction(nullptr);
    if (m_sink) m_sink->Forget();
}

void CKVTitle::FirePropertyChanged(DISPID propId)
{
    FireEvent(EVENT_TitlePropChanged, ID(), propId, 0);
}

void CKVTitle::Attributes(AttributeArchive& archive)
{
    archive.ID(*this);
    archive("discIndex", m_discIndex);
    archive("flags", m_flags);
    archive("label", m_label);
    archive("stillWaitSecs", m_stillWaitSecs);
    archive("tag", Flags(m_tag, kTitleTypeNames));
    archive("vobDuration", m_vobDuration);
    archive.Parsed("vobSize", m_vobSize, ParseSize);
}

ULONG CKVTitle::Types()
{
    const SectionLock lock(Section());
    return m_tag;
}

HRESULT CKVTitle::put_StillWaitTime(LONG newVal)
{
    return Edit([&](EditScope& edit) {
        if (newVal < 0) return E_INVALIDARG;
        edit.Record();
        m_stillWaitSecs = newVal;
        edit.Changed(202);
        return S_OK;
    });
}

HRESULT CKVTitle::put_IsDirty(VARIANT_BOOL newVal)
{
    return Edit([&](EditScope& edit) {
        m_dirty = newVal != VARIANT_FALSE;
        edit.Changed(11);
        if (m_dirty) SetModified(false);
        return S_OK;
    });
}

HRESULT CKVTitle::put_DiscIndex(LONG newVal)
{
    return Edit([&](EditScope&) {
        if (newVal < 0) return E_INVALIDARG;
        m_discIndex = newVal;
        return S_OK;
    });
}

HRESULT CKVTitle::put_VOBSize(double newVal)
{
    return Edit([&](EditScope& edit) {
        // It has no text that a document could hold.
        if (!std::isfinite(newVal)) return E_INVALIDARG;
        edit.Record();
        m_vobSize = newVal;
        return S_OK;
    });
}

HRESULT CKVTitle::GetProject(IKVProjectData** ppProject)
{
    return GiveProject(*this, ppProject);
}

// Production

HRESULT CKVTitle::GetProduction(IUnknown** ppProduction)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!ppProduction) return kEngine.NullArgument("ppProduction");
        *ppProduction = nullptr;
        const HRESULT result = Production() ? S_OK : CreateProduction();
        return FAILED(result) ? result : Production().CopyTo(ppProduction);
    });
}

HRESULT CKVTitle::CreateProduction()
{
    AspectRatio aspect = AspectRatio_None;
    EncodingParams().get_AspectRatio(&aspect);
    ComPtr<IUnknown> production;
    HRESULT result =
        kEngine.Checked(CreateInstance(CLSID_ZXEProduction, production), "CreateInstance(CLSID_ZXEProduction)");
    if (FAILED(result)) return result;
    HoldProduction(std::move(production));
    const auto data = ProductionData();
    if (!data) return kEngine.Checked(E_NOINTERFACE, "Query<IZXEProductionData>");
    result = kEngine.Checked(data->Initialise(), "Initialise()");
    if (FAILED(result)) return result;
    if (const auto info = ProductionInfo()) {
        kEngine.Checked(info->put_AspectRatio(RatioOf(aspect)), "put_AspectRatio()");
        kEngine.Checked(info->put_Stereoscopic(m_stereoscopic ? VARIANT_TRUE : VARIANT_FALSE), "put_Stereoscopic()");
        // So far it is what the title says of it.
        data->ClearModified();
    }
    result = ConnectSink();
    if (SUCCEEDED(result)) m_sink->SetOfMere(true);
    return result;
}

HRESULT CKVTitle::SetProduction(IUnknown* pProduction)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!pProduction) return kEngine.NullArgument("pProduction");
        // A title that held itself, or its project, would never end.
        if (Query<IKVTitle>(pProduction) || Query<IKVProjectData>(pProduction)) {
            return kEngine.Checked(E_INVALIDARG, "pProduction");
        }
        // The one that is held stays in use, and is merely connected anew.
        const bool isHeld = IsSameObject(pProduction, Production().Get());
        const HRESULT left = isHeld ? DisconnectSink() : LeaveProduction();
        if (FAILED(left)) return left;
        if (!isHeld) HoldProduction(Query<IUnknown>(pProduction));
        const HRESULT connected = ConnectSink();
        if (FAILED(connected)) return connected;
        FirePropertyChanged(203);
        return S_OK;
    });
}

HRESULT CKVTitle::LeaveProduction()
{
    const HRESULT disconnected = DisconnectSink();
    if (FAILED(disconnected)) return disconnected;
    const auto data = ProductionData();
    return data ? kEngine.Checked(data->Close(), "Close()") : S_OK;
}

std::vector<OwnedProduction> CKVTitle::Productions()
{
    const SectionLock lock(Section());
    return {{kStoryboard, Production(), m_sink && m_sink->IsOfMere()}};
}

HRESULT CKVTitle::TakeProduction(std::string_view name, IUnknown* production)
{
    return Read([&] {
        if (name != kStoryboard) return E_INVALIDARG;
        const HRESULT left = LeaveProduction();
        if (FAILED(left)) return left;
        HoldProduction(Query<IUnknown>(production));
        const HRESULT connected = ConnectSink();
        if (FAILED(connected)) HoldProduction(nullptr);
        return connected;
    });
}

HRESULT CKVTitle::ConnectSink()
{
    const auto container = Query<IConnectionPointContainer>(Production());
    if (!container) return kEngine.Checked(E_NOINTERFACE, "Query<IConnectionPointContainer>");
    ComPtr<IConnectionPoint> point;
    HRESULT result = kEngine.Checked(container->FindConnectionPoint(IZXEProductionDataEvents::IID, point.Put()),
                                     "FindConnectionPoint(IZXEProductionDataEvents)");
    if (FAILED(result)) return result;
    if (!m_sink) m_sink = Make<TitleSink>(*this);
    m_sink->SetOfMere(false);
    return kEngine.Checked(point->Advise(m_sink->Controlling(), &m_adviseCookie), "Advise()");
}

HRESULT CKVTitle::DisconnectSink()
{
    if (m_adviseCookie == 0) return S_OK;
    const auto container = Query<IConnectionPointContainer>(Production());
    ComPtr<IConnectionPoint> point;
    HRESULT result =
        container ? container->FindConnectionPoint(IZXEProductionDataEvents::IID, point.Put()) : E_NOINTERFACE;
    if (SUCCEEDED(result)) result = point->Unadvise(m_adviseCookie);
    if (FAILED(kEngine.Checked(result, "Unadvise()"))) return result;
    m_adviseCookie = 0;
    return S_OK;
}

void CKVTitle::ProductionChanged(LONG event, LONG param)
{
    const SectionLock lock(Section());
    FireEvent(EVENT_TitleProductionEvent, ID(), event, param);
}

HRESULT CKVTitle::GetSourceFromProd(BSTR* pbstrSource)
{
    return Read([&] {
        EngineCalls::Begin();
        if (!pbstrSource) return kEngine.NullArgument("pbstrSource");
        ComPtr<IUnknown> production;
        HRESULT result = GetProduction(production.Put());
        if (FAILED(result)) return result;
        const auto data = ProductionData();
        if (!data) return S_OK;
        SafeArray sources;
        result = kEngine.Checked(data->GetSourceList(0, 0, 0, sources.Put()), "GetSourceList()");
        if (FAILED(result)) return result;
        LONG first = 0;
        LONG last = -1;
        if (!sources.Get() || sources.Get()->vt != VT_BSTR || FAILED(SafeArrayGetLBound(sources.Get(), 1, &first)) ||
            FAILED(SafeArrayGetUBound(sources.Get(), 1, &last)) || last < first) {
            return S_OK;
        }
        return SafeArrayGetElement(sources.Get(), &first, pbstrSource);
    });
}

ComPtr<IUnknown> CKVTitle::Production()
{
    const std::lock_guard lock(m_productionGuard);
    return m_production;
}

void CKVTitle::HoldProduction(ComPtr<IUnknown> production)
{
    // The one held before is released when the guard has been left.
    const std::lock_guard lock(m_productionGuard);
    std::swap(m_production, production);
}

ComPtr<IZXEProductionData> CKVTitle::ProductionData()
{
    return Query<IZXEProductionData>(Production());
}

ComPtr<IProductionInfo> CKVTitle::ProductionInfo()
{
    ComPtr<IUnknown> production;
    const auto data = ProductionData();
    if (data) data->GetProductionObj(production.Put());
    return Query<IProductionInfo>(production);
}

AspectRatio CKVTitle::AspectFromProduction()
{
    constexpr double kWide = 1.77;
    double ratio = 0.0;
    const auto info = ProductionInfo();
    if (!info || FAILED(info->get_AspectRatio(&ratio))) return AspectRatio_None;
    return ratio > kWide ? AspectRatio_16x9 : AspectRatio_4x3;
}

HRESULT CKVTitle::AspectToProduction(AspectRatio aspect)
{
    if (!Production()) return S_FALSE;
    const auto info = ProductionInfo();
    return info ? info->put_AspectRatio(RatioOf(aspect)) : E_NOINTERFACE;
}

} // namespace kv
