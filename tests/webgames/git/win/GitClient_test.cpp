// The whole clone through WinHTTP against the real `git http-backend`, which the fixture
// serves on loopback from a repository it made with the real git; the progress texts are
// checked through the command-line tool's output.
#include "webgames/git/win/GitClient.hpp"

#include "base/Utf8Path.hpp"
#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"
#include "support/win/ChildProcess.hpp"
#include "support/win/LinuxSide.hpp"

#include <gtest/gtest.h>

#include <map>

namespace corvandell::win {
namespace {

std::map<std::wstring, std::string> filesUnder(const std::filesystem::path& root) {
    std::map<std::wstring, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
            files[entry.path().lexically_relative(root).wstring()] = test::readTestFile(entry.path());
        }
    }
    return files;
}

class GitClientTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(hostUrl_.empty()) << "CORVANDELL_TEST_FIXTURES is not set"; }

    const std::filesystem::path state_ = test::fixtureFolder(L"CORVANDELL_TEST_FIXTURES") / L"git-http";
    const std::string hostUrl_ = test::readTestFile(state_ / "url");
    test::TempFolder folder_;
};

TEST_F(GitClientTest, ClonesTheTipAsGitArchiveHasItAndNamesAClosedPort) {
    const auto destination = folder_.path() / L"github" / L"player" / L"orbit";
    folder_.writeFile(L"github/player/orbit/stale.txt", "left over from an older clone");
    GitClient::shallowClone(hostUrl_, "player", "orbit", destination, {});
    const auto expected = filesUnder(state_ / "expected" / "orbit");
    ASSERT_GE(expected.size(), 7u);
    EXPECT_TRUE(filesUnder(destination) == expected) << "the checkout differs from git archive";
    const auto closedPort = [&] {
        GitClient::shallowClone("http://127.0.0.1:1", "player", "orbit", destination, {});
    };
    EXPECT_EQ(test::thrownText(closedPort), "git HTTP request failed");
}

// The repository names each file and folder Windows cannot create beside ordinary ones
// (see git-http-fixture): exactly the ordinary ones arrive.
TEST_F(GitClientTest, SkipsNamesWindowsCannotCreateAndWritesTheRest) {
    const auto destination = folder_.path() / L"names";
    GitClient::shallowClone(hostUrl_, "player", "names", destination, {});
    const auto expected = filesUnder(state_ / "expected" / "names");
    ASSERT_EQ(expected.size(), 4u);
    EXPECT_TRUE(filesUnder(destination) == expected) << "the checkout differs from the ordinary files";
}

TEST_F(GitClientTest, CommandLineToolPrintsProgressAndTheMissingRepositorysText) {
    const std::wstring tool = L"\"" + test::siblingExecutable(L"corvandell-clone.exe").wstring() + L"\"";
    const std::wstring arguments = L" \"" + (folder_.path() / L"out").wstring() + L"\" --host " +
                                   std::wstring(hostUrl_.begin(), hostUrl_.end());
    const test::ChildResult success = test::runAndCapture(tool + L" player orbit" + arguments, 60000);
    EXPECT_EQ(success.exitCode, 0u) << success.output;
    EXPECT_NE(success.output.find("Contacting GitHub...\r\n"), std::string::npos) << success.output;
    EXPECT_NE(success.output.find("Clone complete.\r\n"), std::string::npos) << success.output;
    EXPECT_TRUE(std::filesystem::exists(folder_.path() / L"out" / L"index.html"));
    const test::ChildResult failure = test::runAndCapture(tool + L" player missing" + arguments, 60000);
    EXPECT_EQ(failure.exitCode, 1u);
    EXPECT_NE(failure.output.find("GitHub returned HTTP 404"), std::string::npos) << failure.output;
}

// Folder links made by Linux's `ln -s`, which Wine shows as reparse points (as Windows shows
// a junction): one inside the old copy and one that is the destination itself. Wine cannot
// remove a folder link whose target holds files, so here the clone stops with "cannot
// empty"; Windows removes the link and the clone completes. Either way the folder the
// links point to keeps its file.
TEST_F(GitClientTest, ClonesOverFolderLinksWithoutTouchingWhatTheyPointTo) {
    const std::string linuxRoot = test::linuxPathOf(folder_.path());
    ASSERT_FALSE(linuxRoot.empty());
    const auto expected = filesUnder(state_ / "expected" / "orbit");
    for (const char* link : {"game/escape", "linked-game"}) {
        folder_.writeFile(L"outside/keep.txt", "keep");
        folder_.writeFile(L"game/old.txt", "old");
        const std::string target = std::string(link) == "game/escape" ? "../outside" : "outside";
        ASSERT_TRUE(test::runLinuxShell("ln -s " + target + " '" + linuxRoot + "/" + link + "'"));
        const auto destination =
            folder_.path() / (std::string(link) == "game/escape" ? L"game" : L"linked-game");
        const std::string error =
            test::thrownText([&] { GitClient::shallowClone(hostUrl_, "player", "orbit", destination, {}); });
        EXPECT_EQ(test::readTestFile(folder_.path() / L"outside" / L"keep.txt"), "keep") << link;
        EXPECT_EQ(filesUnder(folder_.path() / L"outside").size(), 1u) << link;
        if (error.empty()) {
            EXPECT_TRUE(filesUnder(destination) == expected) << link;
        } else {
            EXPECT_EQ(error, "cannot empty " + pathToUtf8(destination)) << link;
        }
        // std::filesystem would follow the links when the test folder is removed.
        ASSERT_TRUE(test::runLinuxShell("rm -rf '" + linuxRoot + "'/*"));
    }
}

} // namespace
} // namespace corvandell::win
