// Whole-file reads and atomic replacement against a real temp folder: bytes must come back
// exactly, and a failed save must leave the old state and no temporary file behind.
#include "app/FileStore.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace corvandell {
namespace {

using Names = std::vector<std::string>;

// CR LF, NUL and Ctrl-Z: each one is mangled or cut short by a text-mode stream on Windows.
constexpr char kBinaryBytes[] = "line\r\nnul\0byte\xFF\x1A end";
const std::string kBinary(kBinaryBytes, sizeof kBinaryBytes - 1);

TEST(FileStore, ReadWholeFileReturnsExactBytesOrNothing) {
    const test::TempFolder temp;
    const auto file = temp.writeFile("data.bin", kBinary);
    EXPECT_EQ(readWholeFile(file), kBinary);
    EXPECT_EQ(readWholeFile(temp.writeFile("empty", "")), std::string());
    EXPECT_EQ(readWholeFile(temp.path() / "missing"), std::nullopt);
    EXPECT_EQ(readWholeFile(temp.path()), std::nullopt);
}

TEST(FileStore, ReplaceFileAtomicallyCreatesOrReplacesAndLeavesOnlyTheTarget) {
    const test::TempFolder temp;
    const auto target = temp.path() / "settings.json";
    replaceFileAtomically(target, "first");
    EXPECT_EQ(test::readTestFile(target), "first");
    replaceFileAtomically(target, kBinary);
    EXPECT_EQ(test::readTestFile(target), kBinary);
    replaceFileAtomically(target, "");
    EXPECT_EQ(test::readTestFile(target), "");
    EXPECT_EQ(temp.entryNames(), Names{"settings.json"});
}

TEST(FileStore, FailedCommitKeepsTheOldTargetAndRemovesTheTemporary) {
    const test::TempFolder temp;
    // A folder in the target's place: no rename can replace it, even for root.
    temp.writeFile("settings.json/keep.txt", "old");
    try {
        replaceFileAtomically(temp.path() / "settings.json", "new");
        FAIL() << "expected the save to fail";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Could not save settings.json");
    }
    EXPECT_EQ(temp.entryNames(), Names{"settings.json"});
    EXPECT_EQ(test::readTestFile(temp.path() / "settings.json" / "keep.txt"), "old");
}

TEST(FileStore, FailedWriteThrowsWithoutCreatingAnything) {
    const test::TempFolder temp;
    EXPECT_THROW(replaceFileAtomically(temp.path() / "gone" / "library.json", "x"), std::runtime_error);
    EXPECT_EQ(temp.entryNames(), Names{});
}

} // namespace
} // namespace corvandell
