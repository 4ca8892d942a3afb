// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanEaGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
