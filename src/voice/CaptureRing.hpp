// The capture side's ring of four 20 ms blocks, apart from the device that fills them.
//
// All four blocks stay queued to the capture device; the capture thread visits them in
// order, and each block the device has marked done is sent (unless muted or the socket is
// gone) and queued again at once. Muting therefore never stops the device: the blocks keep
// cycling, only the sending stops, so unmuting is heard within one block.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "voice/VoiceFormat.hpp"

namespace corvandell::voice {

// The device half: the Windows capture device, or a scripted one in tests.
class CaptureDevice {
public:
    virtual ~CaptureDevice() = default;
    virtual bool isBlockDone(std::size_t block) = 0;
    // The bytes the device recorded into the block.
    virtual std::span<std::uint8_t> recordedBytes(std::size_t block) = 0;
    virtual void requeueBlock(std::size_t block) = 0;
};

struct CaptureRingPass {
    std::size_t blocksDone = 0;
    std::size_t blocksSent = 0;
};

// One visit of the four blocks in order. `send` gets each recorded block, already scaled by
// the input volume, when it is to be sent; it returns false when sending failed, which is
// ignored (the next block is tried).
CaptureRingPass pumpCaptureRing(CaptureDevice& device, bool isMuted, int inputVolumePercent,
                                const std::function<bool(std::span<const std::uint8_t>)>& send);

} // namespace corvandell::voice
