// gzip (RFC 1952) files over the same inflate, for store receipts kept gzip-compressed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvandell::git {

// The decompressed content of every member of the file, concatenated; no value when the
// file is not gzip, is truncated, or a member's CRC-32 or length does not match.
std::optional<std::string> gunzip(std::string_view file);

} // namespace corvandell::git
