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

#include "webgames/git/ByteBudget.hpp"

namespace corvandell::git {

struct Inflated {
    std::string bytes;
    // Input bytes the stream occupied; a partly used last byte counts as whole. For zlib
    // this includes the 2-byte header and the 4-byte Adler-32 trailer, which is counted but
    // neither verified nor required: when the input ends inside it, this exceeds the input
    // size by up to 4.
    std::size_t consumed = 0;
};

// Why a stream failed, kept so tests can aim at each case; callers only see "no value".
enum class InflateError {
    None,
    TruncatedInput,
    BadZlibHeader,
    BadBlockType,
    StoredLengthMismatch,
    BadCodeLengths,     // repeat with nothing to repeat or past the end, too many symbols, no end code
    OverSubscribedCode, // more codes of some length than the code space holds
    IncompleteCode,     // unused code space, beyond the single-code cases the format allows
    InvalidSymbol,
    DistanceTooFar,
    TooLarge,    // more output than the caller allows
    OutOfMemory, // the output could not be allocated
};

// `expectedSize` is only a hint for the output reservation; it is never trusted beyond what
// the input could possibly expand to. A stream that would produce more than
// `maxOutputBytes` fails with TooLarge as soon as it gets there, having held at most a few
// hundred bytes beyond that limit.
std::optional<Inflated> inflate_raw(std::string_view input, std::size_t expectedSize,
                                    InflateError* error = nullptr,
                                    std::size_t maxOutputBytes = kMaxObjectBytes);
std::optional<Inflated> inflate_zlib(std::string_view input, std::size_t expectedSize,
                                     InflateError* error = nullptr,
                                     std::size_t maxOutputBytes = kMaxObjectBytes);

// Output bytes reserved before decoding, which is what a stream of the expected size ends
// up holding: the hint, but no more than `inputSize` bytes of
// DEFLATE can expand to (1032 per byte), no more than the output limit and no more than
// 64 MB, beyond which the output grows as it arrives. So a hostile size declaration costs
// next to nothing.
std::size_t inflate_reservation(std::size_t inputSize, std::size_t expectedSize, std::size_t maxOutputBytes);

} // namespace corvandell::git
