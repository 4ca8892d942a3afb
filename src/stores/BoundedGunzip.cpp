// The counting decoder follows RFC 1951 with a canonical Huffman walk, one bit at a time:
// slow beside the real inflate, but it runs once over a receipt of a few kilobytes, and on
// a hostile one it stops after the cap's worth of output, at most 258 bytes per symbol.
// It checks only what it needs to find the stream's end; the real inflate that follows
// rejects everything else.
#include "stores/BoundedGunzip.hpp"

#include "webgames/git/Gzip.hpp"

#include <array>
#include <cstdint>

namespace corvandell {

namespace {

constexpr int kMaxBits = 15;

struct BitReader {
    std::string_view input;
    std::size_t position = 0;
    std::uint32_t buffer = 0;
    int count = 0;

    // The next n bits (n up to 16), least significant first; false past the end.
    bool take(int n, std::uint32_t& value) {
        while (count < n) {
            if (position >= input.size()) {
                return false;
            }
            buffer |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(input[position++])) << count;
            count += 8;
        }
        value = buffer & ((1u << n) - 1);
        buffer >>= n;
        count -= n;
        return true;
    }
    void dropToByte() {
        buffer = 0;
        count = 0;
    }
};

struct Huffman {
    std::array<std::uint16_t, kMaxBits + 1> countOfLength{};
    std::array<std::uint16_t, 288> symbols{};
};

bool buildHuffman(Huffman& code, const std::uint8_t* lengths, int symbolCount) {
    code.countOfLength.fill(0);
    for (int s = 0; s < symbolCount; ++s) {
        ++code.countOfLength[lengths[s]];
    }
    int left = 1;
    for (int length = 1; length <= kMaxBits; ++length) {
        left = (left << 1) - code.countOfLength[length];
        if (left < 0) {
            return false;
        }
    }
    std::array<std::uint16_t, kMaxBits + 1> offsets{};
    for (int length = 1; length < kMaxBits; ++length) {
        offsets[length + 1] = static_cast<std::uint16_t>(offsets[length] + code.countOfLength[length]);
    }
    for (int s = 0; s < symbolCount; ++s) {
        if (lengths[s] != 0) {
            code.symbols[offsets[lengths[s]]++] = static_cast<std::uint16_t>(s);
        }
    }
    return true;
}

// The next symbol; -1 when the input ends or no code matches.
int decodeSymbol(BitReader& bits, const Huffman& code) {
    int value = 0;
    int first = 0;
    int index = 0;
    for (int length = 1; length <= kMaxBits; ++length) {
        std::uint32_t bit = 0;
        if (!bits.take(1, bit)) {
            return -1;
        }
        value |= static_cast<int>(bit);
        const int count = code.countOfLength[length];
        if (value - count < first) {
            return code.symbols[static_cast<std::size_t>(index + value - first)];
        }
        index += count;
        first = (first + count) << 1;
        value <<= 1;
    }
    return -1;
}

constexpr std::uint16_t kLengthBase[29] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                           31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::uint8_t kLengthExtra[29] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                           2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::uint8_t kDistanceExtra[30] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                             6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

struct Counter {
    std::size_t total = 0;
    std::size_t cap = 0;
    bool add(std::size_t bytes) {
        total += bytes;
        return total <= cap;
    }
};

GunzipProblem countCodes(BitReader& bits, const Huffman& lengthCode, const Huffman& distanceCode,
                         Counter& counter) {
    for (;;) {
        const int symbol = decodeSymbol(bits, lengthCode);
        if (symbol < 0 || symbol > 285) {
            return GunzipProblem::Damaged;
        }
        if (symbol == 256) {
            return GunzipProblem::None;
        }
        std::size_t length = 1;
        if (symbol > 256) {
            std::uint32_t extra = 0;
            if (!bits.take(kLengthExtra[symbol - 257], extra)) {
                return GunzipProblem::Damaged;
            }
            length = kLengthBase[symbol - 257] + extra;
            const int distance = decodeSymbol(bits, distanceCode);
            if (distance < 0 || distance >= 30 || !bits.take(kDistanceExtra[distance], extra)) {
                return GunzipProblem::Damaged;
            }
        }
        if (!counter.add(length)) {
            return GunzipProblem::TooLarge;
        }
    }
}

bool fixedCodes(Huffman& lengthCode, Huffman& distanceCode) {
    std::array<std::uint8_t, 288> lengths{};
    for (int s = 0; s < 288; ++s) {
        lengths[static_cast<std::size_t>(s)] = s < 144 ? 8 : s < 256 ? 9 : s < 280 ? 7 : 8;
    }
    std::array<std::uint8_t, 30> distances{};
    distances.fill(5);
    return buildHuffman(lengthCode, lengths.data(), 288) && buildHuffman(distanceCode, distances.data(), 30);
}

bool dynamicCodes(BitReader& bits, Huffman& lengthCode, Huffman& distanceCode) {
    static constexpr std::uint8_t kOrder[19] = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::uint32_t literals = 0, distances = 0, codeLengths = 0;
    if (!bits.take(5, literals) || !bits.take(5, distances) || !bits.take(4, codeLengths)) {
        return false;
    }
    literals += 257;
    distances += 1;
    codeLengths += 4;
    if (literals > 286 || distances > 30) {
        return false;
    }
    std::array<std::uint8_t, 19> lengthOfLength{};
    for (std::uint32_t i = 0; i < codeLengths; ++i) {
        std::uint32_t length = 0;
        if (!bits.take(3, length)) {
            return false;
        }
        lengthOfLength[kOrder[i]] = static_cast<std::uint8_t>(length);
    }
    Huffman lengthLengths;
    if (!buildHuffman(lengthLengths, lengthOfLength.data(), 19)) {
        return false;
    }
    std::array<std::uint8_t, 316> lengths{};
    for (std::uint32_t index = 0; index < literals + distances;) {
        const int symbol = decodeSymbol(bits, lengthLengths);
        if (symbol < 0) {
            return false;
        }
        if (symbol < 16) {
            lengths[index++] = static_cast<std::uint8_t>(symbol);
            continue;
        }
        std::uint8_t repeated = 0;
        std::uint32_t times = 0;
        if (symbol == 16) {
            if (index == 0 || !bits.take(2, times)) {
                return false;
            }
            repeated = lengths[index - 1];
            times += 3;
        } else if (!bits.take(symbol == 17 ? 3 : 7, times)) {
            return false;
        } else {
            times += symbol == 17 ? 3 : 11;
        }
        if (index + times > literals + distances) {
            return false;
        }
        while (times-- > 0) {
            lengths[index++] = repeated;
        }
    }
    return buildHuffman(lengthCode, lengths.data(), static_cast<int>(literals)) &&
           buildHuffman(distanceCode, lengths.data() + literals, static_cast<int>(distances));
}

std::uint32_t readLittleEndian(std::string_view bytes, std::size_t at, int count) {
    std::uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i) {
        value = (value << 8) | static_cast<std::uint8_t>(bytes[at + static_cast<std::size_t>(i)]);
    }
    return value;
}

