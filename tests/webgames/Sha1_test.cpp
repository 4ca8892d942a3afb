// SHA-1 against fixed digests: the FIPS 180-1 examples and the lengths where padding
// changes shape (55 bytes still fit the length in the block, 56 do not). Both block paths
// run when the CPU has the instructions, so the Windows build checks its own dispatch too.
#include "webgames/Sha1.hpp"

#include "webgames/Sha1Blocks.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

TEST(Sha1, MatchesKnownDigestsOnEveryBlockPath) {
    const std::vector<std::pair<std::string, const char*>> cases = {
        {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
        {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
        {std::string(55, 'a'), "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
        {std::string(56, 'a'), "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
        {std::string(64, 'a'), "0098ba824b5c16427bd7a1122a5a442a25ec644d"},
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

TEST(Sha1, PiecewiseUpdatesEqualOneUpdate) {
    std::string message;
    for (int i = 0; i < 300; ++i) {
        message += static_cast<char>(i * 37 % 256);
    }
    const Sha1Digest whole = sha1(message);
    for (std::size_t piece = 1; piece <= 130; ++piece) {
        Sha1 hasher;
        for (std::size_t at = 0; at < message.size(); at += piece) {
            hasher.update(std::string_view(message).substr(at, piece));
        }
        EXPECT_EQ(hasher.finish(), whole) << "pieces of " << piece;
    }
}

TEST(Sha1, NamesObjectsAsGitDoes) {
    EXPECT_EQ(object_name(std::string("blob 0\0", 7), ""), "e69de29bb2d1d6434b8b29ae775ad8c2e48c5391");
    EXPECT_EQ(object_name(std::string("blob 6\0", 7), "hello\n"), "ce013625030ba8dba906f756967f9e9ca394464a");
}

} // namespace
} // namespace corvandell::git
