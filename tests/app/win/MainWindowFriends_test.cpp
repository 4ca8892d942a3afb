// The main window's Friends command: it opens one friends window, owned by the main window
// so it closes with it, brings that one back on the next press, and forgets it when the
// friends window reports its end.
#include <windows.h>

#include "app/win/MainWindow.hpp"
#include "support/TempFolder.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <memory>

namespace corvandell::win {
namespace {

TEST(MainWindowFriends, TheFriendsButtonOpensOneFriendsWindowThatReportsItsEnd) {
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
    const auto pressFriends = [&] {
        SendMessageW(window->hwnd(), WM_COMMAND, MAKEWPARAM(command::Friends, BN_CLICKED), 0);
    };

    pressFriends();
    HWND friends = window->childWindow(ChildKind::Friends);
    ASSERT_NE(friends, nullptr);
    EXPECT_EQ(GetWindow(friends, GW_OWNER), window->hwnd());
    pressFriends();
    EXPECT_EQ(window->childWindow(ChildKind::Friends), friends);

    DestroyWindow(friends);
    EXPECT_TRUE(test::pumpUntil([&] { return window->childWindow(ChildKind::Friends) == nullptr; }, 2000));
    pressFriends();
    friends = window->childWindow(ChildKind::Friends);
    ASSERT_NE(friends, nullptr);
    EXPECT_TRUE(IsWindow(friends));

    // The main window takes its friends window with it.
    DestroyWindow(window->hwnd());
    EXPECT_FALSE(IsWindow(friends));
}

} // namespace
} // namespace corvandell::win
