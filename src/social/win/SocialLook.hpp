// How the friends and chat windows are painted, handed in by the client so these windows
// follow the chosen skin without knowing about skins. The defaults are the system's look.
#pragma once

#include <windows.h>

namespace corvandell::win {

struct SocialLook {
    // Offered every message first; true when it handled it (then `result` is the answer).
    // With a hook, push buttons are owner-drawn and the hook paints them.
    bool (*messageHook)(HWND, UINT, WPARAM, LPARAM, LRESULT& result) noexcept = nullptr;
    void (*trackButtonHover)(HWND button) noexcept = nullptr;
    COLORREF rowBackground = GetSysColor(COLOR_WINDOW);
    COLORREF rowText = GetSysColor(COLOR_WINDOWTEXT);
    COLORREF selection = GetSysColor(COLOR_HIGHLIGHT);
    COLORREF mutedText = GetSysColor(COLOR_GRAYTEXT);
    COLORREF accent = RGB(0x2E, 0xA0, 0x43); // "Online" and the game a friend plays
};

// Who hears that a window has ended: the main window keeps one friends window and forgets
// it when told (message with wParam `kind` and lParam the ended window's handle).
struct ClosedNotice {
    HWND target = nullptr;
    UINT message = 0;
    WPARAM kind = 0;
};

} // namespace corvandell::win
