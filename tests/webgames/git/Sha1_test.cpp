// SHA-1 against fixed digests, including the lengths where padding changes shape (55 bytes
// still fit the length in the block, 56 do not). Both block paths run when the CPU has the
// instructions, so the Windows build checks its own dispatch too.
#include "webgames/git/Sha1.hpp"

#include "webgames/git/Sha1Blocks.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

TEST(Sha1, MatchesKnownDigestsOnEveryBlockPath) {
    const std::vector<std::pair<std::string, const char*>> cases = {
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
        {std::string(55, 'a'), "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
        {std::string(56, 'a'), "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
    };
    std::vector<sha1_detail::BlockFunction> paths = {&sha1_detail::compress_portable};
    if (const auto cpu = sha1_detail::compress_with_cpu_instructions(); cpu != nullptr) {
        paths.push_back(cpu);
    }
    for (const auto& [message, digest] : cases) {
        for (const auto path : paths) {
            EXPECT_EQ(hex_of(sha1_detail::sha1_with(path, message)), digest) << message.size() << " bytes";
        }
        EXPECT_EQ(hex_of(sha1(message)), digest) << message.size() << " bytes";
    }
}

} // namespace
} // namespace corvandell::git
