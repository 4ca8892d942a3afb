#include "voice/CaptureRing.hpp"

#include "voice/VoiceFrame.hpp"

namespace corvandell::voice {

CaptureRingPass pumpCaptureRing(CaptureDevice& device, bool isMuted, int inputVolumePercent,
                                const std::function<bool(std::span<const std::uint8_t>)>& send) {
    CaptureRingPass pass;
    for (std::size_t block = 0; block < kCaptureBlocks; ++block) {
        if (!device.isBlockDone(block)) {
            continue;
        }
        ++pass.blocksDone;
        if (!isMuted) {
            std::span<std::uint8_t> recorded = device.recordedBytes(block);
            if (!recorded.empty()) {
                applyVolume(recorded, inputVolumePercent);
                static_cast<void>(send(recorded));
                ++pass.blocksSent;
            }
        }
        device.requeueBlock(block);
    }
    return pass;
}

} // namespace corvandell::voice
