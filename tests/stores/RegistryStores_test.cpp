// The scanners of the stores found through the registry and the launcher's own manifests:
// Epic Games, GOG Galaxy, Ubisoft Connect, Rockstar Games and Amazon Games. Each test
// builds a store's records as the store writes them over a real folder tree, stale and
// damaged entries beside the good ones.
#include "app/Environment.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreScanners.hpp"

#include "support/FakeRegistry.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvandell {
namespace {

constexpr auto kMachine = RegistryHive::LocalMachine;
constexpr auto kUser = RegistryHive::CurrentUser;
constexpr std::string_view kUninstall32 =
    "SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr std::string_view kUninstall64 = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr std::string_view kUninstallUser = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

// A folder as Windows stores write it in the registry (Ubisoft writes forward slashes).
std::string winPath(const std::filesystem::path& path, char separator = '\\') {
    std::string text = utf8Text(path);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '/' || c == '\\'; }, separator);
    return text;
}

// The same inside a JSON string, backslashes escaped.
std::string jsonPath(const std::filesystem::path& path) {
    std::string text;
    for (const char c : winPath(path)) {
        text += c == '\\' ? std::string("\\\\") : std::string(1, c);
    }
    return text;
}

struct StoreTree {
    test::TempFolder temp;
    test::FakeRegistry registry;
    MapEnvironment environment;

    std::filesystem::path folder(const std::string& relative) const {
        // Preferred separators, so texts built from it match the scanners' on Windows too.
        const auto folder = (temp.path() / relative).make_preferred();
        std::filesystem::create_directories(folder);
        return folder;
    }
    ScanReport scan(void (*scanner)(const StoreHost&, ScanReport&)) const {
        ScanReport report;
        scanner(StoreHost{registry, environment, {}}, report);
        return report;
    }
};

struct ExpectedRow {
    std::string key, title, storeName;
    std::filesystem::path folder, executable;
    std::string launchAddress;
};

void expectRow(const DetectedGame& row, const ExpectedRow& expected) {
    EXPECT_EQ(row.key, expected.key);
    EXPECT_EQ(row.title, expected.title);
    EXPECT_EQ(row.storeName, expected.storeName);
    EXPECT_EQ(row.installFolder, expected.folder);
    EXPECT_EQ(row.executable, expected.executable);
    EXPECT_EQ(row.launchAddress, expected.launchAddress);
    EXPECT_EQ(row.description, "Detected in your local " + expected.storeName +
                                   " library. Installs and updates are managed by " + expected.storeName +
                                   ".");
}

// The skipped entries in order, each as the end of its entry's name and the reason.
void expectSkips(const ScanReport& report, const std::vector<std::pair<std::string, std::string>>& expected) {
    ASSERT_EQ(report.skipped.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(report.skipped[i].entry.ends_with(expected[i].first)) << report.skipped[i].entry;
        EXPECT_EQ(report.skipped[i].reason, expected[i].second) << report.skipped[i].entry;
    }
}

std::vector<std::string> rowKeys(const ScanReport& report) {
    std::vector<std::string> keys;
    for (const auto& game : report.games) {
        keys.push_back(game.key);
    }
    return keys;
}

std::string epicManifest(const std::string& appName, const std::filesystem::path& folder,
                         const std::string& categories, bool isIncomplete = false) {
    return R"({ "FormatVersion": 0, "bIsIncompleteInstall": )" +
           std::string(isIncomplete ? "true" : "false") + R"(, "AppName": ")" + appName +
           R"(", "DisplayName": "Lantern Harbor", "InstallLocation": ")" + jsonPath(folder) +
           R"(", "LaunchExecutable": "Binaries/Win64/Lantern.exe", "MainGameAppName": "Finch",
  "AppCategories": [)" +
           categories + "] }";
}

