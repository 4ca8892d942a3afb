// Players first, then online, then offline, each group in the service's order.
#include "app/OverlayFriends.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

FriendInfo friendNamed(std::string name, bool online, std::string game = "") {
    return FriendInfo{"id-" + name, std::move(name), online, std::move(game)};
}

TEST(OverlayFriends, RowsPutPlayersFirstThenOnlineThenOfflineKeepingTheServiceOrder) {
    using P = FriendPresence;
    const struct {
        std::vector<FriendInfo> friends;
        std::vector<OverlayFriendRow> rows;
        std::string count;
    } cases[] = {
        {{}, {}, ""},
        {{friendNamed("chen", false), friendNamed("bruno", true), friendNamed("alice", true, "Ember Keep")},
         {{"alice", "Ember Keep", P::Playing},
          {"bruno", "Online", P::Online},
          {"chen", "Offline", P::Offline}},
         "2 of 3 online"},
        // A game without the online flag still counts as playing: the service saw a session.
        {{friendNamed("zoe", false, "Paper Moth"), friendNamed("amy", true), friendNamed("bob", true)},
         {{"zoe", "Paper Moth", P::Playing}, {"amy", "Online", P::Online}, {"bob", "Online", P::Online}},
         "3 of 3 online"},
    };
    for (const auto& c : cases) {
        const std::vector<OverlayFriendRow> rows = overlayFriendRows(c.friends);
        EXPECT_EQ(rows, c.rows) << c.count;
        EXPECT_EQ(onlineCountText(rows), c.count);
    }
}

} // namespace
} // namespace corvandell
