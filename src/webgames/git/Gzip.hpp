// gzip (RFC 1952) files over the same inflate, for store receipts kept gzip-compressed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "webgames/git/ByteBudget.hpp"

namespace corvandell::git {

// The decompressed content of every member of the file, concatenated; no value when the
// file is not gzip, is truncated, a member's CRC-32 or length does not match, or the
// content would exceed `maxBytes` (checked as it is inflated, not from the trailer).
std::optional<std::string> gunzip(std::string_view file, std::size_t maxBytes = kMaxObjectBytes);

} // namespace corvandell::git
