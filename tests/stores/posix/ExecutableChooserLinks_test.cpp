// Links need no privilege on POSIX; on Windows creating them does, so this case runs here.
#include "stores/ExecutableChooser.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(ExecutableChooser, LinkLoopsDoNotTrapTheWalk) {
    test::TempFolder temp;
    const auto game = temp.writeFile("Game/Game.exe", "x");
    std::filesystem::create_directory_symlink(temp.path() / "Game", temp.path() / "Game" / "loop");
    std::filesystem::create_directory_symlink(temp.path() / "Game" / "loop", temp.path() / "Game" / "loop2");
    EXPECT_EQ(chooseGameExecutable(temp.path() / "Game", "Game"), game);
}

} // namespace
} // namespace corvandell
