// The fast loop against the careful one-symbol path: the same bytes, the same count of
// input bytes occupied and the same verdict for every stream, whichever path decodes it.
// Streams come from zlib at every level and strategy (stored, fixed, dynamic, Huffman only,
// runs), with literal-heavy and match-heavy data whose codes make two-literal entries and
// subtables, from the fuzzer's seed corpus, and from corrupting and cutting those.
#include "webgames/git/InflatePath.hpp"

#include "support/TempFolder.hpp"
#include "support/posix/ZlibDeflate.hpp"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

using inflate_detail::inflate_zlib_on;
using test::deflate_with_zlib;

// Both paths on one input with one size hint and output limit; returns whether it decoded.
bool expect_paths_agree(const std::string& input, std::size_t sizeHint, std::size_t maxOutput) {
    InflateError fastError = InflateError::None;
    InflateError carefulError = InflateError::None;
    const auto fast = inflate_zlib_on(InflatePath::Fast, input, sizeHint, &fastError, maxOutput);
    const auto careful = inflate_zlib_on(InflatePath::CarefulOnly, input, sizeHint, &carefulError, maxOutput);
    EXPECT_EQ(fast.has_value(), careful.has_value());
    EXPECT_EQ(fastError, carefulError);
    if (fast && careful) {
        EXPECT_TRUE(fast->bytes == careful->bytes);
        EXPECT_EQ(fast->consumed, careful->consumed);
    }
    return fast.has_value();
}

std::vector<std::string> sample_texts() {
    std::mt19937 random(20261125);
    std::string noise(50000, '\0');
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random()); });
    // Skewed letters: short codes for a few of them, so many pairs fit one lookup.
    std::string skewed(60000, '\0');
    std::generate(skewed.begin(), skewed.end(), [&] { return "eeeeettaaoinshrdlu  \n"[random() % 21]; });
    // Every byte value, some rarely: long codes that go through subtables.
    std::string wide;
    for (int i = 0; i < 80000; ++i) {
        const auto r = random();
        wide.push_back(static_cast<char>(r % 7 == 0 ? r >> 8 : 'a' + r % 6));
    }
    std::string near; // short distances, 1 to 7 bytes back, overlapping their own output
    for (int i = 0; i < 3000; ++i) {
        near += std::string(1 + random() % 7, static_cast<char>('a' + random() % 3)) + "xyzw"[random() % 4];
    }
    return {"", "a", std::string(70000, 'z'), noise, skewed, wide, near, test::readTestFile(__FILE__)};
}

TEST(InflatePaths, AgreeOnZlibOutputAtEveryLevelAndStrategy) {
    const auto samples = sample_texts();
    for (int level = 0; level <= 9; ++level) {
        for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED}) {
            for (std::size_t i = 0; i < samples.size(); ++i) {
                SCOPED_TRACE(testing::Message()
                             << "level " << level << " strategy " << strategy << " sample " << i);
                const std::string stream = deflate_with_zlib(samples[i], level, strategy) + "next entry";
                EXPECT_TRUE(expect_paths_agree(stream, samples[i].size(), kMaxObjectBytes));
                // A limit below the output stops both at the same point with the same reason.
                expect_paths_agree(stream, samples[i].size(), samples[i].size() / 2);
            }
        }
    }
}

// A pack holds thousands of small objects, each kept for the whole clone: none may carry
// the fast loop's slack or a growth step's spare room, whichever path finished it.
TEST(InflatePaths, OutputsOfTheExpectedSizeTakeExactlyThatMuchMemory) {
    for (const auto& sample : sample_texts()) {
        for (const std::size_t size : {std::size_t{100}, std::size_t{20000}, sample.size()}) {
            const std::string data = sample.substr(0, size);
            const std::string stream = deflate_with_zlib(data, 6, Z_DEFAULT_STRATEGY);
            for (const auto path : {InflatePath::Fast, InflatePath::CarefulOnly}) {
                const auto result = inflate_zlib_on(path, stream, data.size());
                ASSERT_TRUE(result.has_value());
                EXPECT_TRUE(result->bytes == data);
                EXPECT_EQ(result->bytes.capacity(), std::max(data.size(), std::string().capacity())) << size;
            }
        }
    }
}

TEST(InflatePaths, AgreeOnTheSeedCorpusAndOnItsCorruptions) {
    const auto corpus = std::filesystem::path(__FILE__).parent_path() / "../../../../fuzz/corpus/inflate";
    std::vector<std::string> streams;
    for (const auto& file : std::filesystem::directory_iterator(corpus)) {
        const std::string seed = test::readTestFile(file.path());
        ASSERT_FALSE(seed.empty());
        const std::string rest = seed.substr(1);
        streams.push_back(rest); // a zlib stream in mode 0, else not one: a verdict all the same
        for (const int level : {1, 6, 9}) {
            streams.push_back(deflate_with_zlib(rest, level, Z_DEFAULT_STRATEGY));
        }
    }
    ASSERT_GE(streams.size(), 6u);
    std::mt19937 random(13);
    for (const std::string& stream : streams) {
        expect_paths_agree(stream, stream.size() * 4, kMaxObjectBytes);
        for (int round = 0; round < 200 && !stream.empty(); ++round) {
            std::string changed = stream;
            if (round % 2 == 0) {
                changed[random() % changed.size()] ^= static_cast<char>(1 << (random() % 8));
            } else {
                changed.resize(random() % changed.size());
            }
            expect_paths_agree(changed, stream.size() * 4, kMaxObjectBytes);
        }
    }
}

} // namespace
} // namespace corvandell::git
