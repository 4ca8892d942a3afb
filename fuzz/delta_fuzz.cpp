// Fuzzes delta application under a byte limit: the first two bytes give the base's length,
// the third the limit (2^0 to 2^23 bytes), the base follows, and the rest is the delta.
// Whatever the opcodes announce, a result never exceeds the limit, and the announcement
// alone decides whether the delta is refused as too large.
#include "webgames/git/Delta.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

// The delta's two leading sizes, read independently of the code under test.
bool read_sizes(std::string_view delta, std::uint64_t& source, std::uint64_t& target) {
    std::size_t position = 0;
    for (std::uint64_t* value : {&source, &target}) {
        *value = 0;
        for (unsigned shift = 0;; shift += 7) {
            if (position >= delta.size() || shift >= 64) {
                return false;
            }
            const auto byte = static_cast<std::uint8_t>(delta[position++]);
            *value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
            if ((byte & 0x80) == 0) {
                break;
            }
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) {
        return 0;
    }
    const std::size_t limit = std::size_t{1} << (data[2] % 24);
    const std::string_view input(reinterpret_cast<const char*>(data) + 3, size - 3);
    const std::size_t baseLength = std::min<std::size_t>((std::size_t{data[0]} << 8) | data[1], input.size());
    const std::string_view base = input.substr(0, baseLength);
    const std::string_view delta = input.substr(baseLength);
    corvandell::git::DeltaError error = corvandell::git::DeltaError::None;
    const auto result = corvandell::git::apply_delta(base, delta, &error, limit);
    if (result && result->size() > limit) {
        __builtin_trap(); // more output than allowed
    }
    std::uint64_t source = 0;
    std::uint64_t target = 0;
    if (read_sizes(delta, source, target) && source == base.size() &&
        (target > limit) != (error == corvandell::git::DeltaError::TooLarge)) {
        __builtin_trap(); // refused as too large for the wrong reason, or not refused
    }
    return 0;
}
