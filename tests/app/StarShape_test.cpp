#include "app/StarShape.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(StarShape, CornersAlternateOuterAndInnerStartingStraightUp) {
    // Worked by hand: centre 8, outer radius 7, inner radius 2.8 for a 16-pixel icon.
    const std::array<IntPoint, 10> small = {
        {{8, 1}, {10, 6}, {15, 6}, {11, 9}, {12, 14}, {8, 11}, {4, 14}, {5, 9}, {1, 6}, {6, 6}}};
    EXPECT_EQ(starPolygon(16), small);

    const auto large = starPolygon(32); // centre 16, outer radius 15
    EXPECT_EQ(large[0], (IntPoint{16, 1}));
    EXPECT_EQ(large[4], (IntPoint{25, 28}));
    EXPECT_EQ(large[5], (IntPoint{16, 22})); // inner corner straight down: 16 + 6
}

} // namespace
} // namespace corvandell
