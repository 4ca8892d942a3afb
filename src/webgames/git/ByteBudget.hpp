// How many bytes a received pack may make the engine hold or write.
//
// A pack is a few kilobytes of instructions for producing far more: a delta's copy opcodes
// repeat its base, a DEFLATE stream's matches repeat its output, and a tree may name one
// subtree over and over. Each declared size is therefore checked against a budget before
// the memory for it is taken, and a failed allocation counts as the same refusal.
#pragma once

#include <cstdint>

namespace corvandell::git {

inline constexpr std::uint64_t kMaxObjectBytes = std::uint64_t{1} << 30;
inline constexpr std::uint64_t kMaxTotalBytes = std::uint64_t{8} << 30;

struct ByteLimits {
    std::uint64_t maxObjectBytes = kMaxObjectBytes; // one inflated entry or delta result
    std::uint64_t maxTotalBytes = kMaxTotalBytes;   // all of them together
    // The total is also held to this many bytes per byte of pack, plus the allowance, so
    // a small pack cannot claim the whole absolute limit.
    std::uint64_t maxBytesPerPackByte = 256;
    std::uint64_t packAllowanceBytes = std::uint64_t{1} << 30;

    // The lower of the two totals for a pack of `packBytes`.
    std::uint64_t totalFor(std::uint64_t packBytes) const;
};

// What is left of the limits for one pack, charged as entries are inflated and deltas
// applied. The total is a running sum rather than the bytes held at once: simpler to keep
// exact, and never less than the peak.
class ByteBudget {
public:
    ByteBudget(const ByteLimits& limits, std::uint64_t packBytes)
        : maxObjectBytes_(limits.maxObjectBytes), remainingBytes_(limits.totalFor(packBytes)) {}

    // The largest single object that may still be made.
    std::uint64_t allowance() const {
        return maxObjectBytes_ < remainingBytes_ ? maxObjectBytes_ : remainingBytes_;
    }

    // Charges one object of `bytes`; false, charging nothing, when it does not fit.
    [[nodiscard]] bool take(std::uint64_t bytes) {
        if (bytes > allowance()) {
            return false;
        }
        remainingBytes_ -= bytes;
        return true;
    }

private:
    std::uint64_t maxObjectBytes_;
    std::uint64_t remainingBytes_;
};

} // namespace corvandell::git
