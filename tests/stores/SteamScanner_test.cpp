// The Steam scanner on synthetic Steam folders: a real file tree, a map for the registry,
// and records written the way Steam writes them (paths with doubled backslashes).
#include "stores/SteamScanner.hpp"

#include "stores/StoreFiles.hpp"
#include "support/FakeRegistry.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;
constexpr auto kUser = RegistryHive::CurrentUser;
constexpr auto kMachine = RegistryHive::LocalMachine;

std::string vdfPath(const fs::path& folder) {
    std::string out;
    for (const char c : utf8Text(folder)) {
        out += c == '/' || c == '\\' ? std::string("\\\\") : std::string(1, c);
    }
    return out;
}

std::string manifestText(const std::string& appid, const std::string& name, const std::string& flags) {
    return "\"AppState\"\n{\n\t\"appid\"\t\t\"" + appid + "\"\n\t\"name\"\t\t\"" + name +
           "\"\n\t\"StateFlags\"\t\t\"" + flags + "\"\n\t\"installdir\"\t\t\"" + name +
           "\"\n\t\"buildid\"\t\t\"77\"\n\t\"LastPlayed\"\t\t\"1718100000\"\n}\n";
}

class SteamScanner : public ::testing::Test {
protected:
    SteamScanner() {
        registry_.set(kUser, "Software\\Valve\\Steam", "SteamPath", utf8Text(root_) + "/");
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

    test::TempFolder temp_;
    test::FakeRegistry registry_;
    MapEnvironment environment_;
    StoreHost host_{registry_, environment_, {}};
    fs::path root_ = temp_.path() / "Steam";
};

TEST_F(SteamScanner, RootIsTheFirstRegistryValueNamingAnExistingFolder) {
    for (const auto* folder : {"A", "B", "C"}) {
        fs::create_directories(temp_.path() / folder);
    }
    temp_.writeFile("file", "");
    const std::vector<std::tuple<std::string, std::string, std::string, std::string>> cases = {
        {"A", "B", "C", "A"}, {"missing", "B", "C", "B"}, {"", "file", "C/", "C"}, {"", "", "missing", ""}};
    for (const auto& [user, wow, machine, expected] : cases) {
        test::FakeRegistry registry;
        auto value = [&](const std::string& name) {
            return name.empty() ? "" : utf8Text(temp_.path() / name);
        };
        registry.set(kUser, "Software\\Valve\\Steam", "SteamPath", value(user));
        registry.set(kMachine, "SOFTWARE\\WOW6432Node\\Valve\\Steam", "InstallPath", value(wow));
        registry.set(kMachine, "SOFTWARE\\Valve\\Steam", "InstallPath", value(machine));
        EXPECT_EQ(findSteamRoot(registry), expected.empty() ? fs::path() : temp_.path() / expected) << user;
    }
}

TEST_F(SteamScanner, LibrariesComeFromBothListsOnceEachAndOnlyWithSteamapps) {
    const fs::path one = temp_.path() / "One", two = temp_.path() / "Two", bare = temp_.path() / "Bare";
    fs::create_directories(one / "steamapps");
    fs::create_directories(two / "steamapps");
    fs::create_directories(bare);
    const std::string newList = R"("libraryfolders" { "0" { "path" ")" + vdfPath(root_) +
                                R"(" } "1" { "path" ")" + vdfPath(one) + R"(\\" } "2" { "path" ")" +
                                vdfPath(bare) + R"(" } "3" { "path" "Relative" } "4" { "path" ")" +
                                vdfPath(one) + R"(" } })";
    const std::string oldList = R"("LibraryFolders" { "TimeNextStatsReport" "1600000000" "1" ")" +
                                vdfPath(two) + R"(" "ContentStatsID" ")" + vdfPath(one) + R"(" })";
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
    addGame(root_, "12", "Flags Ten Twenty Six", "1026");
    addGame(root_, "13", "Flags Not A Number", "four");
    addGame(root_, "14", "Proton 8.0", "4");
    addGame(root_, "15", "Deleted Folder", "4", false);
    addGame(root_, "16", "..", "4");
    fs::create_directories(root_ / "steamapps" / "appmanifest_17.acf");
    temp_.writeFile(root_ / "steamapps" / "appmanifest_18.acf.tmp", manifestText("18", "Temp", "4"));
    addGame(temp_.path() / "Unlisted", "20", "Unlisted Game", "4");

    ScanReport report;
    scanSteamLibrary(host_, report);
    std::vector<std::string> keys;
    for (const auto& game : report.games) {
        keys.push_back(game.key);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"steam:10", "steam:11"}));
    std::vector<std::pair<std::string, std::string>> skipped;
    for (const auto& entry : report.skipped) {
        EXPECT_EQ(entry.storeName, "Steam");
        skipped.emplace_back(utf8Text(fs::path(entry.entry).filename()), entry.reason);
    }
    const std::string deleted = utf8Text(root_ / "steamapps" / "common" / "Deleted Folder");
    EXPECT_EQ(skipped, (std::vector<std::pair<std::string, std::string>>{
                           {"appmanifest_17.acf", "not a regular file"},
                           {"appmanifest_12.acf", "not fully installed (StateFlags 1026)"},
                           {"appmanifest_13.acf", "not fully installed (StateFlags 0)"},
                           {"appmanifest_14.acf", "Steam runtime or redistributable, not a game"},
                           {"appmanifest_15.acf", "install folder " + deleted + " does not exist"},
                           {"appmanifest_16.acf", "installdir \"..\" is not a folder name"},
                       }));
}

