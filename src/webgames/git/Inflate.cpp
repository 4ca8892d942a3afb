// DEFLATE decoding of one whole buffer into one string (the zlib wrapper is in Zlib.cpp).
//
// Why it is fast: bits sit in a 64-bit buffer refilled eight bytes at a time without a
// branch; one table lookup resolves a code and tells how many bits it and its extra bits
// take, so a length or distance is one lookup, one shift and one add; a lookup yields two
// literals when both codes fit its index bits, and up to three such lookups share a refill;
// matches are copied 8 or 16 bytes at a time, a short match in three unconditional words,
// and even a match that overlaps its own output (distance under 8) moves in words once its
// first period is laid down. That fast loop only runs while at least kInputSlack input
// bytes and kOutputSlack output bytes remain, so it checks neither; near either end a
// careful path decodes one symbol at a time, feeding zeros past the end of input and
// growing the output as needed. Both paths read the same tables and must agree exactly
// (the tests and the fuzzer run whole streams through the careful path alone).
//
// Each output is allocated once at the size the caller expects, with no slack left over
// in it (a pack holds many thousands of small objects): the careful path finishes the
// last few hundred bytes exactly in place, and outputs of up to 16 KiB are decoded in a
// buffer on the stack and then copied into a string of their size.
//
// The output never outgrows the caller's limit by more than that slack: the fast loop
// cannot pass the end of the string, the string is never grown past limit + slack (not
// even by the doubling a plain resize would do), and the careful path checks the limit
// before each symbol. A run of matches that would expand a few kilobytes into gigabytes
// thus stops at the limit instead of at the end of the machine's memory.
//
// Format notes: the "bytes occupied" count must be exact, because the next pack entry
// starts right after it; a partly used last byte counts as whole. Zeros fed past the end
// are counted, and a stream that actually used one of them is truncated.
#include "webgames/git/Inflate.hpp"

#include "webgames/git/HuffmanTable.hpp"
#include "webgames/git/InflatePath.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <new>

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#endif

