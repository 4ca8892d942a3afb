// The per-user data folder and the default games folder.
#pragma once

#include "app/Environment.hpp"

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

// Converts between paths and the UTF-8 text our files carry.
std::string pathToUtf8(const std::filesystem::path& path);
std::filesystem::path pathFromUtf8(std::string_view text);

} // namespace corvandell
