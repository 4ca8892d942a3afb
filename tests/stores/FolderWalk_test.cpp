// Links up the tree or to the root and names that are not Unicode: the scan ends and says why.
#include "stores/FolderWalk.hpp"

#include "stores/ExecutableChooser.hpp"
#include "stores/StoreTree.hpp"

namespace corvandell {
namespace {

using namespace test;

// Links as the native platform makes them; under Wine the links come from the Linux side
// (see the Windows tests), since Wine makes neither junctions nor symbolic links.
bool makeFolderLink(const std::filesystem::path& target, const std::filesystem::path& link) {
    std::error_code error;
    std::filesystem::create_directory_symlink(target, link, error);
    return !error;
}

TEST(FolderWalk, NeverFollowsLinksUpTheTreeOrToTheRootAndSaysSo) {
    StoreTree tree;
    tree.variables["APPDATA"] = tree.folder("Roaming");
    const auto apps = tree.folder("Roaming/itch/apps");
    const auto game = tree.folder("Roaming/itch/apps/lantern");
    tree.temp.writeFile(game / ".itch" / "receipt.json", R"({"game":{"id":900001,"title":"Lantern"}})");
    const auto exe = tree.temp.writeFile(game / "bin" / "Lantern.exe", "x");
    if (!makeFolderLink(apps, game / "bin" / "up") || !makeFolderLink(game.root_path(), game / "drive") ||
        !makeFolderLink(game.root_path(), apps / "whole-drive")) {
        GTEST_SKIP() << "this platform's test process cannot make folder links";
    }

    const auto report = tree.scan(scanItchGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"itch:900001", "Lantern"}}));
    EXPECT_EQ(report.games[0].executable, exe);
    expectSkips(report, {{"whole-drive", kLinkNotFollowed}});

    std::vector<std::string> skipped;
    walkFiles(
        game, [](const WalkedFile&) {},
        [&](const std::filesystem::path& entry, const std::string& reason) {
            skipped.push_back(utf8Text(entry.filename()) + ": " + reason);
        });
    std::sort(skipped.begin(), skipped.end());
    EXPECT_EQ(skipped, (std::vector<std::string>{std::string("drive: ") + kLinkNotFollowed,
                                                 std::string("up: ") + kLinkNotFollowed}));
    EXPECT_EQ(findFirstExecutable(game), exe);
}

// "bad" and an unpaired surrogate on Windows, "bad" and a byte that is not UTF-8 elsewhere.
template <typename Char> std::basic_string<Char> badNameUnits() {
    if constexpr (sizeof(Char) == 2) {
        return {Char('b'), Char('a'), Char('d'), static_cast<Char>(0xD800)};
    } else {
        return "bad\xFF";
    }
}

TEST(FolderWalk, NamesThatAreNotUnicodeAreLeftOutNotFatal) {
    const auto badUnits = badNameUnits<std::filesystem::path::value_type>();
    const std::filesystem::path badName(badUnits);
    EXPECT_FALSE(hasUnicodeName(std::filesystem::path("apps") / badName));
    EXPECT_TRUE(hasUnicodeName(badName / "fine"));
    EXPECT_EQ(utf8Text(badName), "bad\xEF\xBF\xBD");
    EXPECT_TRUE(hasUnicodeName(std::filesystem::path(u8"Caf\u00e9 \U0001F3AE")));

    // Real entries of such names, where the file system takes them (Linux does; Windows
    // and Wine refuse to create an unpaired surrogate, though NTFS can hold one).
    StoreTree tree;
    tree.variables["APPDATA"] = tree.folder("Roaming");
    const auto apps = tree.temp.path() / "Roaming" / "itch" / "apps";
    tree.temp.writeFile(apps / "lantern" / ".itch" / "receipt.json",
                        R"({"game":{"id":7,"title":"Lantern"}})");
    const auto exe = tree.temp.writeFile(apps / "lantern" / "Lantern.exe", "x");
    std::error_code error;
    std::filesystem::create_directories(apps / badName / ".itch", error);
    if (error) {
        GTEST_SKIP() << "this file system refuses such names";
    }
    tree.temp.writeFile(apps / badName / ".itch" / "receipt.json", R"({"game":{"id":8,"title":"Bad"}})");
    tree.temp.writeFile(apps / "lantern" / std::filesystem::path(badUnits).concat(".exe"),
                        "larger than the game");

    const auto report = tree.scan(scanItchGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"itch:7", "Lantern"}}));
    EXPECT_EQ(report.games[0].executable, exe);
    expectSkips(report, {{"bad\xEF\xBF\xBD", kNameNotUnicode}});
}

} // namespace
} // namespace corvandell
