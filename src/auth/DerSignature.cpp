// Each half becomes a minimal INTEGER: leading zero bytes are dropped (one kept for zero),
// and a 0x00 goes in front when the top bit is set, since INTEGER is two's complement and
// r and s are positive. All lengths stay below 128, so the short length form always fits.
#include "auth/DerSignature.hpp"

#include <span>

namespace corvandell {
namespace {

std::string derInteger(std::span<const std::uint8_t> half) {
    std::size_t first = 0;
    while (first + 1 < half.size() && half[first] == 0) {
        ++first;
    }
    const bool needsPad = (half[first] & 0x80) != 0;
    const std::size_t length = half.size() - first + (needsPad ? 1 : 0);
    std::string out;
    out += '\x02';
    out += static_cast<char>(length);
    if (needsPad) {
        out += '\0';
    }
    for (std::size_t i = first; i < half.size(); ++i) {
        out += static_cast<char>(half[i]);
    }
    return out;
}

} // namespace

std::string derEncodeSignature(const std::array<std::uint8_t, kP256SignatureBytes>& rs) {
    const std::span<const std::uint8_t> all(rs);
    const std::string body = derInteger(all.first(32)) + derInteger(all.last(32));
    std::string out;
    out += '\x30';
    out += static_cast<char>(body.size());
    return out + body;
}

} // namespace corvandell
