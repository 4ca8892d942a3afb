// Records written the way Steam writes them (paths with doubled backslashes).
#include "stores/SteamScanner.hpp"

#include "stores/StoreTree.hpp"

#include <array>
#include <cstdint>

namespace corvandell {
namespace {

using namespace test;
namespace fs = std::filesystem;

std::string manifestText(const std::string& appid, const std::string& name, const std::string& flags) {
    return "\"AppState\"\n{\n\t\"appid\"\t\t\"" + appid + "\"\n\t\"name\"\t\t\"" + name +
           "\"\n\t\"StateFlags\"\t\t\"" + flags + "\"\n\t\"installdir\"\t\t\"" + name +
           "\"\n\t\"buildid\"\t\t\"77\"\n\t\"LastPlayed\"\t\t\"1718100000\"\n}\n";
}

class SteamScanner : public ::testing::Test {
protected:
    SteamScanner() {
        tree_.registry.set(kUser, "Software\\Valve\\Steam", "SteamPath", utf8Text(root_) + "/");
        fs::create_directories(root_ / "steamapps");
    }
    // A game's manifest in `library` and, when asked, its folder with an executable.
    void addGame(const fs::path& library, const std::string& appid, const std::string& name,
                 const std::string& flags, bool hasFolder = true) {
        temp_.writeFile(library / "steamapps" / ("appmanifest_" + appid + ".acf"),
                        manifestText(appid, name, flags));
        if (hasFolder) {
            temp_.writeFile(library / "steamapps" / "common" / name / "Game.exe", "MZ");
        }
    }

    StoreTree tree_;
    const TempFolder& temp_ = tree_.temp;
    fs::path root_ = temp_.path() / "Steam";
};

TEST_F(SteamScanner, RootIsTheFirstRegistryValueNamingAnExistingFolder) {
    const fs::path a = tree_.folder("A"), b = tree_.folder("B"), c = tree_.folder("C");
    const fs::path file = temp_.writeFile("file", ""), missing = temp_.path() / "missing", none;
    const std::vector<std::array<fs::path, 4>> cases = {
        {a, b, c, a}, {missing, b, c, b}, {none, file, c / "", c}, {none, none, missing, none}};
    for (const auto& [user, wow, machine, expected] : cases) {
        FakeRegistry registry;
        registry.set(kUser, "Software\\Valve\\Steam", "SteamPath", utf8Text(user));
        registry.set(kMachine, "SOFTWARE\\WOW6432Node\\Valve\\Steam", "InstallPath", utf8Text(wow));
        registry.set(kMachine, "SOFTWARE\\Valve\\Steam", "InstallPath", utf8Text(machine));
        EXPECT_EQ(findSteamRoot(registry), expected) << user;
    }
}

TEST_F(SteamScanner, LibrariesComeFromBothListsOnceEachAndOnlyWithSteamapps) {
    const fs::path one = temp_.path() / "One", two = temp_.path() / "Two", bare = temp_.path() / "Bare";
    fs::create_directories(one / "steamapps");
    fs::create_directories(two / "steamapps");
    fs::create_directories(bare);
    const std::string newList = R"("libraryfolders" { "0" { "path" ")" + escapedPath(root_) +
                                R"(" } "1" { "path" ")" + escapedPath(one) + R"(\\" } "2" { "path" ")" +
                                escapedPath(bare) + R"(" } "3" { "path" "Relative" } "4" { "path" ")" +
                                escapedPath(one) + R"(" } })";
    const std::string oldList = R"("LibraryFolders" { "TimeNextStatsReport" "1600000000" "1" ")" +
                                escapedPath(two) + R"(" "ContentStatsID" ")" + escapedPath(one) + R"(" })";
    const std::vector<std::tuple<std::string, std::string, std::vector<fs::path>>> cases = {
        {"", "", {root_}},
        {newList, "", {root_, one}},
        {oldList, "", {root_, two}},
        {oldList, newList, {root_, two, one}},
    };
    for (const auto& [steamappsList, configList, expected] : cases) {
        for (const auto& [folder, list] : {std::pair{"steamapps", steamappsList}, {"config", configList}}) {
            fs::remove(root_ / folder / "libraryfolders.vdf");
            if (!list.empty()) {
                temp_.writeFile(root_ / folder / "libraryfolders.vdf", list);
            }
        }
        EXPECT_EQ(findSteamLibraries(root_), expected) << steamappsList << configList;
    }
}

