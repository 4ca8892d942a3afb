// Inflate against zlib, the reference decoder: streams zlib writes at every level and
// strategy (stored, fixed and dynamic blocks) must decode to the same bytes and occupy
// exactly the bytes zlib's own inflate consumed; cut and corrupted streams must get the
// same verdict from both and never read past their buffer (AddressSanitizer watches).
#include "webgames/git/Inflate.hpp"

#include "support/TempFolder.hpp"
#include "support/posix/ZlibDeflate.hpp"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

using test::deflate_with_zlib;

// zlib's verdict on a stream followed by unrelated bytes: the output and the bytes it read.
std::optional<Inflated> inflate_with_zlib(const std::string& input, int windowBits) {
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, windowBits), Z_OK);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    stream.avail_in = static_cast<uInt>(input.size());
    std::string out;
    std::array<char, 1 << 16> chunk{};
    int status = Z_OK;
    while (status == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(chunk.data());
        stream.avail_out = chunk.size();
        status = inflate(&stream, Z_NO_FLUSH);
        out.append(chunk.data(), chunk.size() - stream.avail_out);
    }
    inflateEnd(&stream);
    return status == Z_STREAM_END ? std::optional(Inflated{out, stream.total_in}) : std::nullopt;
}

// Ours on an exact-size heap copy, so any read past its end is an AddressSanitizer report.
std::optional<Inflated> inflate_exact_copy(std::string_view bytes, std::size_t sizeHint) {
    const auto copy = std::make_unique<char[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return inflate_raw(std::string_view(copy.get(), bytes.size()), sizeHint);
}

TEST(InflateZlib, DecodesZlibOutputAtEveryLevelAndStrategyLikeZlib) {
    // Empty, one byte, one long run, noise, and real files: this source and the start of the
    // test program itself, whose zero runs and repeated code give near and far matches.
    std::mt19937 random(20240601);
    std::string noise(100000, '\0');
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random()); });
    std::vector<std::string> samples = {"", "a", std::string(70000, 'z'), noise,
                                        test::readTestFile(__FILE__)};
    samples.push_back(test::readTestFile("/proc/self/exe").substr(0, 300000));
    for (int level = 0; level <= 9; ++level) {
        for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED}) {
            for (std::size_t i = 0; i < samples.size(); ++i) {
                const std::string& data = samples[i];
                const int windowBits = 9 + static_cast<int>(random() % 7);
                const std::string stream =
                    deflate_with_zlib(data, level, strategy, windowBits) + "next entry";
                const auto reference = inflate_with_zlib(stream, windowBits);
                ASSERT_TRUE(reference.has_value());
                // Exact, too small and absent size hints all end in the same result.
                const std::size_t hints[] = {data.size(), data.size() / 3, 0};
                const auto result = inflate_zlib(stream, hints[random() % 3]);
                SCOPED_TRACE(testing::Message()
                             << "level " << level << " strategy " << strategy << " sample " << i);
                ASSERT_TRUE(result.has_value());
                EXPECT_TRUE(result->bytes == data);
                EXPECT_EQ(result->consumed, reference->consumed);
            }
        }
    }
}

TEST(InflateZlib, CutAndCorruptedStreamsGetZlibsVerdictWithoutReadingOutOfBounds) {
    std::mt19937 random(77);
    const int strategies[] = {Z_DEFAULT_STRATEGY, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED, Z_DEFAULT_STRATEGY};
    for (int round = 0; round < 40; ++round) {
        std::string data(random() % 3000, '\0');
        for (std::size_t i = 0; i < data.size(); ++i) {
            const bool repeats = i > 20 && random() % 4 != 0;
            data[i] = repeats ? data[i - 1 - random() % 20] : static_cast<char>('a' + random() % 26);
        }
        const std::string raw = deflate_with_zlib(data, round % 10, strategies[round % 5], -15);
        for (std::size_t length = 0; length < raw.size(); ++length) {
            EXPECT_FALSE(inflate_exact_copy(std::string_view(raw).substr(0, length), data.size())) << length;
        }
        for (int flip = 0; flip < 100; ++flip) {
            std::string corrupted = raw;
            for (auto n = 1 + random() % 3; n > 0; --n) {
                corrupted[random() % corrupted.size()] ^= static_cast<char>(1 << (random() % 8));
            }
            const auto ours = inflate_exact_copy(corrupted, data.size());
            const auto reference = inflate_with_zlib(corrupted, -15);
            ASSERT_EQ(ours.has_value(), reference.has_value()) << "round " << round << " flip " << flip;
            if (ours) {
                EXPECT_TRUE(ours->bytes == reference->bytes);
                EXPECT_EQ(ours->consumed, reference->consumed);
            }
        }
    }
}

} // namespace
} // namespace corvandell::git
