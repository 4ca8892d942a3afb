// The session clock the in-game overlay shows: how long the tracked game has been played,
// from the tick count taken when tracking began.
#pragma once

#include <cstdint>
#include <string>

namespace corvandell {

// Milliseconds from `launchTick` to `nowTick`; 0 when now is earlier (a launch tick taken
// on another clock must not show a session of 584 million years).
std::uint64_t sessionElapsedMs(std::uint64_t launchTick, std::uint64_t nowTick) noexcept;

// "Session time 1:02:03": hours (not wrapped at a day), minutes, seconds.
std::string sessionTimeText(std::uint64_t elapsedMs);

} // namespace corvandell
