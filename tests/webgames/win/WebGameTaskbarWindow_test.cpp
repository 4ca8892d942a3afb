// The browser game's taskbar window as the shell sees it: its class and styles, shown
// minimised with an application user model id of its own, and the messages it sends its
// main window.
#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "webgames/win/WebGameTaskbarWindow.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace corvandell::win {
namespace {

constexpr UINT kStop = WM_APP + 1;
constexpr UINT kClosed = WM_APP + 2;

// A plain window standing in for the main window, to receive what the taskbar window posts.
class Receiver {
public:
    Receiver()
        : hwnd_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr)) {}
    ~Receiver() { DestroyWindow(hwnd_); }
    HWND hwnd() const { return hwnd_; }
    // The next message of this kind posted to it, within a second. Only its own messages are
    // taken from the queue, so nothing else dispatches them first.
    std::optional<MSG> take(UINT message) {
        const ULONGLONG end = GetTickCount64() + 1000;
        MSG taken{};
        while (PeekMessageW(&taken, hwnd_, message, message, PM_REMOVE) == FALSE) {
            if (GetTickCount64() >= end) {
                return std::nullopt;
            }
            Sleep(10);
        }
        return taken;
    }

private:
    HWND hwnd_;
};

TEST(WebGameTaskbarWindow, IsAMinimisedAppWindowWithTheGamesNameAndOwnIdentity) {
    Receiver main;
    WebGameTaskbarWindow* window =
        WebGameTaskbarWindow::open(GetModuleHandleW(nullptr), L"Star Game", "github:7",
                                   UniqueIcon(CopyIcon(LoadIconW(nullptr, IDI_APPLICATION))),
                                   TaskbarNotices{main.hwnd(), kStop, kClosed, 4});
    ASSERT_NE(window, nullptr);
    HWND hwnd = window->hwnd();
    EXPECT_EQ(FindWindowW(L"CorvandellWebGameTaskbar", L"Star Game"), hwnd);
    EXPECT_EQ(GetParent(hwnd), nullptr);
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(hwnd, GWL_STYLE));
    const auto exStyle = static_cast<DWORD>(GetWindowLongPtrW(hwnd, GWL_EXSTYLE));
    EXPECT_EQ(style & WS_OVERLAPPEDWINDOW, static_cast<DWORD>(WS_OVERLAPPEDWINDOW));
    EXPECT_NE(exStyle & WS_EX_APPWINDOW, 0u);
    EXPECT_TRUE(IsWindowVisible(hwnd));
    EXPECT_TRUE(IsIconic(hwnd));
    EXPECT_NE(GetForegroundWindow(), hwnd);
    EXPECT_NE(SendMessageW(hwnd, WM_GETICON, ICON_BIG, 0), 0);
    // Wine cannot read the id back from the property store (E_NOTIMPL), so only the setting is seen.
    EXPECT_TRUE(window->hasAppUserModelId()) << "the shell refused the id";

    // Restoring it from the taskbar leaves it minimised; closing it asks for the game to stop.
    SendMessageW(hwnd, WM_SYSCOMMAND, SC_RESTORE, 0);
    EXPECT_TRUE(IsIconic(hwnd));
    SendMessageW(hwnd, WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindow(hwnd)) << "it ends with the game, not before";
    EXPECT_TRUE(main.take(kStop));

    DestroyWindow(hwnd);
    const auto closed = main.take(kClosed);
    ASSERT_TRUE(closed);
    EXPECT_EQ(closed->wParam, 4u);
    EXPECT_EQ(reinterpret_cast<HWND>(closed->lParam), hwnd);
    EXPECT_FALSE(IsWindow(hwnd));
}

} // namespace
} // namespace corvandell::win
