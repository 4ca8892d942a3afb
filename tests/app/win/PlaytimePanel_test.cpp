// The playtime panel's star row: a click on a star rates with its number, anywhere else not.
#include <windows.h>

#include "app/win/PlaytimePanel.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace corvandell::win {
namespace {

class PlaytimePanelTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(parent_, nullptr);
        ASSERT_TRUE(panel_.create(parent_, 124));
    }
    void TearDown() override { DestroyWindow(parent_); }

    HWND parent_ = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 400, 400, nullptr, nullptr,
                                   GetModuleHandleW(nullptr), nullptr);
    std::vector<int> rated_;
    PlaytimePanel panel_{GetModuleHandleW(nullptr), [this](int stars) { rated_.push_back(stars); }};
};

TEST_F(PlaytimePanelTest, ClickingAStarReportsItsNumber) {
    MoveWindow(panel_.hwnd(), 0, 0, 300, 348, FALSE);
    // Stars 1, 3 and 5 by their middles; then past the last star, in the gap after the
    // first, and in the text area, none of which rates.
    const int step = PlaytimePanel::kStarSize + PlaytimePanel::kStarGap;
    const int middle = PlaytimePanel::kMargin + PlaytimePanel::kStarSize / 2;
    for (const POINT click :
         {POINT{middle, middle}, POINT{middle + 2 * step, middle}, POINT{middle + 4 * step, middle},
          POINT{middle + 5 * step, middle},
          POINT{PlaytimePanel::kMargin + PlaytimePanel::kStarSize + 1, middle}, POINT{middle, 200}}) {
        SendMessageW(panel_.hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(click.x, click.y));
    }
    EXPECT_EQ(rated_, (std::vector<int>{1, 3, 5}));
}

// From the keyboard: a digit rates at once; the arrows pick a star that Space or Enter gives.
// The panel's window text says what it shows, for screen readers.
TEST_F(PlaytimePanelTest, KeysRateAndTheWindowTextNamesTheRating) {
    EXPECT_TRUE(GetWindowLongW(panel_.hwnd(), GWL_STYLE) & WS_TABSTOP) << "Tab never reaches the stars";
    wchar_t text[64] = {};
    GetWindowTextW(panel_.hwnd(), text, 64);
    EXPECT_STREQ(text, L"Rate this game");
    const std::vector<std::pair<WPARAM, std::vector<int>>> steps = {
        {'4', {4}},
        {VK_RIGHT, {4}},       // picks star 2 (none given yet: the pick starts at 1)
        {VK_RIGHT, {4}},       // 3
        {VK_RETURN, {4, 3}},   // gives it
        {VK_LEFT, {4, 3}},     // 2
        {VK_SPACE, {4, 3, 2}}, // gives it
        {'9', {4, 3, 2}},      // not a rating
    };
    for (const auto& [key, expected] : steps) {
        SendMessageW(panel_.hwnd(), WM_KEYDOWN, key, 0);
        EXPECT_EQ(rated_, expected) << "after key " << key;
    }
    panel_.setMyStars(4);
    GetWindowTextW(panel_.hwnd(), text, 64);
    EXPECT_STREQ(text, L"You rated it 4 stars");
}

} // namespace
} // namespace corvandell::win
