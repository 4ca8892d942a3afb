#include "base/win/DpiWindow.hpp"

#include "base/win/Dpi.hpp"

#include <algorithm>

namespace corvandell::win {
namespace {

struct FontChange {
    HFONT font;
    BOOL redraw;
};

BOOL CALLBACK setFont(HWND child, LPARAM lParam) noexcept {
    const auto* change = reinterpret_cast<const FontChange*>(lParam);
    SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(change->font), change->redraw);
    return TRUE;
}

} // namespace

void resizeForDpi(HWND window, int widthAt96, int heightAt96) noexcept {
    const UINT dpi = windowDpi(window);
    if (window == nullptr || dpi == kDefaultDpi) {
        return;
    }
    int width = scaledForDpi(widthAt96, dpi);
    int height = scaledForDpi(heightAt96, dpi);
    // Never larger than the monitor's work area: 1100 x 720 at 200% is more than a 1080p
    // screen, and a window whose title bar is off screen cannot be moved back.
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    if (GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor)) {
        width = std::min(width, static_cast<int>(monitor.rcWork.right - monitor.rcWork.left));
        height = std::min(height, static_cast<int>(monitor.rcWork.bottom - monitor.rcWork.top));
    }
    RECT place{};
    GetWindowRect(window, &place);
    place.left = std::max(place.left, monitor.rcWork.left);
    place.top = std::max(place.top, monitor.rcWork.top);
    if (place.left + width > monitor.rcWork.right) {
        place.left = monitor.rcWork.right - width;
    }
    if (place.top + height > monitor.rcWork.bottom) {
        place.top = monitor.rcWork.bottom - height;
    }
    SetWindowPos(window, nullptr, place.left, place.top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void applySuggestedRect(HWND window, const RECT& suggested) noexcept {
    SetWindowPos(window, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                 suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void setChildrenFont(HWND window, HFONT font, bool redraw) noexcept {
    FontChange change{font, redraw ? TRUE : FALSE};
    EnumChildWindows(window, &setFont, reinterpret_cast<LPARAM>(&change));
}

} // namespace corvandell::win
