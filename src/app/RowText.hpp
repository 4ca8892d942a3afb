// What the list, the details pane and the action button say about a row. Pure functions of
// the row, its rating and the state of the one game being tracked, so the window only
// draws what these return.
#pragma once

#include "app/LibraryItem.hpp"

#include <cstdint>
#include <string>

namespace corvandell {

enum class RowAction { None = 0, Install = 1, Update = 2, Launch = 3 };

// The one game the client follows while it runs (0 none, 1 launching, 2 running, 3 stopping).
// Its handles, token and session live with the window; this is what rows and the overlay see.
struct TrackedGame {
    std::string key;
    int state = 0;
    std::string title{};          // UTF-8; the overlay shows "In game" when it is empty
    std::uint64_t launchTick = 0; // GetTickCount64 when tracking began: the session clock
    bool isTracking(const LibraryItem& row) const noexcept { return state != 0 && row.key == key; }
};

// The three colour classes of a row's text.
enum class RowTextClass { Installed, OwnedOrBrowser, Other };

RowAction actionFor(const LibraryItem& row);
// "Stop" on the tracked game's row ("Stopping..." while it stops), else by the action.
std::string actionLabel(const LibraryItem& row, const TrackedGame& tracked);
std::string stateText(const LibraryItem& row, const TrackedGame& tracked);
// "★ 4.5 (12)"; empty while nobody has rated the game.
std::string ratingText(const RatingSummary& rating);
RowTextClass textClassOf(const LibraryItem& row);
std::string detailsText(const LibraryItem& row, const TrackedGame& tracked);

} // namespace corvandell
