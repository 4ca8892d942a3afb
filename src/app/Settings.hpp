// The settings record and settings.json, whose exact text layout is the file format.
#pragma once

#include "app/DataPaths.hpp"

#include <array>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#ifndef CORVANDELL_PRODUCTION_API_URL
#define CORVANDELL_PRODUCTION_API_URL "https://api.corvandell.example"
#endif

namespace corvandell {

// Set at build time with -DCORVANDELL_PRODUCTION_API_URL=https://... (see README).
inline constexpr std::string_view kProductionApiBaseUrl = CORVANDELL_PRODUCTION_API_URL;

struct ServiceEnvironment {
    std::string_view name;
    std::string_view baseUrl;
};

inline constexpr std::array<ServiceEnvironment, 1> kServiceEnvironments{
    {{"Production", kProductionApiBaseUrl}}};

struct Settings {
    std::string apiBaseUrl{kServiceEnvironments[0].baseUrl};
    std::string bearerToken;
    std::string refreshToken;
    std::string username;
    std::filesystem::path libraryPath;
    int downloadLimitKbps = 0;
    bool voiceEnabled = true;
    bool voiceMuteByDefault = false;
    int voiceInputVolume = 100;
    int voiceOutputVolume = 100;
    std::string voiceInputDevice;
    std::string voiceOutputDevice;
    std::string skinId = "dark";
    bool overlayHintShown = false;
    std::map<std::string, std::string> webGameBrowsers;
    friend bool operator==(const Settings&, const Settings&) = default;
};

// A fresh record: every default of the table, libraryPath the given games folder.
Settings defaultSettings(const std::filesystem::path& defaultLibraryFolder);

// The exact bytes of settings.json.
std::string formatSettings(const Settings& settings);

// Reads every key over the defaults; a damaged text keeps whatever the scanners find.
Settings parseSettings(const std::string& text, const std::filesystem::path& defaultLibraryFolder);

// Never fails on a bad file; always saves the result back so the file is complete.
Settings loadSettings(const DataPaths& paths);

// Replaces settings.json atomically; throws std::runtime_error or filesystem_error.
void saveSettings(const std::filesystem::path& dataFolder, const Settings& settings);

} // namespace corvandell
