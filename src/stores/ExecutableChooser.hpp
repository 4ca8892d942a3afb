// Picking the game's executable in a folder when a store names only the folder.
//
// The choice is a score, not a first match: stores ship crash reporters, installers and
// redistributables beside the game, often larger and sometimes higher in the tree, so a
// name that matches the game or its folder beats everything, and size then depth break ties.
#pragma once

#include <array>
#include <filesystem>
#include <string_view>

namespace corvandell {

// Executables whose lower-cased name contains one of these are never the game.
inline constexpr std::array<std::string_view, 10> exeSkipWords{
    "unins", "setup", "redist", "vcredist", "dxsetup", "dotnet", "crash", "installer", "cleanup", "report"};

// The best .exe under the folder for the game; empty when the folder does not exist or
// holds no executable without a skip word. Unreadable subfolders are passed over; the
// walk ends at the first other error with what it found so far. Never throws.
std::filesystem::path chooseGameExecutable(const std::filesystem::path& installFolder,
                                           std::string_view gameName);

// The first .exe met whose name does not begin with "unins", for a build the client has
// just installed. Walk errors are thrown as std::filesystem::filesystem_error.
std::filesystem::path findFirstExecutable(const std::filesystem::path& folder);

} // namespace corvandell
