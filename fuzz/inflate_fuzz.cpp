// Fuzzes the zlib decoder: any input must end in a value or none, never a fault.
#include "webgames/git/Inflate.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    // The expected size is only a hint; feed both a plausible and an absurd one.
    corvandell::git::inflate_zlib(input, size * 4);
    corvandell::git::inflate_zlib(input, std::size_t{1} << 40);
    return 0;
}
