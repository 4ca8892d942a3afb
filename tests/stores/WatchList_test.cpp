#include "stores/WatchList.hpp"

#include "stores/StoreTree.hpp"

namespace corvandell {
namespace {

using namespace test;

TEST(WatchList, WatchesEachStoresFoldersWithSubtreesOnlyWhereMarked) {
    StoreTree tree;
    const auto programData = tree.folder("ProgramData");
    const auto local = tree.folder("Local");
    const auto roaming = tree.folder("Roaming");
    const auto profile = tree.folder("User");
    tree.variables = {{"ProgramData", programData},
                      {"LOCALAPPDATA", local},
                      {"APPDATA", roaming},
                      {"USERPROFILE", profile}};
    const auto drive = tree.folder("D");
    tree.temp.writeFile("D/.GamingRoot", std::string("RGBX\x01\0\0\0X\0b\0o\0x\0G\0a\0m\0e\0s\0\0\0", 28));
    tree.folder("D/XboxGames");
    tree.driveRoots = {drive};
    const auto steam = tree.folder("Steam");
    tree.folder("Steam/steamapps");
    tree.registry.set(kUser, "Software\\Valve\\Steam", "SteamPath", winPath(steam, '/'));
    tree.registry.set(kMachine, "SOFTWARE\\WOW6432Node\\Epic Games\\EpicGamesLauncher", "AppDataPath",
                      winPath(tree.temp.path() / "EpicData") + "\\");

    const MapEnvironment environment(tree.variables);
    const auto folders = storeWatchFolders(StoreHost{tree.registry, environment, tree.driveRoots});
    const std::vector<WatchedFolder> expected{
        {programData / "GOG.com" / "Galaxy" / "storage", false},
        {programData / "EA Desktop", false},
        {programData / "Battle.net" / "Agent", false},
        {programData / "Riot Games" / "Metadata", true},
        {drive / "XboxGames", false},
        {local / "Ubisoft Game Launcher", false},
        {local / "Amazon Games" / "Data" / "Games", false},
        {roaming / "itch" / "apps", false},
        {profile / "Documents" / "Rockstar Games" / "Launcher", false},
        {steam / "steamapps", false},
        {(tree.temp.path() / "EpicData" / "Manifests").make_preferred(), false},
    };
    ASSERT_EQ(folders.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(isSameFolder(folders[i].path, expected[i].path))
            << i << ": " << utf8Text(folders[i].path) << " vs " << utf8Text(expected[i].path);
        EXPECT_EQ(folders[i].watchSubtree, expected[i].watchSubtree) << i;
    }

    // Without the variables and the registry, only what the drive roots name is left.
    const MapEnvironment empty;
    const FakeRegistry noRegistry;
    const auto bare = storeWatchFolders(StoreHost{noRegistry, empty, tree.driveRoots});
    ASSERT_EQ(bare.size(), 1u);
    EXPECT_TRUE(isSameFolder(bare[0].path, drive / "XboxGames"));
}

} // namespace
} // namespace corvandell
