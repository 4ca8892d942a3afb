// By hand only (disabled in ctest): every tab of the options dialog, and the crop dialog, as
// the stand-in's demo user sees them in the dark skin, saved as BMP files named for the
// screen's DPI into CORVANDELL_SCREENSHOT_DIR. scripts/options-screenshots runs it at 100%
// and at 150% and turns them into PNGs.
#include <windows.h>

#include <commctrl.h>

#include "api/win/WinHttpApiClient.hpp"
#include "app/SettingsFile.hpp"
#include "app/Skins.hpp"
#include "app/win/CropDialog.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/ProfilePicture.hpp"
#include "base/win/Dpi.hpp"
#include "support/TempFolder.hpp"
#include "support/TestPictures.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/WindowPicture.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>

namespace corvandell::win {
namespace {

using namespace options;

void settle(HWND window) {
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW | RDW_FRAME);
    test::pumpUntil([] { return false; }, 500);
}

TEST(OptionsScreenshots, DISABLED_EveryTabAndTheCropDialogAtTheScreensDpi) {
    // As the client's manifest does: layouts follow the monitor's DPI instead of being scaled.
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    const wchar_t* folder = _wgetenv(L"CORVANDELL_SCREENSHOT_DIR");
    ASSERT_NE(folder, nullptr) << "set CORVANDELL_SCREENSHOT_DIR";
    applyTheme(chooseSkin(builtInSkins(), "dark"));
    const test::TempFolder data;
    Settings settings = signedInSettings("demo");
    settings.libraryPath = L"C:\\Games\\Corvandell";
    settings.downloadLimitKbps = 2048;
    GuardedFile file(data.path() / "settings.json", kMaxSettingsBytes);
    data.writeFile("data/skins/neon.json", R"({"id":"neon","name":"Neon Night","accent":"#ff3fa4"})");

    OptionsHost host;
    host.settings = &settings;
    host.paths = {data.path() / "data", data.path() / "games"};
    host.saveSettings = [&] {
        saveSettings(file, settings);
        return std::string();
    };
    host.api = std::make_shared<WinHttpApiClient>(&settings);
    OptionsDialog* dialog = OptionsDialog::open(GetModuleHandleW(nullptr), std::move(host), Tab::Connection);
    ASSERT_NE(dialog, nullptr);
    SetWindowPos(dialog->hwnd(), HWND_TOP, 20, 20, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    ASSERT_TRUE(test::pumpUntil([&] { return IsWindowEnabled(dialog->control(kNickname)) != FALSE; }, 10000));
    const std::wstring dpi = std::to_wstring(MulDiv(static_cast<int>(windowDpi(dialog->hwnd())), 100, 96));

    constexpr std::array<const wchar_t*, kTabCount> kNames{L"connection", L"downloads", L"voice",
                                                           L"appearance", L"profile"};
    for (int tab = 0; tab < kTabCount; ++tab) {
        dialog->showTab(static_cast<Tab>(tab));
        SetWindowTextW(dialog->control(kDownloadLimit), L"2048");
        SetWindowTextW(dialog->control(kMessageLine), L"");
        if (tab == static_cast<int>(Tab::Downloads)) {
            // How a refused entry looks.
            SetWindowTextW(dialog->control(kDownloadLimit), L"fast");
            dialog->apply();
        } else if (tab == static_cast<int>(Tab::Appearance)) {
            SendMessageW(dialog->hwnd(), WM_COMMAND, MAKEWPARAM(kReloadSkins, BN_CLICKED), 0);
        }
        settle(dialog->hwnd());
        const std::wstring name =
            std::wstring(L"options-") + kNames[static_cast<size_t>(tab)] + L"-" + dpi + L".bmp";
        EXPECT_TRUE(test::saveWindowBmp(dialog->hwnd(), std::filesystem::path(folder) / name));
    }

    const std::filesystem::path pictureFile =
        test::writeTwoColourBmp(data.path() / "picture.bmp", 600, 400, 0xE06C3C, 0x3C8CE0);
    std::string error;
    const auto picture = ProfilePicture::load(pictureFile, error);
    ASSERT_NE(picture, nullptr) << error;
    CropDialog crop(GetModuleHandleW(nullptr), dialog->hwnd(), *picture);
    ASSERT_TRUE(crop.create(SW_SHOW));
    settle(crop.hwnd());
    EXPECT_TRUE(
        test::saveWindowBmp(crop.hwnd(), std::filesystem::path(folder) / (L"options-crop-" + dpi + L".bmp")));
    SendMessageW(crop.hwnd(), WM_COMMAND, IDCANCEL, 0);
    DestroyWindow(dialog->hwnd());
}

} // namespace
} // namespace corvandell::win
