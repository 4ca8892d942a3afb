// Placeholder until the scanner is written.
#include "stores/SteamScanner.hpp"

namespace corvandell {

SteamAppManifest readSteamManifest(std::string_view) {
    return {};
}
std::filesystem::path findSteamRoot(const Registry&) {
    return {};
}
std::vector<std::filesystem::path> findSteamLibraries(const std::filesystem::path&) {
    return {};
}
bool isExcludedSteamApp(const SteamAppManifest&) {
    return false;
}
void scanSteamLibrary(const StoreHost&, ScanReport&) {}
std::vector<DetectedGame> scanSteamLibrary(const StoreHost& host) {
    ScanReport report;
    scanSteamLibrary(host, report);
    return report.games;
}

} // namespace corvandell
