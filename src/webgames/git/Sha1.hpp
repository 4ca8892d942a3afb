// SHA-1 (FIPS 180-1) for naming git objects.
//
// Uses the CPU's SHA instructions when a runtime check finds them and a portable
// implementation otherwise; both produce the same digests.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvandell::git {

using Sha1Digest = std::array<std::uint8_t, 20>;

class Sha1 {
public:
    Sha1();
    void update(std::string_view bytes);
    Sha1Digest finish();

private:
    std::array<std::uint32_t, 5> state_;
    std::array<std::uint8_t, 64> block_{};
    std::size_t blockLength_ = 0;
    std::uint64_t totalBytes_ = 0;
};

Sha1Digest sha1(std::string_view bytes);

// 40 lower-case hexadecimal digits.
std::string hex_of(const Sha1Digest& digest);
std::string hex_of(std::string_view rawBytes);

// The digest 40 lower-case hexadecimal digits spell, or no value for any other text.
std::optional<Sha1Digest> digest_of_hex(std::string_view hex);

// The digest's 20 bytes as a view, valid while the digest is.
inline std::string_view raw_of(const Sha1Digest& digest) {
    return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

// The object-name function handed to the pack decoder: SHA-1 of header then content.
std::string object_name(std::string_view header, std::string_view content);

// Whether this process uses the SHA instructions (for benchmarks and diagnostics).
bool sha1_uses_cpu_instructions();

} // namespace corvandell::git
