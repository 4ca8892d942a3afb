// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanXboxGames(const StoreHost&, ScanReport&) {}
std::vector<std::filesystem::path> xboxLibraryRoots(const std::vector<std::filesystem::path>&) {
    return {};
}

} // namespace corvandell
