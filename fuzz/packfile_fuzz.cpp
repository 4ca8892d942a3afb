// Fuzzes the whole pack decoder with the real object-name function. Besides faults, these
// trap: more objects than the pack's header promised, and an object whose type is not one
// of the four base types or whose name is not 40 lower-case hex digits (every delta must
// have resolved to its base's type).
#include "webgames/git/Packfile.hpp"
#include "webgames/git/Sha1.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

bool isObjectName(std::string_view name) {
    if (name.size() != 40) {
        return false;
    }
    for (const char c : name) {
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view pack(reinterpret_cast<const char*>(data), size);
    // A small budget, so inputs that announce a lot are refused quickly rather than decoded.
    corvandell::git::ByteLimits limits;
    limits.maxObjectBytes = 16 << 20;
    limits.maxTotalBytes = 64 << 20;
    const auto objects = corvandell::git::parse_packfile(pack, corvandell::git::object_name, nullptr, limits);
    if (!objects) {
        return 0;
    }
    const std::uint32_t count = (std::uint32_t{data[8]} << 24) | (std::uint32_t{data[9]} << 16) |
                                (std::uint32_t{data[10]} << 8) | data[11];
    if (objects->size() > count) {
        __builtin_trap();
    }
    for (const auto& [name, object] : *objects) {
        if (object.type < 1 || object.type > 4 || !isObjectName(name) || object.id != name) {
            __builtin_trap();
        }
    }
    return 0;
}
