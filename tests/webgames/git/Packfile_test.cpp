// Pack decoding on hand-made packs: each delta rule and bounds check that keeps a hostile
// delta in range, and malformed or hostile packs that must yield no value rather than a
// crash. Real git's packs are decoded in posix/RealGit_test.cpp.
#include "webgames/git/Packfile.hpp"

#include "support/PackWriter.hpp"
#include "webgames/git/Delta.hpp"
#include "webgames/git/Sha1.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace corvandell::git {
namespace {

using test::git_object_name;
using test::pack_entry;
using test::pack_of;
using test::ref_delta_entry;
using test::zlib_stored;

std::optional<ObjectSet> parse(const std::string& pack) {
    return parse_packfile(pack, object_name);
}

std::string sizes(std::size_t sourceSize, std::size_t targetSize) {
    return test::delta_varint(sourceSize) + test::delta_varint(targetSize);
}

// A delta that keeps nothing of its base: the whole target is inserted.
std::string replacing_delta(std::size_t baseSize, const std::string& target) {
    return sizes(baseSize, target.size()) + static_cast<char>(target.size()) + target;
}

TEST(Packfile, DeltaAppliesCopiesAndInsertsAndRejectsEveryMalformedDelta) {
    const std::string base = "0123456789";
    const std::string big(0x10000 + 5, 'b');
    using Case = std::tuple<const char*, std::string, std::string, std::optional<std::string>>;
    const std::vector<Case> cases = {
        {"copy, insert, copy", base, sizes(10, 8) + "\x91\x02\x03" + "\x02xy" + "\x90\x03", "234xy012"},
        {"all four offset bytes", base, sizes(10, 1) + std::string("\x9F\x09\x00\x00\x00\x01", 6), "9"},
        {"copy size 0 means 65536", big, sizes(big.size(), 0x10000) + "\x80", std::string(0x10000, 'b')},
        {"source size differs from the base", base, sizes(9, 1) + "\x01x", std::nullopt},
        {"opcode 0 is reserved", base, sizes(10, 1) + std::string("\x00\x01x", 3), std::nullopt},
        {"copy past the base", base, sizes(10, 2) + "\x91\x09\x02", std::nullopt},
        {"copy offset near 2^32", base, sizes(10, 1) + "\x9F\xFF\xFF\xFF\xFF\x01", std::nullopt},
        {"result shorter than target", base, sizes(10, 3) + "\x02xy", std::nullopt},
        {"result longer than target", base, sizes(10, 1) + "\x02xy", std::nullopt},
        {"target the opcodes cannot fill", base, sizes(10, 1ULL << 60) + "\x90\x0A", std::nullopt},
    };
    for (const auto& [what, source, delta, expected] : cases) {
        EXPECT_EQ(apply_delta(source, delta), expected) << what;
    }
}

TEST(Packfile, MalformedPacksYieldNoValue) {
    const std::string empty = pack_of({});
    ASSERT_EQ(empty.size(), 32U);
    const auto none = parse(empty);
    ASSERT_TRUE(none && none->empty());
    const std::string fromFour = zlib_stored(replacing_delta(4, "x"));
    const std::string abcd = pack_entry(3, "abcd"); // 16 bytes
    const std::vector<std::pair<const char*, std::string>> cases = {
        {"31 bytes", empty.substr(0, 31)},
        {"count beyond the entries", pack_of({pack_entry(3, "a")}).replace(11, 1, "\2")},
        {"inflated size differs", pack_of({pack_entry(3, 5, zlib_stored("four"))})},
        {"size beyond any input", pack_of({pack_entry(3, 1ULL << 62, zlib_stored("x"))})},
        {"delta source size differs",
         pack_of(
             {ref_delta_entry(git_object_name(3, "abc"), replacing_delta(4, "x")), pack_entry(3, "abc")})},
        {"offset delta on itself", pack_of({pack_entry(6, 4, '\0' + fromFour)})},
        {"offset before the pack", pack_of({pack_entry(6, 4, "\x7F" + fromFour)})},
        {"offset inside an entry", pack_of({abcd, pack_entry(6, 4, "\x0F" + fromFour)})},
        {"reference to no entry", pack_of({ref_delta_entry(std::string(40, '0'), replacing_delta(4, "x"))})},
        {"deltas on each other",
         pack_of({ref_delta_entry(git_object_name(3, "x"), replacing_delta(1, "y")),
                  ref_delta_entry(git_object_name(3, "y"), replacing_delta(1, "x"))})},
    };
    for (const auto& [what, pack] : cases) {
        EXPECT_EQ(parse(pack), std::nullopt) << what;
    }
}

// Entry k is a reference delta on entry k + 1, so every base comes after its delta.
TEST(Packfile, DeltaChainsTenThousandDeepResolveAndTwentyThousandFailCleanly) {
    const auto chain = [](int deltas) {
        const auto content = [](int index) { return "object " + std::to_string(1000000 + index); };
        std::vector<std::string> entries;
        for (int index = 0; index < deltas; ++index) {
            const std::string base = content(index + 1);
            entries.push_back(
                ref_delta_entry(git_object_name(3, base), replacing_delta(base.size(), content(index))));
        }
        entries.push_back(pack_entry(3, content(deltas)));
        return parse(pack_of(entries));
    };
    const auto deepest = chain(10000);
    ASSERT_TRUE(deepest);
    EXPECT_EQ(deepest->size(), 10001U);
    EXPECT_EQ(chain(20000), std::nullopt);
}

} // namespace
} // namespace corvandell::git
