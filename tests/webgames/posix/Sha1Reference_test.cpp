// Both SHA-1 block paths against sha1sum and git hash-object on random buffers of many
// lengths, so a fault in either path or in the padding shows against outside tools.
#include "webgames/Sha1.hpp"

#include "support/TempFolder.hpp"
#include "support/posix/Command.hpp"
#include "webgames/Sha1Blocks.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace corvandell::git {
namespace {

TEST(Sha1Reference, BothPathsAgreeWithSha1sumAndGitHashObject) {
    test::TempFolder folder;
    std::mt19937 random(1234);
    std::vector<std::string> buffers;
    std::string fileList;
    for (std::size_t length = 0; length < 2000000; length = length < 300 ? length + 1 : length * 3 / 2 + 7) {
        std::string bytes(length, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        fileList += " '" + folder.writeFile(std::to_string(buffers.size()), bytes).string() + "'";
        buffers.push_back(std::move(bytes));
    }
    // Both tools print 40 digits per line first; cut keeps just those.
    int exitCode = -1;
    const std::string sums = test::run_shell("sha1sum" + fileList + " | cut -c1-40", exitCode);
    ASSERT_EQ(exitCode, 0);
    const std::string names = test::run_shell("git hash-object" + fileList, exitCode);
    ASSERT_EQ(exitCode, 0);
    ASSERT_EQ(sums.size(), 41 * buffers.size());
    ASSERT_EQ(names.size(), 41 * buffers.size());
    const auto cpu = sha1_detail::compress_with_cpu_instructions();
    for (std::size_t i = 0; i < buffers.size(); ++i) {
        const std::string& bytes = buffers[i];
        const std::string sum = sums.substr(41 * i, 40);
        EXPECT_EQ(hex_of(sha1_detail::sha1_with(&sha1_detail::compress_portable, bytes)), sum)
            << bytes.size();
        if (cpu != nullptr) {
            EXPECT_EQ(hex_of(sha1_detail::sha1_with(cpu, bytes)), sum) << bytes.size();
        }
        const std::string header = "blob " + std::to_string(bytes.size()) + '\0';
        EXPECT_EQ(object_name(header, bytes), names.substr(41 * i, 40)) << bytes.size();
    }
}

} // namespace
} // namespace corvandell::git
