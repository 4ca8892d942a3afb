// Resolves the data folder and the default games folder from the environment.
//
// The rules are tried in a fixed order (Windows variable, then HOME, then the working
// directory) so the same binary finds the same folders under Windows, Wine and Linux.
#include "app/DataPaths.hpp"

#include <string>

namespace corvandell {

std::filesystem::path dataFolder(const Environment& environment) {
    if (const auto appData = environment.folderVariable("APPDATA")) {
        return *appData / "Corvandell";
    }
    if (const auto home = environment.folderVariable("HOME")) {
        return *home / ".config" / "corvandell";
    }
    return std::filesystem::current_path() / "corvandell-data";
}

std::filesystem::path defaultLibraryFolder(const Environment& environment) {
    if (const auto localAppData = environment.folderVariable("LOCALAPPDATA")) {
        return *localAppData / "Corvandell" / "Games";
    }
    if (const auto home = environment.folderVariable("HOME")) {
        return *home / "CorvandellGames";
    }
    return std::filesystem::current_path() / "Games";
}

std::filesystem::path ensureDataFolder(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    return folder;
}

std::filesystem::path skinsFolder(const std::filesystem::path& dataFolder) {
    return dataFolder / "skins";
}

DataPaths resolveDataPaths(const Environment& environment) {
    return DataPaths{dataFolder(environment), defaultLibraryFolder(environment)};
}

} // namespace corvandell
