// One game a store scanner found installed on this machine, and what a scan gathered.
//
// The record carries everything the library list and the launcher need from a store, and
// nothing from the service: the library merges it into its own rows. Titles, ids and
// launch addresses are UTF-8; folders and executables are paths, so a non-ASCII folder
// name survives on Windows.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace corvandell {

struct DetectedGame {
    std::string key; // "steam:" + app id, or store key + ":" + the store's own id
    std::string title;
    std::string storeKey;   // "steam", "epic", "gog", ...
    std::string storeName;  // "Steam", "Epic Games", ...
    std::string externalId; // the store's own id (the Steam app id for Steam)
    std::string platform = "windows";
    std::string description;
    std::filesystem::path installFolder;
    std::filesystem::path executable; // empty when nothing fits; the launcher then uses the address
    std::string launchAddress;        // a store URI, or a quoted client command line; may be empty
    std::string steamAppId;           // Steam rows only
    std::string build;                // Steam's buildid
    std::uint64_t lastPlayedUnix = 0; // Steam's LastPlayed; 0 when unknown
};

// An entry a scanner looked at and left out, for people asking why a game is missing.
struct SkippedEntry {
    std::string storeName;
    std::string entry;  // the file, folder or registry key looked at
    std::string reason; // short plain English
};

struct ScanReport {
    std::vector<DetectedGame> games;
    std::vector<SkippedEntry> skipped;

    void skip(std::string storeName, std::string entry, std::string reason) {
        skipped.push_back({std::move(storeName), std::move(entry), std::move(reason)});
    }
};

} // namespace corvandell
