// Which executable the chooser picks from a real folder of files of given sizes.
#include "stores/ExecutableChooser.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace corvandell {
namespace {

TEST(ExecutableChooser, PicksByScoreThenSizeThenDepth) {
    const struct {
        const char* gameName;
        const char* files;    // "path size ..." under the folder "Lantern Harbor"
        const char* expected; // "" for none
    } cases[] = {
        // Skip words rule out crash handlers and installers, however large.
        {"Game", "Game.exe 10 UnityCrashHandler64.exe 900 GameSetup.exe 900", "Game.exe"},
        // Equal scores: the larger wins however deep, then the shallower.
        {"Unrelated", "small.exe 10 bin/x64/big.exe 20", "bin/x64/big.exe"},
        // The folder's name scores as the game's name; containing beats size; exact beats containing.
        {"Some Other Title", "Binaries/LanternHarbor.exe 10 tool.exe 500", "Binaries/LanternHarbor.exe"},
        {"Lantern", "Lantern_x64.exe 900 LANTERN.EXE 10", "LANTERN.EXE"},
        {"Game", "Game.dll 10 Game.exe.bak 10", ""},
        // A file named only ".exe" has no extension; "exe" without the dot is not one either.
        {"Game", ".exe 900 bin/.exe 900 Gameexe 900 Game.eXe 10", "Game.eXe"},
    };
    for (const auto& c : cases) {
        test::TempFolder temp;
        const auto folder = temp.path() / "Lantern Harbor";
        std::filesystem::create_directories(folder);
        std::istringstream files(c.files);
        std::string path;
        for (size_t size = 0; files >> path >> size;) {
            temp.writeFile(folder / path, std::string(size, 'x'));
        }
        const std::string expected = c.expected;
        EXPECT_EQ(chooseGameExecutable(folder, c.gameName), expected.empty() ? "" : folder / expected)
            << c.files;
    }
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