TEST(EpicScanner, KeepsInstalledGamesAndSkipsAddOnsPlugInsStaleAndDamagedManifests) {
    StoreTree tree;
    const auto game = tree.folder("Epic Games/LanternHarbor");
    tree.temp.writeFile("Epic Games/LanternHarbor/Lantern Harbor.exe",
                        "a larger executable with the title's name");
    const auto exe = tree.temp.writeFile("Epic Games/LanternHarbor/Binaries/Win64/Lantern.exe", "x");
    tree.registry.set(kMachine, "SOFTWARE\\WOW6432Node\\Epic Games\\EpicGamesLauncher", "AppDataPath",
                      winPath(tree.temp.path() / "EpicData") + "\\");
    auto item = [&](const std::string& name, const std::string& text) {
        tree.temp.writeFile("EpicData/Manifests/" + name, text);
    };
    const std::string good = epicManifest("Finch", game, R"("public", "games", "applications")");
    item("a-game.item", good);
    item("b-installing.item", epicManifest("Finch", game, R"("games")", true));
    item("c-dlc.item", epicManifest("FinchDlc", game, R"("public", "addons")"));
    item("d-launchable.item", epicManifest("FinchExtra", game, R"("addons", "addons/launchable")"));
    item("e-plugin.item", epicManifest("Tool", game, R"("plugins", "plugins/engine")"));
    item("f-stale.item", epicManifest("Gone", tree.temp.path() / "Epic Games/Gone", R"("games")"));
    item("g-truncated.item", good.substr(0, 70));
    item("h-binary.item", std::string("\x00\x9f\xff{\"AppName\x01", 14));

    const auto report = tree.scan(scanEpicGames);
    ASSERT_EQ(rowKeys(report), (std::vector<std::string>{"epic:Finch", "epic:FinchExtra"}));
    expectRow(report.games[0], {"epic:Finch", "Lantern Harbor", "Epic Games", game, exe,
                                "com.epicgames.launcher://apps/Finch?action=launch&silent=true"});
    expectSkips(report, {{"b-installing.item", "the install is not complete"},
                         {"c-dlc.item", "an add-on of another game"},
                         {"e-plugin.item", "an engine plug-in, not a game"},
                         {"f-stale.item", "the install folder no longer exists"},
                         {"g-truncated.item", "the manifest is damaged or empty"},
                         {"h-binary.item", "the manifest is damaged or empty"}});

    // Without the launcher's value the manifests are under %ProgramData%; a manifest without
    // a title or an executable gets its AppName and the chooser's pick.
    StoreTree fallback;
    const auto quest = fallback.temp.writeFile("Quest/Quest.exe", "x");
    fallback.environment = MapEnvironment({{"ProgramData", fallback.temp.path() / "ProgramData"}});
    fallback.temp.writeFile("ProgramData/Epic/EpicGamesLauncher/Data/Manifests/q.item",
                            R"({"AppName": "Quest", "InstallLocation": ")" + jsonPath(quest.parent_path()) +
                                R"("})");
    const auto questReport = fallback.scan(scanEpicGames);
    ASSERT_EQ(questReport.games.size(), 1u);
    EXPECT_EQ(questReport.games[0].title, "Quest");
    EXPECT_EQ(questReport.games[0].executable, quest);
}

TEST(GogScanner, KeepsGamesWithTheirNamedExecutableAndSkipsDlcAndStaleKeys) {
    StoreTree tree;
    const auto game = tree.folder("GOG Games/Lantern Harbor");
    tree.temp.writeFile("GOG Games/Lantern Harbor/Lantern Harbor.exe", "x");
    const auto exe = tree.temp.writeFile("GOG Games/Lantern Harbor/bin/start.exe", "x");
    const auto quest = tree.temp.writeFile("GOG Games/Quest/Quest.exe", "x");
    const std::string games = "SOFTWARE\\WOW6432Node\\GOG.com\\Games\\";
    auto set = [&](const std::string& id, const std::string& value, const std::string& text) {
        tree.registry.set(kMachine, games + id, value, text);
    };
    set("1400000001", "gameName", "Lantern Harbor");
    set("1400000001", "path", winPath(game));
    set("1400000001", "exe", winPath(exe));
    set("1400000002", "gameName", "Lantern Harbor - Soundtrack");
    set("1400000002", "path", winPath(game));
    set("1400000002", "dependsOn", "1400000001");
    set("1400000003", "path", winPath(tree.temp.path() / "GOG Games/Gone"));
    set("1400000004", "gameName", "Quest");
    set("1400000004", "path", winPath(quest.parent_path()) + "\\");
    set("1400000004", "exe", winPath(quest.parent_path() / "Removed.exe"));
    tree.registry.set(kMachine, "SOFTWARE\\GOG.com\\Games\\77", "path", winPath(game));

    const auto report = tree.scan(scanGogGames);
    ASSERT_EQ(rowKeys(report), (std::vector<std::string>{"gog:1400000001", "gog:1400000004"}));
    expectRow(report.games[0], {"gog:1400000001", "Lantern Harbor", "GOG Galaxy", game, exe,
                                "goggalaxy://openGameView/1400000001"});
    EXPECT_EQ(report.games[1].executable, quest);
    expectSkips(report, {{"1400000002", "a DLC or component of another game"},
                         {"1400000003", "the install folder no longer exists"}});

    test::FakeRegistry only64;
    only64.set(kMachine, "SOFTWARE\\GOG.com\\Games\\77", "path", winPath(game));
    ScanReport fallback;
    scanGogGames(StoreHost{only64, tree.environment, {}}, fallback);
    EXPECT_EQ(rowKeys(fallback), (std::vector<std::string>{"gog:77"}));
}

