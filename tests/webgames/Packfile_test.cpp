// Pack decoding on hand-made packs: each delta rule and bounds check that keeps a hostile
// delta in range, delta resolution in every base order, and malformed or hostile packs
// that must yield no value rather than a crash.
#include "webgames/Packfile.hpp"

#include "support/PackWriter.hpp"
#include "webgames/Delta.hpp"
#include "webgames/Sha1.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace corvandell::git {
namespace {

using test::git_object_name;
using test::PackWriter;
using test::zlib_stored;

std::optional<ObjectSet> parse(const std::string& pack) {
    return parse_packfile(pack, object_name);
}

std::string pack_of(const std::function<void(PackWriter&)>& fill) {
    PackWriter writer;
    fill(writer);
    return writer.finish();
}

std::string sizes(std::size_t sourceSize, std::size_t targetSize) {
    return test::delta_varint(sourceSize) + test::delta_varint(targetSize);
}

// A delta that keeps nothing of its base: the whole target is inserted.
std::string replacing_delta(std::size_t baseSize, const std::string& target) {
    return sizes(baseSize, target.size()) + static_cast<char>(target.size()) + target;
}

// Entry k is a reference delta on entry k + 1: every base comes after its delta.
std::string forward_chain(int deltas) {
    const auto content = [](int index) { return "object " + std::to_string(1000000 + index); };
    return pack_of([&](PackWriter& pack) {
        for (int index = 0; index < deltas; ++index) {
            const std::string base = content(index + 1);
            pack.add_ref_delta(git_object_name(3, base), replacing_delta(base.size(), content(index)));
        }
        pack.add(3, content(deltas));
    });
}

TEST(Packfile, DeltaAppliesCopiesAndInsertsAndRejectsEveryMalformedDelta) {
    const std::string base = "0123456789";
    const std::string big(0x10000 + 5, 'b');
    using Case = std::tuple<const char*, std::string, std::string, std::optional<std::string>>;
    const std::vector<Case> cases = {
        {"copy, insert, copy", base, sizes(10, 8) + "\x91\x02\x03" + "\x02xy" + "\x90\x03", "234xy012"},
        {"all four offset bytes", base, sizes(10, 1) + std::string("\x9F\x09\x00\x00\x00\x01", 6), "9"},
        {"empty result", "", sizes(0, 0), ""},
        {"copy size 0 means 65536", big, sizes(big.size(), 0x10000) + "\x80", std::string(0x10000, 'b')},
        {"source size differs from the base", base, sizes(9, 1) + "\x01x", std::nullopt},
        {"opcode 0 is reserved", base, sizes(10, 1) + std::string("\x00\x01x", 3), std::nullopt},
        {"copy past the base", base, sizes(10, 2) + "\x91\x09\x02", std::nullopt},
        {"copy offset near 2^32", base, sizes(10, 1) + "\x9F\xFF\xFF\xFF\xFF\x01", std::nullopt},
        {"copy bytes missing", base, sizes(10, 1) + "\x91\x01", std::nullopt},
        {"insert past the delta", base, sizes(10, 3) + "\x03xy", std::nullopt},
        {"result shorter than target", base, sizes(10, 3) + "\x02xy", std::nullopt},
        {"result longer than target", base, sizes(10, 1) + "\x02xy", std::nullopt},
        {"truncated size number", base, "\x8A", std::nullopt},
        {"size number wider than 64 bits", base, std::string(10, '\xFF') + "\x01", std::nullopt},
        {"target the opcodes cannot fill", base, sizes(10, 1ULL << 60) + "\x90\x0A", std::nullopt},
    };
    for (const auto& [what, source, delta, expected] : cases) {
        EXPECT_EQ(apply_delta(source, delta), expected) << what;
    }
}

TEST(Packfile, ResolvesDeltasWhereverTheirBaseLies) {
    const std::string text = "hello, packed world";
    const std::string delta = test::delta_varint(text.size()) + "\x09\x90\x05\x04 pak"; // "hello" + " pak"
    const std::string tree = test::tree_entry("100644", "a", git_object_name(3, text));
    const auto objects = parse(pack_of([&](PackWriter& pack) {
        pack.add_ref_delta(git_object_name(3, text), delta); // found by the forward scan
        const std::size_t blob = pack.add(3, text);
        pack.add_offset_delta(blob, delta);
        pack.add_ref_delta(git_object_name(3, text), delta); // base already named
        pack.add_offset_delta(pack.add(2, tree), test::delta_varint(tree.size()) + "\x01\x01x");
        pack.add(3, text); // a duplicate collapses into one object
    }));
    ASSERT_TRUE(objects);
    ASSERT_EQ(objects->size(), 4U);
    const GitObject& rebuilt = objects->at(git_object_name(3, "hello pak"));
    EXPECT_EQ(rebuilt.type, 3);
    EXPECT_EQ(rebuilt.id, git_object_name(3, "hello pak"));
    EXPECT_EQ(rebuilt.data, "hello pak");
    EXPECT_EQ(objects->at(git_object_name(2, "x")).type, 2); // a delta takes its base's type
}

TEST(Packfile, MalformedPacksYieldNoValue) {
    const std::string empty = PackWriter().finish();
    ASSERT_EQ(empty.size(), 32U);
    const auto none = parse(empty);
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->empty());
    const std::string fromFour = replacing_delta(4, "x");
    const std::vector<std::pair<const char*, std::string>> cases = {
        {"31 bytes", empty.substr(0, 31)},
        {"not a pack", "KCAP" + empty.substr(4)},
        {"count beyond the entries", pack_of([](PackWriter& p) { p.add(3, "a"); }).replace(11, 1, "\2")},
        {"inflated size differs", pack_of([](PackWriter& p) { p.add_raw(3, 5, zlib_stored("four")); })},
        {"size beyond any input", pack_of([](PackWriter& p) { p.add_raw(3, 1ULL << 62, zlib_stored("x")); })},
        {"zlib stream cut short",
         pack_of([](PackWriter& p) { p.add_raw(3, 4, zlib_stored("four").substr(0, 5)); })},
        {"header runs past the end",
         pack_of([](PackWriter& p) { p.add_raw(3, 0, ""); }).replace(12, 1, "\xB0")},
        {"type 5", pack_of([](PackWriter& p) { p.add(5, "x"); })},
        {"delta source size differs",
         pack_of([&](PackWriter& p) { p.add_offset_delta(p.add(3, "abc"), fromFour); })},
        {"offset delta on itself", pack_of([&](PackWriter& p) { p.add_offset_delta(12, fromFour); })},
        {"offset before the pack",
         pack_of([&](PackWriter& p) { p.add_raw(6, 4, "\x7F" + zlib_stored(fromFour)); })},
        {"offset inside an entry",
         pack_of([&](PackWriter& p) { p.add_offset_delta(p.add(3, "abcd") + 1, fromFour); })},
        {"reference to no entry",
         pack_of([&](PackWriter& p) { p.add_ref_delta(std::string(40, '0'), fromFour); })},
        {"reference name cut short", pack_of([](PackWriter& p) { p.add_raw(7, 1, "\x12\x34"); })},
        {"deltas on each other", pack_of([](PackWriter& p) {
             p.add_ref_delta(git_object_name(3, "x"), replacing_delta(1, "y"));
             p.add_ref_delta(git_object_name(3, "y"), replacing_delta(1, "x"));
         })},
    };
    for (const auto& [what, pack] : cases) {
        EXPECT_EQ(parse(pack), std::nullopt) << what;
    }
}

TEST(Packfile, DeltaChainsUpToTenThousandDeepResolveAndDeeperOnesFailCleanly) {
    const auto deepest = parse(forward_chain(10000));
    ASSERT_TRUE(deepest);
    EXPECT_EQ(deepest->size(), 10001U);
    EXPECT_EQ(parse(forward_chain(10001)), std::nullopt);
    EXPECT_EQ(parse(forward_chain(20000)), std::nullopt);
}

} // namespace
} // namespace corvandell::git
