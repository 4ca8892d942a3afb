// The EA app scanner over install folders named in the registry and found in the library
// folder of machine.ini, with manifests in the EA app's and Origin's shapes, in UTF-8 and
// UTF-16, and folders that are stale, duplicated or not games.
#include "stores/FileStoreTree.hpp"

namespace corvandell {
namespace {

using test::FileStoreTree;
constexpr auto kMachine = RegistryHive::LocalMachine;

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
    FileStoreTree tree;
    const auto lantern = tree.folder("Games/Lantern Harbor");
    tree.temp.writeFile("Games/Lantern Harbor/__Installer/installerdata.xml", test::utf16File(kDipManifest));
    const auto lanternExe = tree.temp.writeFile("Games/Lantern Harbor/Lantern.exe", "x");
    const auto classic = tree.folder("EA Library/Classic");
    tree.temp.writeFile("EA Library/Classic/__Installer/installerdata.xml", kOriginManifest);
    const auto classicExe = tree.temp.writeFile("EA Library/Classic/Game/Classic.exe", "x");
    tree.temp.writeFile("EA Library/Untitled/__Installer/installerdata.xml", "<DiPManifest></DiPManifest>");
    tree.folder("EA Library/Screenshots");
    tree.variables["ProgramData"] = tree.folder("ProgramData");
    tree.temp.writeFile("ProgramData/EA Desktop/machine.ini",
                        "machine.machine_id=1234\r\nmachine.downloadinplacedir=" +
                            test::windowsPath(tree.temp.path() / "EA Library") + "\\\r\n");
    const std::string games32 = "SOFTWARE\\WOW6432Node\\EA Games\\";
    tree.registry.set(kMachine, games32 + "Lantern Harbor", "Install Dir", test::windowsPath(lantern) + "\\");
    tree.registry.set(kMachine, "SOFTWARE\\EA Sports\\Gone", "Install Dir",
                      test::windowsPath(tree.temp.path() / "Gone"));
    tree.registry.set(kMachine, "SOFTWARE\\Electronic Arts\\EA Desktop", "ClientPath",
                      "C:\\EA\\EADesktop.exe");
    tree.registry.set(kMachine, "SOFTWARE\\Electronic Arts\\Classic", "Install Dir",
                      test::windowsPath(classic));

    const auto report = tree.scan(scanEaGames);
    ASSERT_EQ(test::rowTitles(report), (std::vector<std::pair<std::string, std::string>>{
                                           {"ea:70000001", "Lantern Harbor\u2122 & Friends"},
                                           {"ea:OFB-EAST:70000002", "Lantern Harbor Classic"},
                                           {"ea:Untitled", "Untitled"}}));
    test::expectRow(report.games[0], {"ea:70000001", "Lantern Harbor\u2122 & Friends", "EA App", "70000001",
                                      lantern, lanternExe, "origin2://game/launch?offerIds=70000001"});
    EXPECT_EQ(report.games[1].executable, classicExe);
    EXPECT_EQ(report.games[1].launchAddress, "origin2://game/launch?offerIds=OFB-EAST:70000002");
    EXPECT_EQ(report.games[2].launchAddress, "");
    test::expectSkips(report, {{"SOFTWARE\\Electronic Arts\\EA Desktop", "no Install Dir value"},
                               {"SOFTWARE\\EA Sports\\Gone", "the install folder no longer exists"},
                               {"Screenshots", "no __Installer\\installerdata.xml"}});
}

} // namespace
} // namespace corvandell
