// Scanners of the stores found through the registry, with stale and damaged records beside.
#include "stores/StoreTree.hpp"

namespace corvandell {
namespace {

using namespace test;

std::string epicManifest(const std::string& appName, const std::filesystem::path& folder,
                         const std::string& categories, bool isIncomplete = false) {
    return R"({ "FormatVersion": 0, "bIsIncompleteInstall": )" +
           std::string(isIncomplete ? "true" : "false") + R"(, "AppName": ")" + appName +
           R"(", "DisplayName": "Lantern Harbor", "InstallLocation": ")" + escapedPath(folder) +
           R"(", "LaunchExecutable": "Binaries/Win64/Lantern.exe", "AppCategories": [)" + categories + "] }";
}

TEST(EpicScanner, KeepsInstalledGamesAndSkipsAddOnsPlugInsStaleAndDamagedManifests) {
    StoreTree tree;
    const auto game = tree.folder("Epic Games/LanternHarbor");
    tree.temp.writeFile("Epic Games/LanternHarbor/Lantern Harbor.exe", "a larger executable with the title");
    const auto exe = tree.temp.writeFile("Epic Games/LanternHarbor/Binaries/Win64/Lantern.exe", "x");
    tree.registry.set(kMachine, "SOFTWARE\\WOW6432Node\\Epic Games\\EpicGamesLauncher", "AppDataPath",
                      winPath(tree.temp.path() / "EpicData") + "\\");
    const std::string good = epicManifest("Finch", game, R"("public", "games", "applications")");
    for (const auto& [name, text] :
         Rows{{"a-game", good},
              {"b-installing", epicManifest("Finch", game, R"("games")", true)},
              {"c-dlc", epicManifest("FinchDlc", game, R"("public", "addons")")},
              {"d-launchable", epicManifest("FinchExtra", game, R"("addons", "addons/launchable")")},
              {"e-plugin", epicManifest("Tool", game, R"("plugins", "plugins/engine")")},
              {"f-stale", epicManifest("Gone", tree.temp.path() / "Epic Games/Gone", R"("games")")},
              {"g-truncated", good.substr(0, 70)}}) {
        tree.temp.writeFile("EpicData/Manifests/" + name + ".item", text);
    }
    const auto report = tree.scan(scanEpicGames);
    ASSERT_EQ(rowTitles(report),
              (Rows{{"epic:Finch", "Lantern Harbor"}, {"epic:FinchExtra", "Lantern Harbor"}}));
    expectRow(report.games[0], "epic:Finch", "Lantern Harbor", game, exe,
              "com.epicgames.launcher://apps/Finch?action=launch&silent=true");
    expectSkips(report, {{"b-installing.item", "the install is not complete"},
                         {"c-dlc.item", "an add-on of another game"},
                         {"e-plugin.item", "an engine plug-in, not a game"},
                         {"f-stale.item", "the install folder no longer exists"},
                         {"g-truncated.item", "the manifest is damaged or empty"}});

    // Without the launcher's value the manifests are under %ProgramData%; a manifest without
    // a title or an executable gets its AppName and the chooser's pick.
    tree.registry = FakeRegistry();
    const auto quest = tree.temp.writeFile("Quest/Quest.exe", "x");
    tree.variables["ProgramData"] = tree.folder("ProgramData");
    tree.temp.writeFile("ProgramData/Epic/EpicGamesLauncher/Data/Manifests/q.item",
                        R"({"AppName": "Quest", "InstallLocation": ")" + escapedPath(quest.parent_path()) +
                            R"("})");
    const auto fallback = tree.scan(scanEpicGames);
    ASSERT_EQ(rowTitles(fallback), (Rows{{"epic:Quest", "Quest"}}));
    EXPECT_EQ(fallback.games[0].executable, quest);
}

