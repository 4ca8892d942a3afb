#include "webgames/RepositoryAddress.hpp"
#include "webgames/WebGameFolders.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace corvandell {
namespace {

using Address = std::optional<RepositoryAddress>;

const RepositoryHost kGitHub{"https://github.com", "github.io"};

TEST(RepositoryAddress, ReadsRepositoryAddresses) {
    const struct {
        const char* text;
        Address expected;
    } cases[] = {
        {"https://www.github.com/Owner/Repo.git/", RepositoryAddress{"Owner", "Repo"}},
        {"GitHub.COM/alice/tiny-tower/tree/main", RepositoryAddress{"alice", "tiny-tower"}},
        {"https://github.com/alice", std::nullopt},
        {"https://github.com/alice/.git", std::nullopt},
        {"https://github.com/al ice/repo", std::nullopt},
        {"https://gitlab.com/alice/repo", std::nullopt},
        {"https://github.company.com/alice/repo", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(readRepositoryAddress(c.text, kGitHub), c.expected) << c.text;
    }
}

TEST(RepositoryAddress, ReadsPagesAddresses) {
    const struct {
        const char* text;
        Address expected;
    } cases[] = {
        {"https://Alice.GitHub.io/Tiny_Tower.v2/index.html?level=3#top",
         RepositoryAddress{"alice", "Tiny_Tower.v2"}},
        {"alice.github.io?x=1", RepositoryAddress{"alice", ""}},
        {"https://alice.github.io//game/", RepositoryAddress{"alice", "game"}},
        {"https://alice.github.io/./game/", std::nullopt},
        {"https://alice.github.io/ga%20me/", std::nullopt},
        {"https://-alice.github.io/", std::nullopt},
        {"https://github.io/", std::nullopt},
        {"https://alice.github.io.evil.com/game", std::nullopt},
        {"https://alice.github.io:8080/game", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(readPagesAddress(c.text, kGitHub), c.expected) << c.text;
    }
}

TEST(RepositoryAddress, TheHostIsReplaceable) {
    const RepositoryHost loopback{"http://127.0.0.1:8123", "pages.test"};
    EXPECT_EQ(readRepositoryAddress("http://127.0.0.1:8123/me/game.git", loopback),
              (RepositoryAddress{"me", "game"}));
    EXPECT_EQ(readRepositoryAddress("https://github.com/me/game", loopback), std::nullopt);
    EXPECT_EQ(readPagesAddress("https://me.pages.test/game/", loopback), (RepositoryAddress{"me", "game"}));
}

TEST(RepositoryAddress, TestSwitchesReplaceTheHost) {
    const struct {
        std::vector<std::string> arguments;
        RepositoryHost expected;
    } cases[] = {
        {{"--repository-host=http://127.0.0.1:4567/"},
         RepositoryHost{"http://127.0.0.1:4567", RepositoryHost{}.pagesDomain}},
        {{"--pages-domain=pages.test", "--repository-host=http://h:1"},
         RepositoryHost{"http://h:1", "pages.test"}},
        {{"--repository-host=", "--pages-domain", "repository-host=x"}, RepositoryHost{}},
    };
    for (const auto& c : cases) {
        const RepositoryHost host = repositoryHostFromSwitches(c.arguments);
        EXPECT_EQ(host.url, c.expected.url);
        EXPECT_EQ(host.pagesDomain, c.expected.pagesDomain);
    }
}

TEST(RepositoryAddress, ChecksLaunchFiles) {
    const struct {
        const char* text;
        bool isValid;
    } cases[] = {
        {" play/Game.HTM ", true}, {"web\\build\\index.html", true}, {"", false},
        {"index.php", false},      {"/index.html", false},           {"C:index.html", false},
        {"./index.html", false},   {"play/../../index.html", false}, {"x\".html", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(isValidLaunchFile(c.text), c.isValid) << c.text;
    }
}

TEST(WebGameFolders, KeepEveryGameInsideItsOwnFolder) {
    const std::filesystem::path data = "data";
    EXPECT_EQ(webGameCloneFolder(data, {"Alice", "Tiny-Tower"}), data / "github" / "Alice-Tiny-Tower");
    EXPECT_EQ(webGameProfileFolder(data, "github:42"), data / "webgames" / "github_42");
    EXPECT_EQ(webGameProfileFolder(data, "github:../../x"), data / "webgames" / "github_.._.._x");
    EXPECT_EQ(webGameProfileFolder(data, ".."), data / "webgames" / "_..");
}

} // namespace
} // namespace corvandell
