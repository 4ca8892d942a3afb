// The per-user data folder and the default games folder.
#pragma once

#include "base/Environment.hpp"
#include "base/Utf8Path.hpp"

#include <filesystem>

namespace corvandell {

// %APPDATA%\Corvandell, else $HOME/.config/corvandell, else ./corvandell-data.
std::filesystem::path dataFolder(const Environment& environment);

// %LOCALAPPDATA%\Corvandell\Games, else $HOME/CorvandellGames, else ./Games.
std::filesystem::path defaultLibraryFolder(const Environment& environment);

// Creates the folder and its parents; returns it.
std::filesystem::path ensureDataFolder(const std::filesystem::path& folder);

// The data folder's "skins" subfolder.
std::filesystem::path skinsFolder(const std::filesystem::path& dataFolder);

// The two folders start-up resolves once and hands to every window that saves files.
struct DataPaths {
    std::filesystem::path dataFolder;
    std::filesystem::path defaultLibraryFolder;
};

DataPaths resolveDataPaths(const Environment& environment);

} // namespace corvandell
