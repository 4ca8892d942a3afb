// Scanners of the stores found through their own data files, with stale and damaged ones beside.
#include "stores/StoreTree.hpp"

#include "stores/StoreLaunch.hpp"
#include "support/DeflateBomb.hpp"

namespace corvandell {
namespace {

using namespace test;

// "RGBX", the count, then each folder as NUL-terminated UTF-16LE.
std::string gamingRoot(std::uint32_t count, const std::vector<std::string>& folders) {
    std::string bytes = "RGBX";
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((count >> shift) & 0xFF);
    }
    for (const auto& folder : folders) {
        bytes += utf16File(folder).substr(2) + std::string(2, '\0');
    }
    return bytes;
}

// A Windows executable listed before the PC one, and an Identity hidden in a comment.
std::string microsoftGameConfig(const std::string& identity, const std::string& displayName) {
    return R"(<?xml version="1.0" encoding="utf-8"?><Game configVersion="1"><!-- <Identity Name="X"/> -->
  <Identity Name=")" +
           identity + R"(" Publisher="CN=1111" Version="1.2.3.0"/><ExecutableList>
    <Executable Name="Console\Lantern.exe" Id="Game" TargetDeviceFamily="Xbox"/>
    <Executable Name="Binaries\Lantern.exe" Id="Game" TargetDeviceFamily="PC"/></ExecutableList>
  <ShellVisuals DefaultDisplayName=")" +
           displayName + R"(" PublisherDisplayName="Example Studio"/></Game>)";
}

TEST(XboxScanner, ReadsLibrariesFromGamingRootsAndGamesFromTheirConfig) {
    StoreTree tree;
    for (const auto& [drive, bytes] : Rows{{"C", gamingRoot(2, {"XboxGames", "\\\\?\\More Games"})},
                                           {"D", gamingRoot(255, {"XboxGames"})},
                                           {"E", gamingRoot(1, {"XboxGames"}) + "!"},
                                           {"F", gamingRoot(1, {}) + std::string("X\0b\0", 4)},
                                           {"G", gamingRoot(1, {"Gone"})},
                                           {"H", "RGB"}}) {
        tree.driveRoots.push_back(tree.folder(drive));
        tree.temp.writeFile(drive + "/.GamingRoot", bytes);
    }
    const auto lantern = tree.folder("C/XboxGames/Lantern Harbor");
    tree.temp.writeFile("C/XboxGames/Lantern Harbor/Content/MicrosoftGame.config",
                        microsoftGameConfig("ExampleStudio.LanternHarbor", "Lantern &amp; Harbor"));
    tree.temp.writeFile("C/More Games/Quest/Content/MicrosoftGame.config",
                        utf16File(microsoftGameConfig("ExampleStudio.Quest", "ms-resource:AppName")));
    tree.folder("C/XboxGames/Shared");
    tree.folder("D/XboxGames/Never Read");

    EXPECT_EQ(xboxLibraryRoots(tree.driveRoots),
              (std::vector<std::filesystem::path>{tree.temp.path() / "C/XboxGames",
                                                  tree.temp.path() / "C/More Games"}));
    const auto report = tree.scan(scanXboxGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"xbox:ExampleStudio.LanternHarbor", "Lantern & Harbor"},
                                       {"xbox:ExampleStudio.Quest", "ExampleStudio.Quest"}}));
    // The named executable stands even though it cannot be seen, as under Windows' locks.
    expectRow(report.games[0], "xbox:ExampleStudio.LanternHarbor", "Lantern & Harbor", lantern,
              lantern / "Content" / "Binaries" / "Lantern.exe", "");
    const auto root = [&](const char* drive) { return utf8Text(tree.temp.path() / drive / ".GamingRoot"); };
    expectSkips(report, {{root("D"), "the file claims 255 library folders"},
                         {root("E"), "the file has an odd length"},
                         {root("F"), "the file ends inside a folder name"},
                         {root("G"), "the library folder \"Gone\" does not exist"},
                         {root("H"), "the file is too short"},
                         {"Shared", "no Content\\MicrosoftGame.config"}});
}

