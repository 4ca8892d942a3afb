// The checkout's writer threads: every file arrives whole whatever the cap on waiting
// bytes (a content over the cap goes alone rather than waiting for ever), and a file that
// cannot be written stops the checkout with its path instead of hanging it.
#include "webgames/git/FileWriters.hpp"

#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"

#include <gtest/gtest.h>

namespace corvandell::git {
namespace {

std::shared_ptr<const std::string> contentOf(std::size_t size, char fill) {
    return std::make_shared<const std::string>(size, fill);
}

TEST(FileWriters, EveryFileArrivesWholeWhateverTheCapAndAFailureNamesItsPath) {
    for (const std::uint64_t cap : {std::uint64_t{1}, std::uint64_t{64} << 10, std::uint64_t{64} << 20}) {
        SCOPED_TRACE(cap);
        test::TempFolder folder;
        std::vector<std::pair<std::filesystem::path, std::shared_ptr<const std::string>>> files;
        {
            FileWriters writers(4, cap);
            for (std::size_t i = 0; i < 300; ++i) {
                const auto size = i == 7 ? std::size_t{3} << 20 : (i * 97) % 5000;
                files.emplace_back(folder.path() / ("file" + std::to_string(i)),
                                   contentOf(size, static_cast<char>('a' + i % 26)));
                writers.write(files.back().first, files.back().second);
            }
            writers.finish();
        }
        for (const auto& [path, content] : files) {
            ASSERT_EQ(test::readTestFile(path), *content) << path;
        }

        std::filesystem::create_directory(folder.path() / "taken");
        const auto failing = [&] {
            FileWriters writers(2, cap);
            writers.write(folder.path() / "taken", contentOf(10, 'x'));
            for (int i = 0; i < 1000; ++i) { // the failure surfaces at a later write or at the end
                writers.write(folder.path() / ("after" + std::to_string(i % 10)), contentOf(100, 'y'));
            }
            writers.finish();
        };
        EXPECT_EQ(test::thrownText(failing), "cannot write " + (folder.path() / "taken").string());
    }
}

} // namespace
} // namespace corvandell::git
