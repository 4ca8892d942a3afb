// The settings record: the one piece of client state every subsystem reads (the service
// address and tokens, the library folder, voice and browser choices). It lives below the
// subsystems so they can take it by pointer; app/ loads and saves it.
#pragma once

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

} // namespace corvandell
