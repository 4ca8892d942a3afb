#include "auth/Base64.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(Base64, EncodesWithPaddingAndTheStandardAlphabet) {
    const struct {
        std::string bytes;
        std::string text;
    } cases[] = {
        {"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
        {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {std::string("\xfb\xff\xbf\x00", 4), "+/+/AA=="},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(base64Encode(c.bytes), c.text) << c.text;
    }
    EXPECT_EQ(base64Encode(std::string(65, '\x04')).size(), 88u);
}

} // namespace
} // namespace corvandell
