// Pack decoding on hand-made packs: each delta rule and bounds check that keeps a hostile
// delta in range, and malformed or hostile packs that must yield no value, for their own
// reason, rather than a crash. Real git's packs are decoded in posix/RealGit_test.cpp, the
// byte budget on zlib-made packs in posix/ByteBudgetZlib_test.cpp.
#include "webgames/git/Packfile.hpp"

#include "support/PackWriter.hpp"
#include "webgames/git/Delta.hpp"
#include "webgames/git/PackIndex.hpp"
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

// The indexed decode's refusal of the same pack, which must be the object set's.
PackError index_refusal(const std::string& pack) {
    PackInMemory bytes(pack);
    PackError error = PackError::None;
    const auto index = index_pack(bytes, &error);
    return index ? PackError::None : error;
}

std::string sizes(std::size_t sourceSize, std::size_t targetSize) {
    return test::delta_varint(sourceSize) + test::delta_varint(targetSize);
}

// A delta that keeps nothing of its base: the whole target is inserted.
std::string replacing_delta(std::size_t baseSize, const std::string& target) {
    return sizes(baseSize, target.size()) + static_cast<char>(target.size()) + target;
}

// The last rows are the budget: every one-byte copy opcode may repeat 64 KiB of its base,
// so a megabyte of opcodes (a kilobyte once compressed) announces 64 GiB, which must be
// refused before the target is allocated; a target exactly at the limit is built.
TEST(Packfile, DeltaAppliesCopiesAndInsertsAndRejectsEveryMalformedDelta) {
    const std::string base = "0123456789";
    const std::string big(0x10000 + 5, 'b');
    const std::string copies64GiB = sizes(big.size(), std::uint64_t{64} << 30) + std::string(1 << 20, '\x80');
    const std::string threeCopies = sizes(big.size(), 3 * 0x10000) + "\x80\x80\x80";
    using Case = std::tuple<const char*, std::string, std::string, std::size_t, std::optional<std::string>,
                            DeltaError>;
    const std::size_t noLimit = kMaxObjectBytes;
    const std::vector<Case> cases = {
        {"copy, insert, copy", base, sizes(10, 8) + "\x91\x02\x03" + "\x02xy" + "\x90\x03", noLimit,
         "234xy012", DeltaError::None},
        {"all four offset bytes", base, sizes(10, 1) + std::string("\x9F\x09\x00\x00\x00\x01", 6), noLimit,
         "9", DeltaError::None},
        {"copy size 0 means 65536", big, sizes(big.size(), 0x10000) + "\x80", noLimit,
         std::string(0x10000, 'b'), DeltaError::None},
        {"sizes cut short", base, "\x8A", noLimit, std::nullopt, DeltaError::BadHeader},
        {"source size differs from the base", base, sizes(9, 1) + "\x01x", noLimit, std::nullopt,
         DeltaError::SourceSizeMismatch},
        {"opcode 0 is reserved", base, sizes(10, 1) + std::string("\x00\x01x", 3), noLimit, std::nullopt,
         DeltaError::ReservedOpcode},
        {"copy past the base", base, sizes(10, 2) + "\x91\x09\x02", noLimit, std::nullopt,
         DeltaError::CopyOutOfRange},
        {"copy offset near 2^32", base, sizes(10, 1) + "\x9F\xFF\xFF\xFF\xFF\x01", noLimit, std::nullopt,
         DeltaError::CopyOutOfRange},
        {"copy arguments cut short", base, sizes(10, 1) + "\x91\x02", noLimit, std::nullopt,
         DeltaError::TruncatedOpcode},
        {"insert past the delta's end", base, sizes(10, 3) + "\x03xy", noLimit, std::nullopt,
         DeltaError::TruncatedOpcode},
        {"result shorter than target", base, sizes(10, 3) + "\x02xy", noLimit, std::nullopt,
         DeltaError::TargetShort},
        {"result longer than target", base, sizes(10, 1) + "\x02xy", noLimit, std::nullopt,
         DeltaError::TargetOverrun},
        {"target the opcodes cannot fill", base, sizes(10, 1ULL << 20) + "\x90\x0A", noLimit, std::nullopt,
         DeltaError::TargetUnreachable},
        {"64 GiB of copies", big, copies64GiB, noLimit, std::nullopt, DeltaError::TooLarge},
        {"target one byte over a small limit", big, threeCopies, 3 * 0x10000 - 1, std::nullopt,
         DeltaError::TooLarge},
        {"target exactly at a small limit", big, threeCopies, 3 * 0x10000, std::string(3 * 0x10000, 'b'),
         DeltaError::None},
    };
    for (const auto& [what, source, delta, limit, expected, reason] : cases) {
        DeltaError error = DeltaError::OutOfMemory;
        EXPECT_EQ(apply_delta(source, delta, &error, limit), expected) << what;
        EXPECT_EQ(error, reason) << what;
    }
}

