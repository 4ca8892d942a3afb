// By hand only (disabled in ctest): a browser game's options dialog in the dark skin, with a
// few browsers listed and one of them chosen, saved as a BMP file named for the screen's
// DPI into CORVANDELL_SCREENSHOT_DIR. scripts/webgame-options-screenshot runs it at 100%
// and at 150% and turns it into PNGs.
#include <windows.h>

#include "app/Skins.hpp"
#include "app/win/DialogKeys.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/WindowPicture.hpp"
#include "webgames/win/WebGameOptionsDialog.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace corvandell::win {
namespace {

TEST(WebGameOptionsScreenshots, DISABLED_TheBrowserChoiceAtTheScreensDpi) {
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    const wchar_t* folder = _wgetenv(L"CORVANDELL_SCREENSHOT_DIR");
    ASSERT_NE(folder, nullptr) << "set CORVANDELL_SCREENSHOT_DIR";
    applyTheme(chooseSkin(builtInSkins(), "dark"));
    Settings settings;
    settings.webGameBrowsers["github:7"] =
        "\"C:\\Program Files\\Mozilla Firefox\\firefox.exe\" -osint -url \"%1\"";
    WebGameOptionsHost host;
    host.settings = &settings;
    host.gameKey = "github:7";
    host.gameName = L"Starfall Arcade: The Long Night Edition";
    host.browsers = {
        {"Google Chrome", "\"C:\\Program Files\\Google\\Chrome\\Application\\chrome.exe\""},
        {"Microsoft Edge", "\"C:\\Program Files (x86)\\Microsoft\\Edge\\Application\\msedge.exe\""},
        {"Mozilla Firefox", "\"C:\\Program Files\\Mozilla Firefox\\firefox.exe\" -osint -url \"%1\""},
    };
    host.look = WebGameOptionsLook{&themeHandleMessage, &themeTrackButtonHover, &addDialogKeys,
                                   &removeDialogKeys, &dialogNextControl};
    WebGameOptionsDialog* dialog = WebGameOptionsDialog::open(GetModuleHandleW(nullptr), std::move(host));
    ASSERT_NE(dialog, nullptr);
    HWND hwnd = dialog->hwnd();
    SetWindowPos(hwnd, HWND_TOP, 20, 20, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    RedrawWindow(hwnd, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW | RDW_FRAME);
    test::pumpUntil([] { return false; }, 500);
    const std::wstring dpi = std::to_wstring(MulDiv(static_cast<int>(windowDpi(hwnd)), 100, 96));
    EXPECT_TRUE(
        test::saveWindowBmp(hwnd, std::filesystem::path(folder) / (L"webgame-options-" + dpi + L".bmp")));
    DestroyWindow(hwnd);
}

} // namespace
} // namespace corvandell::win
