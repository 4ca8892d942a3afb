// The clone flow over a scripted transport: the two requests exactly as sent, the progress
// texts, the clone's own error texts (the reply's are in the protocol tests), and what is
// (and is not) left on disk afterwards.
#include "webgames/GitClone.hpp"

#include "support/PackWriter.hpp"
#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"
#include "webgames/PktLine.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace corvandell::git {
namespace {

using Names = std::vector<std::string>;
using Request =
    std::tuple<std::wstring, std::string, std::optional<std::wstring>, std::optional<std::wstring>>;
using test::git_object_name;
using test::tree_entry;

// Answers the two requests in turn; an answer starting with "!" is thrown instead, as the
// real transport throws its HTTP errors.
struct ScriptedTransport : GitTransport {
    std::vector<std::string> answers;
    std::vector<Request> requests;

    std::string request(const std::wstring& path, const std::string& body,
                        const std::optional<std::wstring>& type,
                        const std::optional<std::wstring>& accept) override {
        requests.emplace_back(path, body, type, accept);
        const std::string answer = answers.at(requests.size() - 1);
        if (answer.starts_with("!")) {
            throw std::runtime_error(answer.substr(1));
        }
        return answer;
    }
};

const auto pkt = [](std::string_view payload) { return pkt_line_encode(payload); };

std::string advertisement(const std::string& tip) {
    return pkt("# service=git-upload-pack\n") + "0000" + pkt(tip + " HEAD" + '\0' + "shallow\n") +
           pkt(tip + " refs/heads/main\n") + "0000";
}

std::string response(const std::string& pack) {
    return pkt("shallow 0123\n") + "0000" + pkt("NAK\n") + pkt("\2Enumerating\n") + pkt("\1" + pack) + "0000";
}

// One commit whose tree also holds, as files and as folders, the names a hostile
// repository would use to write outside the destination or into a device.
const std::string kPage = "<p>play</p>";
const std::string kBlob = git_object_name(3, kPage);
const std::string kTree = [] {
    std::string tree = tree_entry("100644", "index.html", kBlob);
    for (const char* unsafe : {"..", "C:x", "a/b", "CON.txt", ".GIT", "a\\b", "trail."}) {
        tree += tree_entry("100644", unsafe, kBlob) + tree_entry("40000", unsafe, std::string(40, '0'));
    }
    return tree;
}();
const std::string kCommitText = "tree " + git_object_name(2, kTree) + "\n\nfirst\n";
const std::string kCommit = git_object_name(1, kCommitText);

std::string pack(bool withCommit) {
    test::PackWriter writer;
    writer.add(3, kPage);
    writer.add(2, kTree);
    if (withCommit) {
        writer.add(1, kCommitText);
    }
    return writer.finish();
}

TEST(GitClone, SendsBothRequestsReportsProgressAndReplacesOnlyTheDestination) {
    const test::TempFolder temp;
    temp.writeFile("game/old.txt", "stale");
    temp.writeFile("beside.txt", "keep");
    ScriptedTransport transport;
    transport.answers = {advertisement(kCommit), response(pack(true))};
    std::vector<std::wstring> progress;
    shallow_clone(transport, "Owner", "Repo", temp.path() / "game",
                  [&](const std::wstring& text) { progress.push_back(text); });
    EXPECT_EQ(progress, (std::vector<std::wstring>{L"Contacting GitHub...", L"Downloading game files...",
                                                   L"Unpacking...", L"Clone complete."}));
    const std::vector<Request> expected = {
        {L"/Owner/Repo.git/info/refs?service=git-upload-pack", "", std::nullopt,
         L"application/x-git-upload-pack-advertisement"},
        {L"/Owner/Repo.git/git-upload-pack",
         "0063want " + kCommit +
             " side-band-64k ofs-delta shallow agent=corvandell\n000ddeepen 1\n00000009done\n",
         L"application/x-git-upload-pack-request", L"application/x-git-upload-pack-result"},
    };
    EXPECT_EQ(transport.requests, expected);
    EXPECT_EQ(temp.entryNames(), (Names{"beside.txt", "game"}));
    EXPECT_EQ(temp.entryNames("game"), Names{"index.html"});
    EXPECT_EQ(test::readTestFile(temp.path() / "game" / "index.html"), kPage);
}

TEST(GitClone, EachFailureHasItsTextAndLeavesTheOldCopyAlone) {
    std::string upper = kCommit;
    std::ranges::transform(upper, upper.begin(),
                           [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
    const std::string tip = advertisement(kCommit);
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"!GitHub returned HTTP 404", "", "GitHub returned HTTP 404"},
        {pkt("# service=git-upload-pack\n") + "0000", "", "could not read the repository's default branch"},
        {tip, "!git HTTP request failed", "git HTTP request failed"},
        {tip, pkt("ERR access denied"), "git: access denied"},
        {tip, response("PACK but not really a pack, long enough"),
         "failed to decode the repository packfile"},
        {tip, response(pack(false)), "packfile did not contain the branch tip"},
        {advertisement(kBlob), response(pack(true)), "could not find the root tree"},
        {advertisement(upper), response(pack(true)), ""},
    };
    for (const auto& [refs, reply, error] : cases) {
        const test::TempFolder temp;
        temp.writeFile("game/old.txt", "stale");
        ScriptedTransport transport;
        transport.answers = {refs, reply};
        EXPECT_EQ(
            test::thrownText([&] { shallow_clone(transport, "o", "r", temp.path() / "game", nullptr); }),
            error);
        EXPECT_EQ(temp.entryNames("game"), error.empty() ? Names{"index.html"} : Names{"old.txt"}) << error;
    }
}

} // namespace
} // namespace corvandell::git
