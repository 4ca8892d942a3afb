#include "launch/LaunchKey.hpp"

namespace corvandell {

LaunchKey splitLaunchKey(const std::string& rowKey) {
    const size_t colon = rowKey.find(':');
    if (colon == std::string::npos) {
        return LaunchKey{.softwareId = rowKey};
    }
    return LaunchKey{
        .isExternal = true, .provider = rowKey.substr(0, colon), .externalId = rowKey.substr(colon + 1)};
}

} // namespace corvandell
