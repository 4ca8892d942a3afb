#include "launch/DownloadRateCap.hpp"

namespace corvandell {

std::uint64_t rateCapDelayMs(std::uint64_t bytesSoFar, int limitKbps, std::uint64_t elapsedMs) {
    if (limitKbps <= 0) {
        return 0;
    }
    const double targetMs = static_cast<double>(bytesSoFar) * 1000.0 / (limitKbps * 1024.0);
    const double elapsed = static_cast<double>(elapsedMs);
    if (targetMs <= elapsed) {
        return 0;
    }
    return static_cast<std::uint64_t>(targetMs - elapsed);
}

void DownloadRateCap::afterChunk(std::uint64_t bytesSoFar) {
    if (!isOn()) {
        return;
    }
    const std::uint64_t now = clock_.nowMs();
    const std::uint64_t elapsed = now >= startMs_ ? now - startMs_ : 0;
    const std::uint64_t delay = rateCapDelayMs(bytesSoFar, limitKbps_, elapsed);
    if (delay > 0) {
        clock_.sleepMs(delay);
    }
}

} // namespace corvandell
