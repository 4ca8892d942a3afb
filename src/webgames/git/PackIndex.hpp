// An index of a pack's objects: for each, where its entry is, its type and size, and (for
// a delta) the entry it applies to; no contents.
//
// The decode behind it reads every entry once, names each whole object and drops it, then
// resolves deltas by walking from each base to the deltas made on it, holding a content
// only while deltas on it are still to be applied. So it holds the index, a read buffer and
// the contents along one delta chain, where the object set holds every content at once.
// PackObjectReader reads objects back from the pack when they are wanted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "webgames/git/ByteBudget.hpp"
#include "webgames/git/PackSource.hpp"
#include "webgames/git/Packfile.hpp"
#include "webgames/git/Sha1.hpp"

namespace corvandell::git {

struct PackIndexEntry {
    static constexpr std::uint32_t kNoBase = UINT32_MAX;

    Sha1Digest name{};
    std::size_t offset = 0;       // where the entry's header starts
    std::size_t streamOffset = 0; // where its zlib stream starts
    std::size_t streamBytes = 0;  // what the stream occupies
    std::size_t packedSize = 0;   // what the stream inflates to: the content, or the delta
    std::size_t size = 0;         // the object's content
    std::uint32_t base = kNoBase; // for a delta, the entry it is applied to
    std::int32_t packType = 0;    // 1-4, or 6 and 7 for deltas
    std::int32_t type = 0;        // 1-4, a delta's being its base's
    bool isBase = false;          // some delta is applied to it

    bool isDelta() const { return base != kNoBase; }
};

class PackIndex {
public:
    explicit PackIndex(std::vector<PackIndexEntry> entries);

    // In pack order.
    const std::vector<PackIndexEntry>& entries() const { return entries_; }
    // The entry holding the object, by its 20-byte or 40-digit name; of several entries
    // with one name, the last in pack order.
    std::optional<std::size_t> find_raw(std::string_view rawName) const;
    std::optional<std::size_t> find(std::string_view hexName) const;

private:
    std::vector<PackIndexEntry> entries_;
    std::vector<std::uint32_t> byName_;
};

struct PackIndexStats {
    // Most bytes of whole contents held at once while resolving deltas: bases waiting for
    // their deltas and the result being made.
    std::uint64_t peakContentBytes = 0;
};

// The entry's inflated bytes read again from the pack: the content, or the delta. No
// value when the pack no longer reads as it did when indexed.
std::optional<std::string> inflate_entry_again(PackBytes& pack, const PackIndexEntry& entry);

// No value, for the same reasons parse_packfile gives, on any malformed pack or one over
// the limits; never throws. Names are the engine's SHA-1.
std::optional<PackIndex> index_pack(PackBytes& pack, PackError* error = nullptr,
                                    const ByteLimits& limits = {}, PackIndexStats* stats = nullptr);

} // namespace corvandell::git
