// The first pass over a pack: every entry's header parsed and its zlib stream inflated.
//
// Internal to the pack decoder; kept apart so the framing rules and the delta resolution
// can each be read on their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "webgames/git/ByteBudget.hpp"
#include "webgames/git/Packfile.hpp"

namespace corvandell::git {

enum PackEntryType : std::int32_t {
    kPackCommit = 1,
    kPackTree = 2,
    kPackBlob = 3,
    kPackTag = 4,
    kPackOffsetDelta = 6,
    kPackRefDelta = 7,
};

struct PackEntry {
    std::int32_t type = 0;
    std::size_t offset = 0;     // where the entry's header starts in the pack
    std::string data;           // inflated: the content, or the delta for types 6 and 7
    std::size_t baseOffset = 0; // type 6
    std::string baseName;       // type 7: 40 lower-case hexadecimal digits
};

// Entries in pack order (so offsets ascend); no value when the framing or any zlib stream
// is bad, an inflated length differs from its header, or a declared size does not fit the
// budget, which is charged with every entry's declared size before it is inflated. Lets
// std::bad_alloc through; parse_packfile reports it as TooLarge.
std::optional<std::vector<PackEntry>> read_pack_entries(std::string_view pack, ByteBudget& budget,
                                                        PackError* error = nullptr);

} // namespace corvandell::git
