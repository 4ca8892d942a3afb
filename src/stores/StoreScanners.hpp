// Every store scanner, and the full scan the library refresh runs.
//
// A scanner reads only its store's registry values and files, never talks to the store's
// client and never fails: whatever it cannot read it records as skipped, with the reason,
// and goes on. The order of scanOtherStores is the store table's order.
#pragma once

#include "stores/DetectedGame.hpp"
#include "stores/StoreHost.hpp"

#include <filesystem>
#include <vector>

namespace corvandell {

void scanEpicGames(const StoreHost& host, ScanReport& report);
void scanGogGames(const StoreHost& host, ScanReport& report);
void scanXboxGames(const StoreHost& host, ScanReport& report);
void scanEaGames(const StoreHost& host, ScanReport& report);
void scanUbisoftGames(const StoreHost& host, ScanReport& report);
void scanBattleNetGames(const StoreHost& host, ScanReport& report);
void scanRockstarGames(const StoreHost& host, ScanReport& report);
void scanRiotGames(const StoreHost& host, ScanReport& report);
void scanItchGames(const StoreHost& host, ScanReport& report);
void scanAmazonGames(const StoreHost& host, ScanReport& report);

// The Xbox library folders named by the .GamingRoot files at the drive roots that exist.
std::vector<std::filesystem::path> xboxLibraryRoots(const std::vector<std::filesystem::path>& driveRoots);

// The ten stores besides Steam, in the store table's order.
void scanOtherStores(const StoreHost& host, ScanReport& report);

// Steam first, then the other stores.
ScanReport scanAllStores(const StoreHost& host);

} // namespace corvandell
