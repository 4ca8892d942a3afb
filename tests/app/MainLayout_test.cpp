// Fixed parts grow with the DPI; parts that follow the client size stay flush with its edges.
#include "app/MainLayout.hpp"

#include <gtest/gtest.h>

#include <numeric>

namespace corvandell {
namespace {

int right(const ControlRect& rect) {
    return rect.x + rect.width;
}

int bottom(const ControlRect& rect) {
    return rect.y + rect.height;
}

TEST(MainLayout, ScalesEveryFixedLengthAndKeepsTheEdgesFlushAtEachDpi) {
    constexpr int kWidth = 1651;
    constexpr int kHeight = 1042;
    const int listRight = 2 * kWidth / 3;
    for (const unsigned dpi : {96u, 120u, 144u, 192u}) {
        SCOPED_TRACE(dpi);
        const auto s = [dpi](int pixels) { return scaledPixels(pixels, dpi); };
        const MainLayout layout = computeMainLayout(kWidth, kHeight, dpi);
        // The toolbar's buttons never overlap, however the rounding falls.
        EXPECT_LT(right(layout.searchEdit), layout.refreshButton.x);
        EXPECT_LT(right(layout.refreshButton), layout.launchButton.x);
        EXPECT_LT(right(layout.launchButton), layout.addGameButton.x);
        EXPECT_LT(right(layout.addGameButton), layout.friendsButton.x);
        EXPECT_LT(right(layout.friendsButton), layout.optionsButton.x);
        // The list ends a gap before the details column, which ends a margin from the edge.
        EXPECT_EQ(right(layout.list), listRight - s(8));
        EXPECT_EQ(layout.details.x, listRight + s(8));
        EXPECT_EQ(right(layout.details), kWidth - s(12));
        EXPECT_EQ(right(layout.playtimePanel), kWidth - s(12));
        EXPECT_EQ(right(layout.statusLine), kWidth - s(12));
        EXPECT_EQ(bottom(layout.statusLine), kHeight - s(4));
        EXPECT_EQ(bottom(layout.list), kHeight - s(34));
        EXPECT_EQ(bottom(layout.playtimePanel), kHeight - s(34));
        EXPECT_LT(bottom(layout.details), layout.playtimePanel.y);
    }
}

TEST(MainLayout, ScaledPixelsRoundToTheNearestPixel) {
    EXPECT_EQ(scaledPixels(9, 120), 11);  // 11.25
    EXPECT_EQ(scaledPixels(3, 120), 4);   // 3.75
    EXPECT_EQ(scaledPixels(-3, 120), -4); // a negative offset rounds away from zero, as MulDiv does
}

TEST(ListColumns, AtOneHundredFiftyPercentTheyStillFillTheListAndTheRatingGrowsWithIt) {
    for (const int width : {2100, 1020, 600, 375}) {
        const std::array<int, 5> columns = fitListColumns(width, 144);
        EXPECT_EQ(std::accumulate(columns.begin(), columns.end(), 0), width) << width;
        EXPECT_EQ(columns[4], 135) << width;
        EXPECT_GE(columns[0], 240) << "the title keeps its minimum, scaled";
    }
    EXPECT_EQ(fitListColumns(2100, 144), (std::array<int, 5>{1515, 165, 165, 120, 135}));
}

} // namespace
} // namespace corvandell
