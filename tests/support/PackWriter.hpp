// Hand-made git packs, trees and deltas for tests that need inputs real git never writes.
//
// Entries are stored uncompressed (one stored deflate block each) so the helper needs no
// zlib and the same tests run under Wine; the pack reader cannot tell the difference.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvandell::test {

// The bytes of hexadecimal digit pairs; spaces between pairs are skipped.
std::string from_hex(std::string_view hex);
// A zlib stream of one stored block (up to 65535 bytes) with its Adler-32.
std::string zlib_stored(std::string_view bytes);
// Git's little-endian base-128 number, as in delta headers.
std::string delta_varint(std::uint64_t value);
// "<mode> <name>\0" and the 20 raw bytes of a 40-digit object name.
std::string tree_entry(std::string_view mode, std::string_view name, std::string_view hexName);
// The object name real git would give: SHA-1 of "<type> <size>\0" and the content.
std::string git_object_name(int type, std::string_view content);

class PackWriter {
public:
    // Each returns the entry's offset, for offset deltas naming it as their base.
    std::size_t add(int type, std::string_view content);
    std::size_t add_offset_delta(std::size_t baseOffset, std::string_view delta);
    std::size_t add_ref_delta(std::string_view baseHexName, std::string_view delta);
    // Any header (type, declared size), then `afterHeader` verbatim.
    std::size_t add_raw(int type, std::uint64_t declaredSize, std::string_view afterHeader);
    // Header with the real entry count, the entries, the checksum.
    std::string finish() const;

private:
    std::string entries_;
    std::uint32_t count_ = 0;
};

} // namespace corvandell::test
