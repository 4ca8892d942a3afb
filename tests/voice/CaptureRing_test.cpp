#include "voice/CaptureRing.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvandell::voice {
namespace {

// Blocks filled with their own index, so what was sent tells which blocks it came from.
class ScriptedCaptureDevice : public CaptureDevice {
public:
    explicit ScriptedCaptureDevice(std::array<bool, kCaptureBlocks> done) : done_(done) {
        for (std::size_t block = 0; block < kCaptureBlocks; ++block) {
            blocks_[block].fill(static_cast<std::uint8_t>(block + 1));
        }
    }
    bool isBlockDone(std::size_t block) override { return done_[block]; }
    std::span<std::uint8_t> recordedBytes(std::size_t block) override { return blocks_[block]; }
    void requeueBlock(std::size_t block) override {
        done_[block] = false;
        requeued.push_back(block);
    }
    std::vector<std::size_t> requeued;

private:
    std::array<bool, kCaptureBlocks> done_;
    std::array<std::array<std::uint8_t, kCaptureBlockBytes>, kCaptureBlocks> blocks_{};
};

TEST(CaptureRing, DoneBlocksAreSentInRingOrderAndAlwaysQueuedAgain) {
    const struct {
        const char* what;
        std::array<bool, 4> done;
        bool isMuted;
        bool sendFails;
        std::vector<std::size_t> sent;
        std::vector<std::size_t> requeued;
    } cases[] = {
        {"none done", {false, false, false, false}, false, false, {}, {}},
        {"all done", {true, true, true, true}, false, false, {0, 1, 2, 3}, {0, 1, 2, 3}},
        {"some done", {false, true, false, true}, false, false, {1, 3}, {1, 3}},
        {"muted: cycling, not sending", {true, true, false, true}, true, false, {}, {0, 1, 3}},
        {"failed sends are ignored", {true, false, true, false}, false, true, {0, 2}, {0, 2}},
    };
    for (const auto& [what, done, isMuted, sendFails, sent, requeued] : cases) {
        ScriptedCaptureDevice device(done);
        std::vector<std::size_t> sentBlocks;
        const CaptureRingPass pass = pumpCaptureRing(
            device, isMuted, 100, [&, sendFails = sendFails](std::span<const std::uint8_t> bytes) {
                EXPECT_EQ(bytes.size(), kCaptureBlockBytes) << what;
                sentBlocks.push_back(static_cast<std::size_t>(bytes[0] - 1));
                return !sendFails;
            });
        EXPECT_EQ(sentBlocks, sent) << what;
        EXPECT_EQ(device.requeued, requeued) << what;
        EXPECT_EQ(pass.blocksDone, requeued.size()) << what;
        EXPECT_EQ(pass.blocksSent, sent.size()) << what;
    }
}

TEST(CaptureRing, TheInputVolumeScalesWhatIsSent) {
    ScriptedCaptureDevice device({true, false, false, false});
    std::vector<std::uint8_t> first;
    pumpCaptureRing(device, false, 200, [&](std::span<const std::uint8_t> bytes) {
        first.assign(bytes.begin(), bytes.end());
        return true;
    });
    ASSERT_EQ(first.size(), kCaptureBlockBytes);
    // 0x0101 = 257 doubled is 514 = 0x0202.
    EXPECT_EQ(first[0], 0x02);
    EXPECT_EQ(first[1], 0x02);
}

} // namespace
} // namespace corvandell::voice
