// Placeholder until the scanner is written.
#include "stores/StoreScanners.hpp"

namespace corvandell {

void scanBattleNetGames(const StoreHost&, ScanReport&) {}

} // namespace corvandell
