// Fuzzes delta application: the first two bytes give the base's length, the base follows,
// and the rest is the delta.
#include "webgames/git/Delta.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::string_view input(reinterpret_cast<const char*>(data) + 2, size - 2);
    const std::size_t baseLength = std::min<std::size_t>((std::size_t{data[0]} << 8) | data[1], input.size());
    const auto result = corvandell::git::apply_delta(input.substr(0, baseLength), input.substr(baseLength));
    if (result && result->size() > (input.size() - baseLength) * 0x10000) {
        __builtin_trap(); // more output than the opcodes could ever produce
    }
    return 0;
}
