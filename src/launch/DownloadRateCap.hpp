// The download bandwidth cap.
//
// The cap is an average since the start of the file, not a token bucket: after each chunk
// the downloader sleeps until the bytes received so far could not have come faster than
// `limitKbps` KiB per second. A slow network therefore never sleeps, and one large chunk
// is paid for after it arrived, never split. Time comes from a DownloadClock so the
// arithmetic is checked against a fake clock rather than by waiting.
#pragma once

#include <cstdint>

namespace corvandell {

class DownloadClock {
public:
    virtual ~DownloadClock() = default;
    virtual std::uint64_t nowMs() = 0;
    virtual void sleepMs(std::uint64_t ms) = 0;
};

// How long to sleep after `bytesSoFar` bytes arrived in `elapsedMs`: the target time
// bytesSoFar * 1000 / (limitKbps * 1024) ms less the elapsed time, truncated to whole
// milliseconds; 0 when there is nothing to wait for or the cap is off (limitKbps <= 0).
std::uint64_t rateCapDelayMs(std::uint64_t bytesSoFar, int limitKbps, std::uint64_t elapsedMs);

// One file's cap: its start is taken when it is made.
class DownloadRateCap {
public:
    DownloadRateCap(int limitKbps, DownloadClock& clock) : limitKbps_(limitKbps), clock_(clock) {
        startMs_ = clock_.nowMs();
    }

    bool isOn() const noexcept { return limitKbps_ > 0; }

    // Called after each chunk with the file's running total.
    void afterChunk(std::uint64_t bytesSoFar);

private:
    int limitKbps_;
    DownloadClock& clock_;
    std::uint64_t startMs_ = 0;
};

} // namespace corvandell
