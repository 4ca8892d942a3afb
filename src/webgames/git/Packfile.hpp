// Decoding a whole git pack held in memory into named objects.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "webgames/git/ByteBudget.hpp"

namespace corvandell::git {

struct GitObject {
    std::int32_t type = 0; // 1 commit, 2 tree, 3 blob, 4 tag
    std::string id;        // 40 lower-case hexadecimal digits
    std::string data;      // content without the "type size\0" header
};

using ObjectSet = std::map<std::string, GitObject>;

// Takes the object header ("blob 12\0") and the content; returns the 40-digit name.
using ObjectNameFunction = std::function<std::string(std::string_view header, std::string_view content)>;

// Why a pack was refused, kept so tests can aim at each case; the clone only tells the
// budget apart from the rest.
enum class PackError {
    None,
    BadHeader,    // too short for a header and checksum, or no "PACK"
    Truncated,    // an entry header or base reference runs past the end, or entries are missing
    BadStream,    // an entry's zlib stream does not decode
    SizeMismatch, // an entry inflates to another length than its header declares
    UnknownType,  // type 0 or 5
    MissingBase,  // a delta's base is at no entry's start, before the pack, or named by no entry
    DeltaCycle,   // deltas that are, directly or not, each other's base
    ChainTooDeep, // more deltas waiting on one another than are ever resolved
    BadDelta,     // a delta does not apply to its base
    TooLarge,     // over the byte budget, or the memory could not be had
};

// No value for any malformed pack or one over the limits; never throws, not even when
// memory runs out. `error`, when given, receives the reason.
std::optional<ObjectSet> parse_packfile(std::string_view pack, const ObjectNameFunction& objectName,
                                        PackError* error = nullptr, const ByteLimits& limits = {});

// The same, taking the pack over: it is released as soon as every entry has been
// inflated, before the deltas are resolved, so the pack and the full set of contents are
// never held together.
std::optional<ObjectSet> parse_packfile(std::string&& pack, const ObjectNameFunction& objectName,
                                        PackError* error = nullptr, const ByteLimits& limits = {});

} // namespace corvandell::git
