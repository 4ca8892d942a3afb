// Both SHA-1 block paths and piecewise updates against sha1sum, and object names against
// git hash-object, on random buffers of many lengths, so a fault in either path, in the
// padding or in carrying a partial block between updates shows.
#include "webgames/git/Sha1.hpp"

#include "support/TempFolder.hpp"
#include "support/posix/Command.hpp"
#include "webgames/git/Sha1Blocks.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

TEST(Sha1Reference, BothPathsAndPiecewiseUpdatesAgreeWithSha1sumAndGitHashObject) {
    test::TempFolder folder;
    std::mt19937 random(1234);
    std::vector<std::string> buffers;
    std::string files;
    for (std::size_t length = 0; length < 2000000; length = length < 300 ? length + 1 : length * 3 / 2 + 7) {
        std::string bytes(length, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        files += " '" + folder.writeFile(std::to_string(buffers.size()), bytes).string() + "'";
        buffers.push_back(std::move(bytes));
    }
    // Both tools print 40 digits per line first; cut keeps just those.
    const std::string sums = test::run_shell("sha1sum" + files + " | cut -c1-40");
    const std::string names = test::run_shell("git hash-object" + files);
    ASSERT_EQ(sums.size(), 41 * buffers.size());
    ASSERT_EQ(names.size(), 41 * buffers.size());
    for (std::size_t i = 0; i < buffers.size(); ++i) {
        const std::string& bytes = buffers[i];
        for (const auto path :
             {&sha1_detail::compress_portable, sha1_detail::compress_with_cpu_instructions()}) {
            if (path != nullptr) { // the CPU's path only where it has the instructions
                EXPECT_EQ(hex_of(sha1_detail::sha1_with(path, bytes)), sums.substr(41 * i, 40))
                    << bytes.size();
            }
        }
        Sha1 hasher; // pieces of 1 to 130 bytes, so partial blocks carry over in every way
        for (std::size_t at = 0, piece = 1 + i % 130; at < bytes.size(); at += piece) {
            hasher.update(std::string_view(bytes).substr(at, piece));
        }
        EXPECT_EQ(hex_of(hasher.finish()), sums.substr(41 * i, 40)) << bytes.size();
        const std::string header = "blob " + std::to_string(bytes.size()) + '\0';
        EXPECT_EQ(object_name(header, bytes), names.substr(41 * i, 40)) << bytes.size();
    }
}

} // namespace
} // namespace corvandell::git
