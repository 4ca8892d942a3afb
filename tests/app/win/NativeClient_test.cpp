// End to end: the real corvandell.exe as Windows users meet it. A second start hands over
// to the running client whatever it is doing, and at 150% (LogPixels 144, read by Wine when
// a process starts) the main window is laid out one and a half times as large.
//
// Pictures of the main window at 100% and 150%, against the stand-in's demo library, taken
// when a folder is given (the test runs either way):
//   CORVANDELL_SCREENSHOTS=$PWD/build/screenshots scripts/wine-session ctest --preset windows -R NativeClient
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "app/win/Messages.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ClientUnderTest.hpp"
#include "support/win/LinuxSide.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

// The service address is a loopback port nobody listens on: these clients must never reach
// out, and a refresh that fails at once is all they need.
constexpr const char* kSignedInOffline =
    "{\"bearerToken\":\"cva_of_the_user\",\"apiBaseUrl\":\"http://127.0.0.1:9\"}";
constexpr const char* kNoSession = "{\"apiBaseUrl\":\"http://127.0.0.1:9\"}";

class NativeClientTest : public ::testing::Test {
protected:
    fs::path appData() const { return folder_.path() / "Roaming"; }
    fs::path localAppData() const { return folder_.path() / "Local"; }
    void writeSettings(const std::string& bytes) const {
        folder_.writeFile(fs::path("Roaming") / "Corvandell" / "settings.json", bytes);
    }
    std::unique_ptr<test::ClientUnderTest> start(int showCommand = -1) const {
        return std::make_unique<test::ClientUnderTest>(appData(), localAppData(), folder_.path(),
                                                       showCommand);
    }

    test::TempFolder folder_;
};

bool waitUntil(const std::function<bool()>& done, DWORD timeoutMs) {
    const ULONGLONG deadline = GetTickCount64() + timeoutMs;
    while (!done()) {
        if (GetTickCount64() >= deadline) {
            return false;
        }
        Sleep(20);
    }
    return true;
}

