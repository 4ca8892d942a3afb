#include "webgames/git/ByteBudget.hpp"

#include <algorithm>
#include <limits>

namespace corvandell::git {

// Saturating, so a pack size near 2^64 (never seen, but the arithmetic must not wrap to a
// small limit) only yields the absolute cap.
std::uint64_t ByteLimits::totalFor(std::uint64_t packBytes) const {
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t relative = kMax;
    if (maxBytesPerPackByte == 0 || packBytes <= kMax / maxBytesPerPackByte) {
        relative = packBytes * maxBytesPerPackByte;
        relative = relative > kMax - packAllowanceBytes ? kMax : relative + packAllowanceBytes;
    }
    return std::min(relative, maxTotalBytes);
}

} // namespace corvandell::git
