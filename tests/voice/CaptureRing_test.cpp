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
        int percent;
        std::vector<std::size_t> sent;
        std::vector<std::size_t> requeued;
    } cases[] = {
        {"none done", {false, false, false, false}, false, false, 100, {}, {}},
        {"some done", {false, true, false, true}, false, false, 100, {1, 3}, {1, 3}},
        {"muted: cycling, not sending", {true, true, false, true}, true, false, 100, {}, {0, 1, 3}},
        {"failed sends are ignored", {true, false, true, false}, false, true, 100, {0, 2}, {0, 2}},
        // Block b's samples, 0x0101 * (b + 1), still tell the block by their low byte once doubled.
        {"input volume doubled", {true, true, false, false}, false, false, 200, {0, 1}, {0, 1}},
    };
    for (const auto& [what, done, isMuted, sendFails, percent, sent, requeued] : cases) {
        ScriptedCaptureDevice device(done);
        std::vector<std::size_t> sentBlocks;
        const CaptureRingPass pass = pumpCaptureRing(
            device, isMuted, percent,
            [&, sendFails = sendFails, percent = percent](std::span<const std::uint8_t> bytes) {
                EXPECT_EQ(bytes.size(), kCaptureBlockBytes) << what;
                EXPECT_EQ(bytes[0], bytes[1]) << what;
                sentBlocks.push_back(static_cast<std::size_t>(bytes[0] * 100 / percent - 1));
                return !sendFails;
            });
        EXPECT_EQ(sentBlocks, sent) << what;
        EXPECT_EQ(device.requeued, requeued) << what;
        EXPECT_EQ(pass.blocksDone, requeued.size()) << what;
        EXPECT_EQ(pass.blocksSent, sent.size()) << what;
    }
}

} // namespace
} // namespace corvandell::voice
