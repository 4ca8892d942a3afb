// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanRiotGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
