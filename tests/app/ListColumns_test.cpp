// The columns fill the list exactly and the Rating column keeps its width.
#include "app/MainLayout.hpp"

#include <gtest/gtest.h>

#include <numeric>

namespace corvandell {
namespace {

TEST(ListColumns, FillTheListAndKeepTheRatingWhole) {
    const std::vector<std::pair<int, std::array<int, 5>>> cases{
        {1400, {1010, 110, 110, 80, 90}}, // a wide window: the title gets the room
        {550, {160, 110, 110, 80, 90}},   // the title at its minimum
        {400, {160, 55, 55, 40, 90}},     // the middle columns give way
        {250, {160, 0, 0, 0, 90}},
    };
    for (const auto& [width, expected] : cases) {
        const std::array<int, 5> columns = fitListColumns(width);
        EXPECT_EQ(columns, expected) << width;
        EXPECT_EQ(std::accumulate(columns.begin(), columns.end(), 0), width) << width;
    }
}

} // namespace
} // namespace corvandell
