// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanEpicGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
