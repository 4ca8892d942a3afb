// The indexed decode: one pass that names whole objects and drops them, then the deltas.
//
// Every pack goes through the delta walk. A pack with reference deltas whose walk fails,
// or that has a reference delta on a base no earlier entry is named as, is resolved again
// in pack order by the object set's own resolver, holding every content: which failure
// such a pack reports, and whether a base that comes later is found at all, depends on
// that resolver's forward scan for unnamed bases, and reproducing the scan is not worth a
// second implementation. Git writes every base before its deltas, so its packs never get
// there.
#include "webgames/git/PackIndex.hpp"

#include "webgames/git/Delta.hpp"
#include "webgames/git/DeltaWalk.hpp"
#include "webgames/git/Inflate.hpp"
#include "webgames/git/PackEntries.hpp"
#include "webgames/git/PackResolve.hpp"

#include <algorithm>
#include <new>
#include <numeric>

namespace corvandell::git {

namespace {

bool is_whole_object(std::int32_t packType) {
    return packType >= kPackCommit && packType <= kPackTag;
}

// The first pass: every entry's place and size; whole objects named and dropped.
PackError scan(PackBytes& pack, ByteBudget& budget, std::vector<PackIndexEntry>& entries,
               DeltaWalkInput& walk, bool& hasRefDeltas) {
    const std::size_t plausible = plausible_entry_count(pack);
    entries.reserve(plausible);
    walk.baseOffsets.reserve(plausible);
    walk.targetSizes.reserve(plausible);
    return scan_pack_entries(pack, budget, [&](PackEntry& packEntry) {
        PackIndexEntry& entry = entries.emplace_back();
        entry.offset = packEntry.offset;
        entry.streamOffset = packEntry.streamOffset;
        entry.streamBytes = packEntry.streamBytes;
        entry.packedSize = packEntry.data.size();
        entry.packType = packEntry.type;
        std::uint64_t targetSize = UINT64_MAX;
        if (is_whole_object(packEntry.type)) {
            entry.type = packEntry.type;
            entry.size = packEntry.data.size();
            entry.name = object_digest(entry.type, packEntry.data);
        } else if (packEntry.type == kPackOffsetDelta || packEntry.type == kPackRefDelta) {
            targetSize = delta_target_size(packEntry.data).value_or(UINT64_MAX);
        }
        if (packEntry.type == kPackRefDelta) {
            hasRefDeltas = true;
            walk.referenceBases.emplace_back(digest_of_hex(packEntry.baseName).value_or(Sha1Digest{}),
                                             static_cast<std::uint32_t>(entries.size() - 1));
        }
        walk.baseOffsets.push_back(packEntry.baseOffset);
        walk.targetSizes.push_back(targetSize);
    });
}

PackError resolve_in_pack_order(PackBytes& pack, const ByteLimits& limits,
                                std::vector<PackIndexEntry>& entries, PackIndexStats& stats) {
    const std::string_view whole = pack.read(0, pack.size());
    if (whole.size() != pack.size()) {
        return PackError::Truncated;
    }
    PackError reason = PackError::None;
    ByteBudget budget(limits, pack.size());
    auto packEntries = read_pack_entries(whole, budget, &reason);
    if (!packEntries) {
        return reason;
    }
    auto resolved = resolve_pack_entries(*packEntries, object_name, budget, reason);
    if (!resolved) {
        return reason;
    }
    for (PackIndexEntry& entry : entries) {
        entry.base = PackIndexEntry::kNoBase;
        entry.isBase = false;
    }
    stats.peakContentBytes = 0;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const ResolvedEntry& object = (*resolved)[index];
        PackIndexEntry& entry = entries[index];
        entry.type = object.type;
        entry.size = object.content.size();
        entry.name = digest_of_hex(object.name).value_or(Sha1Digest{});
        stats.peakContentBytes += object.content.size();
        if (object.base != kNoBaseEntry) {
            entry.base = static_cast<std::uint32_t>(object.base);
            entries[object.base].isBase = true;
        }
    }
    return PackError::None;
}

// Whether resolving in pack order finds each reference delta's base already named.
bool are_reference_bases_earlier(const std::vector<PackIndexEntry>& entries) {
    std::vector<std::uint32_t> byName(entries.size());
    std::iota(byName.begin(), byName.end(), std::uint32_t{0});
    std::stable_sort(byName.begin(), byName.end(), [&entries](std::uint32_t a, std::uint32_t b) {
        return entries[a].name < entries[b].name;
    });
    for (std::size_t index = 0; index < entries.size(); ++index) {
        if (entries[index].packType != kPackRefDelta) {
            continue;
        }
        const Sha1Digest& baseName = entries[entries[index].base].name;
        const auto first = std::lower_bound(
            byName.begin(), byName.end(), baseName,
            [&entries](std::uint32_t entry, const Sha1Digest& value) { return entries[entry].name < value; });
        if (*first >= index) {
            return false;
        }
    }
    return true;
}

} // namespace

