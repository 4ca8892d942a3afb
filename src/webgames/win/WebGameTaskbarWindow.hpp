// The taskbar button of a browser game. The kiosk browser would otherwise group under the
// browser's own button with the browser's icon; this small window, minimised and never
// activated, carries the game's name, its icon and an application user model id of its
// own ("Corvandell.WebGame." + the game key), so the game shows as itself.
//
// It lives while the game is tracked: the main window destroys it when tracking ends.
// Closing it from the taskbar asks the main window to stop the game.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"

#include <string>

namespace corvandell::win {

// The messages the window sends its main window.
struct TaskbarNotices {
    HWND mainWindow = nullptr;
    UINT stopMessage = 0;   // posted when the user closes the button
    UINT closedMessage = 0; // posted as the window ends, wParam `closedKind`, lParam its handle
    WPARAM closedKind = 0;
};

class WebGameTaskbarWindow final : public Window {
public:
    static constexpr wchar_t kClassName[] = L"CorvandellWebGameTaskbar";

    // Creates the window and shows it minimised without activating it; null on failure.
    // The window takes the icon (null: the class's).
    static WebGameTaskbarWindow* open(HINSTANCE instance, const std::wstring& title,
                                      const std::string& gameKey, UniqueIcon icon, TaskbarNotices notices);

    static std::wstring appUserModelIdFor(const std::string& gameKey);
    // Whether the shell took the id (a shell without taskbar identities refuses it).
    bool hasAppUserModelId() const noexcept { return hasAppUserModelId_; }

private:
    WebGameTaskbarWindow(UniqueIcon icon, TaskbarNotices notices)
        : icon_(std::move(icon)), notices_(notices) {}
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept override;
    void onFinalMessage() noexcept override { delete this; }
    bool setAppUserModelId(const std::wstring& id) noexcept;

    UniqueIcon icon_;
    TaskbarNotices notices_;
    bool hasAppUserModelId_ = false;
};

} // namespace corvandell::win
