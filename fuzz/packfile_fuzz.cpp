// Fuzzes the whole pack decoder with the real object-name function, under a small byte
// budget so that inputs which announce a lot are refused quickly rather than decoded.
#include "webgames/git/Packfile.hpp"
#include "webgames/git/Sha1.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view pack(reinterpret_cast<const char*>(data), size);
    corvandell::git::ByteLimits limits;
    limits.maxObjectBytes = 16 << 20;
    limits.maxTotalBytes = 64 << 20;
    corvandell::git::parse_packfile(pack, corvandell::git::object_name, nullptr, limits);
    return 0;
}
