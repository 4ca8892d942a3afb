// Where the data and games folders go, resolved against fixed environments.
#include "app/DataPaths.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

TEST(DataPaths, FoldersFollowTheFirstVariableThatIsSetAndNotEmpty) {
    const fs::path here = fs::current_path();
    const fs::path homeData = fs::path("/h") / ".config" / "corvandell";
    struct Case {
        std::map<std::string, fs::path, std::less<>> variables;
        fs::path data;
        fs::path games;
    };
    const std::vector<Case> cases = {
        {{{"APPDATA", "/r"}, {"LOCALAPPDATA", "/l"}, {"HOME", "/h"}},
         fs::path("/r") / "Corvandell",
         fs::path("/l") / "Corvandell" / "Games"},
        {{{"APPDATA", ""}, {"LOCALAPPDATA", ""}, {"HOME", "/h"}},
         homeData,
         fs::path("/h") / "CorvandellGames"},
        {{{"HOME", ""}}, here / "corvandell-data", here / "Games"},
    };
    for (const auto& c : cases) {
        const DataPaths paths = resolveDataPaths(MapEnvironment(c.variables));
        EXPECT_EQ(paths.dataFolder, c.data);
        EXPECT_EQ(paths.defaultLibraryFolder, c.games);
    }
}

} // namespace
} // namespace corvandell
