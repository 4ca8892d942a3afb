// The Xbox scanner over drive roots with .GamingRoot files as the Xbox app writes them and
// damaged ones beside them, and libraries holding games, games titled by an unresolvable
// resource reference, and folders that are not games.
#include "stores/FileStoreTree.hpp"

namespace corvandell {
namespace {

using test::FileStoreTree;

// "RGBX", the count, then each folder as NUL-terminated UTF-16LE.
std::string gamingRoot(std::uint32_t count, const std::vector<std::string>& folders) {
    std::string bytes = "RGBX";
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((count >> shift) & 0xFF);
    }
    for (const auto& folder : folders) {
        bytes += test::utf16File(folder).substr(2) + std::string(2, '\0');
    }
    return bytes;
}

std::string microsoftGameConfig(const std::string& identity, const std::string& displayName) {
    return R"(<?xml version="1.0" encoding="utf-8"?>
<Game configVersion="1">
  <!-- <Identity Name="Commented.Out"/> -->
  <Identity Name=")" +
           identity + R"(" Publisher="CN=11111111-2222-3333-4444-555555555555" Version="1.2.3.0"/>
  <ExecutableList>
    <Executable Name="Console\Lantern.exe" Id="Game" TargetDeviceFamily="Xbox"/>
    <Executable Name="Binaries\Lantern.exe" Id="Game" TargetDeviceFamily="PC"/>
  </ExecutableList>
  <ShellVisuals DefaultDisplayName=")" +
           displayName + R"(" PublisherDisplayName="Example Studio"/>
</Game>)";
}

TEST(XboxScanner, ReadsLibrariesFromGamingRootsAndGamesFromTheirConfig) {
    FileStoreTree tree;
    for (const char* drive : {"C", "D", "E", "F", "G", "H"}) {
        tree.driveRoots.push_back(tree.folder(drive));
    }
    tree.temp.writeFile("C/.GamingRoot", gamingRoot(2, {"XboxGames", "\\\\?\\More Games"}));
    tree.temp.writeFile("D/.GamingRoot", gamingRoot(255, {"XboxGames"}));
    tree.temp.writeFile("E/.GamingRoot", gamingRoot(1, {"XboxGames"}) + "!");
    tree.temp.writeFile("F/.GamingRoot", gamingRoot(1, {}) + std::string("X\0b\0", 4));
    tree.temp.writeFile("G/.GamingRoot", gamingRoot(1, {"Gone"}));
    tree.temp.writeFile("H/.GamingRoot", "RGB");
    const auto lantern = tree.folder("C/XboxGames/Lantern Harbor");
    tree.temp.writeFile("C/XboxGames/Lantern Harbor/Content/MicrosoftGame.config",
                        microsoftGameConfig("ExampleStudio.LanternHarbor", "Lantern &amp; Harbor"));
    tree.temp.writeFile("C/More Games/Quest/Content/MicrosoftGame.config",
                        test::utf16File(microsoftGameConfig("ExampleStudio.Quest", "ms-resource:AppName")));
    tree.folder("C/XboxGames/Shared");
    tree.folder("D/XboxGames/Never Read");

    EXPECT_EQ(xboxLibraryRoots(tree.driveRoots),
              (std::vector<std::filesystem::path>{tree.temp.path() / "C/XboxGames",
                                                  tree.temp.path() / "C/More Games"}));
    const auto report = tree.scan(scanXboxGames);
    ASSERT_EQ(test::rowTitles(report), (std::vector<std::pair<std::string, std::string>>{
                                           {"xbox:ExampleStudio.LanternHarbor", "Lantern & Harbor"},
                                           {"xbox:ExampleStudio.Quest", "ExampleStudio.Quest"}}));
    // The named executable stands even though it cannot be seen, as under Windows' locks.
    test::expectRow(report.games[0], {"xbox:ExampleStudio.LanternHarbor", "Lantern & Harbor", "Xbox",
                                      "ExampleStudio.LanternHarbor", lantern,
                                      lantern / "Content" / "Binaries" / "Lantern.exe", ""});
    const auto root = [&](const char* drive) { return utf8Text(tree.temp.path() / drive / ".GamingRoot"); };
    test::expectSkips(report, {{root("D"), "the file claims 255 library folders"},
                               {root("E"), "the file has an odd length"},
                               {root("F"), "the file ends inside a folder name"},
                               {root("G"), "the library folder \"Gone\" does not exist"},
                               {root("H"), "the file is too short"},
                               {"Shared", "no Content\\MicrosoftGame.config"}});
}

} // namespace
} // namespace corvandell