constexpr std::string_view kDipManifest = R"(<?xml version="1.0" encoding="UTF-16"?>
<DiPManifest version="4.0">
  <contentIDs><contentID>70000001</contentID><contentID>70000009</contentID></contentIDs>
  <gameTitles><gameTitle locale="de_DE">Laternenhafen&#8482;</gameTitle>
              <gameTitle locale="en_US">Lantern Harbor&#8482; &amp; Friends</gameTitle></gameTitles>
  <runtime><launcher><filePath>[HKEY_LOCAL_MACHINE\SOFTWARE\EA Games\Lantern Harbor\Install Dir]Lantern.exe</filePath>
                     <parameters></parameters></launcher></runtime>
</DiPManifest>)";

constexpr std::string_view kOriginManifest = R"(<game>
  <contentIDs><contentID>OFB-EAST:70000002</contentID></contentIDs>
  <metadata><localeInfo locale="fr_FR"><title>Classique</title></localeInfo>
            <localeInfo locale="en_US"><title><![CDATA[Lantern Harbor Classic]]></title></localeInfo></metadata>
  <runtime><launcher><filePath>[HKEY_LOCAL_MACHINE\SOFTWARE\WOW6432Node\Electronic Arts\Classic\Install Dir]Game\Classic.exe</filePath></launcher></runtime>
</game>)";

TEST(EaScanner, FindsInstallsThroughTheRegistryAndTheLibraryAndReadsBothManifestShapes) {
    StoreTree tree;
    const auto lantern = tree.folder("Games/Lantern Harbor");
    tree.temp.writeFile("Games/Lantern Harbor/__Installer/installerdata.xml", utf16File(kDipManifest));
    const auto lanternExe = tree.temp.writeFile("Games/Lantern Harbor/Lantern.exe", "x");
    const auto classic = tree.folder("EA Library/Classic");
    tree.temp.writeFile("EA Library/Classic/__Installer/installerdata.xml", kOriginManifest);
    const auto classicExe = tree.temp.writeFile("EA Library/Classic/Game/Classic.exe", "x");
    tree.temp.writeFile("EA Library/Untitled/__Installer/installerdata.xml", "<DiPManifest></DiPManifest>");
    tree.folder("EA Library/Screenshots");
    tree.variables["ProgramData"] = tree.folder("ProgramData");
    tree.temp.writeFile("ProgramData/EA Desktop/machine.ini",
                        "machine.machine_id=1234\r\nmachine.downloadinplacedir=" +
                            winPath(tree.temp.path() / "EA Library") + "\\\r\n");
    const std::string games32 = "SOFTWARE\\WOW6432Node\\EA Games\\";
    tree.registry.set(kMachine, games32 + "Lantern Harbor", "Install Dir", winPath(lantern) + "\\");
    tree.registry.set(kMachine, "SOFTWARE\\EA Sports\\Gone", "Install Dir",
                      winPath(tree.temp.path() / "Gone"));
    tree.registry.set(kMachine, "SOFTWARE\\Electronic Arts\\EA Desktop", "ClientPath", "C:\\EA.exe");
    tree.registry.set(kMachine, "SOFTWARE\\Electronic Arts\\Classic", "Install Dir", winPath(classic));

    const auto report = tree.scan(scanEaGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"ea:70000001", "Lantern Harbor\u2122 & Friends"},
                                       {"ea:OFB-EAST:70000002", "Lantern Harbor Classic"},
                                       {"ea:Untitled", "Untitled"}}));
    expectRow(report.games[0], "ea:70000001", "Lantern Harbor\u2122 & Friends", lantern, lanternExe,
              "origin2://game/launch?offerIds=70000001");
    expectRow(report.games[1], "ea:OFB-EAST:70000002", "Lantern Harbor Classic", classic, classicExe,
              "origin2://game/launch?offerIds=OFB-EAST:70000002");
    EXPECT_EQ(report.games[2].launchAddress, "");
    expectSkips(report, {{"SOFTWARE\\Electronic Arts\\EA Desktop", "no Install Dir value"},
                         {"SOFTWARE\\EA Sports\\Gone", "the install folder no longer exists"},
                         {"Screenshots", "no __Installer\\installerdata.xml"}});
}

