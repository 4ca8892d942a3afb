// SHA-1 message padding and buffering over whichever block function this CPU runs best,
// plus the hexadecimal object names git uses.
//
// Headers and contents are hashed in place, one after the other, so naming a large blob
// never copies it next to its header.
#include "webgames/git/Sha1.hpp"

#include "webgames/git/Sha1Blocks.hpp"

#include <algorithm>
#include <cstring>

namespace corvandell::git {
namespace {

constexpr std::array<std::uint32_t, 5> kInitialState = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                                        0xC3D2E1F0};

void absorb(sha1_detail::BlockFunction compress, std::uint32_t* state, std::uint8_t* block,
            std::size_t& blockLength, std::uint64_t& totalBytes, std::string_view bytes) {
    auto data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    std::size_t size = bytes.size();
    totalBytes += size;
    if (blockLength > 0) {
        const std::size_t taken = std::min(size, 64 - blockLength);
        std::memcpy(block + blockLength, data, taken);
        blockLength += taken;
        data += taken;
        size -= taken;
        if (blockLength < 64) {
            return;
        }
        compress(state, block, 1);
        blockLength = 0;
    }
    if (size >= 64) {
        compress(state, data, size / 64);
        data += size / 64 * 64;
        size %= 64;
    }
    if (size > 0) {
        std::memcpy(block, data, size);
        blockLength = size;
    }
}

Sha1Digest finalize(sha1_detail::BlockFunction compress, std::uint32_t* state, std::uint8_t* block,
                    std::size_t blockLength, std::uint64_t totalBytes) {
    block[blockLength++] = 0x80;
    if (blockLength > 56) {
        std::memset(block + blockLength, 0, 64 - blockLength);
        compress(state, block, 1);
        blockLength = 0;
    }
    std::memset(block + blockLength, 0, 56 - blockLength);
    const std::uint64_t totalBits = totalBytes * 8;
    for (int i = 0; i < 8; ++i) {
        block[56 + i] = static_cast<std::uint8_t>(totalBits >> (56 - 8 * i));
    }
    compress(state, block, 1);
    Sha1Digest digest{};
    for (std::size_t i = 0; i < 20; ++i) {
        digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

} // namespace

namespace sha1_detail {

BlockFunction compress_selected() {
    static const BlockFunction selected = [] {
        const BlockFunction cpu = compress_with_cpu_instructions();
        return cpu != nullptr ? cpu : &compress_portable;
    }();
    return selected;
}

Sha1Digest sha1_with(BlockFunction compress, std::string_view bytes) {
    std::array<std::uint32_t, 5> state = kInitialState;
    std::array<std::uint8_t, 64> block{};
    std::size_t blockLength = 0;
    std::uint64_t totalBytes = 0;
    absorb(compress, state.data(), block.data(), blockLength, totalBytes, bytes);
    return finalize(compress, state.data(), block.data(), blockLength, totalBytes);
}

} // namespace sha1_detail

Sha1::Sha1() : state_(kInitialState) {}

void Sha1::update(std::string_view bytes) {
    absorb(sha1_detail::compress_selected(), state_.data(), block_.data(), blockLength_, totalBytes_, bytes);
}

Sha1Digest Sha1::finish() {
    return finalize(sha1_detail::compress_selected(), state_.data(), block_.data(), blockLength_,
                    totalBytes_);
}

Sha1Digest sha1(std::string_view bytes) {
    return sha1_detail::sha1_with(sha1_detail::compress_selected(), bytes);
}

std::string hex_of(std::string_view rawBytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string hex(rawBytes.size() * 2, '0');
    for (std::size_t i = 0; i < rawBytes.size(); ++i) {
        const auto byte = static_cast<std::uint8_t>(rawBytes[i]);
        hex[2 * i] = kDigits[byte >> 4];
        hex[2 * i + 1] = kDigits[byte & 15];
    }
    return hex;
}

std::optional<Sha1Digest> digest_of_hex(std::string_view hex) {
    Sha1Digest digest{};
    if (hex.size() != 2 * digest.size()) {
        return std::nullopt;
    }
    for (std::size_t index = 0; index < hex.size(); ++index) {
        const char c = hex[index];
        const int value = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
        if (value < 0) {
            return std::nullopt;
        }
        digest[index / 2] = static_cast<std::uint8_t>(digest[index / 2] << 4 | value);
    }
    return digest;
}

std::string hex_of(const Sha1Digest& digest) {
    return hex_of(std::string_view(reinterpret_cast<const char*>(digest.data()), digest.size()));
}

std::string object_name(std::string_view header, std::string_view content) {
    Sha1 hasher;
    hasher.update(header);
    hasher.update(content);
    return hex_of(hasher.finish());
}

bool sha1_uses_cpu_instructions() {
    return sha1_detail::compress_with_cpu_instructions() != nullptr;
}

} // namespace corvandell::git
