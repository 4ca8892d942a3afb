// Fetching a browser game's page and icon from its site: plain GETs with short time-outs
// and a size cap, since a slow or hostile site must not hold the icon job or fill the disk.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace corvandell::win {

// The body of a 2xx reply of at most maxBytes; nothing on any failure, a larger reply
// included. Never throws.
std::optional<std::string> fetchSmallFile(const std::string& address, std::size_t maxBytes) noexcept;

} // namespace corvandell::win
