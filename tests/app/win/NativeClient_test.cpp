// End to end: the real corvandell.exe as Windows users meet it. Without a session it starts
// at the sign-in window; a second start hands over to the running client whatever it is doing;
// signed in to the stand-in it lists the demo user's seeded library, and at 150% (LogPixels
// 144, read by Wine when a process starts) it is laid out one and a half times as large.
//
// Pictures of the main window at 100% and 150%, against the stand-in's demo library, taken
// when a folder is given (the test runs either way):
//   CORVANDELL_SCREENSHOTS=$PWD/build/screenshots scripts/wine-session ctest --preset windows -R NativeClient
#include <windows.h>

#include <commctrl.h>

#include "app/SettingsFile.hpp"
#include "app/win/Messages.hpp"
#include "auth/win/SignInWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/win/ClientFolders.hpp"
#include "support/win/LinuxSide.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

// A loopback port nobody listens on: the client must never reach out.
constexpr const char* kNoSession = "{\"apiBaseUrl\":\"http://127.0.0.1:9\"}";

TEST(NativeClient, ASecondStartWhileTheFirstIsSigningInBringsTheSignInWindowBackAndClosingItEndsTheClient) {
    const test::ClientFolders user;
    user.writeDataFile("settings.json", kNoSession);
    const auto first = user.start();
    HWND signIn = first->waitForSignInWindow(30000);
    ASSERT_NE(signIn, nullptr) << "without a session the sign-in window comes first";
    EXPECT_EQ(test::windowTextOf(GetDlgItem(signIn, signin::DeviceKey)), L"Sign in with this device's key");
    // There is no main window yet: the request must still reach the client.
    // Again until it holds: the client may still be inside its own first ShowWindow.
    ASSERT_TRUE(test::waitUntil(
        [&] {
            ShowWindow(signIn, SW_MINIMIZE);
            Sleep(100);
            return IsIconic(signIn) != FALSE;
        },
        5000));

    EXPECT_EQ(user.start()->waitForExit(20000), 0u) << "the second client did not step aside";
    EXPECT_TRUE(test::waitUntil([&] { return !IsIconic(signIn) && IsWindowVisible(signIn); }, 5000))
        << "the sign-in window stayed minimised";
    PostMessageW(signIn, WM_CLOSE, 0, 0);
    EXPECT_EQ(first->waitForExit(20000), 0u) << "closing the sign-in window ends the client";
    EXPECT_EQ(parseSettings(user.readDataFile("settings.json"), {}).bearerToken, "");
}

// Sets the dots per inch Wine gives processes started from now on, and puts back what was
// there before.
class LogPixels {
public:
    explicit LogPixels(DWORD dpi) {
        DWORD value = 0;
        DWORD size = sizeof(value);
        if (RegGetValueW(HKEY_CURRENT_USER, kKey, L"LogPixels", RRF_RT_REG_DWORD, nullptr, &value, &size) ==
            ERROR_SUCCESS) {
            previous_ = value;
        }
        RegSetKeyValueW(HKEY_CURRENT_USER, kKey, L"LogPixels", REG_DWORD, &dpi, sizeof(dpi));
    }
    ~LogPixels() {
        if (previous_) {
            RegSetKeyValueW(HKEY_CURRENT_USER, kKey, L"LogPixels", REG_DWORD, &*previous_, sizeof(DWORD));
        } else {
            RegDeleteKeyValueW(HKEY_CURRENT_USER, kKey, L"LogPixels");
        }
    }
    LogPixels(const LogPixels&) = delete;
    LogPixels& operator=(const LogPixels&) = delete;

private:
    static constexpr const wchar_t* kKey = L"Control Panel\\Desktop";
    std::optional<DWORD> previous_;
};

