// Decoding tables for the canonical Huffman codes of DEFLATE, built from code lengths.
//
// A code is read least significant bit first, so each table is indexed by the next few
// input bits as they sit in the bit buffer: one lookup in a primary table of 2^primaryBits
// entries resolves every code no longer than that; longer codes (rare by construction)
// point to a subtable indexed by the following bits. Every entry already carries what the
// decoder acts on (literal byte, or length/distance base with its extra-bit count), so the
// hot loop needs no second lookup by symbol.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "webgames/git/Inflate.hpp"

namespace corvandell::git::inflate_detail {

// Entry layout: bits 0-3 code bits to drop, bits 4-7 extra bits (or subtable index bits),
// bits 8-11 flags, bits 16-31 value (literal byte, base, or subtable start).
inline constexpr std::uint32_t kCodeBitsMask = 0x0F;
inline constexpr unsigned kExtraShift = 4;
inline constexpr std::uint32_t kLiteral = 0x100;
inline constexpr std::uint32_t kEndOfBlock = 0x200;
inline constexpr std::uint32_t kSubtable = 0x400;
inline constexpr std::uint32_t kInvalid = 0x800;
inline constexpr unsigned kValueShift = 16;

inline constexpr unsigned kMaxCodeBits = 15;
inline constexpr unsigned kLiteralPrimaryBits = 10;
inline constexpr unsigned kDistancePrimaryBits = 8;
inline constexpr unsigned kCodeLengthPrimaryBits = 7;

// Worst cases for the given primary sizes: each subtable of b index bits holds at least
// b + 1 codes of a complete code, so 288 literal/length symbols need at most 48 subtables
// of 32 entries, and 32 distance symbols at most 4 of 128.
inline constexpr std::size_t kLiteralTableSize = (1u << kLiteralPrimaryBits) + 48 * 32;
inline constexpr std::size_t kDistanceTableSize = (1u << kDistancePrimaryBits) + 4 * 128;
inline constexpr std::size_t kCodeLengthTableSize = 1u << kCodeLengthPrimaryBits;

struct HuffmanCode {
    const std::uint8_t* lengths; // one code length (0-15) per symbol
    std::size_t symbolCount;
    const std::uint32_t* symbolEntry; // per symbol: flags, extra bits and value, code bits left 0
    unsigned primaryBits;
    // RFC 1951 allows a code of a single length-1 symbol (one unused code), and a distance
    // code with no symbols at all; every other incomplete code is an error.
    bool allowsSingleCode;
};

// Fills `table` (capacity entries). OverSubscribedCode or IncompleteCode when the lengths
// describe no usable prefix code.
InflateError build_huffman_table(const HuffmanCode& huffman, std::uint32_t* table, std::size_t capacity);

// Per-symbol entries of the three DEFLATE alphabets.
const std::uint32_t* literal_length_entries(); // 288 symbols
const std::uint32_t* distance_entries();       // 32 symbols
const std::uint32_t* code_length_entries();    // 19 symbols

// The two tables a compressed block is decoded with.
struct Tables {
    std::array<std::uint32_t, kLiteralTableSize> literal;
    std::array<std::uint32_t, kDistanceTableSize> distance;
};

InflateError build_tables(Tables& tables, const std::uint8_t* literalLengths, std::size_t literalCount,
                          const std::uint8_t* distanceLengths, std::size_t distanceCount);

// The fixed codes of block type 1, built once.
const Tables& fixed_tables();

} // namespace corvandell::git::inflate_detail
