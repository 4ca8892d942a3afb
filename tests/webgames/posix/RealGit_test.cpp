// The git engine against the real git command line: packs written by `git repack` and
// `git pack-objects` must decode to exactly what `git cat-file` prints, checkouts must
// equal `git archive`, and a clone must work on the replies of `git upload-pack` itself.
#include "support/posix/Command.hpp"
#include "support/posix/GitRepo.hpp"
#include "webgames/Checkout.hpp"
#include "webgames/GitClone.hpp"
#include "webgames/GitProtocol.hpp"
#include "webgames/GitTree.hpp"
#include "webgames/PackEntries.hpp"
#include "webgames/Packfile.hpp"
#include "webgames/PktLine.hpp"
#include "webgames/Sha1.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace corvandell::git {
namespace {

namespace fs = std::filesystem;
using test::GitRepo;

std::string random_bytes(std::size_t count, unsigned seed) {
    std::mt19937 generator(seed);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(generator() & 0xFF);
    }
    return bytes;
}

// Each version adds edits to the one before, so it is closest to its neighbours and
// repacking chains the deltas instead of basing them all on the newest version.
void write_level(GitRepo& repo, int version) {
    std::string text;
    std::string data = random_bytes(60000, 3);
    for (int line = 0; line < 4000; ++line) {
        text += "row " + std::to_string(line);
        for (int edit = 0; edit <= version; ++edit) {
            text += line % 331 == edit * 29 ? " edit " + std::to_string(edit) : "";
        }
        text += "\n";
    }
    for (int edit = 0; edit <= version; ++edit) {
        data.replace(static_cast<std::size_t>(edit) * 4000, 100,
                     random_bytes(100, 10U + static_cast<unsigned>(edit)));
    }
    repo.write("levels/level.txt", text);
    repo.write("levels/data.bin", data);
}

GitRepo* repo_ = nullptr; // shared by the suite: building and repacking it takes a while

class RealGit : public testing::Test {
protected:
    // Folders, spaces, "#", an empty file, binary data, a non-ASCII name, a symbolic link,
    // and a dozen commits; repacked so the pack holds long offset-delta chains.
    static void SetUpTestSuite() {
        repo_ = new GitRepo;
        repo_->write("index.html", "<script src=\"js/game.js\"></script>\n");
        repo_->write("js/game.js", "console.log('hi');\n");
        repo_->write("assets/sound data/#1 theme.ogg", random_bytes(30000, 1));
        repo_->write("empty.txt", "");
        repo_->write("niveau-\xC3\xA9t\xC3\xA9.txt", "\xC3\xA9t\xC3\xA9\r\n");
        fs::create_symlink("index.html", repo_->path() / "start-link");
        for (int version = 0; version < 12; ++version) {
            write_level(*repo_, version);
            repo_->commit("version " + std::to_string(version));
        }
        repo_->git("repack -adfq --depth=50 --window=250");
    }
    static void TearDownTestSuite() { delete repo_; }

    static std::string repacked() {
        int exitCode = -1;
        return test::run_shell("cat '" + repo_->path().string() + "'/.git/objects/pack/*.pack", exitCode);
    }

    // Decodes the pack and compares every object with `git cat-file --batch-all-objects`.
    static void expect_all_objects(const std::string& pack) {
        const auto objects = parse_packfile(pack, object_name);
        ASSERT_TRUE(objects);
        const std::string batch = repo_->git("cat-file --batch-all-objects --batch");
        static const char* const kTypeWords[] = {"", "commit", "tree", "blob", "tag"};
        std::size_t count = 0;
        for (std::size_t position = 0; position < batch.size(); ++count) {
            const std::size_t lineEnd = batch.find('\n', position);
            const std::string line = batch.substr(position, lineEnd - position);
            const std::size_t typeEnd = line.find(' ', 41);
            const std::size_t size = std::stoul(line.substr(typeEnd + 1));
            const GitObject& object = objects->at(line.substr(0, 40));
            EXPECT_EQ(kTypeWords[object.type], line.substr(41, typeEnd - 41));
            EXPECT_TRUE(object.data == batch.substr(lineEnd + 1, size)) << line;
            position = lineEnd + 1 + size + 1;
        }
        EXPECT_EQ(objects->size(), count);
    }
};

TEST_F(RealGit, RepackedOffsetDeltaPackDecodesToWhatGitStores) {
    const std::string verify = repo_->git("verify-pack -v .git/objects/pack/*.idx");
    EXPECT_NE(verify.find("chain length = 10:"), std::string::npos) << "expected long delta chains";
    expect_all_objects(repacked());
}

TEST_F(RealGit, ReferenceDeltaPackDecodesToWhatGitStores) {
    const std::string pack = repo_->git("pack-objects --stdout -q --window=250 --depth=50",
                                        repo_->git("rev-list --objects --all"));
    const auto entries = read_pack_entries(pack);
    ASSERT_TRUE(entries);
    EXPECT_TRUE(
        std::any_of(entries->begin(), entries->end(), [](const PackEntry& e) { return e.type == 7; }));
    expect_all_objects(pack);
}

TEST_F(RealGit, CheckoutOfCommitsEqualsGitArchive) {
    const auto objects = parse_packfile(repacked(), object_name);
    ASSERT_TRUE(objects);
    for (const std::string commitish : {"HEAD", "HEAD~11"}) {
        const GitObject& commit = objects->at(repo_->git("rev-parse " + commitish).substr(0, 40));
        const fs::path destination = repo_->scratch("checkout-" + commitish);
        checkout_tree(*objects, root_tree_of(commit.data), destination);
        EXPECT_EQ(test::files_under(destination), repo_->archive(commitish)) << commitish;
    }
}

// Both requests of a clone answered by `git upload-pack`, framed as git's HTTP backend
// frames them; the last reply is kept.
struct UploadPackTransport : GitTransport {
    std::string reply;

    std::string request(const std::wstring&, const std::string& body, const std::optional<std::wstring>&,
                        const std::optional<std::wstring>&) override {
        reply = body.empty() ? pkt_line_encode("# service=git-upload-pack\n") + "0000" +
                                   repo_->git("upload-pack --stateless-rpc --advertise-refs .")
                             : repo_->git("upload-pack --stateless-rpc .", body);
        return reply;
    }
};

TEST_F(RealGit, ShallowCloneFromUploadPackGetsTheTipOnlyAndEqualsGitArchive) {
    UploadPackTransport transport;
    const fs::path destination = repo_->scratch("clones") / "owner-repo";
    shallow_clone(transport, "owner", "repo", destination, nullptr);
    EXPECT_EQ(test::files_under(destination), repo_->archive("HEAD"));
    // Depth one: the tip commit and what its tree holds, nothing of the older commits.
    const auto entries = read_pack_entries(pack_from_response(transport.reply));
    ASSERT_TRUE(entries);
    const std::string tipObjects = repo_->git("rev-list --objects --no-object-names -n 1 HEAD");
    EXPECT_EQ(entries->size(),
              static_cast<std::size_t>(std::count(tipObjects.begin(), tipObjects.end(), '\n')));
}

} // namespace
} // namespace corvandell::git
