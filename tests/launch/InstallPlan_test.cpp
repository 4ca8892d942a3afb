#include "launch/InstallPlan.hpp"
#include "launch/InstalledBuild.hpp"

#include "base/Utf8Path.hpp"
#include "support/TempFolder.hpp"
#include "support/ThrownText.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

TEST(InstalledBuild, RecordSurvivesAWriteAndReadWithAwkwardText) {
    test::TempFolder folder;
    const InstalledBuild build{"t-\"1\"\\", "1.2.0 \"beta\"\nnext"};
    writeInstalledBuild(folder.path(), build);
    EXPECT_EQ(readInstalledBuild(folder.path()), build);
    EXPECT_EQ(test::readTestFile(folder.path() / kInstalledBuildFileName),
              "{\"titleId\":\"t-\\\"1\\\"\\\\\",\"version\":\"1.2.0 \\\"beta\\\"\\nnext\"}\n");
}

TEST(InstalledBuild, VersionIsKnownOnlyWhenTheRecordNamesTheTitle) {
    test::TempFolder folder;
    EXPECT_EQ(installedVersionIn(folder.path(), "t-ember"), ""); // no record
    folder.writeFile(kInstalledBuildFileName, "{\"titleId\":\"t-ember\",\"version\":\"1.2.0\"}");
    EXPECT_EQ(installedVersionIn(folder.path(), "t-ember"), "1.2.0");
    EXPECT_EQ(installedVersionIn(folder.path(), "t-other"), "");
    folder.writeFile(kInstalledBuildFileName, "{\"titleId\":\"t-ember\""); // cut short
    EXPECT_EQ(installedVersionIn(folder.path(), "t-ember"), "");
    EXPECT_EQ(installedVersionIn(folder.path() / "missing", "t-ember"), "");
}

TEST(InstallPlan, TitleFolderChoice) {
    test::TempFolder root;
    const fs::path library = root.path() / "Games";
    // A first install into a library folder that does not exist yet: the title's name.
    EXPECT_EQ(chooseTitleFolder(library, "t-ember", "Ember: Keep", ""), library / "Ember Keep");
    // An update keeps the folder the title has, whatever the title is called now.
    EXPECT_EQ(chooseTitleFolder(library, "t-ember", "Ember Keep II", pathToUtf8(root.path() / "old")),
              root.path() / "old");

    // An empty folder of that name is used; so is this title's own earlier install.
    fs::create_directories(library / "Empty");
    EXPECT_EQ(chooseTitleFolder(library, "t-empty", "Empty", ""), library / "Empty");
    fs::create_directories(library / "Mine");
    writeInstalledBuild(library / "Mine", {"t-mine", "1.0"});
    EXPECT_EQ(chooseTitleFolder(library, "t-mine", "Mine", ""), library / "Mine");

    // Another title's install or the user's own files: the id is added to the name.
    EXPECT_EQ(chooseTitleFolder(library, "t-theirs-1234", "Mine", ""), library / "Mine (ttheirs1)");
    root.writeFile("Games/Saves/slot1.sav", "x");
    EXPECT_EQ(chooseTitleFolder(library, "5898345e-e475", "Saves", ""), library / "Saves (5898345e)");
    root.writeFile("Games/File", "a file, not a folder");
    EXPECT_EQ(chooseTitleFolder(library, "t-file", "File", ""), library / "File (tfile)");

    // When both are taken the install is refused, not mixed into them.
    root.writeFile("Games/Saves (5898345e)/other.txt", "x");
    EXPECT_EQ(test::thrownText([&] { chooseTitleFolder(library, "5898345e-e475", "Saves", ""); }),
              "The folder \"" + pathToUtf8(library / "Saves") + "\" already holds other files.");
}

TEST(InstallPlan, TheExecutableIsTheFirstAssetNamedExe) {
    struct Case {
        std::vector<std::string> names;
        std::optional<std::size_t> index;
    };
    const Case cases[] = {
        {{"core", "data"}, std::nullopt},
        {{"readme.txt", "Game.EXE", "tool.exe"}, 1},
        {{"bin/game.exe"}, 0},
        {{"game.exe.sig", "game.exe"}, 1},
    };
    for (const Case& c : cases) {
        std::vector<DownloadAsset> assets;
        for (const std::string& name : c.names) {
            assets.push_back({name, "", "https://example.test/" + name});
        }
        EXPECT_EQ(executableAssetIndex(assets), c.index) << testing::PrintToString(c.names);
    }
}

} // namespace
} // namespace corvandell
