#include "app/MainLayout.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(MainLayout, ListTakesTwoThirdsAndTheDetailsColumnTheRest) {
    struct Case {
        int width;
        int height;
        ControlRect list;
        ControlRect details;
        ControlRect playtime;
        ControlRect status;
    };
    const Case cases[] = {
        // 2 * 1000 / 3 = 666
        {1000, 700, {12, 58, 646, 608}, {674, 80, 314, 230}, {674, 318, 314, 348}, {12, 676, 976, 20}},
        // integer division: 2 * 1001 / 3 = 667, not 667.33
        {1001, 800, {12, 58, 647, 708}, {675, 80, 314, 330}, {675, 418, 314, 348}, {12, 776, 977, 20}},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.width);
        const MainLayout layout = computeMainLayout(item.width, item.height);
        EXPECT_EQ(layout.list, item.list);
        EXPECT_EQ(layout.details, item.details);
        EXPECT_EQ(layout.playtimePanel, item.playtime);
        EXPECT_EQ(layout.statusLine, item.status);
        EXPECT_EQ(layout.detailsLabel, (ControlRect{item.list.width + 20 + 8, 58, 160, 18}));
        EXPECT_EQ(layout.optionsButton, (ControlRect{798, 12, 90, 30}));
    }
}

} // namespace
} // namespace corvandell
