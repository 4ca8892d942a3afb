// The link seam and the folder removal under Wine, on folder links made by Linux's `ln -s`:
// Wine shows them as reparse points, which the mingw runtime's std::filesystem calls plain
// folders. A tree holding such links is never removed through them. (Wine shows a link to
// a file as a plain file, and deleting it deletes its target, so there is none here.)
#include "base/FileLinks.hpp"
#include "base/FolderRemoval.hpp"

#include "support/TempFolder.hpp"
#include "support/win/LinuxSide.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

class FileLinksTest : public ::testing::Test {
protected:
    void SetUp() override {
        temp_.writeFile(L"outside/keep.txt", "keep");
        temp_.writeFile(L"tree/a/file.txt", "x");
        ASSERT_FALSE(linuxRoot_.empty());
        ASSERT_TRUE(test::runLinuxShell("ln -s ../outside '" + linuxRoot_ +
                                        "/tree/link' && ln -s ../../outside '" + linuxRoot_ +
                                        "/tree/a/link'"));
    }
    // std::filesystem would follow the links when the folder is removed.
    void TearDown() override { test::runLinuxShell("rm -rf '" + linuxRoot_ + "'/*"); }

    const test::TempFolder temp_;
    const std::string linuxRoot_ = test::linuxPathOf(temp_.path());
};

TEST_F(FileLinksTest, AFolderLinkIsAReparsePointAndPlainEntriesAreNot) {
    const std::vector<std::pair<const wchar_t*, bool>> cases = {
        {L"tree/link", true},        {L"tree/a/link", true}, {L"tree", false},
        {L"tree/a/file.txt", false}, {L"outside", false},    {L"tree/never-made", false},
    };
    for (const auto& [relative, isLink] : cases) {
        EXPECT_EQ(isLinkOrReparsePoint(temp_.path() / relative), isLink) << fs::path(relative).string();
    }
}

// Wine cannot remove a folder link whose target holds files (RemoveDirectoryW reports the
// target not empty), so here the removal stops with the links left in place; on Windows it
// removes them. Either way nothing outside is touched.
TEST_F(FileLinksTest, RemovingATreeNeverReachesThroughItsLinks) {
    const bool isRemoved = removeTreeWithoutFollowingLinks(temp_.path() / L"tree");
    EXPECT_EQ(test::readTestFile(temp_.path() / L"outside" / L"keep.txt"), "keep");
    EXPECT_EQ(std::distance(fs::directory_iterator(temp_.path() / L"outside"), fs::directory_iterator()), 1);
    if (isRemoved) {
        EXPECT_FALSE(fs::exists(temp_.path() / L"tree"));
    } else {
        EXPECT_TRUE(isLinkOrReparsePoint(temp_.path() / L"tree" / L"link") ||
                    isLinkOrReparsePoint(temp_.path() / L"tree" / L"a" / L"link"));
    }
}

} // namespace
} // namespace corvandell