// The EA app's own settings name its library today, and a default install needs no
// settings at all: the folders both clients install to are looked at as they are.
TEST(EaScanner, FindsInstallsInTheDefaultFoldersAndTheLibrariesTheClientsSettingsName) {
    StoreTree tree;
    tree.variables["ProgramFiles"] = tree.folder("Program Files");
    tree.variables["ProgramFiles(x86)"] = tree.folder("Program Files (x86)");
    tree.variables["LOCALAPPDATA"] = tree.folder("Local");
    tree.variables["APPDATA"] = tree.folder("Roaming");
    const auto lantern = tree.folder("Program Files/EA Games/Lantern Harbor");
    tree.temp.writeFile("Program Files/EA Games/Lantern Harbor/__Installer/installerdata.xml",
                        utf16File(kDipManifest));
    const auto classic = tree.folder("Program Files (x86)/Origin Games/Classic");
    tree.temp.writeFile("Program Files (x86)/Origin Games/Classic/__Installer/installerdata.xml",
                        kOriginManifest);
    auto gameIn = [&](const std::string& library, const std::string& id) {
        tree.temp.writeFile(library + "/" + id + "/__Installer/installerdata.xml",
                            "<game><contentIDs><contentID>" + id + "</contentID></contentIDs></game>");
    };
    gameIn("User Library", "70000010");
    gameIn("Origin Library", "70000012");
    tree.temp.writeFile(
        "Local/Electronic Arts/EA Desktop/user_1001.ini",
        "user.locale=en_US\nuser.downloadinplacedir=" + winPath(tree.temp.path() / "User Library") + "\\\n");
    tree.temp.writeFile("Local/Electronic Arts/EA Desktop/cef.ini",
                        "user.downloadinplacedir=" + winPath(tree.temp.path() / "Not A Library") + "\n");
    gameIn("Not A Library", "70000013");
    tree.temp.writeFile("Roaming/Origin/local.xml",
                        "<Settings><Setting key=\"Locale\" value=\"en_US\" type=\"10\"/>"
                        "<Setting key=\"DownloadInPlaceDir\" value=\"" +
                            winPath(tree.temp.path() / "Origin Library") + "\\\" type=\"10\"/></Settings>");

    const auto report = tree.scan(scanEaGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"ea:70000010", "70000010"},
                                       {"ea:70000012", "70000012"},
                                       {"ea:70000001", "Lantern Harbor\u2122 & Friends"},
                                       {"ea:OFB-EAST:70000002", "Lantern Harbor Classic"}}));
    EXPECT_EQ(std::tie(report.games[2].installFolder, report.games[3].installFolder),
              std::tie(lantern, classic));
    EXPECT_TRUE(report.skipped.empty());
}