TEST(GogScanner, KeepsGamesWithTheirNamedExecutableAndSkipsDlcAndStaleKeys) {
    StoreTree tree;
    const auto game = tree.folder("GOG Games/Lantern Harbor");
    tree.temp.writeFile("GOG Games/Lantern Harbor/Lantern Harbor.exe", "x");
    const auto exe = tree.temp.writeFile("GOG Games/Lantern Harbor/bin/start.exe", "x");
    const auto quest = tree.temp.writeFile("GOG Games/Quest/Quest.exe", "x");
    const std::string games = "SOFTWARE\\WOW6432Node\\GOG.com\\Games\\";
    tree.setValues(kMachine, games + "1400000001",
                   {{"gameName", "Lantern Harbor"}, {"path", winPath(game)}, {"exe", winPath(exe)}});
    tree.setValues(kMachine, games + "1400000002",
                   {{"gameName", "Soundtrack"}, {"path", winPath(game)}, {"dependsOn", "1400000001"}});
    tree.registry.set(kMachine, games + "1400000003", "path", winPath(tree.temp.path() / "GOG Games/Gone"));
    tree.setValues(kMachine, games + "1400000004",
                   {{"path", winPath(quest.parent_path()) + "\\"},
                    {"exe", winPath(quest.parent_path() / "Removed.exe")}});
    tree.registry.set(kMachine, "SOFTWARE\\GOG.com\\Games\\77", "path", winPath(game));

    const auto report = tree.scan(scanGogGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"gog:1400000001", "Lantern Harbor"}, {"gog:1400000004", "Quest"}}));
    expectRow(report.games[0], "gog:1400000001", "Lantern Harbor", game, exe,
              "goggalaxy://openGameView/1400000001");
    EXPECT_EQ(report.games[1].executable, quest);
    expectSkips(report, {{"1400000002", "a DLC or component of another game"},
                         {"1400000003", "the install folder no longer exists"}});

    // The 64-bit view counts only when the 32-bit one lists nothing.
    StoreTree only64;
    only64.registry.set(kMachine, "SOFTWARE\\GOG.com\\Games\\77", "path", winPath(game));
    EXPECT_EQ(rowTitles(only64.scan(scanGogGames)), (Rows{{"gog:77", "Lantern Harbor"}}));
}

TEST(UbisoftScanner, TitlesInstallsFromTheirUninstallEntryElseTheFolder) {
    StoreTree tree;
    const auto game = tree.folder("Ubisoft Games/LH");
    const auto exe = tree.temp.writeFile("Ubisoft Games/LH/LanternHarbor.exe", "x");
    tree.folder("Ubisoft Games/Quest Folder");
    tree.folder("Ubisoft Games/Sixty");
    for (const auto& [id, folder] :
         Rows{{"9001", "LH"}, {"9002", "Quest Folder"}, {"9003", "Sixty"}, {"9004", "Gone"}}) {
        tree.registry.set(kMachine, "SOFTWARE\\WOW6432Node\\Ubisoft\\Launcher\\Installs\\" + id, "InstallDir",
                          winPath(tree.temp.path() / "Ubisoft Games" / folder, '/') + "/");
    }
    tree.registry.set(kMachine, kUninstall32 + "Uplay Install 9001", "DisplayName", "Lantern Harbor");
    tree.registry.set(kMachine, kUninstall64 + "Uplay Install 9001", "DisplayName", "Wrong View");
    tree.registry.set(kMachine, kUninstall64 + "Uplay Install 9003", "DisplayName", "Sixty-Four");

    const auto report = tree.scan(scanUbisoftGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"ubisoft:9001", "Lantern Harbor"},
                                       {"ubisoft:9002", "Quest Folder"},
                                       {"ubisoft:9003", "Sixty-Four"}}));
    expectRow(report.games[0], "ubisoft:9001", "Lantern Harbor", game, exe, "uplay://launch/9001");
    expectSkips(report, {{"Installs\\9004", "the install folder no longer exists"}});
}

