// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanUbisoftGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
