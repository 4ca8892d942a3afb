// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanGogGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
