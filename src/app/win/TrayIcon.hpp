// The notification-area icon of the main window.
#pragma once

#include <windows.h>

#include <string_view>

namespace corvandell::win {

class TrayIcon {
public:
    TrayIcon() = default;
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;
    ~TrayIcon() { remove(); }

    // Icon id 1; mouse events arrive at `owner` as `callbackMessage` with the mouse
    // message in lParam.
    bool add(HWND owner, UINT callbackMessage, HICON icon, std::wstring_view tip) noexcept;
    bool showBalloon(std::wstring_view title, std::wstring_view text) noexcept;
    void remove() noexcept;

    bool isAdded() const noexcept { return added_; }

private:
    HWND owner_ = nullptr;
    bool added_ = false;
};

} // namespace corvandell::win
