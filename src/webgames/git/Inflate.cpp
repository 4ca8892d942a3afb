// DEFLATE decoding of one whole buffer into one string (the zlib wrapper is in Zlib.cpp).
//
// Why it is fast: bits sit in a 64-bit buffer refilled eight bytes at a time, every code
// is resolved by one table lookup (two for the rare long ones), up to three literals are
// taken per refill, and matches are copied 16 or 8 bytes at a time (as far back as they
// reach) into output that has room to spare. That fast loop only runs while at least
// kInputSlack input bytes and kOutputSlack output bytes remain; near either end a careful
// path decodes one symbol at a time, feeding zeros past the end of input and growing the
// output as needed.
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

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <new>

namespace corvandell::git {
namespace {

using namespace inflate_detail;

static_assert(std::endian::native == std::endian::little, "the bit buffer loads little-endian words");

// Two bits (a 1-bit length code and a 1-bit distance code) can yield a 258-byte match.
constexpr std::size_t kMaxExpansion = 1032;
// A size hint is trusted this far; bigger outputs grow as they arrive.
constexpr std::size_t kMaxTrustedReservation = std::size_t{64} << 20;
// The string's length runs ahead of the output by this much at a time, so the zeros
// resize writes are still in cache when the decoder overwrites them.
constexpr std::size_t kGrowthStep = std::size_t{64} << 10;
// Three literals, the longest match and the overrun of the match copy.
constexpr std::size_t kOutputSlack = 3 + 258 + 16;
// Two 8-byte refills, the second starting at most 7 bytes after the first.
constexpr std::ptrdiff_t kInputSlack = 16;
constexpr std::uint64_t kLiteralMask = (1u << kLiteralPrimaryBits) - 1;
constexpr std::uint64_t kDistanceMask = (1u << kDistancePrimaryBits) - 1;

std::uint64_t load_le64(const std::uint8_t* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Copies a match that may overlap its own output; writes up to 15 bytes past the end.
// Each chunk only reads bytes written before it, since a chunk is never longer than the
// distance.
char* copy_match(char* out, std::size_t distance, std::size_t length) {
    const char* from = out - distance;
    char* const end = out + length;
    if (distance >= 16) {
        do {
            std::memcpy(out, from, 16);
            out += 16;
            from += 16;
        } while (out < end);
        return end;
    }
    if (distance >= 8) {
        do {
            std::memcpy(out, from, 8);
            out += 8;
            from += 8;
        } while (out < end);
        return end;
    }
    if (distance == 1) {
        const std::uint64_t pattern = 0x0101010101010101ull * static_cast<std::uint8_t>(*from);
        do {
            std::memcpy(out, &pattern, 8);
            out += 8;
        } while (out < end);
        return end;
    }
    while (out < end) {
        *out++ = *from++;
    }
    return end;
}

enum class Status { Ok, BlockEnd, Failed };

class Decoder {
public:
    Decoder(std::string_view input, std::size_t expectedSize, std::size_t maxOutput)
        : begin_(reinterpret_cast<const std::uint8_t*>(input.data())), in_(begin_),
          end_(begin_ + input.size()), maxOutput_(std::min(maxOutput, SIZE_MAX / 2)) {
        const std::size_t reservation =
            inflate_reservation(input.size(), expectedSize, maxOutput_) + kOutputSlack;
        output_.reserve(reservation);
        output_.resize(std::min(reservation, kGrowthStep + kOutputSlack));
        out_ = output_.data();
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
    Status fail(InflateError error) {
        error_ = error;
        return Status::Failed;
    }
    std::size_t produced() const { return static_cast<std::size_t>(out_ - output_.data()); }
    bool ensureRoom(std::size_t count);

    Status storedBlock();
    Status readDynamicTables();
    Status huffmanBlock(const Tables& tables);
    Status fastLoop(const Tables& tables);
    Status oneSymbol(const Tables& tables);

    const std::uint8_t* const begin_;
    const std::uint8_t* in_;
    const std::uint8_t* const end_;
    std::uint64_t bits_ = 0;
    unsigned bitCount_ = 0;   // bits of bits_ still unread; bits above them may hold preloaded input
    std::size_t overrun_ = 0; // zero bytes fed past the end of input
    std::string output_;
    char* out_ = nullptr;
    char* outEnd_ = nullptr; // end of the string's current length, not of its capacity
    const std::size_t maxOutput_;
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

std::uint32_t Decoder::lookup(const std::uint32_t* table, std::uint64_t mask) {
    std::uint32_t entry = table[bits_ & mask];
    if (entry & kSubtable) {
        drop(entry & kCodeBitsMask);
        const std::uint64_t subMask = (std::uint64_t{1} << ((entry >> kExtraShift) & 15)) - 1;
        entry = table[(entry >> kValueShift) + (bits_ & subMask)];
    }
    drop(entry & kCodeBitsMask);
    return entry;
}

// False when `count` more bytes would take the string past limit + slack. Growth doubles
// the capacity, as resize would, but by hand so that the doubling stops at that cap.
bool Decoder::ensureRoom(std::size_t count) {
    if (static_cast<std::size_t>(outEnd_ - out_) >= count) {
        return true;
    }
    const std::size_t used = produced();
    const std::size_t cap = maxOutput_ + kOutputSlack;
    if (used > maxOutput_ || count > cap - used) {
        return false;
    }
    const std::size_t size = std::min(used + std::max(count, kGrowthStep) + kOutputSlack, cap);
    if (size > output_.capacity()) {
        std::string bigger;
        bigger.reserve(std::min(std::max(size, 2 * output_.capacity()), cap));
        bigger.append(output_.data(), used);
        output_.swap(bigger);
    }
    output_.resize(size);
    out_ = output_.data() + used;
    outEnd_ = output_.data() + output_.size();
    return true;
}

std::string Decoder::takeOutput() {
    output_.resize(static_cast<std::size_t>(out_ - output_.data()));
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
    if (produced() + length > maxOutput_ || !ensureRoom(length)) {
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
        {codeLengthLengths.data(), 19, code_length_entries(), kCodeLengthPrimaryBits, false},
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
        const std::uint32_t symbol = lookup(codeLengthTable.data(), kCodeLengthTableSize - 1) >> kValueShift;
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
        build_tables(dynamic_, lengths.data(), literalCount, lengths.data() + literalCount, distanceCount);
    return codes == InflateError::None ? Status::Ok : fail(codes);
}

Status Decoder::huffmanBlock(const Tables& tables) {
    for (;;) {
        Status status = fastLoop(tables);
        if (status == Status::Ok) {
            status = oneSymbol(tables);
        }
        if (status != Status::Ok) {
            return status;
        }
    }
}

// The hot loop, on local copies of the decoder state so they stay in registers. Returns
// Ok when too little input or output room is left to go on without checks.
Status Decoder::fastLoop(const Tables& tables) {
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
    char* const outStart = output_.data();
    char* const outLimit = outEnd_ - kOutputSlack;

    const auto dropBits = [&](unsigned count) {
        bits >>= count;
        bitCount -= count;
    };
    const auto refillBits = [&] {
        bits |= load_le64(in) << bitCount;
        in += (63 - bitCount) >> 3;
        bitCount |= 56;
    };
    const auto decodeEntry = [&](const std::uint32_t* table, std::uint64_t mask) {
        std::uint32_t entry = table[bits & mask];
        if (entry & kSubtable) {
            dropBits(entry & kCodeBitsMask);
            entry = table[(entry >> kValueShift) +
                          (bits & ((std::uint64_t{1} << ((entry >> kExtraShift) & 15)) - 1))];
        }
        dropBits(entry & kCodeBitsMask);
        return entry;
    };
    const auto takeExtra = [&](std::uint32_t entry) {
        const unsigned extraBits = (entry >> kExtraShift) & 15;
        const auto value =
            (entry >> kValueShift) + static_cast<std::uint32_t>(bits & ((1u << extraBits) - 1));
        dropBits(extraBits);
        return value;
    };

    Status status = Status::Ok;
    while (in <= inLimit && out <= outLimit) {
        // 56 bits cover three literal codes, or up to two literals then a length code and
        // its extra bits (45 + 5); a second refill covers the distance (15 + 13).
        refillBits();
        std::uint32_t entry = decodeEntry(literal, kLiteralMask);
        if (entry & kLiteral) {
            *out++ = static_cast<char>(entry >> kValueShift);
            entry = decodeEntry(literal, kLiteralMask);
            if (entry & kLiteral) {
                *out++ = static_cast<char>(entry >> kValueShift);
                entry = decodeEntry(literal, kLiteralMask);
                if (entry & kLiteral) {
                    *out++ = static_cast<char>(entry >> kValueShift);
                    continue;
                }
            }
        }
        if (entry & (kEndOfBlock | kInvalid)) {
            status = entry & kEndOfBlock ? Status::BlockEnd : fail(InflateError::InvalidSymbol);
            break;
        }
        const std::uint32_t length = takeExtra(entry);
        refillBits();
        entry = decodeEntry(distance, kDistanceMask);
        if (entry & kInvalid) {
            status = fail(InflateError::InvalidSymbol);
            break;
        }
        const std::uint32_t matchDistance = takeExtra(entry);
        if (matchDistance > static_cast<std::size_t>(out - outStart)) {
            status = fail(InflateError::DistanceTooFar);
            break;
        }
        out = copy_match(out, matchDistance, length);
    }
    in_ = in;
    bits_ = bits;
    bitCount_ = bitCount;
    out_ = out;
    return status;
}

// The same decoding with every bound checked, for the last bytes of input or output.
Status Decoder::oneSymbol(const Tables& tables) {
    if (!refill()) {
        return fail(InflateError::TruncatedInput);
    }
    // Also lets the fast loop resume after a growth step.
    if (produced() > maxOutput_ || !ensureRoom(kOutputSlack)) {
        return fail(InflateError::TooLarge);
    }
    std::uint32_t entry = lookup(tables.literal.data(), kLiteralMask);
    if (entry & kLiteral) {
        *out_++ = static_cast<char>(entry >> kValueShift);
        return Status::Ok;
    }
    if (entry & kEndOfBlock) {
        return Status::BlockEnd;
    }
    if (entry & kInvalid) {
        return fail(InflateError::InvalidSymbol);
    }
    const std::uint32_t length = (entry >> kValueShift) + take((entry >> kExtraShift) & 15);
    if (!refill()) {
        return fail(InflateError::TruncatedInput);
    }
    entry = lookup(tables.distance.data(), kDistanceMask);
    if (entry & kInvalid) {
        return fail(InflateError::InvalidSymbol);
    }
    const std::uint32_t matchDistance = (entry >> kValueShift) + take((entry >> kExtraShift) & 15);
    if (matchDistance > static_cast<std::size_t>(out_ - output_.data())) {
        return fail(InflateError::DistanceTooFar);
    }
    out_ = copy_match(out_, matchDistance, length);
    return Status::Ok;
}

} // namespace

std::size_t inflate_reservation(std::size_t inputSize, std::size_t expectedSize, std::size_t maxOutputBytes) {
    const std::size_t possible = inputSize > SIZE_MAX / kMaxExpansion ? SIZE_MAX : inputSize * kMaxExpansion;
    return std::min({expectedSize, possible, maxOutputBytes, kMaxTrustedReservation});
}

std::optional<Inflated> inflate_raw(std::string_view input, std::size_t expectedSize, InflateError* error,
                                    std::size_t maxOutputBytes) {
    InflateError result = InflateError::None;
    std::optional<Inflated> inflated;
    try {
        Decoder decoder(input, expectedSize, maxOutputBytes);
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

} // namespace corvandell::git
