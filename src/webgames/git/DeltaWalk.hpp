// Resolving a pack's deltas by walking from each base to the deltas made on it.
//
// Internal to the indexed decode, which has already read every entry once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "webgames/git/ByteBudget.hpp"
#include "webgames/git/PackIndex.hpp"
#include "webgames/git/PackSource.hpp"

namespace corvandell::git {

struct DeltaWalkInput {
    std::vector<std::size_t> baseOffsets;   // per entry: an offset delta's base offset
    std::vector<std::uint64_t> targetSizes; // per entry: the size a delta announces, or UINT64_MAX
    std::vector<std::pair<Sha1Digest, std::uint32_t>> referenceBases; // base name, reference delta
};

// Fills in each delta's base, type, size and name, and marks bases. `budget` is what the
// first pass left. A reference delta goes to the first entry named as its base names, once
// that entry is named. For a pack of offset deltas only, the failure reported is the one a
// resolution in pack order meets first, so it is the object set's own: the lowest entry
// that fails. For one with reference deltas, only success is meaningful.
PackError walk_deltas(PackBytes& pack, std::vector<PackIndexEntry>& entries, DeltaWalkInput input,
                      ByteBudget budget, PackIndexStats& stats);

} // namespace corvandell::git
