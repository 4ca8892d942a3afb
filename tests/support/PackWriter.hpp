// Hand-made git packs, trees and deltas for tests that need inputs real git never writes.
//
// Entries are stored uncompressed (one stored deflate block each) so the helper needs no
// zlib and the same tests run under Wine; the pack reader cannot tell the difference.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::test {

std::string from_hex(std::string_view hex);      // spaces between digit pairs are skipped
std::string zlib_stored(std::string_view bytes); // stored blocks of up to 65535 bytes each
std::string delta_varint(std::uint64_t value);   // little-endian base-128, as in delta headers
// "<mode> <name>\0" and the 20 raw bytes of a 40-digit object name.
std::string tree_entry(std::string_view mode, std::string_view name, std::string_view hexName);
std::string git_object_name(int type, std::string_view content);

// A pack entry's header (type, declared size), then `afterHeader` verbatim.
std::string pack_entry(int type, std::uint64_t declaredSize, std::string_view afterHeader);
std::string pack_entry(int type, std::string_view content);
std::string ref_delta_entry(std::string_view baseHexName, std::string_view delta);
// The header with the real entry count, the entries, the checksum.
std::string pack_of(const std::vector<std::string>& entries);

} // namespace corvandell::test
