// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanRockstarGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
