// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanItchGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
