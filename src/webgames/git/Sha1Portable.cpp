// Portable SHA-1 compression (FIPS 180-1), for CPUs without SHA instructions.
//
// The 80 rounds are unrolled at compile time: the five working variables then live in
// registers and change roles by renaming instead of being shuffled after every round,
// and the message schedule is kept in a 16-word ring computed as the rounds need it.
#include "webgames/git/Sha1Blocks.hpp"

#include <utility>

namespace corvandell::git::sha1_detail {
namespace {

constexpr std::uint32_t rotl(std::uint32_t value, int bits) {
    return (value << bits) | (value >> (32 - bits));
}

std::uint32_t load_be32(const std::uint8_t* bytes) {
    return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
           (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
}

// Round T with the variables' roles rotated by T: the slot holding e becomes the new a.
template <std::size_t T> inline void sha1_round(std::uint32_t (&v)[5], std::uint32_t (&w)[16]) {
    std::uint32_t& a = v[(5 - T % 5) % 5];
    std::uint32_t& b = v[(6 - T % 5) % 5];
    std::uint32_t& c = v[(7 - T % 5) % 5];
    std::uint32_t& d = v[(8 - T % 5) % 5];
    std::uint32_t& e = v[(9 - T % 5) % 5];
    if constexpr (T >= 16) {
        w[T % 16] = rotl(w[(T - 3) % 16] ^ w[(T - 8) % 16] ^ w[(T - 14) % 16] ^ w[T % 16], 1);
    }
    std::uint32_t f = 0;
    std::uint32_t k = 0;
    if constexpr (T < 20) {
        f = d ^ (b & (c ^ d));
        k = 0x5A827999;
    } else if constexpr (T < 40) {
        f = b ^ c ^ d;
        k = 0x6ED9EBA1;
    } else if constexpr (T < 60) {
        f = (b & c) | (d & (b | c));
        k = 0x8F1BBCDC;
    } else {
        f = b ^ c ^ d;
        k = 0xCA62C1D6;
    }
    e += rotl(a, 5) + f + k + w[T % 16];
    b = rotl(b, 30);
}

template <std::size_t... T>
inline void sha1_rounds(std::uint32_t (&v)[5], std::uint32_t (&w)[16], std::index_sequence<T...>) {
    (sha1_round<T>(v, w), ...);
}

} // namespace

void compress_portable(std::uint32_t* state, const std::uint8_t* blocks, std::size_t blockCount) {
    for (; blockCount > 0; --blockCount, blocks += 64) {
        std::uint32_t w[16];
        for (std::size_t i = 0; i < 16; ++i) {
            w[i] = load_be32(blocks + 4 * i);
        }
        std::uint32_t v[5] = {state[0], state[1], state[2], state[3], state[4]};
        sha1_rounds(v, w, std::make_index_sequence<80>{});
        for (std::size_t i = 0; i < 5; ++i) {
            state[i] += v[i];
        }
    }
}

} // namespace corvandell::git::sha1_detail
