// What every top-level window does when it is created on, or moved to, a monitor whose
// dots per inch are not 96: take its size in scaled pixels, take the rectangle Windows
// suggests on WM_DPICHANGED, and hand its controls the font made for the new DPI.
#pragma once

#include <windows.h>

namespace corvandell::win {

// Resizes a window created with a size meant for 96 dots per inch to the same size at its
// own, kept inside the monitor's work area; nothing happens at 96.
void resizeForDpi(HWND window, int widthAt96, int heightAt96) noexcept;

// Moves and sizes the window to the rectangle WM_DPICHANGED suggests (its lParam).
void applySuggestedRect(HWND window, const RECT& suggested) noexcept;

// Sets the font on every child control, and redraws them when `redraw` is true.
void setChildrenFont(HWND window, HFONT font, bool redraw) noexcept;

} // namespace corvandell::win
