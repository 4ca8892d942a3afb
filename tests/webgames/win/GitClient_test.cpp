// The whole clone through WinHTTP against the real `git http-backend`, which the fixture
// serves on loopback from repositories it made with the real git.
#include "webgames/win/GitClient.hpp"

#include <map>

#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"
#include "support/win/ChildProcess.hpp"

#include <gtest/gtest.h>

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
    void SetUp() override {
        const auto fixtures = test::fixtureFolder(L"CORVANDELL_TEST_FIXTURES");
        ASSERT_FALSE(fixtures.empty()) << "CORVANDELL_TEST_FIXTURES is not set";
        state_ = fixtures / L"git-http";
        hostUrl_ = test::readTestFile(state_ / "url");
        ASSERT_FALSE(hostUrl_.empty());
    }

    std::string cloneError(const std::string& repo, const std::filesystem::path& destination) {
        return test::thrownText([&] { GitClient::shallowClone(hostUrl_, "player", repo, destination, {}); });
    }

    std::filesystem::path state_;
    std::string hostUrl_;
};

TEST_F(GitClientTest, ClonesTheTipExactlyAsGitArchiveHasItAndReportsProgress) {
    test::TempFolder folder;
    const auto destination = folder.path() / L"github" / L"player" / L"orbit";
    folder.writeFile(L"github/player/orbit/stale.txt", "left over from an older clone");
    std::vector<std::wstring> progress;
    GitClient::shallowClone(hostUrl_, "player", "orbit", destination,
                            [&](const std::wstring& text) { progress.push_back(text); });

    EXPECT_EQ(progress, (std::vector<std::wstring>{L"Contacting GitHub...", L"Downloading game files...",
                                                   L"Unpacking...", L"Clone complete."}));
    const auto expected = filesUnder(state_ / "expected" / "orbit");
    ASSERT_GE(expected.size(), 7u);
    EXPECT_TRUE(filesUnder(destination) == expected) << "the checkout differs from git archive";
    EXPECT_TRUE(std::filesystem::exists(destination / L"caf\u00e9.txt"));
    EXPECT_FALSE(std::filesystem::exists(destination / L".git"));
}

TEST_F(GitClientTest, ReportsTheHostsRefusalsWithTheirFixedTexts) {
    test::TempFolder folder;
    EXPECT_EQ(cloneError("missing", folder.path() / L"a"), "GitHub returned HTTP 404");
    EXPECT_EQ(cloneError("empty", folder.path() / L"b"), "could not read the repository's default branch");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / L"b"))
        << "a failure before unpacking touches nothing";
}

TEST_F(GitClientTest, ClosedPortGivesTheTransportError) {
    test::TempFolder folder;
    hostUrl_ = "http://127.0.0.1:1";
    EXPECT_EQ(cloneError("orbit", folder.path() / L"c"), "git HTTP request failed");
}

TEST_F(GitClientTest, CommandLineToolPrintsProgressAndFailures) {
    test::TempFolder folder;
    const std::wstring tool = L"\"" + test::siblingExecutable(L"corvandell-clone.exe").wstring() + L"\"";
    const std::wstring host = L" --host " + std::wstring(hostUrl_.begin(), hostUrl_.end());
    const std::wstring destination = L" \"" + (folder.path() / L"out").wstring() + L"\"";

    const test::ChildResult success =
        test::runAndCapture(tool + L" player orbit" + destination + host, 60000);
    EXPECT_EQ(success.exitCode, 0u) << success.output;
    EXPECT_NE(success.output.find("Contacting GitHub...\r\n"), std::string::npos) << success.output;
    EXPECT_NE(success.output.find("Clone complete.\r\n"), std::string::npos) << success.output;
    EXPECT_TRUE(std::filesystem::exists(folder.path() / L"out" / L"index.html"));

    const test::ChildResult failure =
        test::runAndCapture(tool + L" player missing" + destination + host, 60000);
    EXPECT_EQ(failure.exitCode, 1u);
    EXPECT_NE(failure.output.find("GitHub returned HTTP 404"), std::string::npos) << failure.output;

    EXPECT_EQ(test::runAndCapture(tool + L" only-owner", 10000).exitCode, 2u);
}

} // namespace
} // namespace corvandell::win
