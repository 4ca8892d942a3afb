#include "app/OverlayFriends.hpp"

#include "social/ChatNames.hpp"

#include <algorithm>

namespace corvandell {

std::vector<OverlayFriendRow> overlayFriendRows(const std::vector<FriendInfo>& friends) {
    std::vector<OverlayFriendRow> rows;
    rows.reserve(friends.size());
    for (const FriendInfo& friendInfo : friends) {
        FriendPresence presence = FriendPresence::Offline;
        if (!friendInfo.currentGame.empty()) {
            presence = FriendPresence::Playing;
        } else if (friendInfo.online) {
            presence = FriendPresence::Online;
        }
        rows.push_back({friendInfo.username, friendStateText(friendInfo), presence});
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const OverlayFriendRow& left, const OverlayFriendRow& right) {
                         return left.presence < right.presence;
                     });
    return rows;
}

std::string onlineCountText(const std::vector<OverlayFriendRow>& rows) {
    if (rows.empty()) {
        return {};
    }
    const auto online = std::count_if(rows.begin(), rows.end(), [](const OverlayFriendRow& row) {
        return row.presence != FriendPresence::Offline;
    });
    return std::to_string(online) + " of " + std::to_string(rows.size()) + " online";
}

} // namespace corvandell
