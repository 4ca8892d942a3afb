// Folder resolution against fixed environments, and the UTF-8 path helpers that every
// file writer relies on to keep non-ASCII paths intact on Windows.
#include "app/DataPaths.hpp"

#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

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

TEST(DataPaths, EnsureDataFolderCreatesParentsAndReportsABlockedPath) {
    const test::TempFolder temp;
    const fs::path nested = temp.path() / "a" / "b" / "Corvandell";
    EXPECT_EQ(ensureDataFolder(nested), nested);
    EXPECT_TRUE(fs::is_directory(nested));
    EXPECT_EQ(ensureDataFolder(nested), nested);

    const fs::path file = temp.writeFile("plain-file", "x");
    EXPECT_THROW(ensureDataFolder(file / "Corvandell"), fs::filesystem_error);
}

} // namespace
} // namespace corvandell
