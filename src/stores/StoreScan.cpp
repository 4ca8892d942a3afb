// The full scan in the order the library shows the sources: Steam, then the store table.
#include "stores/SteamScanner.hpp"
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanOtherStores(const StoreHost& host, ScanReport& report) {
    scanEpicGames(host, report);
    scanGogGames(host, report);
    scanXboxGames(host, report);
    scanEaGames(host, report);
    scanUbisoftGames(host, report);
    scanBattleNetGames(host, report);
    scanRockstarGames(host, report);
    scanRiotGames(host, report);
    scanItchGames(host, report);
    scanAmazonGames(host, report);
}

ScanReport scanAllStores(const StoreHost& host) {
    ScanReport report;
    scanSteamLibrary(host, report);
    scanOtherStores(host, report);
    return report;
}

} // namespace corvandell
