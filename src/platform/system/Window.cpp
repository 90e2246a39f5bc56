#include "platform/system/Window.h"

#include "platform/system/CriticalSection.h"

#include <map>

namespace kv {
namespace {

struct Window {
    std::u16string className;
    std::u16string name;
};

struct Windows {
    CriticalSection section;
    std::map<HWND, Window> open;
    HWND next = 1;
    std::function<bool(const WindowClass&)> allow;
};

Windows& Shared()
{
    static Windows windows;
    return windows;
}

} // namespace

HWND CreateHiddenWindow(const WindowClass& windowClass, std::u16string_view name, ULONG)
{
    Windows& windows = Shared();
    const SectionLock lock(windows.section);
    if (windowClass.name.empty() || (windows.allow && !windows.allow(windowClass))) return 0;
    const HWND window = windows.next++;
    windows.open.emplace(window, Window{std::u16string(windowClass.name), std::u16string(name)});
    return window;
}

bool DestroyWindow(HWND window)
{
    Windows& windows = Shared();
    const SectionLock lock(windows.section);
    return windows.open.erase(window) > 0;
}

HWND FindWindow(std::u16string_view className, std::u16string_view name)
{
    Windows& windows = Shared();
    const SectionLock lock(windows.section);
    for (const auto& [handle, window] : windows.open) {
        if (window.className == className && window.name == name) return handle;
    }
    return 0;
}

void SetWindowCreationHook(std::function<bool(const WindowClass&)> allow)
{
    Windows& windows = Shared();
    const SectionLock lock(windows.section);
    windows.allow = std::move(allow);
}

} // namespace kv
