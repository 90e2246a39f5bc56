#pragma once
// The productions of a menu: the one that shows its elements, and in its place the background of a native menu.

#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/IKVEncodingParams.h"
#include "KVProjectData/menus/MenuSink.h"

#include <memory>
#include <mutex>

namespace kv {

/// A production in use, which is closed when nobody holds it any more; null for none.
using ProductionUse = std::shared_ptr<IUnknown>;

/// Uses a production from now on. Throws for lack of memory, and has closed it.
ProductionUse UseProduction(ComPtr<IUnknown> production);

/// Part of a menu. Whoever changes what is held has entered the menu's section; asking needs none. Failures of the
/// engine are reported to the host, and their results passed on.
class MenuProductions {
public:
    /// `menu` is a menu that answers for IZXEProductionDataEvents as `events`; it outlives this object.
    MenuProductions(CProjectNode& menu, IZXEProductionDataEvents& events) : m_node(menu), m_events(events) {}
    MenuProductions(const MenuProductions&) = delete;
    MenuProductions& operator=(const MenuProductions&) = delete;

    /// The menu ends: lets go of what is held.
    void End();

    /// The menu's own production; empty without one. It is mere when it was made here and told of no edit since.
    ComPtr<IUnknown> Menu() const { return MenuUse().get(); }
    /// The background production; empty without one.
    ComPtr<IUnknown> Background() const { return BackgroundUse().get(); }
    ProductionUse MenuUse() const { return Held(m_menu); }
    ProductionUse BackgroundUse() const { return Held(m_background); }
    bool MenuIsMere() const { return m_sink && m_sink->IsOfMere(); }

    /// Makes the production that there is none of, and listens to the menu's own. S_FALSE when there is one.
    HRESULT MakeMenu();
    HRESULT MakeBackground();

    /// Puts a production that can be used in the place of the one that is held, which is handed over as it is, and not
    /// listened to any more. Null for none. On failure nothing has changed.
    HRESULT ExchangeMenu(ProductionUse& production);
    void ExchangeBackground(ProductionUse& production);

    /// The aspect ratio of the menu's own production, which the encoding parameters are to take: None when these follow
    /// the project. Throws Error.
    AspectRatio AspectFromMenu(IKVEncodingParams& encoding) const;
    /// The production takes that of the encoding parameters.
    HRESULT AspectToMenu(IKVEncodingParams& encoding) const;

private:
    ProductionUse Held(const ProductionUse& production) const;
    void Hold(ProductionUse& place, ProductionUse& production);
    HRESULT Connect(IUnknown* production, DWORD& cookie);
    /// Without a cookie there is nothing to end.
    static HRESULT Disconnect(IUnknown* production, DWORD cookie);

    CProjectNode& m_node;
    IZXEProductionDataEvents& m_events;
    /// Guards the pointers alone.
    mutable std::mutex m_guard;
    ProductionUse m_menu;
    ProductionUse m_background;
    /// Made with the first connection.
    ComPtr<MenuSink> m_sink;
    DWORD m_adviseCookie = 0;
};

} // namespace kv
