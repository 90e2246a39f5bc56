#pragma once
// Hidden windows, which show nothing and are known by their class and name.

#include "platform/com/BaseTypes.h"
#include "platform/com/Export.h"

#include <functional>
#include <string>
#include <string_view>

/// 0 is no window.
using HWND = std::uintptr_t;

inline constexpr ULONG CS_VREDRAW = 1;
inline constexpr ULONG CS_HREDRAW = 2;
inline constexpr ULONG CS_DBLCLKS = 8;
inline constexpr ULONG WS_DISABLED = 0x08000000;
inline constexpr ULONG IDC_ARROW = 32512;
inline constexpr ULONG COLOR_WINDOW = 5;

namespace kv {

struct WindowClass {
    std::u16string_view name;
    ULONG style = 0;
    ULONG cursor = 0;
    ULONG background = 0;
};

/// A class and a style say how a window would look; nothing here shows one. 0 when the window cannot be created.
KV_EXPORT HWND CreateHiddenWindow(const WindowClass& windowClass, std::u16string_view name, ULONG style);

/// False for what is no window of the calling process.
KV_EXPORT bool DestroyWindow(HWND window);

/// The first window of that class and name; 0 when there is none.
KV_EXPORT HWND FindWindow(std::u16string_view className, std::u16string_view name);

/// Lets a host refuse windows; null lets every window be made.
KV_EXPORT void SetWindowCreationHook(std::function<bool(const WindowClass&)> allow);

} // namespace kv
