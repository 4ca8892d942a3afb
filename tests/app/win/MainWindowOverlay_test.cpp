// The main window's companion windows: Shift+Tab opens the overlay only while a game is
// tracked and closes it on the next press; the Friends button opens one friends window and
// brings that one back. Both are owned by the main window and forgotten once they end.
#include <windows.h>

#include "app/win/OverlayWindow.hpp"
#include "support/win/MainWindowUnderTest.hpp"
#include "support/win/SocialUsers.hpp"

#include <gtest/gtest.h>

namespace corvandell::win {
namespace {

class MainWindowChildren : public ::testing::Test {
protected:
    void SetUp() override {
        w_.signIn("demo");
        w_.answerRefreshes(LibraryResult{true, {}, {}});
        ASSERT_TRUE(w_.open());
    }
    bool waitForNo(ChildKind kind) {
        return test::pumpUntil([&] { return w_->childWindow(kind) == nullptr; }, 2000);
    }
    test::MainWindowUnderTest w_;
};

TEST_F(MainWindowChildren, TheHotkeyTogglesTheOverlayOnlyWhileAGameIsTracked) {
    const auto pressHotkey = [&] {
        SendMessageW(w_->hwnd(), WM_HOTKEY, kOverlayHotkeyId, MAKELPARAM(MOD_SHIFT, VK_TAB));
    };
    const auto overlays = [] { return test::windowsOfClass(OverlayWindow::kClassName).size(); };

    pressHotkey();
    EXPECT_EQ(w_->childWindow(ChildKind::Overlay), nullptr);
    EXPECT_EQ(overlays(), 0u) << "no game, no overlay";

    const struct {
        const char* title;
        const wchar_t* shown;
    } games[] = {{"Ember Keep", L"Ember Keep"}, {"", L"In game"}};
    for (const auto& game : games) {
        w_->setTrackedGameForTest(TrackedGame{"t1", 2, game.title, GetTickCount64() - 61'000});
        pressHotkey();
        HWND overlay = w_->childWindow(ChildKind::Overlay);
        ASSERT_NE(overlay, nullptr);
        ASSERT_EQ(overlays(), 1u);
        EXPECT_EQ(GetWindow(overlay, GW_OWNER), w_->hwnd());
        const OverlayWindow* shown = OverlayWindow::fromHandle(overlay);
        ASSERT_NE(shown, nullptr);
        EXPECT_EQ(shown->gameTitle(), game.shown);
        EXPECT_EQ(shown->sessionText().rfind(L"Session time 0:01:", 0), 0u) << "from the launch tick";

        pressHotkey();
        EXPECT_FALSE(IsWindow(overlay));
        EXPECT_EQ(overlays(), 0u);
        EXPECT_TRUE(waitForNo(ChildKind::Overlay));
    }

    // The game ended: the overlay does not open again.
    w_->setTrackedGameForTest(TrackedGame{});
    pressHotkey();
    EXPECT_EQ(overlays(), 0u);

    // One left open goes with the main window.
    w_->setTrackedGameForTest(TrackedGame{"t1", 2, "Ember Keep", GetTickCount64()});
    pressHotkey();
    HWND overlay = w_->childWindow(ChildKind::Overlay);
    ASSERT_NE(overlay, nullptr);
    DestroyWindow(w_->hwnd());
    EXPECT_FALSE(IsWindow(overlay));
}

TEST_F(MainWindowChildren, TheFriendsButtonOpensOneFriendsWindowThatReportsItsEnd) {
    const auto pressFriends = [&] {
        SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Friends, BN_CLICKED), 0);
        return w_->childWindow(ChildKind::Friends);
    };
    HWND friends = pressFriends();
    ASSERT_NE(friends, nullptr);
    EXPECT_EQ(GetWindow(friends, GW_OWNER), w_->hwnd());
    EXPECT_EQ(pressFriends(), friends);

    DestroyWindow(friends);
    EXPECT_TRUE(waitForNo(ChildKind::Friends));
    friends = pressFriends();
    ASSERT_NE(friends, nullptr);
    EXPECT_TRUE(IsWindow(friends));

    // The main window takes its friends window with it.
    DestroyWindow(w_->hwnd());
    EXPECT_FALSE(IsWindow(friends));
}

} // namespace
} // namespace corvandell::win
