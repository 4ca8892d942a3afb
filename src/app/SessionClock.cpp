#include "app/SessionClock.hpp"

#include <cstdio>

namespace corvandell {

std::uint64_t sessionElapsedMs(std::uint64_t launchTick, std::uint64_t nowTick) noexcept {
    return nowTick > launchTick ? nowTick - launchTick : 0;
}

std::string sessionTimeText(std::uint64_t elapsedMs) {
    const unsigned long long seconds = elapsedMs / 1000;
    char text[64] = {};
    std::snprintf(text, sizeof(text), "Session time %llu:%02llu:%02llu", seconds / 3600, seconds / 60 % 60,
                  seconds % 60);
    return text;
}

} // namespace corvandell