TEST(UbisoftScanner, TitlesInstallsFromTheirUninstallEntryElseTheFolder) {
    StoreTree tree;
    const auto game = tree.folder("Ubisoft Games/LH");
    const auto exe = tree.temp.writeFile("Ubisoft Games/LH/LanternHarbor.exe", "x");
    tree.folder("Ubisoft Games/Quest Folder");
    tree.folder("Ubisoft Games/Sixty");
    const std::string installs = "SOFTWARE\\WOW6432Node\\Ubisoft\\Launcher\\Installs\\";
    for (const auto& [id, folder] : std::vector<std::pair<std::string, std::string>>{
             {"9001", "LH"}, {"9002", "Quest Folder"}, {"9003", "Sixty"}, {"9004", "Gone"}}) {
        tree.registry.set(kMachine, installs + id, "InstallDir",
                          winPath(tree.temp.path() / "Ubisoft Games" / folder, '/') + "/");
    }
    tree.registry.set(kMachine, std::string(kUninstall32) + "Uplay Install 9001", "DisplayName",
                      "Lantern Harbor");
    tree.registry.set(kMachine, std::string(kUninstall64) + "Uplay Install 9001", "DisplayName",
                      "Wrong View");
    tree.registry.set(kMachine, std::string(kUninstall64) + "Uplay Install 9003", "DisplayName",
                      "Sixty-Four");

    const auto report = tree.scan(scanUbisoftGames);
    ASSERT_EQ(report.games.size(), 3u);
    expectRow(report.games[0],
              {"ubisoft:9001", "Lantern Harbor", "Ubisoft Connect", game, exe, "uplay://launch/9001"});
    EXPECT_EQ(report.games[1].title, "Quest Folder");
    EXPECT_EQ(report.games[2].title, "Sixty-Four");
    expectSkips(report, {{"Installs\\9004", "the install folder no longer exists"}});
}

TEST(RockstarScanner, KeepsLauncherInstallsAndSkipsTheLauncherAndOtherStoresCopies) {
    StoreTree tree;
    const auto launcher = tree.folder("Rockstar Games/Launcher");
    const auto game = tree.folder("Rockstar Games/Lantern Harbor");
    const auto exe = tree.temp.writeFile("Rockstar Games/Lantern Harbor/LanternHarbor.exe", "x");
    tree.folder("Rockstar Games/Quest");
    const std::string base = "SOFTWARE\\WOW6432Node\\Rockstar Games\\";
    for (const auto& [name, value, folder] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"Launcher", "InstallFolder", "Launcher"},
             {"Social Club", "InstallFolder", "Launcher"},
             {"rockstar games social club", "InstallFolder", "Launcher"},
             {"GTAV", "InstallFolderSteam", "Lantern Harbor"},
             {"Lantern Harbor", "InstallFolder", "Lantern Harbor"},
             {"Quest", "InstallFolder", "Quest"},
             {"Stale", "InstallFolder", "Gone"}}) {
        tree.registry.set(kMachine, base + name, value,
                          winPath(tree.temp.path() / "Rockstar Games" / folder));
    }
    const std::string entry = std::string(kUninstall64) + "{5EFC6C07-0000-0000-0000-000000000001}";
    tree.registry.set(kMachine, entry, "DisplayName", "Lantern Harbor: Deluxe");
    tree.registry.set(kMachine, entry, "InstallLocation", "\"" + winPath(game) + "\"");
    tree.registry.set(kMachine, entry, "UninstallString",
                      "\"C:\\Program Files\\Rockstar Games\\Launcher\\uninstall.exe\" -uninstall=lanternh");

    const auto report = tree.scan(scanRockstarGames);
    ASSERT_EQ(rowKeys(report), (std::vector<std::string>{"rockstar:lanternh", "rockstar:Quest"}));
    expectRow(report.games[0], {"rockstar:lanternh", "Lantern Harbor: Deluxe", "Rockstar Games", game, exe,
                                "\"" + utf8Text(launcher / "Launcher.exe") + "\" -launchTitleInFolder \"" +
                                    utf8Text(game) + "\""});
    EXPECT_EQ(report.games[1].title, "Quest");
    expectSkips(report, {{"GTAV", "no InstallFolder value, so not installed by the launcher"},
                         {"Launcher", "the launcher's own key, not a game"},
                         {"Social Club", "the launcher's own key, not a game"},
                         {"Stale", "the install folder no longer exists"},
                         {"rockstar games social club", "the launcher's own key, not a game"}});
}

