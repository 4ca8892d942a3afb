// Canonical Huffman table construction (RFC 1951 section 3.2.2).
//
// Codes are assigned in (length, symbol) order, which is also the order of their
// left-aligned values; so the long codes sharing one primary prefix come out as one run,
// shortest first, and each run gets its own subtable sized for its longest member.
#include "webgames/git/HuffmanTable.hpp"

#include <algorithm>
#include <array>

namespace corvandell::git::inflate_detail {
namespace {

// The low `length` bits of `code` in reverse order (lengths up to 16).
std::uint32_t reverse_bits(std::uint32_t code, unsigned length) {
    code = ((code & 0x5555) << 1) | ((code >> 1) & 0x5555);
    code = ((code & 0x3333) << 2) | ((code >> 2) & 0x3333);
    code = ((code & 0x0F0F) << 4) | ((code >> 4) & 0x0F0F);
    code = ((code & 0x00FF) << 8) | ((code >> 8) & 0x00FF);
    return code >> (16 - length);
}

// A symbol's entry once its code length is known: the code's bits are dropped with its
// extra bits.
std::uint32_t coded_entry(std::uint32_t symbolEntry, unsigned length) {
    return symbolEntry + length + (length << kCodeBitsShift);
}

// Writes `entry` at every index whose low `length` bits are `start`, below `end`.
void fill_strided(std::uint32_t* table, std::uint32_t start, unsigned length, std::uint32_t end,
                  std::uint32_t entry) {
    for (std::uint32_t i = start; i < end; i += 1u << length) {
        table[i] = entry;
    }
}

// Index bits of the subtable opened by a code of `length` bits: deep enough that the codes
// still to be placed, shortest first, cover the whole subtree under this prefix.
unsigned subtable_bits(unsigned length, unsigned primaryBits, const std::array<int, 16>& remaining) {
    unsigned bits = length - primaryBits;
    int uncovered = 1 << bits;
    while (primaryBits + bits < kMaxCodeBits) {
        uncovered -= remaining[primaryBits + bits];
        if (uncovered <= 0) {
            break;
        }
        ++bits;
        uncovered <<= 1;
    }
    return bits;
}

constexpr std::array<std::uint16_t, 29> kLengthBase = {3,  4,  5,  6,   7,   8,   9,   10,  11, 13,
                                                       15, 17, 19, 23,  27,  31,  35,  43,  51, 59,
                                                       67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::array<std::uint8_t, 29> kLengthExtra = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                                       2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::array<std::uint16_t, 30> kDistanceBase = {
    1,   2,   3,   4,   5,   7,    9,    13,   17,   25,   33,   49,   65,    97,    129,
    193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr std::array<std::uint8_t, 30> kDistanceExtra = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                                         6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

constexpr std::uint32_t base_entry(std::uint32_t base, std::uint32_t extraBits) {
    return (base << kValueShift) | extraBits;
}

constexpr std::array<std::uint32_t, 288> make_literal_length_entries() {
    std::array<std::uint32_t, 288> entries{};
    for (std::uint32_t symbol = 0; symbol < 256; ++symbol) {
        entries[symbol] = kLiteral | (symbol << kValueShift);
    }
    entries[256] = kExceptional | kEndOfBlock;
    for (std::size_t i = 0; i < kLengthBase.size(); ++i) {
        entries[257 + i] = base_entry(kLengthBase[i], kLengthExtra[i]);
    }
    entries[286] = kExceptional;
    entries[287] = kExceptional;
    return entries;
}

constexpr std::array<std::uint32_t, 32> make_distance_entries() {
    std::array<std::uint32_t, 32> entries{};
    for (std::size_t i = 0; i < kDistanceBase.size(); ++i) {
        entries[i] = base_entry(kDistanceBase[i], kDistanceExtra[i]);
    }
    entries[30] = kExceptional;
    entries[31] = kExceptional;
    return entries;
}

constexpr std::array<std::uint32_t, 19> make_code_length_entries() {
    std::array<std::uint32_t, 19> entries{};
    for (std::uint32_t symbol = 0; symbol < 19; ++symbol) {
        entries[symbol] = symbol << kValueShift;
    }
    return entries;
}

constexpr auto kLiteralLengthEntries = make_literal_length_entries();
constexpr auto kDistanceEntries = make_distance_entries();
constexpr auto kCodeLengthEntries = make_code_length_entries();

// The literals whose codes are shorter than the primary index, shortest first, and the
// entries that decode two of them at once. Two codes fit one lookup when their lengths
// add up to at most the index bits: the index then starts with the first code, followed
// by the second, and every index with those low bits takes the pair. Written after the
// single entries, which they replace; a pair is never under a subtable prefix, whose
// first bits are a long code. The work is one store per paired index.
class ShortLiterals {
public:
    void add(std::uint32_t reversedCode, unsigned length, std::uint32_t byte) {
        codes_[count_] = static_cast<std::uint16_t>(reversedCode);
        lengths_[count_] = static_cast<std::uint8_t>(length);
        bytes_[count_] = static_cast<std::uint8_t>(byte);
        ++count_;
    }

    void pairInto(std::uint32_t* table, unsigned primaryBits) const {
        const std::uint32_t primarySize = 1u << primaryBits;
        for (std::size_t first = 0; first < count_; ++first) {
            for (std::size_t second = 0; second < count_; ++second) {
                const unsigned bothBits = lengths_[first] + lengths_[second];
                if (bothBits > primaryBits) {
                    break;
                }
                const std::uint32_t entry = kLiteral | kSecond | bothBits |
                                            (std::uint32_t{bytes_[first]} << kValueShift) |
                                            (std::uint32_t{bytes_[second]} << (kValueShift + 8));
                fill_strided(table, codes_[first] | (std::uint32_t{codes_[second]} << lengths_[first]),
                             bothBits, primarySize, entry);
            }
        }
    }

private:
    // Only the first count_ of each are ever read, so none is initialised.
    std::array<std::uint16_t, 256> codes_;
    std::array<std::uint8_t, 256> lengths_;
    std::array<std::uint8_t, 256> bytes_;
    std::size_t count_ = 0;
};

} // namespace

const std::uint32_t* literal_length_entries() {
    return kLiteralLengthEntries.data();
}
const std::uint32_t* distance_entries() {
    return kDistanceEntries.data();
}
const std::uint32_t* code_length_entries() {
    return kCodeLengthEntries.data();
}

InflateError build_huffman_table(const HuffmanCode& huffman, std::uint32_t* table, std::size_t capacity) {
    // Counted in two halves: consecutive symbols mostly share a length, and one counter
    // would have each increment wait on the one before.
    std::array<int, 16> lengthCount{};
    std::array<int, 16> oddCount{};
    std::size_t symbol = 0;
    for (; symbol + 1 < huffman.symbolCount; symbol += 2) {
        ++lengthCount[huffman.lengths[symbol]];
        ++oddCount[huffman.lengths[symbol + 1]];
    }
    if (symbol < huffman.symbolCount) {
        ++lengthCount[huffman.lengths[symbol]];
    }
    for (std::size_t length = 0; length < lengthCount.size(); ++length) {
        lengthCount[length] += oddCount[length];
    }
    int unassigned = 1; // codes still free at the current depth
    for (unsigned length = 1; length <= kMaxCodeBits; ++length) {
        unassigned = unassigned * 2 - lengthCount[length];
        if (unassigned < 0) {
            return InflateError::OverSubscribedCode;
        }
    }
    const auto used = static_cast<int>(huffman.symbolCount) - lengthCount[0];
    const std::uint32_t primarySize = 1u << huffman.primaryBits;
    if (unassigned > 0) {
        const bool isSingleCode = used == 1 && lengthCount[1] == 1;
        if (!huffman.allowsSingleCode || (used != 0 && !isSingleCode)) {
            return InflateError::IncompleteCode;
        }
        fill_strided(table, 0, 0, primarySize, kExceptional);
    }

    // Symbols in canonical order: by code length, then by symbol value.
    std::array<std::uint16_t, 16> firstSlot{};
    for (unsigned length = 1; length < kMaxCodeBits; ++length) {
        firstSlot[length + 1] = static_cast<std::uint16_t>(firstSlot[length] + lengthCount[length]);
    }
    std::array<std::uint16_t, 288> sorted; // only the used slots are read
    for (symbol = 0; symbol < huffman.symbolCount; ++symbol) {
        if (const unsigned length = huffman.lengths[symbol]; length != 0) {
            sorted[firstSlot[length]++] = static_cast<std::uint16_t>(symbol);
        }
    }

    // A complete code covers every primary index exactly once, by a code or a subtable
    // prefix, so the table can grow by doubling: the codes of each length are written once
    // into a table as wide as that length, and copying that table onto its upper half
    // repeats them wherever their bits recur.
    const bool isComplete = unassigned == 0;
    if (isComplete) {
        table[0] = kExceptional;
        table[1] = kExceptional;
    }
    std::array<int, 16> remaining = lengthCount;
    ShortLiterals shortLiterals;
    std::uint32_t code = 0;
    std::uint32_t nextSubtable = primarySize;
    std::uint32_t openPrefix = primarySize; // none open yet
    std::uint32_t subtableStart = 0;
    std::uint32_t subtableEnd = 0;
    std::size_t slot = 0;
    for (unsigned length = 1; length <= kMaxCodeBits; ++length, code <<= 1) {
        if (isComplete && length > 1 && length <= huffman.primaryBits) {
            const std::size_t half = std::size_t{1} << (length - 1);
            std::copy_n(table, half, table + half);
        }
        for (int n = 0; n < lengthCount[length]; ++n, ++code) {
            const std::uint32_t entry = huffman.symbolEntry[sorted[slot++]];
            const std::uint32_t reversed = reverse_bits(code, length);
            if (length <= huffman.primaryBits) {
                if (isComplete) {
                    table[reversed] = coded_entry(entry, length);
                    if (huffman.pairsLiterals && length < huffman.primaryBits && (entry & kLiteral)) {
                        shortLiterals.add(reversed, length, entry >> kValueShift);
                    }
                } else {
                    fill_strided(table, reversed, length, primarySize, coded_entry(entry, length));
                }
                continue;
            }
            const std::uint32_t prefix = reversed & (primarySize - 1);
            if (prefix != openPrefix) {
                const unsigned bits = subtable_bits(length, huffman.primaryBits, remaining);
                subtableStart = nextSubtable;
                subtableEnd = subtableStart + (1u << bits);
                if (subtableEnd > capacity) {
                    return InflateError::OverSubscribedCode; // unreachable for checked lengths
                }
                table[prefix] = kSubtable | huffman.primaryBits | (bits << kCodeBitsShift) |
                                (subtableStart << kValueShift);
                openPrefix = prefix;
                nextSubtable = subtableEnd;
            }
            const unsigned subLength = length - huffman.primaryBits;
            fill_strided(table + subtableStart, reversed >> huffman.primaryBits, subLength,
                         subtableEnd - subtableStart, coded_entry(entry, subLength));
            --remaining[length];
        }
    }
    shortLiterals.pairInto(table, huffman.primaryBits);
    return InflateError::None;
}

InflateError build_tables(Tables& tables, const std::uint8_t* literalLengths, std::size_t literalCount,
                          const std::uint8_t* distanceLengths, std::size_t distanceCount,
                          bool pairsLiterals) {
    const InflateError literal = build_huffman_table(
        {literalLengths, literalCount, literal_length_entries(), kLiteralPrimaryBits, true, pairsLiterals},
        tables.literal.data(), tables.literal.size());
    if (literal != InflateError::None) {
        return literal;
    }
    return build_huffman_table(
        {distanceLengths, distanceCount, distance_entries(), kDistancePrimaryBits, true, false},
        tables.distance.data(), tables.distance.size());
}

const Tables& fixed_tables() {
    static const Tables tables = [] {
        std::array<std::uint8_t, 288> literalLengths{};
        std::fill(literalLengths.begin(), literalLengths.begin() + 144, std::uint8_t{8});
        std::fill(literalLengths.begin() + 144, literalLengths.begin() + 256, std::uint8_t{9});
        std::fill(literalLengths.begin() + 256, literalLengths.begin() + 280, std::uint8_t{7});
        std::fill(literalLengths.begin() + 280, literalLengths.end(), std::uint8_t{8});
        std::array<std::uint8_t, 32> distanceLengths{};
        distanceLengths.fill(5);
        Tables built;
        build_tables(built, literalLengths.data(), literalLengths.size(), distanceLengths.data(),
                     distanceLengths.size(), true);
        return built;
    }();
    return tables;
}

} // namespace corvandell::git::inflate_detail
