// Delta resolution in pack order over inflated entries, as parse_packfile does it.
//
// Internal to the pack decoder. The indexed decode uses it too for packs with reference
// deltas, whose forward scan decides which failure such a pack reports; those packs are
// rare (the clone asks for offset deltas), so they keep every content while resolving.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "webgames/git/ByteBudget.hpp"
#include "webgames/git/PackEntries.hpp"
#include "webgames/git/Packfile.hpp"

namespace corvandell::git {

inline constexpr std::size_t kNoBaseEntry = static_cast<std::size_t>(-1);

// Pending: on the resolution stack, waiting for its base or about to be resolved.
enum class ResolveState : std::uint8_t { Unresolved, Pending, Done };

struct ResolvedEntry {
    std::int32_t type = 0;
    std::string content;
    std::string name;
    std::size_t base = kNoBaseEntry; // the entry a delta was applied to
    ResolveState state = ResolveState::Unresolved;
};

// One result per entry, in pack order; no value and `reason` set on the first failure.
// Takes each entry's data. Lets std::bad_alloc through.
std::optional<std::vector<ResolvedEntry>> resolve_pack_entries(std::vector<PackEntry>& entries,
                                                               const ObjectNameFunction& objectName,
                                                               ByteBudget& budget, PackError& reason);

} // namespace corvandell::git
