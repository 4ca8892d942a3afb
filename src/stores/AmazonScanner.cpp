// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanAmazonGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
