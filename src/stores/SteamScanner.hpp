// Games installed by Steam: the client's folder from the registry, its library folders
// from libraryfolders.vdf, and one row per fully installed app manifest that is a game.
#pragma once

#include "stores/DetectedGame.hpp"
#include "stores/Registry.hpp"
#include "stores/StoreHost.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

struct SteamAppManifest {
    std::string appid;
    std::string name;
    std::string installdir;
    std::string buildid;
    std::uint32_t StateFlags = 0;
    std::uint64_t LastPlayed = 0;
};

// The manifest's fields from the text of an appmanifest_*.acf; missing fields stay default.
SteamAppManifest readSteamManifest(std::string_view text);

// The Steam client's folder; empty when Steam is not installed.
std::filesystem::path findSteamRoot(const Registry& registry);

// The root first, then each further library listed by Steam, each once and only when its
// steamapps folder exists.
std::vector<std::filesystem::path> findSteamLibraries(const std::filesystem::path& steamRoot);

// Steam's redistributables, runtimes and Proton builds, which are apps but not games.
bool isExcludedSteamApp(const SteamAppManifest& manifest);

void scanSteamLibrary(const StoreHost& host, ScanReport& report);
std::vector<DetectedGame> scanSteamLibrary(const StoreHost& host);

} // namespace corvandell
