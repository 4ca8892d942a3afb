#include "auth/DerSignature.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

using Half = std::array<std::uint8_t, 32>;

Half halfOf(std::initializer_list<std::uint8_t> leading, std::uint8_t fill) {
    Half half;
    half.fill(fill);
    std::copy(leading.begin(), leading.end(), half.begin());
    return half;
}

std::string hex(const std::string& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out;
    for (const char c : bytes) {
        out += kDigits[static_cast<unsigned char>(c) >> 4];
        out += kDigits[static_cast<unsigned char>(c) & 15];
    }
    return out;
}

std::string repeated(const std::string& hexByte, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        out += hexByte;
    }
    return out;
}

TEST(DerSignature, EncodesEachHalfAsAMinimalPositiveInteger) {
    const struct {
        const char* name;
        Half r;
        Half s;
        std::string der;
    } cases[] = {
        {"top bit set gets a leading zero", halfOf({0x80}, 0x01), halfOf({0xff}, 0x02),
         "304602210080" + repeated("01", 31) + "022100ff" + repeated("02", 31)},
        {"leading zeros are dropped", halfOf({0x00, 0x00, 0x01}, 0x33), halfOf({0x00, 0x7f}, 0x44),
         "3041021e01" + repeated("33", 29) + "021f7f" + repeated("44", 30)},
        {"a zero dropped before a top bit comes back as the pad", halfOf({0x00, 0x90}, 0x55),
         halfOf({}, 0x66), "304402200090" + repeated("55", 30) + "0220" + repeated("66", 32)},
        {"an all-zero half is one zero byte", halfOf({}, 0x00), halfOf({0x00}, 0x00), "3006020100020100"},
        {"largest encoding is 72 bytes", halfOf({}, 0xff), halfOf({}, 0xff),
         "3046022100" + repeated("ff", 32) + "022100" + repeated("ff", 32)},
    };
    for (const auto& c : cases) {
        std::array<std::uint8_t, 64> rs{};
        std::copy(c.r.begin(), c.r.end(), rs.begin());
        std::copy(c.s.begin(), c.s.end(), rs.begin() + 32);
        EXPECT_EQ(hex(derEncodeSignature(rs)), c.der) << c.name;
    }
}

} // namespace
} // namespace corvandell
