// The clone flow over a scripted transport: the two requests exactly as sent, the progress
// texts, how the advertisement and the upload-pack reply are read, every error text, the
// limits a hostile tree meets, and what is (and is not) left on disk afterwards.
#include "webgames/git/GitClone.hpp"

#include "support/PackWriter.hpp"
#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"
#include "webgames/git/PktLine.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <tuple>
#include <vector>

namespace corvandell::git {
namespace {

using Names = std::vector<std::string>;
using Request =
    std::tuple<std::wstring, std::string, std::optional<std::wstring>, std::optional<std::wstring>>;
using Exchange = std::pair<std::string, std::string>; // the advertisement, the upload-pack reply
using test::git_object_name;
using test::tree_entry;

struct ScriptedTransport : GitTransport {
    Exchange answers;
    std::vector<Request> requests;
    std::size_t pieceBytes = 0; // a streamed reply arrives in pieces this long; 0: whole

    std::string request(const std::wstring& path, const std::string& body,
                        const std::optional<std::wstring>& type,
                        const std::optional<std::wstring>& accept) override {
        requests.emplace_back(path, body, type, accept);
        return requests.size() == 1 ? answers.first : answers.second;
    }
    void request_streamed(const std::wstring& path, const std::string& body,
                          const std::optional<std::wstring>& type, const std::optional<std::wstring>& accept,
                          const std::function<void(std::string_view)>& receive) override {
        const std::string reply = request(path, body, type, accept);
        const std::size_t step = pieceBytes == 0 ? reply.size() : pieceBytes;
        for (std::size_t at = 0; at < reply.size(); at += step) {
            receive(std::string_view(reply).substr(at, step));
        }
    }
};

const auto pkt = [](std::string_view payload) { return pkt_line_encode(payload); };
const std::string kZeros(40, '0');
const std::string kPage = "<p>play</p>";
const std::string kBlob = git_object_name(3, kPage);

std::string advertisement(const std::string& tip) {
    return pkt("# service=git-upload-pack\n") + "0000" + pkt(tip + " HEAD" + '\0' + "shallow\n") +
           pkt(tip + " refs/heads/main\n") + "0000";
}

// Pack data in side-band-64k's largest records.
std::string response(const std::string& pack) {
    std::string reply = pkt("shallow 0123\n") + "0000" + pkt("NAK\n") + pkt("\2Enumerating\n");
    for (std::size_t at = 0; at < pack.size(); at += 65515) {
        reply += pkt("\1" + pack.substr(at, 65515));
    }
    return reply + "0000";
}

std::string commit_on(const std::string& rootTree) {
    return "tree " + git_object_name(2, rootTree) + "\n\nfirst\n";
}

// The page and any other blobs, the trees and the commit.
std::string pack_with(const std::vector<std::string>& trees, const std::string& commit,
                      const std::vector<std::string>& blobs = {}) {
    std::vector<std::string> entries = {test::pack_entry(3, kPage), test::pack_entry(1, commit)};
    for (const std::string& blob : blobs) {
        entries.push_back(test::pack_entry(3, blob));
    }
    for (const std::string& tree : trees) {
        entries.push_back(test::pack_entry(2, tree));
    }
    return test::pack_of(entries);
}

// The exchange for a branch whose tip is `commit`, by default one on the last tree.
Exchange serve(const std::vector<std::string>& trees, std::string commit = "",
               const std::vector<std::string>& blobs = {}) {
    commit = commit.empty() ? commit_on(trees.back()) : commit;
    return {advertisement(git_object_name(1, commit)), response(pack_with(trees, commit, blobs))};
}

// A root holding its page, names that only look like device names or ".git", UTF-8 up to
// its last code point, and what must not be written: names a hostile repository would use
// to leave the destination or open a device on Windows, names Windows cannot create, and
// bytes that are not UTF-8 (as files and as folders), a symbolic link, a submodule and an
// entry cut short.
const Names kWritten = {"#1",
                        ".gitignore",
                        "a b",
                        "auxiliary.js",
                        "com10",
                        "com\xC2\xB4",
                        "console.log",
                        "git",
                        "index.html",
                        "lpt",
                        "nul1",
                        "\xC3\xA9t\xC3\xA9.png",
                        "\xEF\xBF\xBD",
                        "\xF0\x9F\x8E\xAE.js",
                        "\xF4\x8F\xBF\xBF"};
const std::string kTree = [] {
    std::string tree = tree_entry("120000", "link", kBlob) + tree_entry("160000", "module", kZeros);
    for (const std::string& name : kWritten) {
        tree += tree_entry("100644", name, kBlob);
    }
    for (const char* unsafe :
         {"",         ".",           "..",       ".GIT",     "a/b",          "a\\b",
          "C:x",      "file:stream", "CON",      "Nul",      "aux.tar.gz",   "Com1.tar.gz",
          "com0",     "lpt9.md",     "CON .txt", "CONIN$",   "conout$.log",  "COM\xC2\xB9",
          "trail.",   "trail ",      "LPT0",     "com1.js",  "CON.txt",      "a<b",
          "a>b",      "a\"b",        "a|b",      "a?b",      "a*b",          "a\x01z",
          "tab\t",    "\x1f",        "\xFF.txt", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
          "\xE2\x82", "\x80"}) {
        tree += tree_entry("100644", unsafe, kBlob) + tree_entry("40000", unsafe, kZeros);
    }
    return tree + tree_entry("100644", "cut", kBlob).substr(0, 20);
}();
const Exchange kGood = serve({kTree});
const std::string kTip = git_object_name(1, commit_on(kTree));
const std::string kPack = pack_with({kTree}, commit_on(kTree));

TEST(GitClone, SendsBothRequestsReportsProgressAndReplacesOnlyTheDestination) {
    const test::TempFolder temp;
    temp.writeFile("game/old.txt", "stale");
    temp.writeFile("beside.txt", "keep");
    ScriptedTransport transport;
    transport.answers = kGood;
    std::vector<std::wstring> progress;
    shallow_clone(transport, "Owner", "Repo", temp.path() / "game",
                  [&](const std::wstring& text) { progress.push_back(text); });
    EXPECT_EQ(progress, (std::vector<std::wstring>{L"Contacting GitHub...", L"Downloading game files...",
                                                   L"Unpacking...", L"Clone complete."}));
    const std::vector<Request> expected = {
        {L"/Owner/Repo.git/info/refs?service=git-upload-pack", "", std::nullopt,
         L"application/x-git-upload-pack-advertisement"},
        {L"/Owner/Repo.git/git-upload-pack",
         "0063want " + kTip +
             " side-band-64k ofs-delta shallow agent=corvandell\n000ddeepen 1\n00000009done\n",
         L"application/x-git-upload-pack-request", L"application/x-git-upload-pack-result"},
    };
    EXPECT_EQ(transport.requests, expected);
    EXPECT_EQ(temp.entryNames(), (Names{"beside.txt", "game"}));
    EXPECT_EQ(temp.entryNames("game"), kWritten);
    EXPECT_EQ(test::readTestFile(temp.path() / "game" / "index.html"), kPage);
}

// Replies as servers may shape them, then each failure, none of which touches the old copy:
// those of the protocol, the pack and its byte budget, and of a tree that is missing
// objects, nested too deep or expands past the limits on files and bytes.
TEST(GitClone, EachReplyShapeIsReadAndEachFailureHasItsText) {
    std::string upper = kTip;
    for (char& c : upper) {
        c = static_cast<char>(std::toupper(c));
    }
    const std::string service = pkt("# service=git-upload-pack\n") + "0000";
    const std::string shallow = pkt("shallow " + kTip + "\n") + "0000" + pkt("NAK\n");
    const std::string split = pkt("\1" + kPack.substr(0, 2)) + pkt("\1" + kPack.substr(2));
    std::vector<std::string> bomb = {""}; // ten levels each naming the one below ten times: 10^10
    for (int level = 0; level < 10; ++level) {
        std::string fanOut;
        for (char name = '0'; name <= '9'; ++name) {
            fanOut += tree_entry("40000", std::string(1, name), git_object_name(2, bomb.back()));
        }
        bomb.push_back(fanOut);
    }
    // Each level names the one below ten times: 10^5 copies of a 60,000-byte page, 6 GB,
    // from a 70 KB pack that the byte budget allows 1 GiB and 18 MB.
    const std::string bigPage(60000, 'p');
    std::vector<std::string> copies = {""};
    for (char name = '0'; name <= '9'; ++name) {
        copies.back() += tree_entry("100644", std::string(1, name), git_object_name(3, bigPage));
    }
    for (int level = 0; level < 4; ++level) {
        std::string fanOut;
        for (char name = '0'; name <= '9'; ++name) {
            fanOut += tree_entry("40000", std::string(1, name), git_object_name(2, copies.back()));
        }
        copies.push_back(fanOut);
    }
    std::vector<std::string> deep = {tree_entry("100644", "a", kBlob)}; // 10,001 folders down
    while (deep.size() <= 10001) {
        deep.push_back(tree_entry("40000", "d", git_object_name(2, deep.back())));
    }
    const std::string& refs = kGood.first;
    const Names old = {"old.txt"};
    const std::vector<std::tuple<Exchange, std::string, Names>> cases = {
        {{pkt("#" + kTip) + pkt("g" + kTip.substr(1)) + pkt(kTip.substr(0, 39)) + pkt(upper),
          "000A\2abcde" + pkt("ACK " + kTip) + pkt("") + split + pkt("\x7Fignored") + "0000"},
         "",
         kWritten},
        {{service, ""}, "could not read the repository's default branch", old},
        {{service + "0001" + pkt(kTip), ""}, "could not read the repository's default branch", old},
        {{refs, shallow}, "no packfile in git response", old},
        {{refs, pkt("ERR upload-pack: not our ref") + split}, "git: upload-pack: not our ref", old},
        {{refs, split + pkt("\3fatal: out of memory")}, "git: fatal: out of memory", old},
        {{refs, shallow + "0001" + split}, "malformed git response", old},
        {{refs, split + "0009abc"}, "malformed git response", old},
        {{refs, "00g5x" + split}, "malformed git response", old},
        {{refs, "0005x-005y" + split}, "malformed git response", old},
        {{refs, response(kPack.substr(0, 40))}, "failed to decode the repository packfile", old},
        {{refs, serve({kTree}, "tree " + kTip).second}, "packfile did not contain the branch tip", old},
        {serve({kTree}, "tree 0123\n"), "could not find the root tree", old},
        {serve({tree_entry("40000", "d", kZeros)}), "missing tree object in pack", old},
        {serve({deep[0] + tree_entry("100644", "b", kZeros)}), "missing blob object in pack", old},
        {serve(deep), "tree nesting too deep", old},
        {serve(bomb), "too many files in the repository", old},
        {serve(copies, "", {bigPage}), "repository too large", old},
    };
    // The reply whole, and cut into pieces that split every kind of record at every place:
    // the answer must not depend on where the network cut it.
    for (const std::size_t pieceBytes : {std::size_t{0}, std::size_t{1}, std::size_t{3}, std::size_t{4099}}) {
        for (const auto& [exchange, error, left] : cases) {
            const test::TempFolder temp;
            temp.writeFile("game/old.txt", "stale");
            ScriptedTransport transport;
            transport.answers = exchange;
            transport.pieceBytes = pieceBytes;
            EXPECT_EQ(
                test::thrownText([&] { shallow_clone(transport, "o", "r", temp.path() / "game", nullptr); }),
                error)
                << "pieces of " << pieceBytes;
            EXPECT_EQ(temp.entryNames("game"), left) << error;
            EXPECT_EQ(temp.entryNames(), Names{"game"}) << "the received pack is left behind";
        }
    }
}

} // namespace
} // namespace corvandell::git