TEST_F(SteamScanner, TakesFullyInstalledGamesWhoseFolderExistsAndSaysWhyOthersAreLeftOut) {
    addGame(root_, "10", "Flags Four", "4");
    addGame(root_, "11", "Flags Ten Thirty", "1030");
    // Rewritten in UTF-16, as some manifests are; it gets the full row check below.
    temp_.writeFile(root_ / "steamapps/appmanifest_11.acf",
                    utf16File(manifestText("11", "Flags Ten Thirty", "1030")));
    addGame(root_, "12", "Flags Ten Twenty Six", "1026");
    addGame(root_, "14", "Proton 8.0", "4");
    addGame(root_, "15", "Deleted Folder", "4", false);
    addGame(root_, "16", "..", "4");
    fs::create_directories(root_ / "steamapps" / "appmanifest_17.acf");
    temp_.writeFile(root_ / "steamapps" / "appmanifest_18.acf.tmp", manifestText("18", "Temp", "4"));
    addGame(temp_.path() / "Unlisted", "20", "Unlisted Game", "4");

    const auto report = tree_.scan(scanSteamLibrary);
    ASSERT_EQ(rowTitles(report), (Rows{{"steam:10", "Flags Four"}, {"steam:11", "Flags Ten Thirty"}}));
    const DetectedGame& game = report.games[1];
    const fs::path folder = root_ / "steamapps" / "common" / "Flags Ten Thirty";
    expectRow(game, "steam:11", "Flags Ten Thirty", folder, folder / "Game.exe", "");
    EXPECT_EQ(std::tie(game.storeKey, game.storeName, game.externalId, game.platform, game.steamAppId,
                       game.build, game.lastPlayedUnix),
              std::make_tuple("steam", "Steam", "11", "windows", "11", "77", 1718100000u));
    EXPECT_EQ(game.description, "Detected in your local Steam library. Launches directly, without the Steam "
                                "overlay; Steam itself must be running for games that require Steamworks.");
    const std::string deleted = utf8Text(root_ / "steamapps" / "common" / "Deleted Folder");
    expectSkips(report, {{"appmanifest_17.acf", "not a regular file"},
                         {"appmanifest_12.acf", "not fully installed (StateFlags 1026)"},
                         {"appmanifest_14.acf", "Steam runtime or redistributable, not a game"},
                         {"appmanifest_15.acf", "install folder " + deleted + " does not exist"},
                         {"appmanifest_16.acf", "installdir \"..\" is not a folder name"}});
}

TEST_F(SteamScanner, RuntimesAndProtonBuildsAreExcludedButGamesNamedProtonStay) {
    EXPECT_TRUE(isExcludedSteamApp({"1826330", "Lantern Harbor", "", "", 4, 0}));
    EXPECT_FALSE(isExcludedSteamApp({"22898", "Lantern Harbor", "", "", 4, 0}));
    for (const auto* name : {"Steam Linux Runtime - Soldier", "Some Redistributable Pack",
                             "Proton Experimental", "Proton BattlEye Runtime"}) {
        EXPECT_TRUE(isExcludedSteamApp({"9", name, "", "", 4, 0})) << name;
    }
    for (const auto* name : {"Proton Quest Saga", "Protonic 2"}) {
        EXPECT_FALSE(isExcludedSteamApp({"9", name, "", "", 4, 0})) << name;
    }
}

TEST_F(SteamScanner, ManifestFieldsFallBackToDefaults) {
    using Fields = std::tuple<std::string, std::string, std::uint32_t, std::uint64_t>;
    const std::vector<std::pair<std::string, Fields>> cases = {
        {R"("x" "y" "AppState" { "APPID" "5" "UserConfig" { "name" "User" } "stateflags" "4294967295" })",
         {"5", "User", 4294967295u, 0}},
        {R"("AppState" { "StateFlags" "4x" "LastPlayed" "-1" })", {"", "", 0, 0}}};
    for (const auto& [text, expected] : cases) {
        const auto manifest = readSteamManifest(text);
        EXPECT_EQ(Fields(manifest.appid, manifest.name, manifest.StateFlags, manifest.LastPlayed), expected)
            << text;
    }
}

} // namespace
} // namespace corvandell
