// Hours never wrap, and a tick before the launch reads as no time rather than a huge one.
#include "app/SessionClock.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace corvandell {
namespace {

TEST(SessionClock, ElapsedTimeReadsAsHoursMinutesAndSeconds) {
    constexpr std::uint64_t kHourMs = 3'600'000;
    const struct {
        std::uint64_t launchTick;
        std::uint64_t nowTick;
        std::string text;
    } cases[] = {
        {1000, 1999, "Session time 0:00:00"}, // whole seconds only, never rounded up
        {0, kHourMs - 1, "Session time 0:59:59"},
        {500, 500 + 100 * kHourMs + 3'599'000, "Session time 100:59:59"},
        {5000, 4000, "Session time 0:00:00"},
        {UINT64_MAX - 1000, UINT64_MAX, "Session time 0:00:01"},
        {0, UINT64_MAX, "Session time 5124095576030:25:51"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(sessionTimeText(sessionElapsedMs(c.launchTick, c.nowTick)), c.text)
            << c.launchTick << " to " << c.nowTick;
    }
}

} // namespace
} // namespace corvandell
