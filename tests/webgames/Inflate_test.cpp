// Inflate on tiny hand-made streams, each reaching one failure or one rule of the format;
// the comparison with zlib over real compressed data lives in posix/InflateZlib_test.cpp.
#include "webgames/Inflate.hpp"

#include "support/PackWriter.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace corvandell::git {
namespace {

using test::from_hex;

TEST(Inflate, EachMalformedStreamFailsWithItsOwnReason) {
    const std::vector<std::tuple<const char*, const char*, bool, InflateError>> cases = {
        {"stored LEN and NLEN disagree", "01 01 00 00 00", false, InflateError::StoredLengthMismatch},
        {"block type 3", "07", false, InflateError::BadBlockType},
        {"code length code over-subscribed", "05 00 92 04", false, InflateError::OverSubscribedCode},
        {"code length code incomplete", "05 00 80 08", false, InflateError::IncompleteCode},
        {"287 literal/length codes", "f5 00 80 04", false, InflateError::BadCodeLengths},
        {"length repeat with nothing before it", "05 00 02 24", false, InflateError::BadCodeLengths},
        {"zero run past the last length", "05 00 80 e4 ff 1f", false, InflateError::BadCodeLengths},
        // Valid codes had the repeat stopped at the last length; it must fail instead.
        {"repeat past the last length", "05 c0 05 01 00 00 00 00 10 ff 57 8b", false,
         InflateError::BadCodeLengths},
        {"no end-of-block code", "05 00 80 e4 7f 1b", false, InflateError::BadCodeLengths},
        {"fixed literal/length symbol 286", "1b 03", false, InflateError::InvalidSymbol},
        {"fixed distance symbol 30", "4b 04 3e", false, InflateError::InvalidSymbol},
        {"distance 2 after one byte", "4b 04 42 00", false, InflateError::DistanceTooFar},
        {"empty input", "", false, InflateError::TruncatedInput},
        {"stored block cut short", "01 05 00 fa ff 61", false, InflateError::TruncatedInput},
        // 'a' then nothing: the zeros fed past the end would read as the end-of-block code.
        {"end of block missing", "4b 04", false, InflateError::TruncatedInput},
        {"zlib header one byte", "78", true, InflateError::TruncatedInput},
        {"zlib method 9", "79 18 4b 04 00", true, InflateError::BadZlibHeader},
        {"zlib check bits wrong", "78 9d 4b 04 00", true, InflateError::BadZlibHeader},
        {"zlib preset dictionary", "78 bb 4b 04 00", true, InflateError::BadZlibHeader},
    };
    for (const auto& [what, hex, isZlib, expected] : cases) {
        InflateError error = InflateError::None;
        const std::string input = from_hex(hex);
        const auto result = isZlib ? inflate_zlib(input, 0, &error) : inflate_raw(input, 0, &error);
        EXPECT_FALSE(result.has_value()) << what;
        EXPECT_EQ(error, expected) << what;
    }
}

TEST(Inflate, CountsThePartlyUsedLastByteAndTheZlibWrapper) {
    const std::vector<std::tuple<const char*, const char*, bool, std::string, std::size_t>> cases = {
        // 3 header bits, 8 for 'a', 7 for end of block: 18 bits, so 3 bytes, whatever follows.
        {"fixed block, exact", "4b 04 00", false, "a", 3},
        {"fixed block, then other bytes", "4b 04 00 ff ff 01", false, "a", 3},
        {"zlib header and Adler-32 counted", "78 01 4b 04 00 00 62 00 62 ff ff", true, "a", 9},
        {"zlib trailer counted even when cut off", "78 01 4b 04 00", true, "a", 9},
        {"window size nibble not checked", "f8 00 4b 04 00 00 62 00 62", true, "a", 9},
        {"match reaching back to the first byte", "4b 04 02 00", false, "aaaa", 4},
        // Dynamic block whose only distance code has length 1 (the other code unused).
        {"single distance code", "0d c0 01 09 00 00 00 80 a0 ad fe 3f 51 5a", false, "aaaa", 14},
        {"stored block then final fixed block", "00 02 00 fd ff 78 79 4b 04 00 ee", false, "xya", 10},
    };
    // A size hint far beyond what the input could expand to changes nothing but the reservation.
    const std::size_t hint = std::size_t{1} << 40;
    for (const auto& [what, hex, isZlib, expected, consumed] : cases) {
        InflateError error = InflateError::None;
        const std::string input = from_hex(hex);
        const auto result = isZlib ? inflate_zlib(input, hint, &error) : inflate_raw(input, hint, &error);
        ASSERT_TRUE(result.has_value()) << what << ": error " << static_cast<int>(error);
        EXPECT_EQ(result->bytes, expected) << what;
        EXPECT_EQ(result->consumed, consumed) << what;
    }
}

TEST(Inflate, TrustsTheSizeHintOnlyAsFarAsTheInputCouldExpand) {
    constexpr std::size_t kMegabyte = 1 << 20;
    EXPECT_EQ(inflate_reservation(3, std::size_t{1} << 32), 3u * 1032u);
    EXPECT_EQ(inflate_reservation(10 * kMegabyte, std::size_t{1} << 32), 64 * kMegabyte);
    EXPECT_EQ(inflate_reservation(10 * kMegabyte, 5 * kMegabyte), 5 * kMegabyte);
    EXPECT_EQ(inflate_reservation(0, 100), 0u);
}

TEST(Inflate, DecodesADynamicBlockThroughTheFastLoop) {
    // zlib level 9 of the text below: long enough input and output for the unchecked loop,
    // so the Windows build runs that loop too.
    const std::string stream = from_hex(
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