TEST(ItchScanner, DecodesJsonEscapesInTitlesAndSkipsReceiptsThatInflatePastTheCap) {
    StoreTree tree;
    tree.variables["APPDATA"] = tree.folder("Roaming");
    const auto apps = tree.temp.path() / "Roaming" / "itch" / "apps";
    tree.temp.writeFile(apps / "rock" / ".itch" / "receipt.json",
                        R"({"game":{"id":11,"title":"Rock \u0026 Roll \ud83c\udfb8 \"Live\""}})");
    // About 150 MB of content in under 1 MB, behind a trailer that claims 100 bytes.
    tree.temp.writeFile(apps / "bomb" / ".itch" / "receipt.json.gz",
                        gzipMember(deflateOfZeros(600'000), 100));
    tree.temp.writeFile(apps / "huge" / ".itch" / "receipt.json", std::string(kMaxStoreFileBytes + 1, ' '));
    tree.temp.writeFile(apps / "latin1" / ".itch" / "receipt.json",
                        "{\"game\":{\"id\":12,\"title\":\"Caf\xE9\"}}");

    const auto report = tree.scan(scanItchGames);
    ASSERT_EQ(rowTitles(report), (Rows{{"itch:11", "Rock & Roll \xF0\x9F\x8E\xB8 \"Live\""}}));
    expectSkips(report, {{"bomb", "receipt.json.gz inflates to more than 16 MB"},
                         {"huge", "receipt.json is larger than 16 MB"},
                         {"latin1", "receipt.json is not UTF-8 or UTF-16 text"}});
}

// A length-delimited field: tag, varint length, bytes.
std::string field(int number, const std::string& bytes) {
    std::string out(1, static_cast<char>(number << 3 | 2));
    for (size_t length = bytes.size();; length >>= 7) {
        out += static_cast<char>((length & 0x7F) | (length > 0x7F ? 0x80 : 0));
        if (length <= 0x7F) {
            break;
        }
    }
    return out + bytes;
}

std::string productInstall(const std::string& uid, const std::string& code, const std::string& path) {
    const std::string settings = field(1, path) + field(2, "eu") + field(6, "enUS");
    // Field 4 as a varint and field 5 as fixed32 stand for the state the scanner skips.
    return field(1, field(1, uid) + field(2, code) + std::string("\x20\x96\x01", 3) + field(3, settings) +
                        std::string("\x2D\x01\x02\x03\x04", 5));
}

TEST(BattleNetScanner, ReadsInstallsFromProductDbAndKeepsThoseBeforeDamage) {
    StoreTree tree;
    const auto quest = tree.folder("Games/Example Quest");
    const auto questExe = tree.temp.writeFile("Games/Example Quest/ExampleQuest.exe", "x");
    const auto mystery = tree.folder("Games/Mystery Game");
    // The beta's entry comes first, so only a whole-word uid match titles the game right.
    for (const auto& [uid, title] :
         Rows{{"quest_beta", "Beta of Example Quest"}, {"quest", "Example Quest"}}) {
        tree.setValues(
            kMachine, kUninstall32 + title,
            {{"DisplayName", title},
             {"UninstallString", "\"C:\\ProgramData\\Battle.net\\Agent\\Blizzard Uninstaller.exe\" "
                                 "--lang=enUS --uid=" +
                                     uid + " --displayname=\"" + title + "\""}});
    }
    const std::string database = productInstall("agent", "agent", winPath(tree.temp.path())) +
                                 productInstall("quest", "pro", winPath(quest)) +
                                 productInstall("gone", "wow", "D:/Games/Gone") +
                                 productInstall("mystery", "newgame", utf8Text(mystery) + "/");
    tree.variables["ProgramData"] = tree.folder("ProgramData");
    const auto file = tree.temp.path() / "ProgramData" / "Battle.net" / "Agent" / "product.db";

    const struct {
        std::string bytes;
        Rows rows, skips;
    } cases[] = {
        {database,
         {{"battlenet:quest", "Example Quest"}, {"battlenet:mystery", "Mystery Game"}},
         {{"agent", "part of the Battle.net client, not a game"},
          {"gone", "the install folder no longer exists"}}},
        {database.substr(0, database.size() - 9),
         {{"battlenet:quest", "Example Quest"}},
         {{"agent", "part of the Battle.net client, not a game"},
          {"gone", "the install folder no longer exists"},
          {utf8Text(file), "the file is damaged; installs after the damage were not read"}}},
    };
    for (const auto& [bytes, rows, skips] : cases) {
        tree.temp.writeFile(file, bytes);
        const auto report = tree.scan(scanBattleNetGames);
        ASSERT_EQ(rowTitles(report), rows) << bytes.size();
        expectRow(report.games[0], "battlenet:quest", "Example Quest", quest, questExe, "battlenet://Pro");
        // "newgame" has no launch code the client knows.
        EXPECT_EQ(report.games.back().launchAddress, rows.size() > 1 ? "" : "battlenet://Pro");
        expectSkips(report, skips);
    }
}

TEST(RiotScanner, ReadsProductSettingsAndLaunchesThroughTheRiotClient) {
    StoreTree tree;
    tree.variables["ProgramData"] = tree.folder("ProgramData");
    const auto league = tree.folder("Riot Games/League of Legends");
    const auto leagueExe =
        tree.temp.writeFile("Riot Games/League of Legends/LeagueClient.exe", "x").make_preferred();
    const auto lor = tree.folder("Riot Games/LoR");
    const auto arena = tree.folder("Riot Games/Lantern Arena");
    const auto client = tree.temp.writeFile("Riot Games/Riot Client/RiotClientServices.exe", "x");
    auto settings = [&](const std::string& name, const std::string& text) {
        tree.temp.writeFile("ProgramData/Riot Games/Metadata/" + name, text);
    };
    settings("league_of_legends.live/league_of_legends.live.product_settings.yaml",
             "\xEF\xBB\xBFproduct_install_full_path: \"" + utf8Text(league) +
                 "/\"\r\nshortcut_name: x.lnk\r\n");
    settings("bacon.live/bacon.live.product_settings.yaml",
             "product_install_full_path: '" + utf8Text(lor) + "'");
    settings("lor.live/lor.live.product_settings.yaml", "product_install_full_path: " + utf8Text(lor));
    settings("lantern.pbe/lantern.pbe.product_settings.yaml",
             "product_install_root: \"D:/\"\nproduct_install_full_path:  " + winPath(arena) +
                 "  \nshortcut_name: \"Lantern Arena.lnk\"\n");
    settings("valorant.live/valorant.live.product_settings.yaml", "product_install_full_path: \"D:/Gone\"\n");
    settings("Riot Client/Riot Client.settings.yaml", "user_data_paths: []\n");
    // Riot writes paths with forward slashes, which need no escaping in its JSON; the live
    // client named first is gone, so the default one starts the games.
    const auto clientJson = R"({ "associated_client": {}, "rc_live": "D:/Gone/RiotClientServices.exe", )"
                            R"("rc_default": ")" +
                            winPath(client, '/') + "\" }";

    for (const bool isClientKnown : {true, false}) {
        tree.temp.writeFile("ProgramData/Riot Games/RiotClientInstalls.json",
                            isClientKnown ? clientJson : "{}");
        const auto report = tree.scan(scanRiotGames);
        ASSERT_EQ(rowTitles(report), (Rows{{"riot:bacon", "Legends of Runeterra"},
                                           {"riot:lantern.pbe", "Lantern Arena"},
                                           {"riot:league_of_legends", "League of Legends"},
                                           {"riot:lor", "Legends of Runeterra"}}));
        const std::string clientText = "\"" + utf8Text(std::filesystem::path(client).make_preferred()) + "\"";
        const std::string launch = clientText + " --launch-product=league_of_legends --launch-patchline=live";
        expectRow(report.games[2], "riot:league_of_legends", "League of Legends", league, leagueExe,
                  isClientKnown ? launch : "");
        EXPECT_EQ(report.games[1].installFolder, arena);
        EXPECT_EQ(report.games[1].launchAddress,
                  isClientKnown ? clientText + " --launch-product=lantern --launch-patchline=pbe" : "");
        // The game cannot start without the Riot client: the executable found in its folder
        // is for icons and tracking only, unless there is no client to start it through.
        const GameLaunch leagueLaunch = launchOf(report.games[2]);
        EXPECT_EQ(std::tie(leagueLaunch.kind, leagueLaunch.storeCommand, leagueLaunch.executable),
                  isClientKnown ? std::tuple(LaunchKind::StoreCommand, launch, leagueExe)
                                : std::tuple(LaunchKind::Executable, std::string(), leagueExe));
        expectSkips(report, {{"Riot Client.settings.yaml", "not a product settings file"},
                             {"valorant.live.product_settings.yaml", "the install folder no longer exists"}});
    }
}

} // namespace
} // namespace corvandell
