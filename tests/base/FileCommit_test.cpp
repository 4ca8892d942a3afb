// Leftovers of an interrupted save are cleaned beside their target, and nothing else is.
#include "base/FileCommit.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace corvandell {
namespace {

TEST(FileCommit, RemovesOnlyTheTargetsOwnLeftoverTemporaries) {
    const test::TempFolder temp;
    const std::vector<std::string> leftovers = {".settings.json.tmp-0123456789abcdef",
                                                ".settings.json.tmp-ffffffffffffffff"};
    const std::vector<std::string> kept = {
        ".library.json.tmp-0123456789abcdef",  // another target's: its own load cleans it
        ".settings.json.tmp-FEDCBA9876543210", // not a name we write
        ".settings.json.tmp-0123456789abcdef0", ".settings.json.tmp-0123456789abcdeg",
        "settings.json.bad-20261125T031500Z",
    };
    for (const std::string& name : leftovers) {
        temp.writeFile(name, "{\"cut");
    }
    for (const std::string& name : kept) {
        temp.writeFile(name, "{}");
    }
    // A folder with a temporary's name is not ours to empty.
    temp.writeFile(".settings.json.tmp-aaaaaaaaaaaaaaaa/inside.txt", "x");

    EXPECT_EQ(removeLeftoverTemporaries(temp.path() / "settings.json"), leftovers.size());
    std::vector<std::string> expected = kept;
    expected.push_back(".settings.json.tmp-aaaaaaaaaaaaaaaa");
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(temp.entryNames(), expected);
    EXPECT_EQ(removeLeftoverTemporaries(temp.path() / "missing-folder" / "settings.json"), 0u);
}

} // namespace
} // namespace corvandell
