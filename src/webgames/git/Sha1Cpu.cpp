// SHA-1 compression with the x86 SHA extensions, and the runtime check that decides
// whether this process may use them.
//
// The functions carry their own target attribute, so the rest of the program is still
// built for the baseline x86-64 and runs on CPUs without these instructions. Each group
// of four rounds takes its function selector as an immediate, hence the compile-time
// unrolling. Other architectures fall back to the portable code.
#include "webgames/git/Sha1Blocks.hpp"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <immintrin.h>

#include <utility>

#define CORVANDELL_SHA_TARGET __attribute__((target("sha,sse4.1")))

namespace corvandell::git::sha1_detail {
namespace {

struct RoundState {
    __m128i abcd;
    __m128i previousAbcd; // before the last group: its A becomes the next group's E
    __m128i w[4];         // the last four message groups, W[i] in slot i % 4
};

// Rounds 4G to 4G + 3.
template <int G> CORVANDELL_SHA_TARGET inline void sha1_group(RoundState& s) {
    if constexpr (G >= 4) {
        s.w[G % 4] = _mm_sha1msg2_epu32(
            _mm_xor_si128(_mm_sha1msg1_epu32(s.w[G % 4], s.w[(G + 1) % 4]), s.w[(G + 2) % 4]),
            s.w[(G + 3) % 4]);
    }
    const __m128i e = _mm_sha1nexte_epu32(s.previousAbcd, s.w[G % 4]);
    s.previousAbcd = s.abcd;
    s.abcd = _mm_sha1rnds4_epu32(s.abcd, e, G / 5);
}

template <int... G>
CORVANDELL_SHA_TARGET inline void sha1_groups(RoundState& s, std::integer_sequence<int, G...>) {
    (sha1_group<G + 1>(s), ...);
}

CORVANDELL_SHA_TARGET void compress_sha_ni(std::uint32_t* state, const std::uint8_t* blocks,
                                           std::size_t blockCount) {
    // Words are big-endian and the instructions keep A in the highest lane.
    const __m128i byteOrder = _mm_set_epi64x(0x0001020304050607LL, 0x08090a0b0c0d0e0fLL);
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1B);
    __m128i e0 = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
    for (; blockCount > 0; --blockCount, blocks += 64) {
        RoundState s;
        for (int i = 0; i < 4; ++i) {
            s.w[i] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks + 16 * i)),
                                      byteOrder);
        }
        s.previousAbcd = abcd;
        s.abcd = _mm_sha1rnds4_epu32(abcd, _mm_add_epi32(e0, s.w[0]), 0);
        sha1_groups(s, std::make_integer_sequence<int, 19>{});
        e0 = _mm_sha1nexte_epu32(s.previousAbcd, e0);
        abcd = _mm_add_epi32(s.abcd, abcd);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1B));
    state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e0, 3));
}

bool cpu_has_sha_instructions() {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) {
        return false;
    }
    const bool hasSse41 = (ecx & bit_SSE4_1) != 0 && (ecx & bit_SSSE3) != 0;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) {
        return false;
    }
    constexpr unsigned kShaBit = 1u << 29;
    return hasSse41 && (ebx & kShaBit) != 0;
}

} // namespace

BlockFunction compress_with_cpu_instructions() {
    static const bool isAvailable = cpu_has_sha_instructions();
    return isAvailable ? &compress_sha_ni : nullptr;
}

} // namespace corvandell::git::sha1_detail

#else

namespace corvandell::git::sha1_detail {
BlockFunction compress_with_cpu_instructions() {
    return nullptr;
}
} // namespace corvandell::git::sha1_detail

#endif
