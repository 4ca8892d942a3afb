// A window moved to a monitor with other dots per inch: Windows sends WM_DPICHANGED with
// the rectangle it suggests, and the window must take exactly that rectangle and lay its
// controls out again for the new size.
#include <windows.h>

#include "social/win/FriendsWindow.hpp"
#include "social/win/SocialIds.hpp"
#include "support/ScriptedService.hpp"
#include "support/win/MainWindowUnderTest.hpp"

#include <gtest/gtest.h>

#include <memory>

namespace corvandell::win {
namespace {

RECT windowRect(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return rect;
}

// A child's rectangle in its parent's client coordinates.
RECT childRect(HWND parent, HWND child) {
    RECT rect = windowRect(child);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

bool operator==(const RECT& a, const RECT& b) {
    return EqualRect(&a, &b) != FALSE;
}

TEST(DpiChange, TheMainWindowTakesTheSuggestedRectangleAndLaysItselfOutAgain) {
    test::MainWindowUnderTest w;
    w.answerRefreshes(LibraryResult{.succeeded = true});
    w.jobs.api = std::make_shared<test::ScriptedService>();
    ASSERT_TRUE(w.open(SW_SHOWNORMAL));
    MainWindow& window = *w.window;
    w.waitForStatus(L"Library refreshed.", 5000);

    const RECT suggested{40, 30, 40 + 1000, 30 + 700};
    SendMessageW(window.hwnd(), WM_DPICHANGED, MAKEWPARAM(96, 96), reinterpret_cast<LPARAM>(&suggested));
    EXPECT_TRUE(windowRect(window.hwnd()) == suggested);
    RECT client{};
    GetClientRect(window.hwnd(), &client);
    // The status line spans the client area less its margins, whatever the new size.
    const RECT status = childRect(window.hwnd(), window.control(control::Status));
    EXPECT_EQ(status.right, client.right - 12);
    EXPECT_EQ(status.bottom, client.bottom - 4);
    EXPECT_NE(SendMessageW(window.control(control::Status), WM_GETFONT, 0, 0), 0)
        << "the controls lost their font";
}

TEST(DpiChange, TheFriendsWindowTakesTheSuggestedRectangleToo) {
    Settings settings;
    settings.apiBaseUrl = "http://127.0.0.1:9";
    FriendsWindow* friends =
        FriendsWindow::open(GetModuleHandleW(nullptr), nullptr, &settings, SocialLook{}, {}, SW_SHOWNORMAL);
    ASSERT_NE(friends, nullptr);
    HWND hwnd = friends->hwnd();
    const RECT suggested{100, 80, 100 + 420, 80 + 600};
    SendMessageW(hwnd, WM_DPICHANGED, MAKEWPARAM(96, 96), reinterpret_cast<LPARAM>(&suggested));
    EXPECT_TRUE(windowRect(hwnd) == suggested);
    RECT client{};
    GetClientRect(hwnd, &client);
    const RECT status = childRect(hwnd, friends->control(social::kFriendsStatus));
    EXPECT_EQ(status.right, client.right - 12);
    DestroyWindow(hwnd);
    test::pumpUntil([hwnd] { return !IsWindow(hwnd); }, 5000);
}

} // namespace
} // namespace corvandell::win
