// What the in-game overlay's friends list says: one row per friend, those in a game first,
// then those online, then the rest, each group in the service's order, so the friends a
// player can join are at the top of a short list.
#pragma once

#include "api/ServiceRecords.hpp"

#include <string>
#include <vector>

namespace corvandell {

enum class FriendPresence { Playing = 0, Online = 1, Offline = 2 };

struct OverlayFriendRow {
    std::string name;  // UTF-8 username
    std::string state; // the game played, "Online" or "Offline"
    FriendPresence presence = FriendPresence::Offline;
    friend bool operator==(const OverlayFriendRow&, const OverlayFriendRow&) = default;
};

std::vector<OverlayFriendRow> overlayFriendRows(const std::vector<FriendInfo>& friends);

// "2 of 5 online" (a friend in a game is online); "" for no friends.
std::string onlineCountText(const std::vector<OverlayFriendRow>& rows);

} // namespace corvandell
