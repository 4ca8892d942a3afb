#include "stores/ExecutableChooser.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

struct ChooserCase {
    const char* name;
    const char* gameName;
    std::vector<std::pair<std::string, size_t>> files; // path under the folder "Lantern Harbor", size
    std::string expected;                              // relative path, "" for none
};

TEST(ExecutableChooser, PicksByScoreThenSizeThenDepth) {
    const ChooserCase cases[] = {
        {"skip words rule out crash handlers and installers",
         "Game",
         {{"Game.exe", 10}, {"UnityCrashHandler64.exe", 900}, {"GameSetup.exe", 900}},
         "Game.exe"},
        {"equal scores: the larger wins, however deep",
         "Unrelated",
         {{"small.exe", 10}, {"bin/x64/big.exe", 20}},
         "bin/x64/big.exe"},
        {"equal score and size: the shallower wins",
         "Unrelated",
         {{"bin/x64/deep.exe", 10}, {"top.exe", 10}},
         "top.exe"},
        {"only skip-word executables give nothing",
         "Game",
         {{"unins000.exe", 10}, {"vcredist_x64.exe", 10}, {"CrashReporter.exe", 10}},
         ""},
        {"the folder's name scores as the game's name",
         "Some Other Title",
         {{"Binaries/LanternHarbor.exe", 10}, {"tool.exe", 500}},
         "Binaries/LanternHarbor.exe"},
        {"a name containing the game beats a larger stranger",
         "Lantern",
         {{"Lantern_x64.exe", 10}, {"tool.exe", 500}},
         "Lantern_x64.exe"},
        {"an exact name beats a containing one",
         "Lantern",
         {{"Lantern_x64.exe", 900}, {"LANTERN.EXE", 10}},
         "LANTERN.EXE"},
        {"other extensions are ignored", "Game", {{"Game.dll", 10}, {"Game.exe.bak", 10}}, ""},
    };
    for (const auto& c : cases) {
        test::TempFolder temp;
        const auto folder = temp.path() / "Lantern Harbor";
        std::filesystem::create_directories(folder);
        for (const auto& [path, size] : c.files) {
            temp.writeFile(std::filesystem::path("Lantern Harbor") / path, std::string(size, 'x'));
        }
        const auto chosen = chooseGameExecutable(folder, c.gameName);
        EXPECT_EQ(chosen, c.expected.empty() ? std::filesystem::path() : folder / c.expected) << c.name;
    }
}

TEST(ExecutableChooser, MissingFolderGivesNothing) {
    test::TempFolder temp;
    EXPECT_TRUE(chooseGameExecutable(temp.path() / "gone", "Game").empty());
}

TEST(ExecutableChooser, FirstExecutableSkipsUninstallers) {
    test::TempFolder temp;
    temp.writeFile("unins000.exe", "x");
    const auto game = temp.writeFile("bin/game.exe", "x");
    EXPECT_EQ(findFirstExecutable(temp.path()), game);
    EXPECT_THROW(findFirstExecutable(temp.path() / "gone"), std::filesystem::filesystem_error);
}

} // namespace
} // namespace corvandell
