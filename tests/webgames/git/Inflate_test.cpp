// Inflate on tiny hand-made streams, one per failure reason, and one stream long enough for
// the fast loop, so the Windows build runs both; the comparison with zlib over real
// compressed data lives in posix/InflateZlib_test.cpp.
#include "webgames/git/Inflate.hpp"

#include "support/PackWriter.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace corvandell::git {
namespace {

TEST(Inflate, EachMalformedStreamFailsWithItsOwnReason) {
    const std::vector<std::tuple<const char*, bool, InflateError>> cases = {
        {"01 01 00 00 00", false, InflateError::StoredLengthMismatch},
        {"07", false, InflateError::BadBlockType},
        {"05 00 92 04", false, InflateError::OverSubscribedCode},
        {"05 00 80 08", false, InflateError::IncompleteCode},
        {"4b 04 42 00", false, InflateError::DistanceTooFar}, // distance 2 after one byte
        // 'a' then nothing: the zeros fed past the end would read as the end-of-block code.
        {"4b 04", false, InflateError::TruncatedInput},
        {"78 9d 4b 04 00", true, InflateError::BadZlibHeader}, // check bits wrong
    };
    for (const auto& [hex, isZlib, expected] : cases) {
        InflateError error = InflateError::None;
        const std::string input = test::from_hex(hex);
        const auto result = isZlib ? inflate_zlib(input, 0, &error) : inflate_raw(input, 0, &error);
        EXPECT_FALSE(result.has_value()) << hex;
        EXPECT_EQ(error, expected) << hex;
    }
}

TEST(Inflate, DecodesADynamicBlockThroughTheFastLoop) {
    // zlib level 9 of the text below.
    const std::string stream = test::from_hex(
        "78 da 7d d2 4b 0a c2 40 10 45 d1 b9 ab a8 05 38 a8 4f 27 10 dd 8e 3d 10 1a 15 a3 ae 5f 10 aa 10 "
        "6e c8 f8 40 f2 6e 25 a3 7f fa 10 3d c9 fa 78 5e 5f 5d f4 28 eb fd 7d bb 88 9e 0f e3 67 56 66 69 "
        "96 e6 65 2d cd d3 a2 6c 49 8b b4 56 36 a5 b5 b4 a9 2c b0 65 a6 d5 16 e5 33 9d 0d dc b2 d1 d0 d8 "
        "60 d8 d2 78 33 63 83 61 cb cc f7 05 1b 16 6c 31 f6 29 1b 78 97 a0 f9 ce 77 08 36 70 cb 46 83 b2 "
        "81 ff 8b f1 66 ce 06 fb db f2 05 64 f6 d1 92");
    std::string expected;
    for (int i = 0; i < 24; ++i) {
        expected += "level " + std::to_string(i % 7) + ": sprite " + std::to_string(i * i % 11) + ", sound " +
                    std::to_string(i % 5) + ";\n";
    }
    const auto result = inflate_zlib(stream + "next entry", expected.size());
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->bytes, expected);
    EXPECT_EQ(result->consumed, stream.size());
}

} // namespace
} // namespace corvandell::git
