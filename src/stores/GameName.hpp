// The one rule that matches a game across sources: ASCII letters and digits, lower-cased.
// "Sky-Forge 2" and "Sky Forge 2" are the same game; everything else about a name is noise.
#pragma once

#include <string>
#include <string_view>

namespace corvandell {

std::string normalizeGameName(std::string_view name);

} // namespace corvandell
