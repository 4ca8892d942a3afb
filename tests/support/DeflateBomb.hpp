// A gzip file that inflates to far more than its trailer claims, written bit by bit with
// DEFLATE's fixed codes: one zero byte, then matches of 258 bytes at distance 1 (13 bits
// each), so about 160 output bytes per input byte. Its CRC-32 is left zero: a reader that
// checks it has already inflated everything, which is the fault the file is there to catch.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace corvandell::test {

class BitWriter {
public:
    // `count` bits of `value`, least significant first.
    void bits(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) {
            put((value >> i) & 1u);
        }
    }
    // A Huffman code, most significant bit first.
    void code(std::uint32_t value, int length) {
        for (int i = length - 1; i >= 0; --i) {
            put((value >> i) & 1u);
        }
    }
    std::string bytes() const { return bytes_; }

private:
    void put(std::uint32_t bit) {
        if (used_ == 0) {
            bytes_.push_back('\0');
        }
        bytes_.back() = static_cast<char>(static_cast<std::uint8_t>(bytes_.back()) | (bit << used_));
        used_ = (used_ + 1) % 8;
    }
    std::string bytes_;
    int used_ = 0;
};

// Raw DEFLATE for 1 + 258 * matches zero bytes, in one fixed-code block.
inline std::string deflateOfZeros(std::size_t matches) {
    BitWriter writer;
    writer.bits(1, 1);    // last block
    writer.bits(1, 2);    // fixed codes
    writer.code(0x30, 8); // literal 0
    for (std::size_t i = 0; i < matches; ++i) {
        writer.code(0xC5, 8); // length symbol 285: 258 bytes
        writer.code(0, 5);    // distance symbol 0: distance 1
    }
    writer.code(0, 7); // end of block (symbol 256)
    return writer.bytes();
}

inline std::string gzipMember(const std::string& deflate, std::uint32_t claimedSize) {
    std::string file("\x1f\x8b\x08\0\0\0\0\0\0\xff", 10);
    file += deflate;
    file += std::string(4, '\0');
    for (int i = 0; i < 4; ++i) {
        file += static_cast<char>((claimedSize >> (8 * i)) & 0xFF);
    }
    return file;
}

} // namespace corvandell::test