TEST(AmazonScanner, ReadsAmazonUninstallEntriesAndTheirFuelCommand) {
    StoreTree tree;
    const auto game = tree.folder("Amazon Games/Library/Lantern Harbor");
    tree.temp.writeFile("Amazon Games/Library/Lantern Harbor/Lantern Harbor.exe", "x");
    tree.temp.writeFile("Amazon Games/Library/Lantern Harbor/redist/vcredist_x64.exe", "x");
    const auto exe = tree.temp.writeFile("Amazon Games/Library/Lantern Harbor/Bin/Lantern.exe", "x");
    tree.temp.writeFile("Amazon Games/Library/Lantern Harbor/fuel.json", R"(// written by the launcher
{ "SchemaVersion": "2",
  "PostInstall": [ { "Command": "redist\\vcredist_x64.exe", "Args": ["/q"], }, ],
  "Main": { "Command": "Bin\\Lantern.exe", "Args": ["-skipintro",], "WorkingSubdirOverride": "Bin", },
})");
    const auto quest = tree.temp.writeFile("Amazon Games/Library/Quest/Quest.exe", "x");
    tree.temp.writeFile("Amazon Games/Library/Quest/fuel.json", std::string("\x1f\x8b\x08\0{\"Main\x01", 10));
    tree.folder("Other App");
    auto set = [&](RegistryHive hive, std::string_view root, const std::string& name,
                   const std::string& value, const std::string& text) {
        tree.registry.set(hive, std::string(root) + name, value, text);
    };
    const std::string lantern = "AmazonGames/Lantern Harbor";
    set(kUser, kUninstallUser, lantern, "DisplayName", "Lantern Harbor");
    set(kUser, kUninstallUser, lantern, "InstallLocation", winPath(game));
    set(kUser, kUninstallUser, lantern, "UninstallString",
        "\"C:\\Amazon Games\\Library\\__InstallData__\\Amazon Game Remover.exe\" -m Game -p "
        "amzn1.adg.product.0000-1111 -c");
    set(kMachine, kUninstall64, lantern, "InstallLocation", winPath(game));
    set(kMachine, kUninstall64, lantern, "UninstallString", "remover.exe -p amzn1.adg.product.0000-1111");
    set(kUser, kUninstallUser, "AmazonGames/Quest", "InstallLocation", winPath(quest.parent_path()));
    set(kUser, kUninstallUser, "AmazonGames/Stale", "InstallLocation", winPath(tree.temp.path() / "Gone"));
    set(kUser, kUninstallUser, "AmazonGames/Unknown", "DisplayName", "Unknown");
    set(kMachine, kUninstall32, "Other App", "InstallLocation", winPath(tree.temp.path() / "Other App"));

    const auto report = tree.scan(scanAmazonGames);
    ASSERT_EQ(rowKeys(report),
              (std::vector<std::string>{"amazon:amzn1.adg.product.0000-1111", "amazon:Quest"}));
    expectRow(report.games[0], {"amazon:amzn1.adg.product.0000-1111", "Lantern Harbor", "Amazon Games", game,
                                exe, "amazon-games://play/amzn1.adg.product.0000-1111"});
    EXPECT_EQ(report.games[1].title, "Quest");
    EXPECT_EQ(report.games[1].executable, quest);
    expectSkips(report,
                {{"AmazonGames/Stale", "the install folder no longer exists"},
                 {"AmazonGames/Unknown", "no install location is recorded"},
                 {"Uninstall\\AmazonGames/Lantern Harbor", "the same game is listed by another entry"}});
}

} // namespace
} // namespace corvandell