// The message-only window a client raises as soon as it holds its data folder.
HWND beaconOf(DWORD processId) {
    HWND beacon = nullptr;
    while ((beacon = FindWindowExW(HWND_MESSAGE, beacon, L"CorvandellInstanceBeacon", nullptr)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(beacon, &owner);
        if (owner == processId) {
            return beacon;
        }
    }
    return nullptr;
}

TEST_F(NativeClientTest, ASecondStartWhileTheFirstIsSigningInBringsTheSignInWindowBackAndExits0) {
    writeSettings(kNoSession);
    const auto first = start();
    HWND signIn = first->waitForSignInWindow(30000);
    ASSERT_NE(signIn, nullptr) << "the sign-in window never appeared";
    // There is no main window yet: the request must still reach the client.
    // Again until it holds: the client may still be inside its own first ShowWindow.
    ASSERT_TRUE(waitUntil(
        [&] {
            ShowWindow(signIn, SW_MINIMIZE);
            Sleep(100);
            return IsIconic(signIn) != FALSE;
        },
        5000));

    const auto second = start();
    EXPECT_EQ(second->waitForExit(20000), 0u) << "the second client did not step aside";
    EXPECT_TRUE(waitUntil([&] { return !IsIconic(signIn) && IsWindowVisible(signIn); }, 5000))
        << "the sign-in window stayed minimised";

    PostMessageW(signIn, WM_CLOSE, 0, 0);
    EXPECT_EQ(first->waitForExit(20000), 0u);
}

TEST_F(NativeClientTest, AClientStartedMinimisedComesForwardWhenStartedAgainAtOnce) {
    writeSettings(kSignedInOffline);
    // As a shortcut set to "Run: Minimised" starts it, then the user, impatient, again.
    const auto first = start(SW_SHOWMINNOACTIVE);
    ASSERT_TRUE(waitUntil([&] { return beaconOf(first->processId()) != nullptr; }, 30000))
        << "the client never claimed its data folder";
    const auto second = start();
    EXPECT_EQ(second->waitForExit(20000), 0u) << "the second client did not step aside";

    HWND window = first->waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the client's main window never appeared";
    EXPECT_TRUE(waitUntil([&] { return !IsIconic(window); }, 10000)) << "the main window stayed minimised";
    ASSERT_TRUE(test::chooseExitFromTrayMenu(window, first->processId())) << "no tray menu opened";
    EXPECT_EQ(first->waitForExit(20000), 0u);
    EXPECT_EQ(beaconOf(first->processId()), nullptr);
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

SIZE sizeOf(HWND window) {
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

struct Measured {
    bool isPerMonitorAware = false;
    SIZE refresh{};
    SIZE search{};
    SIZE status{};
};

Measured measureMainWindow(const test::TempFolder& folder, DWORD dpi) {
    const LogPixels pixels(dpi);
    const fs::path roaming = "Roaming" + std::to_string(dpi);
    Settings settings = signedInSettings("demo");
    settings.refreshToken.clear(); // a stored session goes straight to the library
    folder.writeFile(roaming / "Corvandell" / "settings.json", formatSettings(settings));

    test::ClientUnderTest client(folder.path() / roaming, folder.path() / "Local", folder.path());
    HWND window = client.waitForWindow(30000);
    if (window == nullptr) {
        ADD_FAILURE() << "the client's main window never appeared at " << dpi;
        return {};
    }
    // Measured once the window has laid itself out and filled the list.
    EXPECT_TRUE(test::waitForStatusLine(window, L"Library refreshed.", 30000))
        << "status: " << narrow(test::statusLineOf(window));
    Measured measured;
    measured.isPerMonitorAware = GetAwarenessFromDpiAwarenessContext(GetWindowDpiAwarenessContext(window)) ==
                                 DPI_AWARENESS_PER_MONITOR_AWARE;
    measured.refresh = sizeOf(GetDlgItem(window, command::Refresh));
    measured.search = sizeOf(GetDlgItem(window, command::Search));
    measured.status = sizeOf(GetDlgItem(window, control::Status));
    // The same 820 x 640 at 96 dots per inch in both pictures, so they compare.
    RECT frame{0, 0, MulDiv(820, static_cast<int>(dpi), 96), MulDiv(640, static_cast<int>(dpi), 96)};
    AdjustWindowRectExForDpi(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0, dpi);
    SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top, SWP_NOZORDER);
    saveScreenshot(window, "main-window-" + std::to_string(dpi * 100 / 96) + "-percent");
    EXPECT_TRUE(test::chooseExitFromTrayMenu(window, client.processId())) << "no tray menu opened";
    EXPECT_EQ(client.waitForExit(20000), 0u);
    return measured;
}

TEST_F(NativeClientTest, AtOneHundredFiftyPercentTheMainWindowIsLaidOutOneAndAHalfTimesAsLarge) {
    // Windows shows a window of a DPI-aware process to a DPI-unaware one at 96 dots per
    // inch, sizes included; this thread must see the pixels as they are.
    const DPI_AWARENESS_CONTEXT previous =
        SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    const Measured normal = measureMainWindow(folder_, 96);
    const Measured large = measureMainWindow(folder_, 144);
    // Without the manifest's awareness Windows would stretch a 96-dpi window instead.
    EXPECT_TRUE(normal.isPerMonitorAware);
    EXPECT_TRUE(large.isPerMonitorAware) << "the manifest's per-monitor awareness did not take";
    EXPECT_EQ(normal.refresh.cx, 90);
    EXPECT_EQ(normal.refresh.cy, 30);
    EXPECT_EQ(large.refresh.cx, 135);
    EXPECT_EQ(large.refresh.cy, 45);
    EXPECT_EQ(large.search.cx, 390);
    EXPECT_EQ(large.search.cy, 45);
    EXPECT_EQ(normal.status.cy, 20);
    EXPECT_EQ(large.status.cy, 30);
    SetThreadDpiAwarenessContext(previous);
}

} // namespace
} // namespace corvandell::win

namespace corvandell::win {
namespace {

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
    ASSERT_TRUE(test::chooseExitFromTrayMenu(window, client.processId())) << "no tray menu opened";
    EXPECT_EQ(client.waitForExit(20000), 0u);
}

} // namespace
} // namespace corvandell::win
