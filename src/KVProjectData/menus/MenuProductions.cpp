#include "KVProjectData/menus/MenuProductions.h"

#include "KVProjectData/tree/UndoContext.h"
#include "SbdUtils/ProductionObject.h"
#include "platform/com/Activation.h"

namespace kv {
namespace {

constexpr EngineCalls kEngine("KVMenu");

constexpr double kWide = 16.0 / 9.0;
constexpr double kNarrow = 4.0 / 3.0;

/// Throws Error.
ComPtr<IUnknown> NewProduction()
{
    ComPtr<IUnknown> production;
    kEngine.Need(CreateInstance(CLSID_ZXEProduction, production), "CreateInstance(CLSID_ZXEProduction)");
    const auto data = kEngine.Need<IZXEProductionData>(production.Get(), "(IZXEProductionData*)spSbd");
    kEngine.Need(data->Initialise(), "spSbd->Initialise()");
    return production;
}

ComPtr<IProductionInfo> InfoOf(IUnknown* production)
{
    const auto data = kEngine.Need<IZXEProductionData>(production, "(IZXEProductionData*)spSbd");
    return ProductionObject(kEngine, *data).Info();
}

ComPtr<IConnectionPoint> PointOf(IUnknown* production)
{
    const auto container = kEngine.Need<IConnectionPointContainer>(production, "(IConnectionPointContainer*)spCPC");
    ComPtr<IConnectionPoint> point;
    kEngine.Need(container->FindConnectionPoint(IZXEProductionDataEvents::IID, point.Put()),
                 "spCPC->FindConnectionPoint(IZXEProductionDataEvents)");
    return point;
}

} // namespace

ProductionUse UseProduction(ComPtr<IUnknown> production)
{
    if (!production) return nullptr;
    return ProductionUse(production.Detach(), [](IUnknown* used) {
        if (const auto data = Query<IZXEProductionData>(used)) kEngine.Checked(data->Close(), "spSbd->Close()");
        used->Release();
    });
}

void MenuProductions::End()
{
    Disconnect(m_menu.get(), m_adviseCookie);
    m_adviseCookie = 0;
    ProductionUse menu;
    ProductionUse background;
    Hold(m_menu, menu);
    Hold(m_background, background);
    menu.reset();
    background.reset();
    if (m_sink) m_sink->Forget();
}

ProductionUse MenuProductions::Held(const ProductionUse& production) const
{
    const std::lock_guard lock(m_guard);
    return production;
}

void MenuProductions::Hold(ProductionUse& place, ProductionUse& production)
{
    {
        const std::lock_guard lock(m_guard);
        std::swap(place, production);
    }
    StoryboardsMoved();
}

HRESULT MenuProductions::MakeMenu()
{
    if (m_menu) return S_FALSE;
    return Guarded([&] {
        ProductionUse production = UseProduction(NewProduction());
        const HRESULT taken = ExchangeMenu(production);
        if (SUCCEEDED(taken)) m_sink->SetOfMere(true);
        return taken;
    });
}

HRESULT MenuProductions::MakeBackground()
{
    if (m_background) return S_FALSE;
    return Guarded([&] {
        ProductionUse production = UseProduction(NewProduction());
        kEngine.Need(InfoOf(production.get())->put_AspectRatio(kWide), "spProdInfo->put_AspectRatio(16.0 / 9.0)");
        ExchangeBackground(production);
        return S_OK;
    });
}

HRESULT MenuProductions::ExchangeMenu(ProductionUse& production)
{
    DWORD cookie = 0;
    const HRESULT connected = production ? Connect(production.get(), cookie) : S_OK;
    if (FAILED(connected)) return connected;
    const HRESULT left = Disconnect(m_menu.get(), m_adviseCookie);
    if (FAILED(left)) {
        Disconnect(production.get(), cookie);
        return left;
    }
    m_adviseCookie = cookie;
    Hold(m_menu, production);
    return S_OK;
}

void MenuProductions::ExchangeBackground(ProductionUse& production)
{
    Hold(m_background, production);
}

HRESULT MenuProductions::Connect(IUnknown* production, DWORD& cookie)
{
    return Guarded([&] {
        const auto point = PointOf(production);
        if (!m_sink) m_sink = Make<MenuSink>(m_node, m_events);
        m_sink->SetOfMere(false);
        return kEngine.Checked(point->Advise(m_sink->Controlling(), &cookie), "spCP->Advise(this, &dwCookie)");
    });
}

HRESULT MenuProductions::Disconnect(IUnknown* production, DWORD cookie)
{
    if (cookie == 0) return S_OK;
    return Guarded([&] { return kEngine.Checked(PointOf(production)->Unadvise(cookie), "spCP->Unadvise(dwCookie)"); });
}

AspectRatio MenuProductions::AspectFromMenu(IKVEncodingParams& encoding) const
{
    VARIANT_BOOL follows = VARIANT_FALSE;
    ThrowIfFailed(encoding.get_SyncToProject(&follows));
    if (follows != VARIANT_FALSE) return AspectRatio_None;
    double dAspectRatio = 0.0;
    kEngine.Need(InfoOf(Menu().Get())->get_AspectRatio(&dAspectRatio), "spProdInfo->get_AspectRatio(&dAspectRatio)");
    return dAspectRatio == kWide ? AspectRatio_16x9 : AspectRatio_4x3;
}

HRESULT MenuProductions::AspectToMenu(IKVEncodingParams& encoding) const
{
    return Guarded([&] {
        AspectRatio aspect = AspectRatio_None;
        ThrowIfFailed(encoding.get_AspectRatio(&aspect));
        return kEngine.Checked(InfoOf(Menu().Get())->put_AspectRatio(aspect == AspectRatio_16x9 ? kWide : kNarrow),
                               "spProdInfo->put_AspectRatio(dAspectRatio)");
    });
}

} // namespace kv
