// Pictures of the sign-in window in each of its states, for a person to look at. Run by
// hand; without CORVANDELL_SCREENSHOTS (a Linux folder) the test skips:
//   CORVANDELL_SCREENSHOTS=$PWD/build/screenshots scripts/wine-session ctest --preset windows -R
//   SignInScreenshots
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "app/Skins.hpp"
#include "app/win/ThemeHook.hpp"
#include "auth/win/SignInWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/LinuxSide.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace corvandell::win {
namespace {

// Paints the window now and lets Wine hand the pixels to X, without dispatching anything
// posted, so a result on its way cannot change the state being pictured.
void paintToScreen(HWND window) {
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    for (int i = 0; i < 10; ++i) {
        MSG message{};
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        Sleep(30);
    }
}

// The window as it is on screen, through X, as a person would see it.
bool saveScreenshot(HWND window, const std::string& folder, const std::string& name) {
    if (!IsWindow(window)) {
        return false;
    }
    paintToScreen(window);
    RECT rect{};
    GetWindowRect(window, &rect);
    const std::string geometry = std::to_string(rect.right - rect.left) + "x" +
                                 std::to_string(rect.bottom - rect.top) + "+" + std::to_string(rect.left) +
                                 "+" + std::to_string(rect.top);
    return test::runLinuxShell("import -window root -crop " + geometry + " +repage '" + folder + "/" + name +
                               ".png'");
}

bool waitForStatus(const SignInWindow& window, const std::wstring& startingWith) {
    return test::pumpUntil([&] { return hwndText(window.control(signin::Status)).starts_with(startingWith); },
                           20000);
}

TEST(SignInScreenshots, EachStateOfTheWindow) {
    const char* folderVariable = std::getenv("CORVANDELL_SCREENSHOTS");
    if (folderVariable == nullptr || *folderVariable == '\0') {
        GTEST_SKIP() << "set CORVANDELL_SCREENSHOTS to a Linux folder to take the pictures";
    }
    const std::string folder = folderVariable;
    ASSERT_TRUE(test::runLinuxShell("mkdir -p '" + folder + "'"));
    applyTheme(chooseSkin(builtInSkins(), "dark"));
    const test::TempFolder data;
    Settings settings;
    settings.apiBaseUrl = serviceBaseUrl();
    ASSERT_FALSE(settings.apiBaseUrl.empty());
    auto open = [&] {
        SignInHooks hooks;
        hooks.paintHook = &themeHandleMessage;
        hooks.trackButtonHover = &themeTrackButtonHover;
        hooks.openBrowser = [](const std::wstring&) {};
        auto window = std::make_unique<SignInWindow>(GetModuleHandleW(nullptr), data.path(), settings, hooks);
        EXPECT_TRUE(window->create(SW_SHOWNORMAL));
        return window;
    };

    {
        auto window = open();
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-1-start"));
        SendMessageW(window->control(signin::Google), BM_CLICK, 0, 0);
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-2-browser"));
        SendMessageW(window->control(signin::DeviceKey), BM_CLICK, 0, 0);
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-3-key-checking"));
        ASSERT_TRUE(waitForStatus(*window, L"Key sign-in did not succeed: "));
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-4-key-not-linked"));
        const std::string email =
            "shots" + std::to_string(std::random_device()() % 100000) + "@corvandell.test";
        SetWindowTextW(window->control(signin::EmailEdit), widen(email).c_str());
        SendMessageW(window->control(signin::SendLink), BM_CLICK, 0, 0);
        ASSERT_TRUE(waitForStatus(*window, L"Verification email sent to "));
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-5-email-sent"));
        SetWindowTextW(window->control(signin::LinkEdit), L"not a link");
        SendMessageW(window->control(signin::Verify), BM_CLICK, 0, 0);
        ASSERT_TRUE(waitForStatus(*window, L"Verification failed: "));
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-6-verify-failed"));
        const Settings session = signedInSettings("shots");
        SetWindowTextW(window->control(signin::AddressEdit),
                       widen("http://127.0.0.1:38517/#access_token=" + session.bearerToken).c_str());
        SendMessageW(window->control(signin::UseUrl), BM_CLICK, 0, 0);
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-7-signed-in"));
    }
    {
        const Settings session = signedInSettings("shots");
        settings.refreshToken = session.refreshToken;
        auto window = open();
        EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-8-restoring"));
    }
    settings.refreshToken = "cvr_long_gone";
    auto window = open();
    ASSERT_TRUE(waitForStatus(*window, L"Could not restore your session"));
    EXPECT_TRUE(saveScreenshot(window->hwnd(), folder, "signin-9-restore-failed"));
}

} // namespace
} // namespace corvandell::win
