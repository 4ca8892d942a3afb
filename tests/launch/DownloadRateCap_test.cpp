#include "launch/DownloadRateCap.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace corvandell {
namespace {

// Time passes only when the downloader sleeps or the test says the network took some.
class FakeClock final : public DownloadClock {
public:
    std::uint64_t nowMs() override { return now_; }
    void sleepMs(std::uint64_t ms) override {
        now_ += ms;
        sleeps_.push_back(ms);
    }
    void pass(std::uint64_t ms) { now_ += ms; }
    const std::vector<std::uint64_t>& sleeps() const { return sleeps_; }

private:
    std::uint64_t now_ = 5'000'000; // the tick count of a machine that has been up a while
    std::vector<std::uint64_t> sleeps_;
};

// Feeds a file through the cap in fixed chunks, with `networkMsPerChunk` spent receiving
// each; returns the fake time the file took.
std::uint64_t capDownload(int limitKbps, std::uint64_t fileBytes, std::uint64_t chunkBytes,
                          std::uint64_t networkMsPerChunk, FakeClock& clock) {
    const std::uint64_t start = clock.nowMs();
    DownloadRateCap cap(limitKbps, clock);
    std::uint64_t total = 0;
    while (total < fileBytes) {
        clock.pass(networkMsPerChunk);
        total += std::min(chunkBytes, fileBytes - total);
        cap.afterChunk(total);
    }
    return clock.nowMs() - start;
}

TEST(DownloadRateCap, DelayIsTheTargetTimeLessTheElapsedTruncated) {
    struct Case {
        std::uint64_t bytes;
        int limitKbps;
        std::uint64_t elapsedMs;
        std::uint64_t delayMs;
    };
    const Case cases[] = {
        {102'400, 100, 0, 1000},                         // 100 KiB at 100 KiB/s: one second
        {102'400, 100, 400, 600},                        // time already spent counts
        {102'400, 100, 5000, 0},                         // a slow network never sleeps
        {1000, 100, 0, 9},                               // 9.765625 ms, truncated
        {102'400, 0, 0, 0},                              // 0 turns the cap off
        {(std::uint64_t{5} << 30), 1, 0, 5'242'880'000}, // 5 GiB at 1 KiB/s: 64-bit totals
    };
    for (const Case& c : cases) {
        EXPECT_EQ(rateCapDelayMs(c.bytes, c.limitKbps, c.elapsedMs), c.delayMs)
            << c.bytes << " bytes, " << c.limitKbps << " KiB/s, " << c.elapsedMs << " ms";
    }
}

TEST(DownloadRateCap, TenMebibytesTakeTheirBudgetWhateverTheChunksAndTheNetwork) {
    const struct {
        int limitKbps;
        std::uint64_t chunk, networkMsPerChunk, leastMs, mostMs;
    } cases[] = {
        // 102.4 s at 100 KiB/s for chunks of an odd size, of typical sizes, and the whole file.
        {100, 4099, 0, 102'399, 102'400},
        {100, 10 << 20, 0, 102'399, 102'400},
        // 48 s on the wire: the cap only adds what is missing to 102.4 s.
        {100, 65536, 300, 102'399, 102'700},
        // 0 or less never sleeps.
        {0, 8192, 0, 0, 0},
        {-100, 8192, 0, 0, 0},
    };
    for (const auto& c : cases) {
        FakeClock clock;
        const std::uint64_t ms = capDownload(c.limitKbps, 10 << 20, c.chunk, c.networkMsPerChunk, clock);
        EXPECT_GE(ms, c.leastMs) << c.limitKbps << " KiB/s, chunks of " << c.chunk;
        EXPECT_LE(ms, c.mostMs) << c.limitKbps << " KiB/s, chunks of " << c.chunk;
        EXPECT_TRUE(c.limitKbps > 0 || clock.sleeps().empty()) << c.limitKbps;
    }
}

TEST(DownloadRateCap, OneChunkIsPaidForAfterItArrivedNeverSplit) {
    FakeClock clock;
    DownloadRateCap cap(100, clock);
    cap.afterChunk(204'800); // one chunk of 200 KiB
    ASSERT_EQ(clock.sleeps().size(), 1u);
    EXPECT_EQ(clock.sleeps()[0], 2000u);
    cap.afterChunk(204'800 + 1024); // the next 1 KiB only adds its own 10 ms
    ASSERT_EQ(clock.sleeps().size(), 2u);
    EXPECT_EQ(clock.sleeps()[1], 10u);
}

} // namespace
} // namespace corvandell
