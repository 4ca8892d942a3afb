// Shift+Tab in the main window: it opens the overlay only while a game is tracked, names
// the game (or says "In game"), and closes it on the next press; the main window forgets
// the overlay once it has ended, however it ended.
#include <windows.h>

#include "app/win/MainWindow.hpp"
#include "app/win/OverlayWindow.hpp"
#include "support/TempFolder.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/SocialUsers.hpp"

#include <gtest/gtest.h>

#include <memory>

namespace corvandell::win {
namespace {

TEST(MainWindowOverlay, TheHotkeyTogglesTheOverlayOnlyWhileAGameIsTracked) {
    test::TempFolder folder;
    const DataPaths paths{folder.path() / "data", folder.path() / "games"};
    Settings settings = defaultSettings(paths.defaultLibraryFolder);
    const Settings signedIn = signedInSettings("demo");
    settings.apiBaseUrl = signedIn.apiBaseUrl;
    settings.bearerToken = signedIn.bearerToken;
    MainWindowJobs jobs;
    jobs.makeRefresh = [](const std::string&) { return [] { return LibraryResult{true, {}, {}}; }; };
    auto window = std::make_unique<MainWindow>(GetModuleHandleW(nullptr), paths, settings,
                                               settingsFileIn(paths.dataFolder), std::move(jobs));
    ASSERT_TRUE(window->create(SW_HIDE));
    const auto pressHotkey = [&] {
        SendMessageW(window->hwnd(), WM_HOTKEY, kOverlayHotkeyId, MAKELPARAM(MOD_SHIFT, VK_TAB));
    };
    const auto overlays = [] { return test::windowsOfClass(OverlayWindow::kClassName).size(); };

    pressHotkey();
    EXPECT_EQ(window->childWindow(ChildKind::Overlay), nullptr);
    EXPECT_EQ(overlays(), 0u) << "no game, no overlay";

    const struct {
        const char* title;
        const wchar_t* shown;
    } games[] = {{"Ember Keep", L"Ember Keep"}, {"", L"In game"}};
    for (const auto& game : games) {
        window->setTrackedGameForTest(TrackedGame{"t1", 2, game.title, GetTickCount64() - 61'000});
        pressHotkey();
        HWND overlay = window->childWindow(ChildKind::Overlay);
        ASSERT_NE(overlay, nullptr);
        ASSERT_EQ(overlays(), 1u);
        EXPECT_EQ(GetWindow(overlay, GW_OWNER), window->hwnd());
        const OverlayWindow* shown = OverlayWindow::fromHandle(overlay);
        ASSERT_NE(shown, nullptr);
        EXPECT_EQ(shown->gameTitle(), game.shown);
        EXPECT_EQ(shown->sessionText().rfind(L"Session time 0:01:", 0), 0u) << "from the launch tick";

        pressHotkey();
        EXPECT_FALSE(IsWindow(overlay));
        EXPECT_EQ(overlays(), 0u);
        EXPECT_TRUE(
            test::pumpUntil([&] { return window->childWindow(ChildKind::Overlay) == nullptr; }, 2000));
    }

    // Ended from inside (Esc): the next press opens a new one rather than closing a ghost.
    pressHotkey();
    HWND overlay = window->childWindow(ChildKind::Overlay);
    ASSERT_NE(overlay, nullptr);
    PostMessageW(overlay, WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_TRUE(test::pumpUntil([&] { return window->childWindow(ChildKind::Overlay) == nullptr; }, 2000));
    EXPECT_EQ(overlays(), 0u);

    // The game ended: the overlay does not open again.
    window->setTrackedGameForTest(TrackedGame{});
    pressHotkey();
    EXPECT_EQ(overlays(), 0u);

    // One left open goes with the main window.
    window->setTrackedGameForTest(TrackedGame{"t1", 2, "Ember Keep", GetTickCount64()});
    pressHotkey();
    overlay = window->childWindow(ChildKind::Overlay);
    ASSERT_NE(overlay, nullptr);
    DestroyWindow(window->hwnd());
    EXPECT_FALSE(IsWindow(overlay));
}

} // namespace
} // namespace corvandell::win