namespace corvandell::git {
namespace {

using namespace inflate_detail;

static_assert(std::endian::native == std::endian::little, "the bit buffer loads little-endian words");

// The fast loop is built a second time for CPUs with BMI2, whose shifts by a register
// amount need neither the count register nor flags; the rest of the program stays
// baseline x86-64.
#if defined(__x86_64__) && defined(__GNUC__)
#define CORVANDELL_INFLATE_BMI2 __attribute__((target("bmi2")))

bool cpu_has_bmi2() {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & bit_BMI2) != 0;
}

const bool kHasBmi2 = cpu_has_bmi2();
#endif

// Two bits (a 1-bit length code and a 1-bit distance code) can yield a 258-byte match.
constexpr std::size_t kMaxExpansion = 1032;
// A size hint is trusted this far; bigger outputs grow as they arrive.
constexpr std::size_t kMaxTrustedReservation = std::size_t{64} << 20;
// The string's length runs ahead of the output by this much at a time, so the zeros
// resize writes are still in cache when the decoder overwrites them.
constexpr std::size_t kGrowthStep = std::size_t{64} << 10;
// Two-literal entries are made for a block only when at least this much output is still
// expected: below it, building them takes longer than they save.
constexpr std::size_t kPairingWorthBytes = std::size_t{8} << 10;
// Outputs expected to be no larger are decoded on the stack first (see scratch_).
constexpr std::size_t kScratchBytes = std::size_t{16} << 10;
// The longest match and the overrun of the match copy (or two lookups of two literals).
constexpr std::size_t kOutputSlack = 258 + 32;
// Two 8-byte refills, the second starting at most 7 bytes after the first.
constexpr std::ptrdiff_t kInputSlack = 16;
constexpr std::uint64_t kLiteralMask = (1u << kLiteralPrimaryBits) - 1;
constexpr std::uint64_t kDistanceMask = (1u << kDistancePrimaryBits) - 1;

std::uint64_t load_le64(const std::uint8_t* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

template <std::size_t Size> void copy_chunk(char* to, const char* from) {
    std::memcpy(to, from, Size);
}

// The value of a length or distance entry: its base plus the extra bits that followed the
// code in `bits` (the buffer as it was before the entry's bits were dropped).
std::uint32_t entry_value(std::uint32_t entry, std::uint64_t bits) {
    const unsigned drop = entry & kDropMask;
    const std::uint64_t ownBits = bits & ((std::uint64_t{1} << drop) - 1);
    return (entry >> kValueShift) + static_cast<std::uint32_t>(ownBits >> ((entry >> kCodeBitsShift) & 15));
}

// The entry for the code at the bottom of `bits`, following a subtable pointer; nothing
// is dropped but the pointer's primary bits.
std::uint32_t subtable_entry(const std::uint32_t* table, std::uint32_t pointer, std::uint64_t& bits,
                             unsigned& bitCount) {
    bits >>= pointer & kDropMask;
    bitCount -= pointer & kDropMask;
    const std::uint64_t mask = (std::uint64_t{1} << ((pointer >> kCodeBitsShift) & 15)) - 1;
    return table[(pointer >> kValueShift) + (bits & mask)];
}

// Copies a match that may overlap its own output; writes up to 31 bytes past the end.
// Each chunk only reads bytes written before it, since a chunk is never longer than the
// distance it reads back.
[[gnu::always_inline]] inline char* copy_match(char* out, std::size_t distance, std::size_t length) {
    char* const end = out + length;
    if (distance >= 16) {
        const char* from = out - distance;
        copy_chunk<16>(out, from);
        copy_chunk<16>(out + 16, from + 16);
        while (out + 32 < end) {
            out += 32;
            from += 32;
            copy_chunk<16>(out, from);
            copy_chunk<16>(out + 16, from + 16);
        }
        return end;
    }
    if (distance >= 8) {
        const char* from = out - distance;
        copy_chunk<8>(out, from);
        copy_chunk<8>(out + 8, from + 8);
        copy_chunk<8>(out + 16, from + 16);
        out += 24;
        from += 24;
        while (out < end) {
            copy_chunk<8>(out, from);
            out += 8;
            from += 8;
        }
        return end;
    }
    if (distance == 1) {
        const std::uint64_t pattern = 0x0101010101010101ull * static_cast<std::uint8_t>(out[-1]);
        do {
            std::memcpy(out, &pattern, 8);
            std::memcpy(out + 8, &pattern, 8);
            out += 16;
        } while (out < end);
        return end;
    }
    // The output repeats with period `distance`, so once one whole multiple of it no
    // shorter than a word is laid down byte by byte, words can be read that far back.
    static constexpr std::array<std::uint8_t, 8> kWordPeriod = {0, 0, 8, 9, 8, 10, 12, 14};
    const std::size_t period = kWordPeriod[distance];
    const char* from = out - distance;
    char* const bytewiseEnd = out + std::min(length, period);
    while (out < bytewiseEnd) {
        *out++ = *from++;
    }
    from = out - period;
    while (out < end) {
        copy_chunk<8>(out, from);
        out += 8;
        from += 8;
    }
    return end;
}

enum class Status { Ok, BlockEnd, Failed };

class Decoder {
public:
    Decoder(std::string_view input, std::size_t expectedSize, std::size_t maxOutput, InflatePath path)
        : begin_(reinterpret_cast<const std::uint8_t*>(input.data())), in_(begin_),
          end_(begin_ + input.size()), maxOutput_(std::min(maxOutput, SIZE_MAX / 2)),
          isFastLoopUsed_(path == InflatePath::Fast),
          expectedSize_(inflate_reservation(input.size(), expectedSize, maxOutput_)) {
        // Exactly the expected size: the fast loop stops short of its end by the slack and
        // the careful path fills the rest.
        const std::size_t reservation = expectedSize_;
        if (reservation <= kScratchBytes) {
            base_ = scratch_.data();
            out_ = base_;
            outEnd_ = base_ + scratch_.size();
            return;
        }
        output_.reserve(reservation);
        output_.resize(std::min(reservation, kGrowthStep + kOutputSlack));
        base_ = output_.data();
        out_ = base_;
        outEnd_ = out_ + output_.size();
    }

    InflateError run();
    std::size_t consumed() const { return static_cast<std::size_t>(in_ - begin_) + overrun_ - bitCount_ / 8; }
    std::string takeOutput();

private:
    bool refill();
    bool need(unsigned count) { return bitCount_ >= count || refill(); }
    std::uint32_t take(unsigned count) {
        const auto value = static_cast<std::uint32_t>(bits_ & ((std::uint64_t{1} << count) - 1));
        drop(count);
        return value;
    }
    void drop(unsigned count) {
        bits_ >>= count;
        bitCount_ -= count;
    }
    std::uint32_t lookup(const std::uint32_t* table, std::uint64_t mask);
    std::uint32_t takeValue(std::uint32_t entry) {
        const std::uint32_t value = entry_value(entry, bits_);
        drop(entry & kDropMask);
        return value;
    }
    Status fail(InflateError error) {
        error_ = error;
        return Status::Failed;
    }
    std::size_t produced() const { return static_cast<std::size_t>(out_ - base_); }
    bool isInScratch() const { return base_ == scratch_.data(); }
    bool makeRoom(std::size_t count);
    bool grow(std::size_t count);

    Status storedBlock();
    Status readDynamicTables();
    Status huffmanBlock(const Tables& tables);
    Status fastLoop(const Tables& tables);
    [[gnu::always_inline]] inline Status fastLoopBody(const Tables& tables);
#ifdef CORVANDELL_INFLATE_BMI2
    CORVANDELL_INFLATE_BMI2 Status fastLoopBmi2(const Tables& tables);
#endif
    Status oneSymbol(const Tables& tables);

    const std::uint8_t* const begin_;
    const std::uint8_t* in_;
    const std::uint8_t* const end_;
    std::uint64_t bits_ = 0;
    unsigned bitCount_ = 0;   // bits of bits_ still unread; bits above them may hold preloaded input
    std::size_t overrun_ = 0; // zero bytes fed past the end of input
    std::string output_;
    // Outputs expected to be small are decoded here with the fast loop's slack and then
    // copied once into a string of their exact size.
    std::array<char, kScratchBytes + kOutputSlack> scratch_;
    char* base_ = nullptr; // the output's first byte: in scratch_ or in output_
    char* out_ = nullptr;
    char* outEnd_ = nullptr; // end of the string's current length, not of its capacity
    const std::size_t maxOutput_;
    const bool isFastLoopUsed_;
    const std::size_t expectedSize_; // the size hint, as far as it is believed
    InflateError error_ = InflateError::None;
    Tables dynamic_;
};

// Leaves at least 56 unread bits. False once more than 8 zero bytes were fed: the buffer
// holds at most 8 bytes, so some of those zeros were used.
bool Decoder::refill() {
    if (end_ - in_ >= 8) {
        bits_ |= load_le64(in_) << bitCount_;
        in_ += (63 - bitCount_) >> 3;
        bitCount_ |= 56;
        return true;
    }
    while (bitCount_ < 56) {
        std::uint64_t byte = 0;
        if (in_ < end_) {
            byte = *in_++;
        } else {
            ++overrun_;
        }
        bits_ |= byte << bitCount_;
        bitCount_ += 8;
    }
    return overrun_ <= 8;
}

// The entry for the next code, its bits not yet dropped (but a subtable pointer's are).
std::uint32_t Decoder::lookup(const std::uint32_t* table, std::uint64_t mask) {
    const std::uint32_t entry = table[bits_ & mask];
    if ((entry & kSubtable) != kSubtable) {
        return entry;
    }
    return subtable_entry(table, entry, bits_, bitCount_);
}

// Room for `count` more bytes, and if possible for the fast loop too. Within the
// reservation the string's length moves ahead a step at a time; past it the string
// grows. False when `count` more bytes would take the output past limit + slack.
bool Decoder::makeRoom(std::size_t count) {
    const auto room = static_cast<std::size_t>(outEnd_ - out_);
    if (room >= kOutputSlack && room >= count) {
        return true;
    }
    if (!isInScratch() && output_.size() < output_.capacity()) {
        const std::size_t used = produced();
        output_.resize(std::min(output_.capacity(), used + std::max(count, kGrowthStep) + kOutputSlack));
        base_ = output_.data();
        out_ = base_ + used;
        outEnd_ = base_ + output_.size();
    }
    return static_cast<std::size_t>(outEnd_ - out_) >= count || grow(count);
}

// More output than the size hint promised. Growth doubles the capacity, as resize would,
// but by hand so that the doubling stops at limit + slack.
bool Decoder::grow(std::size_t count) {
    const std::size_t used = produced();
    const std::size_t cap = maxOutput_ + kOutputSlack;
    if (used > maxOutput_ || count > cap - used) {
        return false;
    }
    const std::size_t size = std::min(used + std::max(count, kGrowthStep) + kOutputSlack, cap);
    const std::size_t capacity = isInScratch() ? 0 : output_.capacity();
    if (size > capacity) {
        std::string bigger;
        bigger.reserve(std::min(std::max(size, 2 * capacity), cap));
        bigger.append(base_, used);
        output_.swap(bigger);
    }
    output_.resize(size);
    base_ = output_.data();
    out_ = base_ + used;
    outEnd_ = base_ + output_.size();
    return true;
}

std::string Decoder::takeOutput() {
    if (isInScratch()) {
        return std::string(base_, produced());
    }
    output_.resize(produced());
    if (output_.capacity() - output_.size() > std::max<std::size_t>(4096, output_.size() / 8)) {
        output_.shrink_to_fit(); // only after growing past a wrong size hint
    }
    return std::move(output_);
}

InflateError Decoder::run() {
    for (bool isFinal = false; !isFinal;) {
        if (!need(3)) {
            return InflateError::TruncatedInput;
        }
        isFinal = take(1) != 0;
        Status status = Status::Failed;
        switch (take(2)) {
        case 0:
            status = storedBlock();
            break;
        case 1:
            status = huffmanBlock(fixed_tables());
            break;
        case 2:
            status = readDynamicTables();
            if (status == Status::Ok) {
                status = huffmanBlock(dynamic_);
            }
            break;
        default:
            error_ = InflateError::BadBlockType;
            break;
        }
        if (status == Status::Failed) {
            return error_;
        }
    }
    if (consumed() > static_cast<std::size_t>(end_ - begin_)) {
        return InflateError::TruncatedInput;
    }
    if (produced() > maxOutput_) {
        return InflateError::TooLarge; // the fast loop's last few symbols went past the limit
    }
    return InflateError::None;
}

Status Decoder::storedBlock() {
    drop(bitCount_ & 7);
    if (!need(32)) {
        return fail(InflateError::TruncatedInput);
    }
    const std::uint32_t length = take(16);
    const std::uint32_t complement = take(16);
    // The copy reads bytes directly, so give back the whole bytes still in the buffer.
    const std::size_t unread = bitCount_ / 8;
    const std::size_t unreadZeros = std::min(unread, overrun_);
    overrun_ -= unreadZeros;
    in_ -= unread - unreadZeros;
    bits_ = 0;
    bitCount_ = 0;
    if (overrun_ > 0) {
        return fail(InflateError::TruncatedInput);
    }
    if (length != (~complement & 0xFFFF)) {
        return fail(InflateError::StoredLengthMismatch);
    }
    if (end_ - in_ < static_cast<std::ptrdiff_t>(length)) {
        return fail(InflateError::TruncatedInput);
    }
    if (produced() + length > maxOutput_) {
        return fail(InflateError::TooLarge);
    }
    const std::size_t used = produced();
    if (!isInScratch() && output_.capacity() - used >= length) {
        // Appended straight from the input: no zeros written ahead of the copy first.
        // The string then ends at the output, and the next symbol lengthens it again.
        output_.resize(used);
        output_.append(reinterpret_cast<const char*>(in_), length);
        base_ = output_.data();
        out_ = base_ + output_.size();
        outEnd_ = out_;
        in_ += length;
        return Status::Ok;
    }
    if (!makeRoom(length)) {
        return fail(InflateError::TooLarge);
    }
    std::memcpy(out_, in_, length);
    out_ += length;
    in_ += length;
    return Status::Ok;
}

Status Decoder::readDynamicTables() {
    static constexpr std::array<std::uint8_t, 19> kCodeLengthOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                      11, 4,  12, 3, 13, 2, 14, 1, 15};
    if (!need(14)) {
        return fail(InflateError::TruncatedInput);
    }
    const std::size_t literalCount = take(5) + 257;
    const std::size_t distanceCount = take(5) + 1;
    const std::size_t codeLengthCount = take(4) + 4;
    if (literalCount > 286 || distanceCount > 30) {
        return fail(InflateError::BadCodeLengths);
    }
    std::array<std::uint8_t, 19> codeLengthLengths{};
    for (std::size_t i = 0; i < codeLengthCount; ++i) {
        if (!need(3)) {
            return fail(InflateError::TruncatedInput);
        }
        codeLengthLengths[kCodeLengthOrder[i]] = static_cast<std::uint8_t>(take(3));
    }
    std::array<std::uint32_t, kCodeLengthTableSize> codeLengthTable;
    const InflateError codeLengthCode = build_huffman_table(
        {codeLengthLengths.data(), 19, code_length_entries(), kCodeLengthPrimaryBits, false, false},
        codeLengthTable.data(), codeLengthTable.size());
    if (codeLengthCode != InflateError::None) {
        return fail(codeLengthCode);
    }

    // Literal/length and distance lengths form one sequence; a repeat may cross between them.
    std::array<std::uint8_t, 286 + 30> lengths{};
    const std::size_t total = literalCount + distanceCount;
    for (std::size_t i = 0; i < total;) {
        if (!need(7 + 7)) {
            return fail(InflateError::TruncatedInput);
        }
        const std::uint32_t entry = lookup(codeLengthTable.data(), kCodeLengthTableSize - 1);
        drop(entry & kDropMask);
        const std::uint32_t symbol = entry >> kValueShift;
        if (symbol < 16) {
            lengths[i++] = static_cast<std::uint8_t>(symbol);
            continue;
        }
        if (symbol == 16 && i == 0) {
            return fail(InflateError::BadCodeLengths);
        }
        const std::uint8_t value = symbol == 16 ? lengths[i - 1] : std::uint8_t{0};
        const std::size_t repeat = symbol == 16 ? 3 + take(2) : symbol == 17 ? 3 + take(3) : 11 + take(7);
        if (repeat > total - i) {
            return fail(InflateError::BadCodeLengths);
        }
        std::fill_n(lengths.begin() + static_cast<std::ptrdiff_t>(i), repeat, value);
        i += repeat;
    }
    if (lengths[256] == 0) {
        return fail(InflateError::BadCodeLengths);
    }
    const InflateError codes =
        build_tables(dynamic_, lengths.data(), literalCount, lengths.data() + literalCount, distanceCount,
                     expectedSize_ >= produced() + kPairingWorthBytes);
    return codes == InflateError::None ? Status::Ok : fail(codes);
}

Status Decoder::huffmanBlock(const Tables& tables) {
    for (;;) {
        Status status = Status::Ok;
        if (isFastLoopUsed_) {
#ifdef CORVANDELL_INFLATE_BMI2
            status = kHasBmi2 ? fastLoopBmi2(tables) : fastLoop(tables);
#else
            status = fastLoop(tables);
#endif
        }
        if (status == Status::Ok) {
            status = oneSymbol(tables);
        }
        if (status != Status::Ok) {
            return status;
        }
    }
}

Status Decoder::fastLoop(const Tables& tables) {
    return fastLoopBody(tables);
}

#ifdef CORVANDELL_INFLATE_BMI2
Status Decoder::fastLoopBmi2(const Tables& tables) {
    return fastLoopBody(tables);
}
#endif

// The hot loop, on local copies of the decoder state so they stay in registers. Returns
// Ok when too little input or output room is left to go on without checks.
Status Decoder::fastLoopBody(const Tables& tables) {
    if (end_ - in_ < kInputSlack || static_cast<std::size_t>(outEnd_ - out_) < kOutputSlack) {
        return Status::Ok;
    }
    const std::uint32_t* const literal = tables.literal.data();
    const std::uint32_t* const distance = tables.distance.data();
    const std::uint8_t* in = in_;
    const std::uint8_t* const inLimit = end_ - kInputSlack;
    std::uint64_t bits = bits_;
    unsigned bitCount = bitCount_;
    char* out = out_;
    char* const outStart = base_;
    char* const outLimit = outEnd_ - kOutputSlack;

    const auto refillBits = [&] {
        bits |= load_le64(in) << bitCount;
        in += (63 - bitCount) >> 3;
        bitCount |= 56;
    };
    // Drops the entry's bits and returns the buffer as it was, for entry_value.
    const auto consume = [&](std::uint32_t entry) {
        const std::uint64_t before = bits;
        bits >>= entry & kDropMask;
        bitCount -= entry & kDropMask;
        return before;
    };
    // One or two literals; always stores two bytes, the output has room to spare.
    const auto putLiterals = [&](std::uint32_t entry) {
        consume(entry);
        const auto pair = static_cast<std::uint16_t>(entry >> kValueShift);
        std::memcpy(out, &pair, 2);
        out += 1 + ((entry & kSecond) != 0);
    };

    // Each entry is looked up as soon as the bits before it are dropped, so the load
    // overlaps the work on the previous symbol (a match's copy above all), and from the
    // bits as they are before the refill that follows, which leaves the refill's own load
    // off that path. An entry is always looked up with at least 45 bits in the buffer and
    // then acted on with at least 56: enough for a length code with its extra bits
    // (15 + 5) and the distance code with its own (15 + 13) without another refill.
    Status status = Status::Ok;
    refillBits();
    std::uint32_t entry = literal[bits & kLiteralMask];
    while (in <= inLimit && out <= outLimit) {
        if (entry & kLiteral) {
            putLiterals(entry);
            std::uint64_t next = bits & kLiteralMask;
            refillBits();
            entry = literal[next];
            if (entry & kLiteral) {
                putLiterals(entry);
                next = bits & kLiteralMask;
                refillBits();
                entry = literal[next];
            }
            continue;
        }
        if (entry & kExceptional) {
            if ((entry & kSubtable) == kSubtable) {
                entry = subtable_entry(literal, entry, bits, bitCount);
            }
            if (entry & kLiteral) {
                putLiterals(entry);
                refillBits();
                entry = literal[bits & kLiteralMask];
                continue;
            }
            if (entry & kExceptional) {
                consume(entry);
                status = entry & kEndOfBlock ? Status::BlockEnd : fail(InflateError::InvalidSymbol);
                break;
            }
        }
        const std::uint32_t length = entry_value(entry, consume(entry));
        entry = distance[bits & kDistanceMask];
        if ((entry & kSubtable) == kSubtable) {
            entry = subtable_entry(distance, entry, bits, bitCount);
        }
        if (entry & kExceptional) {
            status = fail(InflateError::InvalidSymbol);
            break;
        }
        const std::uint32_t matchDistance = entry_value(entry, consume(entry));
        if (matchDistance > static_cast<std::size_t>(out - outStart)) {
            status = fail(InflateError::DistanceTooFar);
            break;
        }
        refillBits();
        entry = literal[bits & kLiteralMask];
        out = copy_match(out, matchDistance, length);
    }
    in_ = in;
    bits_ = bits;
    bitCount_ = bitCount;
    out_ = out;
    return status;
}

// The same decoding with every bound checked, for the last bytes of input or output. It
// writes exactly what each symbol makes, so an output reserved at its exact size is
// finished in place and never grown.
Status Decoder::oneSymbol(const Tables& tables) {
    if (!refill()) {
        return fail(InflateError::TruncatedInput);
    }
    if (produced() > maxOutput_) {
        return fail(InflateError::TooLarge);
    }
    std::uint32_t entry = lookup(tables.literal.data(), kLiteralMask);
    if (entry & kLiteral) {
        const bool isPair = (entry & kSecond) != 0;
        if (!makeRoom(isPair ? 2 : 1)) {
            return fail(InflateError::TooLarge);
        }
        drop(entry & kDropMask);
        *out_++ = static_cast<char>(entry >> kValueShift);
        if (isPair) {
            *out_++ = static_cast<char>(entry >> (kValueShift + 8));
        }
        return Status::Ok;
    }
    if (entry & kExceptional) {
        drop(entry & kDropMask);
        return entry & kEndOfBlock ? Status::BlockEnd : fail(InflateError::InvalidSymbol);
    }
    const std::uint32_t length = takeValue(entry);
    if (!refill()) {
        return fail(InflateError::TruncatedInput);
    }
    entry = lookup(tables.distance.data(), kDistanceMask);
    if (entry & kExceptional) {
        return fail(InflateError::InvalidSymbol);
    }
    const std::uint32_t matchDistance = takeValue(entry);
    if (matchDistance > produced()) {
        return fail(InflateError::DistanceTooFar);
    }
    if (!makeRoom(length)) {
        return fail(InflateError::TooLarge);
    }
    const char* from = out_ - matchDistance;
    if (matchDistance >= length) {
        std::memcpy(out_, from, length);
        out_ += length;
        return Status::Ok;
    }
    for (char* const end = out_ + length; out_ < end;) {
        *out_++ = *from++;
    }
    return Status::Ok;
}

} // namespace

