// Which service session a row's play opens: a catalogue title's own launch, or an external
// launch of a game another store owns, told apart by the row key alone.
#pragma once

#include <string>

namespace corvandell {

struct LaunchKey {
    bool isExternal = false;
    std::string softwareId{}; // catalogue titles: the whole key
    std::string provider{};   // external launches: the key before the first ':'
    std::string externalId{}; // and everything after it (it may hold further ':')
};

LaunchKey splitLaunchKey(const std::string& rowKey);

} // namespace corvandell
