// Layouts are written in pixels at 96 dots per inch and scaled to the dots per inch of the
// monitor the window is on, so every window looks the same at 100%, 150% or 200%.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

namespace corvandell::win {

inline constexpr UINT kDefaultDpi = 96;

// The window's dots per inch; 96 for no window or a system that cannot tell.
UINT windowDpi(HWND window) noexcept;

// A length laid out at 96 dots per inch, at `dpi`.
inline int scaledForDpi(int pixelsAt96, UINT dpi) noexcept {
    return MulDiv(pixelsAt96, static_cast<int>(dpi), static_cast<int>(kDefaultDpi));
}

// The client's text font, "Segoe UI" at `points`, sized for `dpi`.
UniqueFont createUiFont(UINT dpi, int points = 9, int weight = FW_NORMAL);

} // namespace corvandell::win