std::size_t inflate_reservation(std::size_t inputSize, std::size_t expectedSize, std::size_t maxOutputBytes) {
    const std::size_t possible = inputSize > SIZE_MAX / kMaxExpansion ? SIZE_MAX : inputSize * kMaxExpansion;
    return std::min({expectedSize, possible, maxOutputBytes, kMaxTrustedReservation});
}

std::optional<Inflated> inflate_raw(std::string_view input, std::size_t expectedSize, InflateError* error,
                                    std::size_t maxOutputBytes) {
    return inflate_detail::inflate_raw_on(InflatePath::Fast, input, expectedSize, error, maxOutputBytes);
}

namespace inflate_detail {

std::optional<Inflated> inflate_raw_on(InflatePath path, std::string_view input, std::size_t expectedSize,
                                       InflateError* error, std::size_t maxOutputBytes) {
    InflateError result = InflateError::None;
    std::optional<Inflated> inflated;
    try {
        Decoder decoder(input, expectedSize, maxOutputBytes, path);
        result = decoder.run();
        if (result == InflateError::None) {
            const std::size_t consumed = decoder.consumed();
            inflated = Inflated{decoder.takeOutput(), consumed};
        }
    } catch (const std::bad_alloc&) {
        result = InflateError::OutOfMemory;
        inflated.reset();
    }
    if (error != nullptr) {
        *error = result;
    }
    return inflated;
}

} // namespace inflate_detail

} // namespace corvandell::git
