// The playtime panel's star row: a click on a star rates with its number, anywhere else not.
#include <windows.h>

#include "app/win/PlaytimePanel.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace corvandell::win {
namespace {

TEST(PlaytimePanel, ClickingAStarReportsItsNumber) {
    HWND parent = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 400, 400, nullptr, nullptr,
                                  GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(parent, nullptr);
    std::vector<int> rated;
    PlaytimePanel panel(GetModuleHandleW(nullptr), [&rated](int stars) { rated.push_back(stars); });
    ASSERT_TRUE(panel.create(parent, 124));
    MoveWindow(panel.hwnd(), 0, 0, 300, 348, FALSE);
    // Stars 1, 3 and 5 by their middles; then past the last star, in the gap after the
    // first, and in the text area, none of which rates.
    const int step = PlaytimePanel::kStarSize + PlaytimePanel::kStarGap;
    const int middle = PlaytimePanel::kMargin + PlaytimePanel::kStarSize / 2;
    for (const POINT click :
         {POINT{middle, middle}, POINT{middle + 2 * step, middle}, POINT{middle + 4 * step, middle},
          POINT{middle + 5 * step, middle},
          POINT{PlaytimePanel::kMargin + PlaytimePanel::kStarSize + 1, middle}, POINT{middle, 200}}) {
        SendMessageW(panel.hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(click.x, click.y));
    }
    EXPECT_EQ(rated, (std::vector<int>{1, 3, 5}));
    DestroyWindow(parent);
}

// From the keyboard: a digit rates at once; the arrows pick a star that Space or Enter gives.
// The panel's window text says what it shows, for screen readers.
TEST(PlaytimePanel, KeysRateAndTheWindowTextNamesTheRating) {
    HWND parent = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 400, 400, nullptr, nullptr,
                                  GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(parent, nullptr);
    std::vector<int> rated;
    PlaytimePanel panel(GetModuleHandleW(nullptr), [&rated](int stars) { rated.push_back(stars); });
    ASSERT_TRUE(panel.create(parent, 124));
    EXPECT_TRUE(GetWindowLongW(panel.hwnd(), GWL_STYLE) & WS_TABSTOP) << "Tab never reaches the stars";
    wchar_t text[64] = {};
    GetWindowTextW(panel.hwnd(), text, 64);
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
        SendMessageW(panel.hwnd(), WM_KEYDOWN, key, 0);
        EXPECT_EQ(rated, expected) << "after key " << key;
    }
    panel.setMyStars(4);
    GetWindowTextW(panel.hwnd(), text, 64);
    EXPECT_STREQ(text, L"You rated it 4 stars");
    DestroyWindow(parent);
}

} // namespace
} // namespace corvandell::win