// Where the DEFLATE data of the member at `at` starts; nothing for a header that is not
// gzip's. Header checksums are left to the git engine's gunzip.
std::optional<std::size_t> memberBody(std::string_view file, std::size_t at) {
    constexpr std::uint8_t kHeaderCrc = 0x02, kExtra = 0x04, kName = 0x08, kComment = 0x10;
    if (file.size() - at < 10 || file.compare(at, 3, "\x1f\x8b\x08") != 0) {
        return std::nullopt;
    }
    const auto flags = static_cast<std::uint8_t>(file[at + 3]);
    std::size_t position = at + 10;
    if ((flags & kExtra) != 0) {
        if (file.size() - position < 2 || file.size() - position - 2 < readLittleEndian(file, position, 2)) {
            return std::nullopt;
        }
        position += 2 + readLittleEndian(file, position, 2);
    }
    for (const std::uint8_t text : {kName, kComment}) {
        if ((flags & text) != 0) {
            const std::size_t end = file.find('\0', position);
            if (end == std::string_view::npos) {
                return std::nullopt;
            }
            position = end + 1;
        }
    }
    if ((flags & kHeaderCrc) != 0) {
        position += 2;
    }
    return position <= file.size() ? std::optional(position) : std::nullopt;
}

} // namespace

DeflateMeasure measureDeflate(std::string_view input, std::size_t maxContentBytes) {
    BitReader bits{input};
    Counter counter{0, maxContentBytes};
    auto result = [&](GunzipProblem problem) {
        return DeflateMeasure{problem, counter.total, bits.position};
    };
    for (std::uint32_t isLast = 0; isLast == 0;) {
        std::uint32_t type = 0;
        if (!bits.take(1, isLast) || !bits.take(2, type)) {
            return result(GunzipProblem::Damaged);
        }
        if (type == 0) {
            bits.dropToByte();
            if (input.size() - bits.position < 4) {
                return result(GunzipProblem::Damaged);
            }
            const std::uint32_t length = readLittleEndian(input, bits.position, 2);
            bits.position += 4;
            if (input.size() - bits.position < length) {
                return result(GunzipProblem::Damaged);
            }
            bits.position += length;
            if (!counter.add(length)) {
                return result(GunzipProblem::TooLarge);
            }
            continue;
        }
        Huffman lengthCode;
        Huffman distanceCode;
        const bool isBuilt = type == 1   ? fixedCodes(lengthCode, distanceCode)
                             : type == 2 ? dynamicCodes(bits, lengthCode, distanceCode)
                                         : false;
        if (!isBuilt) {
            return result(GunzipProblem::Damaged);
        }
        if (const GunzipProblem problem = countCodes(bits, lengthCode, distanceCode, counter);
            problem != GunzipProblem::None) {
            return result(problem);
        }
    }
    return result(GunzipProblem::None);
}

BoundedGunzip gunzipUpTo(std::string_view file, std::size_t maxContentBytes) {
    if (!file.starts_with("\x1f\x8b")) {
        return {std::nullopt, GunzipProblem::NotGzip};
    }
    std::size_t total = 0;
    for (std::size_t at = 0; at < file.size();) {
        const auto body = memberBody(file, at);
        if (!body) {
            return {std::nullopt, GunzipProblem::Damaged};
        }
        const DeflateMeasure member = measureDeflate(file.substr(*body), maxContentBytes - total);
        if (member.problem != GunzipProblem::None) {
            return {std::nullopt, member.problem};
        }
        total += member.contentBytes;
        at = *body + member.inputBytes + 8;
    }
    auto content = git::gunzip(file);
    return content ? BoundedGunzip{std::move(content), GunzipProblem::None}
                   : BoundedGunzip{std::nullopt, GunzipProblem::Damaged};
}

} // namespace corvandell