TEST_F(SteamScanner, RuntimesAndProtonBuildsAreExcludedButGamesNamedProtonStay) {
    EXPECT_TRUE(isExcludedSteamApp({"1826330", "Lantern Harbor", "", "", 4, 0}));
    EXPECT_FALSE(isExcludedSteamApp({"22898", "Lantern Harbor", "", "", 4, 0}));
    for (const auto* name : {"Steam Linux Runtime - Soldier", "Steamworks Common Redistributables",
                             "Some Redistributable Pack", "Proton 8.0", "Proton Experimental",
                             "Proton Hotfix", "Proton EasyAntiCheat Runtime", "Proton BattlEye Runtime"}) {
        EXPECT_TRUE(isExcludedSteamApp({"9", name, "", "", 4, 0})) << name;
    }
    for (const auto* name : {"Proton Quest Saga", "Proton", "Protonic 2", "The Proton 8"}) {
        EXPECT_FALSE(isExcludedSteamApp({"9", name, "", "", 4, 0})) << name;
    }
}

TEST_F(SteamScanner, ManifestFieldsFallBackToDefaults) {
    using Fields = std::tuple<std::string, std::string, std::uint32_t, std::uint64_t>;
    const std::vector<std::pair<std::string, Fields>> cases = {
        {R"("x" "y" "AppState" { "APPID" "5" "UserConfig" { "name" "User" } "stateflags" "4294967295" })",
         {"5", "User", 4294967295u, 0}},
        {R"("AppState" { "name" "Own" "UserConfig" { "name" "User" } "LastPlayed" "18446744073709551615" })",
         {"", "Own", 0, UINT64_MAX}},
        {R"("AppState" { "StateFlags" "4294967296" "LastPlayed" "-1" })", {"", "", 0, 0}},
        {R"("AppState" { "StateFlags" " 4" "LastPlayed" "12x" })", {"", "", 0, 0}}};
    for (const auto& [text, expected] : cases) {
        const auto manifest = readSteamManifest(text);
        EXPECT_EQ(Fields(manifest.appid, manifest.name, manifest.StateFlags, manifest.LastPlayed), expected)
            << text;
    }
}

TEST_F(SteamScanner, UnicodeManifestGivesTheFullRow) {
    const std::u16string text =
        u"\uFEFF\"AppState\" { \"appid\" \"4000001\" \"name\" \"Lantern Harbor \u03A9\" "
        u"\"StateFlags\" \"6\" \"installdir\" \"Lantern\" \"buildid\" \"12345678\" "
        u"\"LastPlayed\" \"1718100000\" }";
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    }
    temp_.writeFile(root_ / "steamapps" / "appmanifest_4000001.acf", bytes);
    const fs::path folder = root_ / "steamapps" / "common" / "Lantern";
    temp_.writeFile(folder / "UnityCrashHandler64.exe", "larger than the game");
    const fs::path exe = temp_.writeFile(folder / "bin" / "LanternHarbor.exe", "MZ");

    const auto games = scanSteamLibrary(host_);
    ASSERT_EQ(games.size(), 1u);
    const DetectedGame& game = games[0];
    EXPECT_EQ(
        std::tie(game.key, game.title, game.storeKey, game.storeName, game.externalId, game.platform),
        std::make_tuple("steam:4000001", "Lantern Harbor \xCE\xA9", "steam", "Steam", "4000001", "windows"));
    EXPECT_EQ(game.description, "Detected in your local Steam library. Launches directly, without the Steam "
                                "overlay; Steam itself must be running for games that require Steamworks.");
    EXPECT_EQ(std::tie(game.installFolder, game.executable, game.launchAddress),
              std::make_tuple(folder, exe, ""));
    EXPECT_EQ(std::tie(game.steamAppId, game.build, game.lastPlayedUnix),
              std::make_tuple("4000001", "12345678", 1718100000u));
}

} // namespace
} // namespace corvandell
