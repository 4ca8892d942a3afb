// Git's delta format: rebuilds an object from its base and a list of copy/insert opcodes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "webgames/git/ByteBudget.hpp"

namespace corvandell::git {

// Why a delta did not apply, kept so tests can aim at each case; the pack decoder only
// tells the budget apart from the rest.
enum class DeltaError {
    None,
    BadHeader,          // a size is cut short or wider than 64 bits
    SourceSizeMismatch, // the delta was made against a base of another length
    TooLarge,           // the target is over the caller's limit
    OutOfMemory,        // the target could not be allocated
    TargetUnreachable,  // the opcodes left could not produce a target that long
    ReservedOpcode,     // opcode 0
    TruncatedOpcode,    // copy arguments or inserted bytes run past the delta's end
    CopyOutOfRange,     // a copy reaches past the base's end
    TargetOverrun,      // the opcodes write past the announced target size
    TargetShort,        // the opcodes end before the target is full
};

// The target, allocated only once its announced size is known to be within
// `maxTargetBytes` and within what the opcodes could produce.
std::optional<std::string> apply_delta(std::string_view base, std::string_view delta,
                                       DeltaError* error = nullptr,
                                       std::size_t maxTargetBytes = kMaxObjectBytes);

// The target size a delta announces, without applying it; no value when its header is
// cut short or malformed.
std::optional<std::uint64_t> delta_target_size(std::string_view delta);

} // namespace corvandell::git