TEST(RockstarScanner, KeepsLauncherInstallsAndSkipsTheLauncherAndOtherStoresCopies) {
    StoreTree tree;
    const auto launcher = tree.folder("Rockstar Games/Launcher");
    const auto game = tree.folder("Rockstar Games/Lantern Harbor");
    const auto exe = tree.temp.writeFile("Rockstar Games/Lantern Harbor/LanternHarbor.exe", "x");
    tree.folder("Rockstar Games/Quest");
    const std::string titles = "SOFTWARE\\WOW6432Node\\Rockstar Games\\";
    for (const auto& [name, folder] : Rows{{"Launcher", "Launcher"},
                                           {"rockstar games social club", "Launcher"},
                                           {"Lantern Harbor", "Lantern Harbor"},
                                           {"Quest", "Quest"},
                                           {"Stale", "Gone"}}) {
        tree.registry.set(kMachine, titles + name, "InstallFolder",
                          winPath(tree.temp.path() / "Rockstar Games" / folder));
    }
    tree.registry.set(kMachine, titles + "GTAV", "InstallFolderSteam", winPath(game));
    const std::string entry = kUninstall64 + "{5EFC6C07-0000-0000-0000-000000000001}";
    tree.setValues(
        kMachine, entry,
        {{"DisplayName", "Lantern Harbor: Deluxe"},
         {"InstallLocation", "\"" + winPath(game) + "\""},
         {"UninstallString", "\"C:\\Rockstar Games\\Launcher\\uninstall.exe\" -uninstall=lanternh"}});

    const auto report = tree.scan(scanRockstarGames);
    ASSERT_EQ(rowTitles(report),
              (Rows{{"rockstar:lanternh", "Lantern Harbor: Deluxe"}, {"rockstar:Quest", "Quest"}}));
    expectRow(report.games[0], "rockstar:lanternh", "Lantern Harbor: Deluxe", game, exe,
              "\"" + utf8Text(launcher / "Launcher.exe") + "\" -launchTitleInFolder \"" + utf8Text(game) +
                  "\"");
    expectSkips(report, {{"GTAV", "no InstallFolder value, so not installed by the launcher"},
                         {"Launcher", "the launcher's own key, not a game"},
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
    const std::string user = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\AmazonGames/";
    const std::string lantern = "AmazonGames/Lantern Harbor";
    const std::string remover = "\"C:\\Amazon Games\\Library\\__InstallData__\\Amazon Game Remover.exe\"";
    tree.setValues(kUser, user + "Lantern Harbor",
                   {{"DisplayName", "Lantern Harbor"},
                    {"InstallLocation", winPath(game)},
                    {"UninstallString", remover + " -m Game -p amzn1.adg.product.0000-1111 -c"}});
    tree.setValues(kMachine, kUninstall64 + lantern,
                   {{"InstallLocation", winPath(game)},
                    {"UninstallString", "remover.exe -p amzn1.adg.product.0000-1111"}});
    tree.registry.set(kUser, user + "Quest", "InstallLocation", winPath(quest.parent_path()));
    tree.registry.set(kUser, user + "Stale", "InstallLocation", winPath(tree.temp.path() / "Gone"));
    tree.registry.set(kUser, user + "Unknown", "DisplayName", "Unknown");
    tree.registry.set(kMachine, kUninstall32 + "Other App", "InstallLocation",
                      winPath(tree.temp.path() / "Other App"));

    const auto report = tree.scan(scanAmazonGames);
    ASSERT_EQ(rowTitles(report),
              (Rows{{"amazon:amzn1.adg.product.0000-1111", "Lantern Harbor"}, {"amazon:Quest", "Quest"}}));
    expectRow(report.games[0], "amazon:amzn1.adg.product.0000-1111", "Lantern Harbor", game, exe,
              "amazon-games://play/amzn1.adg.product.0000-1111");
    EXPECT_EQ(report.games[1].executable, quest);
    expectSkips(report,
                {{"AmazonGames/Stale", "the install folder no longer exists"},
                 {"AmazonGames/Unknown", "no install location is recorded"},
                 {"Uninstall\\AmazonGames/Lantern Harbor", "the same game is listed by another entry"}});
}

} // namespace
} // namespace corvandell