std::pair<LONG, LONG> sizeOf(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void saveScreenshot(HWND window, const std::string& name) {
    const char* folder = std::getenv("CORVANDELL_SCREENSHOTS");
    if (folder == nullptr || *folder == '\0') {
        return;
    }
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    Sleep(500); // the client paints on its own thread
    RECT rect{};
    GetWindowRect(window, &rect);
    const std::string geometry = std::to_string(rect.right - rect.left) + "x" +
                                 std::to_string(rect.bottom - rect.top) + "+" + std::to_string(rect.left) +
                                 "+" + std::to_string(rect.top);
    EXPECT_TRUE(test::runLinuxShell("mkdir -p '" + std::string(folder) + "' && import -window root -crop " +
                                    geometry + " +repage '" + folder + "/" + name + ".png'"));
}

TEST(NativeClient, TheSeededLibraryFillsTheListAndAt150PercentTheWindowIsOneAndAHalfTimesAsLarge) {
    // Windows shows a window of a DPI-aware process to a DPI-unaware one at 96 dots per
    // inch, sizes included; this thread must see the pixels as they are.
    const DPI_AWARENESS_CONTEXT previous =
        SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    const struct {
        DWORD dpi;
        std::pair<LONG, LONG> refresh;
        std::pair<LONG, LONG> search;
        LONG statusHeight;
    } cases[] = {{96, {90, 30}, {260, 30}, 20}, {144, {135, 45}, {390, 45}, 30}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.dpi);
        const LogPixels pixels(c.dpi);
        const test::ClientFolders user;
        Settings settings = signedInSettings("demo");
        settings.refreshToken.clear(); // a stored session goes straight to the library
        user.writeDataFile("settings.json", formatSettings(settings));
        const auto client = user.start();
        HWND window = client->waitForWindow(30000);
        ASSERT_NE(window, nullptr) << "the client's main window never appeared";
        // Measured once the window has laid itself out and filled the list.
        EXPECT_TRUE(test::waitForStatusLine(window, L"Library refreshed.", 30000))
            << "status: " << narrow(test::statusLineOf(window));
        EXPECT_EQ(test::statusLineOf(window), L"Library refreshed. 3 GitHub browser games available.");
        // 30 Windows titles of the catalogue and the three shared browser games; the first row
        // by name chosen with the keyboard, as a user would.
        HWND list = GetDlgItem(window, command::List);
        EXPECT_EQ(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0), 33);
        PostMessageW(list, WM_KEYDOWN, VK_HOME, 0);
        PostMessageW(list, WM_KEYUP, VK_HOME, 0xC0000001);
        const std::wstring firstRow =
            L"Cinder Run\r\n\r\nSprint through a burning city in short roguelite runs";
        EXPECT_TRUE(test::waitUntil(
            [&] { return test::windowTextOf(GetDlgItem(window, control::Details)).starts_with(firstRow); },
            10000));
        EXPECT_EQ(test::windowTextOf(GetDlgItem(window, command::Launch)), L"Install");
        // Without the manifest's awareness Windows would stretch a 96-dpi window instead.
        EXPECT_EQ(GetAwarenessFromDpiAwarenessContext(GetWindowDpiAwarenessContext(window)),
                  DPI_AWARENESS_PER_MONITOR_AWARE);
        EXPECT_EQ(sizeOf(GetDlgItem(window, command::Refresh)), c.refresh);
        EXPECT_EQ(sizeOf(GetDlgItem(window, command::Search)), c.search);
        EXPECT_EQ(sizeOf(GetDlgItem(window, control::Status)).second, c.statusHeight);
        // The same 820 x 640 at 96 dots per inch in both pictures, so they compare.
        RECT frame{0, 0, MulDiv(820, static_cast<int>(c.dpi), 96), MulDiv(640, static_cast<int>(c.dpi), 96)};
        AdjustWindowRectExForDpi(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0, c.dpi);
        SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top, SWP_NOZORDER);
        saveScreenshot(window, "main-window-" + std::to_string(c.dpi * 100 / 96) + "-percent");
        test::exitFromTrayMenu(*client, window);
    }
    SetThreadDpiAwarenessContext(previous);
}

// Run by tests/support/installer-test inside the fresh Wine prefix it installed the client
// into, never by the suite itself: CORVANDELL_INSTALLED_CLIENT names the installed exe.
TEST(InstalledClient, DISABLED_StartsFromItsInstallFolderAndExitsCleanly) {
    const wchar_t* installed = _wgetenv(L"CORVANDELL_INSTALLED_CLIENT");
    const wchar_t* appData = _wgetenv(L"APPDATA");
    const wchar_t* localAppData = _wgetenv(L"LOCALAPPDATA");
    ASSERT_TRUE(installed != nullptr && appData != nullptr && localAppData != nullptr);
    test::ClientUnderTest client(appData, localAppData, fs::path(installed).parent_path(), -1, installed);
    ASSERT_TRUE(client.isStarted()) << "error " << GetLastError();
    HWND window = client.waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the installed client's main window never appeared";
    test::exitFromTrayMenu(client, window);
}

} // namespace
} // namespace corvandell::win
