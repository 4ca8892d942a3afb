// Hand-built streams whose trailers lie about their size.
#include "stores/BoundedGunzip.hpp"

#include "support/DeflateBomb.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

using test::deflateOfZeros;
using test::gzipMember;

TEST(BoundedGunzip, MeasuresWhatAStreamInflatesToAndStopsAtTheCap) {
    constexpr std::size_t kMatches = 4000; // 1,032,001 bytes
    const std::string stream = deflateOfZeros(kMatches);
    const DeflateMeasure whole = measureDeflate(stream + "trailing", 2'000'000);
    EXPECT_EQ(whole.problem, GunzipProblem::None);
    EXPECT_EQ(whole.contentBytes, 1 + 258 * kMatches);
    EXPECT_EQ(whole.inputBytes, stream.size()); // what follows the stream is not its own

    const DeflateMeasure capped = measureDeflate(stream, 1'000'000);
    EXPECT_EQ(capped.problem, GunzipProblem::TooLarge);
    EXPECT_LE(capped.contentBytes, 1'000'000u + 258u);

    EXPECT_EQ(measureDeflate(stream.substr(0, stream.size() / 2), 2'000'000).problem, GunzipProblem::Damaged);
    EXPECT_EQ(measureDeflate("\x07", 100).problem, GunzipProblem::Damaged); // reserved block type
}

TEST(BoundedGunzip, RefusesContentPastTheCapWhateverTheTrailerClaims) {
    constexpr std::size_t kCap = 1 << 20;
    const struct {
        const char* what;
        std::string file;
        GunzipProblem problem;
    } cases[] = {
        {"trailer claims 100 bytes", gzipMember(deflateOfZeros(40'000), 100), GunzipProblem::TooLarge},
        // Nor is a trailer believed the other way: this content is small, so its size is wrong.
        {"trailer claims more than the cap", gzipMember(deflateOfZeros(1), kCap + 1), GunzipProblem::Damaged},
        {"second member past the cap",
         gzipMember(deflateOfZeros(3000), 100) + gzipMember(deflateOfZeros(3000), 100),
         GunzipProblem::TooLarge},
        // Under the cap, the git engine's gunzip judges it, and the zero CRC-32 fails.
        {"under the cap", gzipMember(deflateOfZeros(10), 2581), GunzipProblem::Damaged},
        {"not gzip", "{\"game\":{}}", GunzipProblem::NotGzip},
        {"header only", std::string("\x1f\x8b\x08\0\0\0\0\0\0\xff", 10), GunzipProblem::Damaged},
    };
    for (const auto& [what, file, problem] : cases) {
        const BoundedGunzip result = gunzipUpTo(file, kCap);
        EXPECT_EQ(result.problem, problem) << what;
        EXPECT_FALSE(result.content) << what;
    }
}

} // namespace
} // namespace corvandell
