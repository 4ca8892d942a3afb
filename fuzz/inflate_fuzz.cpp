// Fuzzes the zlib decoder: any input must end in a value or none, never a fault, and an
// output limit must cut off exactly the streams whose output would exceed it.
#include "webgames/git/Inflate.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvandell::git;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    // The expected size is only a hint; feed both a plausible and an absurd one.
    const auto unlimited = inflate_zlib(input, size * 4);
    inflate_zlib(input, std::size_t{1} << 40);
    const std::size_t limit = size * 8;
    InflateError error = InflateError::None;
    const auto limited = inflate_zlib(input, std::size_t{1} << 40, &error, limit);
    if (limited && limited->bytes.size() > limit) {
        __builtin_trap(); // more output than allowed
    }
    if (unlimited && limited.has_value() != (unlimited->bytes.size() <= limit)) {
        __builtin_trap(); // the limit cut off a stream that fits, or let through one that does not
    }
    return 0;
}