PackIndex::PackIndex(std::vector<PackIndexEntry> entries)
    : entries_(std::move(entries)), byName_(entries_.size()) {
    std::iota(byName_.begin(), byName_.end(), std::uint32_t{0});
    std::stable_sort(byName_.begin(), byName_.end(), [this](std::uint32_t a, std::uint32_t b) {
        return entries_[a].name < entries_[b].name;
    });
}

std::optional<std::size_t> PackIndex::find_raw(std::string_view rawName) const {
    if (rawName.size() != Sha1Digest{}.size()) {
        return std::nullopt;
    }
    Sha1Digest name{};
    std::copy(rawName.begin(), rawName.end(), name.begin());
    const auto last = std::upper_bound(
        byName_.begin(), byName_.end(), name,
        [this](const Sha1Digest& value, std::uint32_t entry) { return value < entries_[entry].name; });
    if (last == byName_.begin() || entries_[*(last - 1)].name != name) {
        return std::nullopt;
    }
    return *(last - 1);
}

std::optional<std::size_t> PackIndex::find(std::string_view hexName) const {
    const auto name = digest_of_hex(hexName);
    if (!name) {
        return std::nullopt;
    }
    return find_raw(raw_of(*name));
}

std::optional<std::string> inflate_entry_again(PackBytes& pack, const PackIndexEntry& entry) {
    const std::string_view stream =
        pack.read(entry.streamOffset, entry.streamBytes).substr(0, entry.streamBytes);
    auto inflated = inflate_zlib(stream, entry.packedSize, nullptr, entry.packedSize);
    if (!inflated || inflated->bytes.size() != entry.packedSize) {
        return std::nullopt;
    }
    return std::move(inflated->bytes);
}

std::optional<PackIndex> index_pack(PackBytes& pack, PackError* error, const ByteLimits& limits,
                                    PackIndexStats* stats) {
    PackError ignored = PackError::None;
    PackError& reason = error != nullptr ? *error : ignored;
    PackIndexStats unused;
    PackIndexStats& figures = stats != nullptr ? *stats : unused;
    figures = {};
    try {
        ByteBudget budget(limits, pack.size());
        std::vector<PackIndexEntry> entries;
        DeltaWalkInput walk;
        bool hasRefDeltas = false;
        reason = scan(pack, budget, entries, walk, hasRefDeltas);
        if (reason == PackError::None) {
            reason = walk_deltas(pack, entries, std::move(walk), budget, figures);
            if (hasRefDeltas && (reason != PackError::None || !are_reference_bases_earlier(entries))) {
                reason = resolve_in_pack_order(pack, limits, entries, figures);
            }
        }
        if (reason != PackError::None) {
            return std::nullopt;
        }
        return PackIndex(std::move(entries));
    } catch (const std::bad_alloc&) {
        reason = PackError::TooLarge;
        return std::nullopt;
    }
}

} // namespace corvandell::git
