// Encoder only: nothing the client receives is base64 that it has to read back.
#include "auth/Base64.hpp"

#include <cstdint>

namespace corvandell {

std::string base64Encode(std::string_view bytes) {
    static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t group = static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << 16 |
                                    static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i + 1]))
                                        << 8 |
                                    static_cast<unsigned char>(bytes[i + 2]);
        out += kAlphabet[group >> 18 & 63];
        out += kAlphabet[group >> 12 & 63];
        out += kAlphabet[group >> 6 & 63];
        out += kAlphabet[group & 63];
    }
    const std::size_t left = bytes.size() - i;
    if (left == 0) {
        return out;
    }
    std::uint32_t group = static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << 16;
    if (left == 2) {
        group |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
    }
    out += kAlphabet[group >> 18 & 63];
    out += kAlphabet[group >> 12 & 63];
    out += left == 2 ? kAlphabet[group >> 6 & 63] : '=';
    out += '=';
    return out;
}

} // namespace corvandell
