// DEFLATE (RFC 1951) and zlib (RFC 1950) decoding of whole in-memory buffers.
//
// Pack entries and gzip members are decoded from one buffer into one output string whose
// final size the caller usually knows, so there is no resumable stream state: the decoder
// runs a 64-bit bit buffer through table-driven Huffman lookups and reports how many input
// bytes the stream occupied, because the next pack entry starts right after it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell::git {

struct Inflated {
    std::string bytes;
    // Input bytes the stream occupied; a partly used last byte counts as whole. For zlib
    // this includes the 2-byte header and the 4-byte Adler-32 trailer (never verified).
    std::size_t consumed = 0;
};

// Why a stream failed, kept so tests can aim at each case; callers only see "no value".
enum class InflateError {
    None,
    TruncatedInput,
    BadZlibHeader,
    BadBlockType,
    StoredLengthMismatch,
    BadCodeLengths,
    InvalidSymbol,
    DistanceTooFar,
};

// `expectedSize` is only a hint for the output reservation; it is never trusted beyond what
// the input could possibly expand to.
std::optional<Inflated> inflate_raw(std::string_view input, std::size_t expectedSize,
                                    InflateError* error = nullptr);
std::optional<Inflated> inflate_zlib(std::string_view input, std::size_t expectedSize,
                                     InflateError* error = nullptr);

} // namespace corvandell::git