TEST(Packfile, MalformedPacksYieldNoValue) {
    const std::string empty = pack_of({});
    ASSERT_EQ(empty.size(), 32U);
    const auto none = parse(empty);
    ASSERT_TRUE(none && none->empty());
    const std::string fromFour = zlib_stored(replacing_delta(4, "x"));
    const std::string abcd = pack_entry(3, "abcd"); // 16 bytes
    const std::vector<std::tuple<const char*, std::string, PackError>> cases = {
        {"31 bytes", empty.substr(0, 31), PackError::BadHeader},
        {"count beyond the entries", pack_of({pack_entry(3, "a")}).replace(11, 1, "\2"),
         PackError::Truncated},
        {"inflated size differs", pack_of({pack_entry(3, 5, zlib_stored("four"))}), PackError::SizeMismatch},
        {"inflates past its size", pack_of({pack_entry(3, 3, zlib_stored("four"))}), PackError::SizeMismatch},
        {"not a zlib stream", pack_of({pack_entry(3, 4, "four" + zlib_stored("four"))}),
         PackError::BadStream},
        {"size beyond any input", pack_of({pack_entry(3, 1ULL << 62, zlib_stored("x"))}),
         PackError::TooLarge},
        {"size wider than 64 bits", pack_of({"\xBF" + std::string(9, '\xFF') + '\x01' + zlib_stored("x")}),
         PackError::TooLarge},
        {"size cut short", pack_of({"\xBF"}), PackError::Truncated},
        {"type 5", pack_of({pack_entry(5, "abcd")}), PackError::UnknownType},
        {"delta source size differs",
         pack_of({ref_delta_entry(git_object_name(3, "abc"), replacing_delta(4, "x")), pack_entry(3, "abc")}),
         PackError::BadDelta},
        {"offset delta on itself", pack_of({pack_entry(6, 4, '\0' + fromFour)}), PackError::DeltaCycle},
        {"offset before the pack", pack_of({pack_entry(6, 4, "\x7F" + fromFour)}), PackError::MissingBase},
        {"offset wider than 64 bits",
         pack_of({pack_entry(6, 4, std::string(10, '\xFF') + '\x01' + fromFour)}), PackError::MissingBase},
        {"offset inside an entry", pack_of({abcd, pack_entry(6, 4, "\x0F" + fromFour)}),
         PackError::MissingBase},
        {"reference to no entry", pack_of({ref_delta_entry(std::string(40, '0'), replacing_delta(4, "x"))}),
         PackError::MissingBase},
        {"deltas on each other",
         pack_of({ref_delta_entry(git_object_name(3, "x"), replacing_delta(1, "y")),
                  ref_delta_entry(git_object_name(3, "y"), replacing_delta(1, "x"))}),
         PackError::MissingBase}, // neither is ever named "x" or "y"
    };
    for (const auto& [what, pack, reason] : cases) {
        PackError error = PackError::None;
        EXPECT_EQ(parse_packfile(pack, object_name, &error), std::nullopt) << what;
        EXPECT_EQ(error, reason) << what;
        EXPECT_EQ(index_refusal(pack), reason) << what;
    }
}

// Entry k is a reference delta on entry k + 1, so every base comes after its delta.
TEST(Packfile, DeltaChainsTenThousandDeepResolveAndTwentyThousandFailCleanly) {
    PackError error = PackError::None;
    const auto chain = [&error](int deltas) {
        const auto content = [](int index) { return "object " + std::to_string(1000000 + index); };
        std::vector<std::string> entries;
        for (int index = 0; index < deltas; ++index) {
            const std::string base = content(index + 1);
            entries.push_back(
                ref_delta_entry(git_object_name(3, base), replacing_delta(base.size(), content(index))));
        }
        entries.push_back(pack_entry(3, content(deltas)));
        const std::string pack = pack_of(entries);
        auto objects = parse_packfile(pack, object_name, &error);
        EXPECT_EQ(index_refusal(pack), error) << deltas;
        return objects;
    };
    const auto deepest = chain(10000);
    ASSERT_TRUE(deepest);
    EXPECT_EQ(deepest->size(), 10001U);
    EXPECT_EQ(chain(20000), std::nullopt);
    EXPECT_EQ(error, PackError::ChainTooDeep);
}

} // namespace
} // namespace corvandell::git
