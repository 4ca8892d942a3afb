// Decoding tables for the canonical Huffman codes of DEFLATE, built from code lengths.
//
// A code is read least significant bit first, so each table is indexed by the next few
// input bits as they sit in the bit buffer: one lookup in a primary table of 2^primaryBits
// entries resolves every code no longer than that; longer codes (rare by construction)
// point to a subtable indexed by the following bits. Every entry already carries what the
// decoder acts on, so the hot loop needs no second lookup by symbol: the literal byte, or
// the length/distance base with the number of bits to drop for the code and its extra bits
// together (the extra bits are then cut out of the bits as they were before the drop).
// A primary literal entry whose index bits also hold the whole code of a second literal
// carries both bytes, so text decodes two literals per lookup.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "webgames/git/Inflate.hpp"

namespace corvandell::git::inflate_detail {

// Entry layout: bits 0-7 bits to drop (code, plus extra bits for a length or distance, or
// both codes of two literals; the primary bits for a subtable pointer), bits 8-11 the code's
// own length (a subtable pointer: its index bits), bits 12-15 flags, bits 16-31 value
// (literal byte, or two with the second in bits 24-31; base; subtable start).
inline constexpr std::uint32_t kDropMask = 0xFF;
inline constexpr unsigned kCodeBitsShift = 8;
inline constexpr std::uint32_t kLiteral = 0x1000;
inline constexpr std::uint32_t kSecond = 0x2000; // with kLiteral: two literals; with kExceptional: subtable
inline constexpr std::uint32_t kExceptional = 0x4000; // alone: an invalid code
inline constexpr std::uint32_t kEndOfBlock = 0x8000;  // with kExceptional
inline constexpr std::uint32_t kSubtable = kExceptional | kSecond;
inline constexpr unsigned kValueShift = 16;

inline constexpr unsigned kMaxCodeBits = 15;
inline constexpr unsigned kLiteralPrimaryBits = 11;
inline constexpr unsigned kDistancePrimaryBits = 8;
inline constexpr unsigned kCodeLengthPrimaryBits = 7;

// Worst cases for the given primary sizes: each subtable of b index bits holds at least
// b + 1 codes of a complete code, so 288 literal/length symbols need at most 57 subtables
// of 16 entries, and 32 distance symbols at most 4 of 128.
inline constexpr std::size_t kLiteralTableSize = (1u << kLiteralPrimaryBits) + 57 * 16;
inline constexpr std::size_t kDistanceTableSize = (1u << kDistancePrimaryBits) + 4 * 128;
inline constexpr std::size_t kCodeLengthTableSize = 1u << kCodeLengthPrimaryBits;

struct HuffmanCode {
    const std::uint8_t* lengths; // one code length (0-15) per symbol
    std::size_t symbolCount;
    const std::uint32_t* symbolEntry; // per symbol: flags, value and its extra bits as the bits to drop
    unsigned primaryBits;
    // RFC 1951 allows a code of a single length-1 symbol (one unused code), and a distance
    // code with no symbols at all; every other incomplete code is an error.
    bool allowsSingleCode;
    // Literal/length codes only: add the two-literal entries.
    bool pairsLiterals;
};

// Fills `table` (capacity entries). OverSubscribedCode or IncompleteCode when the lengths
// describe no usable prefix code.
InflateError build_huffman_table(const HuffmanCode& huffman, std::uint32_t* table, std::size_t capacity);

// Per-symbol entries of the three DEFLATE alphabets.
const std::uint32_t* literal_length_entries(); // 288 symbols
const std::uint32_t* distance_entries();       // 32 symbols
const std::uint32_t* code_length_entries();    // 19 symbols

// The two tables a compressed block is decoded with; the literal/length table with its
// two-literal entries.
struct Tables {
    std::array<std::uint32_t, kLiteralTableSize> literal;
    std::array<std::uint32_t, kDistanceTableSize> distance;
};

// Pairing literals costs a pass over most of the primary table, worth it only when a
// good many literals are still to come.
InflateError build_tables(Tables& tables, const std::uint8_t* literalLengths, std::size_t literalCount,
                          const std::uint8_t* distanceLengths, std::size_t distanceCount, bool pairsLiterals);

// The fixed codes of block type 1, built once.
const Tables& fixed_tables();

} // namespace corvandell::git::inflate_detail
