// Removing a tree leaves whatever its links point to as it was (the Windows half is in win/).
#include "base/FileLinks.hpp"
#include "base/FolderRemoval.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> files_under(const fs::path& root) {
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        files.push_back(entry.path().lexically_relative(root).string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

class FileLinksTest : public ::testing::Test {
protected:
    void SetUp() override {
        temp_.writeFile("outside/keep.txt", "keep");
        temp_.writeFile("outside/sub/deep.txt", "deep");
        temp_.writeFile("tree/a/b/c.txt", "c");
        temp_.writeFile("plain.txt", "p");
        fs::create_directories(path("tree/empty"));
        fs::create_directory_symlink(path("outside"), path("tree/link"));
        fs::create_directory_symlink(path("outside"), path("tree/a/b/deep-link"));
        fs::create_symlink(path("outside/keep.txt"), path("tree/a/file-link"));
        fs::create_symlink(path("nowhere"), path("tree/broken"));
        fs::create_directory_symlink(path("outside"), path("root-link"));
    }
    fs::path path(const char* relative) const { return temp_.path() / relative; }

    const test::TempFolder temp_;
};

TEST_F(FileLinksTest, EveryKindOfLinkIsOneAndNothingElseIs) {
    const std::vector<std::pair<const char*, bool>> cases = {
        {"tree/link", true}, {"tree/a/file-link", true}, {"tree/broken", true},
        {"tree", false},     {"tree/a/b/c.txt", false},  {"never-made", false},
    };
    for (const auto& [relative, isLink] : cases) {
        EXPECT_EQ(isLinkOrReparsePoint(path(relative)), isLink) << relative;
    }
}

TEST_F(FileLinksTest, RemovingATreeRemovesItsLinksButNothingTheyPointTo) {
    const auto outsideBefore = files_under(path("outside"));
    for (const char* name : {"tree", "root-link", "plain.txt", "never-made"}) {
        EXPECT_TRUE(removeTreeWithoutFollowingLinks(path(name))) << name;
        EXPECT_FALSE(fs::exists(fs::symlink_status(path(name)))) << name;
        EXPECT_EQ(files_under(path("outside")), outsideBefore) << name;
    }
}

} // namespace
} // namespace corvandell
