// By hand only (disabled in ctest): the Add Game dialog in its three states, in the dark
// skin as the client opens it, saved as BMP files named for the screen's DPI into
// CORVANDELL_SCREENSHOT_DIR: editing with the linked-login line, submitting, and a
// repository someone else shared first with Take Ownership shown.
// scripts/addgame-screenshots runs it at 100% and at 150% and turns them into PNGs.
#include <windows.h>

#include "api/win/WinHttpApiClient.hpp"
#include "app/Skins.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/WindowPicture.hpp"
#include "webgames/win/AddGameDialog.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <exception>
#include <string>

namespace corvandell::win {
namespace {

// Painted now, without handing the dialog any result that is waiting for it.
void paintNow(HWND window) {
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW | RDW_FRAME);
}

TEST(AddGameScreenshots, DISABLED_TheThreeStatesAtTheScreensDpi) {
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    const wchar_t* folder = _wgetenv(L"CORVANDELL_SCREENSHOT_DIR");
    ASSERT_NE(folder, nullptr) << "set CORVANDELL_SCREENSHOT_DIR";
    applyTheme(chooseSkin(builtInSkins(), "dark"));
    const std::string suffix = std::to_string(GetTickCount64() % 100000);

    // Someone shared the repository first; the user has linked another login.
    Settings early = signedInSettings("early-" + suffix);
    try {
        WinHttpApiClient(&early).submitRepositoryGame("https://github.com/pixel-works/star-hopper",
                                                      "Star Hopper", "index.html");
    } catch (const std::exception&) {
        // Shared already by the run at the other DPI.
    }
    const std::string username = "shots-" + suffix;
    Settings settings = signedInSettings(username);
    callStandIn("POST", "/__test/github-link", R"({"username":")" + username + R"(","login":"octo-player"})");

    const AddGameLook look{&themeHandleMessage, &themeTrackButtonHover, nullptr, nullptr};
    AddGameDialog dialog(GetModuleHandleW(nullptr), nullptr, std::make_shared<WinHttpApiClient>(&settings),
                         RepositoryHost{}, look);
    ASSERT_TRUE(dialog.create(SW_SHOW));
    SetWindowPos(dialog.hwnd(), HWND_TOP, 20, 20, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    ASSERT_TRUE(test::pumpUntil([&] { return dialog.hasLinkedLogin(); }, 10000));
    const std::wstring dpi = std::to_wstring(MulDiv(static_cast<int>(windowDpi(dialog.hwnd())), 100, 96));
    const auto save = [&](const wchar_t* state) {
        const std::filesystem::path file =
            std::filesystem::path(folder) / (L"addgame-" + std::wstring(state) + L"-" + dpi + L".bmp");
        EXPECT_TRUE(test::saveWindowBmp(dialog.hwnd(), file));
    };

    SetWindowTextW(dialog.control(addgame::Address), L"https://github.com/pixel-works/star-hopper");
    SetWindowTextW(dialog.control(addgame::Name), L"Star Hopper");
    SetWindowTextW(dialog.control(addgame::Launch), L"game/index.html");
    test::pumpUntil([] { return false; }, 300);
    paintNow(dialog.hwnd());
    save(L"editing");

    SendMessageW(dialog.hwnd(), WM_COMMAND, MAKEWPARAM(addgame::AddGame, BN_CLICKED),
                 reinterpret_cast<LPARAM>(dialog.control(addgame::AddGame)));
    paintNow(dialog.hwnd());
    save(L"submitting");

    ASSERT_TRUE(test::pumpUntil([&] { return dialog.state() == AddGameDialog::State::Editing; }, 10000));
    test::pumpUntil([] { return false; }, 300);
    paintNow(dialog.hwnd());
    save(L"already-shared");
}

} // namespace
} // namespace corvandell::win
