// The indexed decode on packs real git writes, read from memory and from a file: every
// object read back equals the object set's, and a pack cut or damaged anywhere is refused
// for the object set's own reason, whichever way its bytes are read.
#include "support/PackWriter.hpp"
#include "support/TempFolder.hpp"
#include "support/posix/Command.hpp"
#include "webgames/git/PackIndex.hpp"
#include "webgames/git/PackObjectReader.hpp"
#include "webgames/git/PackSource.hpp"
#include "webgames/git/Packfile.hpp"
#include "webgames/git/Sha1.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

namespace fs = std::filesystem;

const test::TempFolder kTemp;

std::string git(const std::string& arguments, std::string_view input = {}) {
    const fs::path repo = kTemp.path() / "repo";
    fs::create_directories(repo);
    return test::run_shell("cd '" + repo.string() + "' && GIT_CONFIG_NOSYSTEM=1 HOME='" +
                           kTemp.path().string() +
                           "' GIT_AUTHOR_NAME=T GIT_AUTHOR_EMAIL=t@example.invalid GIT_COMMITTER_NAME=T "
                           "GIT_COMMITTER_EMAIL=t@example.invalid git <'" +
                           kTemp.writeFile("stdin", input).string() + "' " + arguments);
}

// Sixty commits, each editing one line of a 2,000-line file, repacked so the versions form
// delta chains over 40 deep; and the same objects as reference deltas.
struct RealPacks {
    std::string offsetDeltas;
    std::string referenceDeltas;
};

const RealPacks& real_packs() {
    static const RealPacks packs = [] {
        git("init -q -b main .");
        std::string text;
        for (int line = 0; line < 2000; ++line) {
            text += "line " + std::to_string(line) + " of the level map\n";
        }
        for (int version = 0; version < 60; ++version) {
            const std::size_t at = text.find("line " + std::to_string(version * 31) + " ");
            text.insert(at, "edit " + std::to_string(version) + " ");
            kTemp.writeFile("repo/map.txt", text);
            git("add map.txt && git commit -qm v" + std::to_string(version));
        }
        git("repack -adfq --depth=50 --window=250");
        RealPacks made;
        made.offsetDeltas =
            test::run_shell("cat '" + (kTemp.path() / "repo").string() + "'/.git/objects/pack/*.pack");
        made.referenceDeltas =
            git("pack-objects --stdout -q --window=250 --depth=50", git("rev-list --objects --all"));
        return made;
    }();
    return packs;
}

struct Decoded {
    PackError error = PackError::None;
    std::optional<ObjectSet> objects; // read back through the index
    std::uint64_t peakContentBytes = 0;
};

Decoded index_and_read_back(PackBytes& bytes) {
    Decoded decoded;
    PackIndexStats stats;
    const auto index = index_pack(bytes, &decoded.error, {}, &stats);
    decoded.peakContentBytes = stats.peakContentBytes;
    if (!index) {
        return decoded;
    }
    PackObjectReader reader(bytes, *index);
    decoded.objects.emplace();
    for (std::size_t entry = 0; entry < index->entries().size(); ++entry) {
        const auto content = reader.content(entry);
        const std::string name = hex_of(index->entries()[entry].name);
        (*decoded.objects)[name] =
            GitObject{index->entries()[entry].type, name, content ? *content : "unreadable"};
    }
    return decoded;
}

Decoded from_memory(const std::string& pack) {
    PackInMemory bytes(pack);
    return index_and_read_back(bytes);
}

Decoded from_file(const std::string& pack) {
    PackFile bytes(kTemp.writeFile("pack-under-test", pack));
    return index_and_read_back(bytes);
}

bool same_objects(const std::optional<ObjectSet>& actual, const std::optional<ObjectSet>& expected) {
    if (actual.has_value() != expected.has_value()) {
        return false;
    }
    if (!expected) {
        return true;
    }
    return std::equal(
        actual->begin(), actual->end(), expected->begin(), expected->end(), [](const auto& a, const auto& b) {
            return a.first == b.first && a.second.type == b.second.type && a.second.data == b.second.data;
        });
}

// A stream whose stored blocks are mostly empty padding: far longer than what it declares,
// so a reader that guesses a stream's length from its size must look further.
std::string padded_stream_pack() {
    const std::string content = "a few bytes of content";
    std::string stream = test::zlib_stored(content);
    std::string padding;
    for (int block = 0; block < 40000; ++block) {
        padding += std::string("\x00\x00\x00\xFF\xFF", 5);
    }
    stream.insert(2, padding);
    return test::pack_of({test::pack_entry(3, content.size(), stream), test::pack_entry(3, "after it")});
}

TEST(PackIndexRealGit, PacksReadBackAsTheObjectSetFromMemoryAndFromAFile) {
    const RealPacks& packs = real_packs();
    EXPECT_NE(git("verify-pack -v .git/objects/pack/*.idx").find("chain length = 40:"), std::string::npos)
        << "expected delta chains 40 deep";
    struct Case {
        const char* what;
        std::string pack;
    };
    const std::vector<Case> cases = {
        {"offset deltas 40 deep", packs.offsetDeltas},
        {"reference deltas", packs.referenceDeltas},
        {"a stream padded with empty stored blocks", padded_stream_pack()},
    };
    for (const Case& test : cases) {
        PackError error = PackError::BadHeader;
        const auto expected = parse_packfile(test.pack, object_name, &error);
        ASSERT_TRUE(expected) << test.what;
        for (const auto& decoded : {from_memory(test.pack), from_file(test.pack)}) {
            EXPECT_EQ(decoded.error, PackError::None) << test.what;
            EXPECT_TRUE(same_objects(decoded.objects, expected)) << test.what;
        }
    }
    // The walk holds a few versions of the file at a time, not all sixty, whichever way the
    // deltas name their bases.
    std::uint64_t everything = 0;
    const auto all = parse_packfile(packs.offsetDeltas, object_name);
    for (const auto& [name, object] : *all) {
        everything += object.data.size();
    }
    EXPECT_LT(from_memory(packs.offsetDeltas).peakContentBytes * 6, everything);
    EXPECT_LT(from_memory(packs.referenceDeltas).peakContentBytes * 6, everything);
}

// Every 509th byte damaged in turn, and the pack cut at every 499th: the offsets step over
// headers, base references, streams and the trailer alike.
TEST(PackIndexRealGit, DamagedAndCutPacksAreRefusedForTheObjectSetsReason) {
    const RealPacks& packs = real_packs();
    for (const std::string* original : {&packs.offsetDeltas, &packs.referenceDeltas}) {
        std::vector<std::string> variants;
        for (std::size_t at = 12; at < original->size(); at += 509) {
            std::string damaged = *original;
            damaged[at] = static_cast<char>(damaged[at] ^ 0x5A);
            variants.push_back(std::move(damaged));
        }
        for (std::size_t length = 0; length < original->size(); length += 499) {
            variants.push_back(original->substr(0, length));
        }
        for (const std::string& pack : variants) {
            PackError expected = PackError::None;
            const auto objects = parse_packfile(pack, object_name, &expected);
            for (const auto& decoded : {from_memory(pack), from_file(pack)}) {
                EXPECT_EQ(decoded.error, expected) << "pack of " << pack.size() << " bytes";
                EXPECT_TRUE(same_objects(decoded.objects, objects)) << "pack of " << pack.size() << " bytes";
            }
        }
    }
}

} // namespace
} // namespace corvandell::git
