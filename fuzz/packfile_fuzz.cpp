// Fuzzes the whole pack decoder with the real object-name function. Besides faults, these
// trap: more objects than the pack's header promised, and an object whose type is not one
// of the four base types or whose name is not 40 lower-case hex digits (every delta must
// have resolved to its base's type); and the indexed decode refusing the pack for another
// reason than the object set, or indexing other objects.
#include "webgames/git/PackIndex.hpp"
#include "webgames/git/PackSource.hpp"
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
    corvandell::git::PackError error = corvandell::git::PackError::None;
    const auto objects = corvandell::git::parse_packfile(pack, corvandell::git::object_name, &error, limits);
    corvandell::git::PackInMemory bytes(pack);
    corvandell::git::PackError indexError = corvandell::git::PackError::None;
    const auto index = corvandell::git::index_pack(bytes, &indexError, limits);
    if (index.has_value() != objects.has_value() || (!index && indexError != error)) {
        __builtin_trap();
    }
    if (!objects) {
        return 0;
    }
    for (const auto& entry : index->entries()) {
        if (objects->find(corvandell::git::hex_of(entry.name)) == objects->end()) {
            __builtin_trap();
        }
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
