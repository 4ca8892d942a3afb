// Folder resolution against fixed environments, and the UTF-8 path helpers that every
// file writer relies on to keep non-ASCII paths intact on Windows.
#include "app/DataPaths.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

TEST(DataPaths, FoldersFollowTheFirstVariableThatIsSetAndNotEmpty) {
    const fs::path here = fs::current_path();
    struct Case {
        std::map<std::string, fs::path, std::less<>> variables;
        fs::path data;
        fs::path games;
    };
    const std::vector<Case> cases = {
        {{{"APPDATA", "/r"}, {"LOCALAPPDATA", "/l"}, {"HOME", "/h"}},
         fs::path("/r") / "Corvandell",
         fs::path("/l") / "Corvandell" / "Games"},
        {{{"HOME", "/h"}}, fs::path("/h") / ".config" / "corvandell", fs::path("/h") / "CorvandellGames"},
        {{{"APPDATA", ""}, {"LOCALAPPDATA", ""}, {"HOME", "/h"}},
         fs::path("/h") / ".config" / "corvandell",
         fs::path("/h") / "CorvandellGames"},
        {{}, here / "corvandell-data", here / "Games"},
        {{{"HOME", ""}}, here / "corvandell-data", here / "Games"},
    };
    for (const auto& c : cases) {
        const DataPaths paths = resolveDataPaths(MapEnvironment(c.variables));
        EXPECT_EQ(paths.dataFolder, c.data);
        EXPECT_EQ(paths.defaultLibraryFolder, c.games);
    }
}

TEST(DataPaths, Utf8HelpersKeepNonAsciiNamesIntact) {
    const std::string utf8 = "Spiele/M\xC3\xBC"
                             "ller/\xE6\x97\xA5\xE6\x9C\xAC";
    const fs::path path = pathFromUtf8(utf8);
    EXPECT_EQ(path, fs::path(u8"Spiele/M\u00fcller/\u65e5\u672c"));
    EXPECT_EQ(pathToUtf8(path), utf8);
    EXPECT_EQ(skinsFolder(path), path / "skins");
}

TEST(DataPaths, EnsureDataFolderCreatesParentsAndReportsABlockedPath) {
    const test::TempFolder temp;
    const fs::path nested = temp.path() / "a" / "b" / "Corvandell";
    EXPECT_EQ(ensureDataFolder(nested), nested);
    EXPECT_TRUE(fs::is_directory(nested));
    EXPECT_EQ(ensureDataFolder(nested), nested);

    const fs::path file = temp.writeFile("plain-file", "x");
    EXPECT_THROW(ensureDataFolder(file / "Corvandell"), fs::filesystem_error);
}

#ifndef _WIN32
TEST(DataPaths, StdEnvironmentTreatsAnEmptyVariableAsUnset) {
    ::setenv("CORVANDELL_TEST_FOLDER", "/tmp/x", 1);
    EXPECT_EQ(StdEnvironment().folderVariable("CORVANDELL_TEST_FOLDER"), fs::path("/tmp/x"));
    ::setenv("CORVANDELL_TEST_FOLDER", "", 1);
    EXPECT_EQ(StdEnvironment().folderVariable("CORVANDELL_TEST_FOLDER"), std::nullopt);
    ::unsetenv("CORVANDELL_TEST_FOLDER");
    EXPECT_EQ(StdEnvironment().folderVariable("CORVANDELL_TEST_FOLDER"), std::nullopt);
}
#endif

} // namespace
} // namespace corvandell
