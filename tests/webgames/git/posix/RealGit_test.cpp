// The git engine against the real git command line: packs written by `git repack` and
// `git pack-objects` must decode to exactly what `git cat-file` prints, checkouts must
// equal `git archive`, and a clone must work on the replies of `git upload-pack` itself.
#include "support/PackWriter.hpp"
#include "support/TempFolder.hpp"
#include "support/posix/Command.hpp"
#include "webgames/git/Checkout.hpp"
#include "webgames/git/GitClone.hpp"
#include "webgames/git/GitProtocol.hpp"
#include "webgames/git/GitTree.hpp"
#include "webgames/git/PackEntries.hpp"
#include "webgames/git/Packfile.hpp"
#include "webgames/git/PktLine.hpp"
#include "webgames/git/Sha1.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvandell::git {
namespace {

namespace fs = std::filesystem;

const test::TempFolder kTemp; // the repository in "repo", each test's output beside it

fs::path folder(const std::string& name) {
    fs::create_directories(kTemp.path() / name);
    return kTemp.path() / name;
}

// Without system or user configuration, so the machine's settings cannot change the result.
std::string git(const std::string& arguments, std::string_view input = {}) {
    return test::run_shell("cd '" + folder("repo").string() + "' && GIT_CONFIG_NOSYSTEM=1 HOME='" +
                           kTemp.path().string() + "' git <'" + kTemp.writeFile("stdin", input).string() +
                           "' " + arguments);
}

// `diff -r` fails the command unless the folder holds exactly what `git archive` of the
// commit extracts to, less the symbolic links, which a checkout never writes.
void expect_archive(const std::string& commitish, const fs::path& checkout) {
    const std::string extracted = "'" + folder("archive-" + commitish).string() + "'";
    git("archive " + commitish + " | tar -x -C " + extracted + " && find " + extracted +
        " -type l -delete && diff -r " + extracted + " '" + checkout.string() + "'");
}

// The Windows clone tests' repository, a dozen commits deep, repacked once per test
// program (it takes a while) so the pack holds long offset-delta chains.
void make_repository() {
    [[maybe_unused]] static const bool made = [] {
        const fs::path fixture =
            fs::path(__FILE__).parent_path().parent_path().parent_path().parent_path() / "support";
        test::run_shell("'" + (fixture / "git-http-fixture").string() + "' make '" + folder("repo").string() +
                        "'");
        git("repack -adfq --depth=50 --window=250");
        return true;
    }();
}

// Every decoded object must hash, with its type and size, to its own name, and the names
// must be exactly those `git cat-file` lists: so each type and content equals git's.
void expect_all_objects(const std::optional<ObjectSet>& objects) {
    ASSERT_TRUE(objects);
    std::string names;
    for (const auto& [name, object] : *objects) {
        EXPECT_EQ(test::git_object_name(object.type, object.data), name);
        names += name + "\n";
    }
    EXPECT_EQ(names, git("cat-file --batch-all-objects --batch-check='%(objectname)'"));
}

TEST(RealGit, OffsetAndReferenceDeltaPacksDecodeToWhatGitStoresAndCheckOutAsGitArchives) {
    make_repository();
    const std::string verify = git("verify-pack -v .git/objects/pack/*.idx");
    EXPECT_NE(verify.find("chain length = 10:"), std::string::npos) << "expected long delta chains";
    const auto objects = parse_packfile(
        test::run_shell("cat '" + folder("repo").string() + "'/.git/objects/pack/*.pack"), object_name);
    expect_all_objects(objects);
    ASSERT_TRUE(objects);
    for (const std::string commitish : {"HEAD", "HEAD~11"}) {
        const GitObject& commit = objects->at(git("rev-parse " + commitish).substr(0, 40));
        const fs::path destination = folder("checkout-" + commitish);
        checkout_tree(*objects, root_tree_of(commit.data), destination);
        expect_archive(commitish, destination);
    }

    const std::string refPack =
        git("pack-objects --stdout -q --window=250 --depth=50", git("rev-list --objects --all"));
    ByteBudget budget({}, refPack.size());
    const auto entries = read_pack_entries(refPack, budget);
    ASSERT_TRUE(entries);
    EXPECT_TRUE(std::ranges::any_of(*entries, [](const PackEntry& e) { return e.type == 7; }));
    expect_all_objects(parse_packfile(refPack, object_name));
    // Handed over, the pack is released before the deltas are resolved: the same objects.
    expect_all_objects(parse_packfile(std::string(refPack), object_name));
}

// Both requests of a clone answered by `git upload-pack`, framed as git's HTTP backend
// frames them; the last reply is kept.
struct UploadPackTransport : GitTransport {
    std::string reply;

    std::string request(const std::wstring&, const std::string& body, const std::optional<std::wstring>&,
                        const std::optional<std::wstring>&) override {
        reply = body.empty() ? pkt_line_encode("# service=git-upload-pack\n") + "0000" +
                                   git("upload-pack --stateless-rpc --advertise-refs .")
                             : git("upload-pack --stateless-rpc .", body);
        return reply;
    }
};

TEST(RealGit, ShallowCloneFromUploadPackGetsTheTipOnlyAndEqualsGitArchive) {
    make_repository();
    UploadPackTransport transport;
    const fs::path destination = folder("clones") / "owner-repo";
    shallow_clone(transport, "owner", "repo", destination, nullptr);
    expect_archive("HEAD", destination);
    // Depth one: the tip commit and what its tree holds, nothing of the older commits.
    const std::string pack = pack_from_response(transport.reply);
    ByteBudget budget({}, pack.size());
    const auto entries = read_pack_entries(pack, budget);
    ASSERT_TRUE(entries);
    const std::string tipObjects = git("rev-list --objects --no-object-names -n 1 HEAD");
    EXPECT_EQ(entries->size(), static_cast<std::size_t>(std::ranges::count(tipObjects, '\n')));
}

} // namespace
} // namespace corvandell::git
