// The microphone and speaker devices of the voice channel: 16 kHz mono 16-bit PCM, opened
// without a callback; the channel's threads poll the buffers' done marks.
//
// The capture device keeps a ring of four 20 ms blocks queued. The playback device keeps
// every written block until the device marks it done, and frees finished blocks each time
// a new one is written (and the rest when it closes): no thread per block, and a bounded
// queue, so a burst from the relay cannot build up seconds of delay.
#pragma once

#include <windows.h>

#include <mmsystem.h>

#include "voice/CaptureRing.hpp"

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace corvandell::win {

// The device of that name (as the system lists it, UTF-8), or the system's default (the
// wave mapper) when the name is empty or no longer present.
UINT waveInDeviceNamed(const std::string& name) noexcept;
UINT waveOutDeviceNamed(const std::string& name) noexcept;
std::vector<std::string> waveInDeviceNames();
std::vector<std::string> waveOutDeviceNames();

WAVEFORMATEX voiceWaveFormat() noexcept;

class WaveCapture final : public voice::CaptureDevice {
public:
    WaveCapture() = default;
    WaveCapture(const WaveCapture&) = delete;
    WaveCapture& operator=(const WaveCapture&) = delete;
    ~WaveCapture() override { close(); }

    // Opens the device, queues the four blocks and starts recording; false on failure.
    bool open(UINT device) noexcept;
    // Stops recording, takes the blocks back from the device and closes it.
    void close() noexcept;

    bool isBlockDone(std::size_t block) override;
    std::span<std::uint8_t> recordedBytes(std::size_t block) override;
    void requeueBlock(std::size_t block) override;

private:
    HWAVEIN device_ = nullptr;
    std::array<WAVEHDR, voice::kCaptureBlocks> headers_{};
    std::array<std::array<std::uint8_t, voice::kCaptureBlockBytes>, voice::kCaptureBlocks> blocks_{};
    std::array<bool, voice::kCaptureBlocks> isPrepared_{};
};

class WavePlayback {
public:
    // A quarter second of queued audio; a block arriving beyond it is dropped.
    static constexpr std::size_t kMaxQueuedBlocks = 12;

    WavePlayback() = default;
    WavePlayback(const WavePlayback&) = delete;
    WavePlayback& operator=(const WavePlayback&) = delete;
    ~WavePlayback() { close(); }

    bool open(UINT device) noexcept;
    void close() noexcept;

    // Queues a copy of the PCM; false when it was dropped (queue full, prepare or write failed).
    bool play(std::span<const std::uint8_t> pcm) noexcept;
    std::size_t queuedBlocks() const noexcept { return queued_.size(); }

private:
    struct Block {
        WAVEHDR header{};
        std::vector<std::uint8_t> pcm;
    };
    void freeFinished() noexcept;

    HWAVEOUT device_ = nullptr;
    // In write order, which is the order the device finishes them in.
    std::deque<std::unique_ptr<Block>> queued_;
};

} // namespace corvandell::win
