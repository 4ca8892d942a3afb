#include "app/InputLevel.hpp"

#include <algorithm>
#include <cstdlib>

namespace corvandell {

int pcmPeakPercent(std::span<const std::uint8_t> pcm, int volumePercent) {
    int peak = 0;
    for (std::size_t i = 0; i + 1 < pcm.size(); i += 2) {
        const auto sample = static_cast<std::int16_t>(static_cast<std::uint16_t>(pcm[i] | (pcm[i + 1] << 8)));
        peak = std::max(peak, std::abs(static_cast<int>(sample)));
    }
    const long long scaled = static_cast<long long>(peak) * std::max(volumePercent, 0) / 100;
    return static_cast<int>(std::min<long long>(scaled * 100 / 32768, 100));
}

} // namespace corvandell
