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

    const int step = PlaytimePanel::kStarSize + PlaytimePanel::kStarGap;
    const int middle = PlaytimePanel::kMargin + PlaytimePanel::kStarSize / 2;
    struct Click {
        int x;
        int y;
        int expected; // 0: no rating
    };
    const std::vector<Click> clicks = {
        {middle, middle, 1},
        {middle + 2 * step, middle, 3},
        {middle + 4 * step, middle, 5},
        {middle + 5 * step, middle, 0},                                     // past the last star
        {PlaytimePanel::kMargin + PlaytimePanel::kStarSize + 1, middle, 0}, // in the gap
        {middle, 200, 0},                                                   // in the text area
    };
    std::vector<int> expected;
    for (const Click& click : clicks) {
        SendMessageW(panel.hwnd(), WM_LBUTTONUP, 0, MAKELPARAM(click.x, click.y));
        if (click.expected != 0) {
            expected.push_back(click.expected);
        }
    }
    EXPECT_EQ(rated, expected);

    panel.setText(L"You have played: 2 h");
    EXPECT_EQ(panel.text(), L"You have played: 2 h");
    DestroyWindow(parent);
}

} // namespace
} // namespace corvandell::win
