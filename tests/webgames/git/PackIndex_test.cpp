// The indexed decode on hand-made packs: it holds a content only while deltas on it are
// still to be applied, and every object it reads back equals the object set's.
// Refusals are compared with the object set's in Packfile_test.cpp, real git's packs in
// posix/PackIndexRealGit_test.cpp.
#include "webgames/git/PackIndex.hpp"

#include "support/PackWriter.hpp"
#include "webgames/git/PackObjectReader.hpp"
#include "webgames/git/Sha1.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::git {
namespace {

using test::pack_entry;
using test::pack_of;
using test::zlib_stored;

constexpr std::size_t kFileBytes = 1 << 20;

// Big-endian base-128 where each continuation also adds one.
std::string offset_distance(std::uint64_t distance) {
    std::string bytes(1, static_cast<char>(distance & 0x7F));
    while (distance >>= 7) {
        --distance;
        bytes.insert(bytes.begin(), static_cast<char>(0x80 | (distance & 0x7F)));
    }
    return bytes;
}

// Copies the whole 1 MB base but for byte `at`, which becomes `value`.
std::string one_byte_delta(std::size_t at, char value) {
    const auto copy = [](std::size_t offset, std::size_t size) {
        std::string op(1, '\x80');
        for (int index = 0; index < 4; ++index) {
            op[0] = static_cast<char>(op[0] | (1 << index));
            op.push_back(static_cast<char>((offset >> (8 * index)) & 0xFF));
        }
        for (int index = 0; index < 3; ++index) {
            op[0] = static_cast<char>(op[0] | (0x10 << index));
            op.push_back(static_cast<char>((size >> (8 * index)) & 0xFF));
        }
        return op;
    };
    return test::delta_varint(kFileBytes) + test::delta_varint(kFileBytes) + copy(0, at) + '\x01' + value +
           copy(at + 1, kFileBytes - at - 1);
}

// A 1 MB blob, then `deltas` offset deltas, each on entry `base_of(k)` (0 being the blob).
std::string pack_of_deltas(int deltas, int (*base_of)(int)) {
    std::vector<std::string> entries{pack_entry(3, std::string(kFileBytes, 'a'))};
    std::vector<std::size_t> offsets{12};
    for (int index = 1; index <= deltas; ++index) {
        offsets.push_back(offsets.back() + entries.back().size());
        const std::string delta = one_byte_delta(static_cast<std::size_t>(index) * 1000, 'b');
        const std::size_t distance = offsets.back() - offsets[static_cast<std::size_t>(base_of(index))];
        entries.push_back(pack_entry(6, delta.size(), offset_distance(distance) + zlib_stored(delta)));
    }
    return pack_of(entries);
}

// Every object read back from the index, as the object set would hold it.
ObjectSet objects_read_back(PackBytes& pack, const PackIndex& index) {
    PackObjectReader reader(pack, index);
    ObjectSet objects;
    for (std::size_t entry = 0; entry < index.entries().size(); ++entry) {
        const auto content = reader.content(entry);
        EXPECT_TRUE(content) << "entry " << entry;
        const std::string name = hex_of(index.entries()[entry].name);
        objects[name] = GitObject{index.entries()[entry].type, name, content ? *content : ""};
    }
    return objects;
}

void expect_same(const ObjectSet& actual, const ObjectSet& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (const auto& [name, object] : expected) {
        const auto found = actual.find(name);
        ASSERT_NE(found, actual.end()) << name;
        EXPECT_EQ(found->second.type, object.type) << name;
        EXPECT_TRUE(found->second.data == object.data) << name;
    }
}

// A chain holds the base and the result being made, whatever its length; deltas that all
// share one base hold that base and one result; a base with two chains on it is held
// while the first chain is walked. Holding every content until the end, or each base
// until the walk came back up the chain, would hold 11 to 21 files.
TEST(PackIndex, DeltasHoldTwoContentsAtATimeAndReadBackAsTheObjectSet) {
    struct Case {
        const char* what;
        int deltas;
        int (*baseOf)(int);
        std::size_t filesHeld;
    };
    const std::vector<Case> cases = {
        {"a chain of 20 deltas", 20, [](int index) { return index - 1; }, 2},
        {"20 deltas on one base", 20, [](int) { return 0; }, 2},
        {"two chains of 10 from one base", 20, [](int index) { return index <= 2 ? 0 : index - 2; }, 3},
    };
    for (const Case& test : cases) {
        const std::string pack = pack_of_deltas(test.deltas, test.baseOf);
        PackInMemory bytes(pack);
        PackError error = PackError::BadHeader;
        PackIndexStats stats;
        const auto index = index_pack(bytes, &error, {}, &stats);
        ASSERT_TRUE(index) << test.what;
        EXPECT_EQ(error, PackError::None) << test.what;
        EXPECT_EQ(stats.peakContentBytes, test.filesHeld * kFileBytes) << test.what;
        const auto expected = parse_packfile(pack, object_name);
        ASSERT_TRUE(expected) << test.what;
        expect_same(objects_read_back(bytes, *index), *expected);
    }
}

} // namespace
} // namespace corvandell::git
