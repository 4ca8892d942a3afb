// The first pass over a pack: every entry's header parsed and its zlib stream inflated.
//
// Internal to the pack decoder; kept apart so the framing rules and the delta resolution
// can each be read on their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "webgames/git/ByteBudget.hpp"
#include "webgames/git/PackSource.hpp"
#include "webgames/git/Packfile.hpp"
#include "webgames/git/Sha1.hpp"

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
    std::size_t offset = 0;       // where the entry's header starts in the pack
    std::string data;             // inflated: the content, or the delta for types 6 and 7
    std::size_t baseOffset = 0;   // type 6
    std::string baseName;         // type 7: 40 lower-case hexadecimal digits
    std::size_t streamOffset = 0; // where the entry's zlib stream starts
    std::size_t streamBytes = 0;  // what the stream occupies, its trailer counted
};

// "blob 12\0": what an object's name is hashed over before its content.
std::string object_header(std::int32_t type, std::size_t contentSize);

// The SHA-1 an object is named by, of its header and content.
Sha1Digest object_digest(std::int32_t type, std::string_view content);

// The most entries a pack of this size can hold, whatever its header claims.
std::size_t plausible_entry_count(PackBytes& pack);

// Given each entry in pack order, once inflated; it may take the entry's data.
using PackEntryVisitor = std::function<void(PackEntry& entry)>;

// The first pass itself, over a pack in memory or in a file: None once every entry has
// been visited, else why the framing failed (visiting stops at the bad entry). Lets
// std::bad_alloc through, as read_pack_entries does.
PackError scan_pack_entries(PackBytes& pack, ByteBudget& budget, const PackEntryVisitor& visit);

// Entries in pack order (so offsets ascend); no value when the framing or any zlib stream
// is bad, an inflated length differs from its header, or a declared size does not fit the
// budget, which is charged with every entry's declared size before it is inflated. Lets
// std::bad_alloc through; parse_packfile reports it as TooLarge.
std::optional<std::vector<PackEntry>> read_pack_entries(std::string_view pack, ByteBudget& budget,
                                                        PackError* error = nullptr);

} // namespace corvandell::git
