#include "social/ChatNames.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

FriendInfo friendNamed(const std::string& name, bool online = false, const std::string& game = "") {
    return {"id-" + name, name, online, game};
}

TEST(ChatNames, AGroupIsNamedAfterTheSelectedFriendsInSelectionOrder) {
    const struct {
        std::vector<FriendInfo> friends;
        std::string name;
    } cases[] = {
        {{friendNamed("chen"), friendNamed("alice"), friendNamed("bruno")}, "chen, alice, bruno"},
        {{}, ""},
    };
    for (const auto& [friends, name] : cases) {
        EXPECT_EQ(groupConversationName(friends), name);
    }
}

TEST(ChatNames, TheTitleIsTheGroupsNameOrTheOtherParticipant) {
    const struct {
        Conversation conversation;
        std::string title;
    } cases[] = {
        {{"", "", "g1", "group", "Weekend raid"}, "Weekend raid"},
        {{"", "", "g2", "group", ""}, "Group chat"},
        {{"uid", "alice", "d1", "direct", ""}, "alice"},
        {{"uid", "", "d2", "direct", ""}, "Chat"},
        {{"", "", "x", "", "named but not a group"}, "Chat"},
    };
    for (const auto& [conversation, title] : cases) {
        EXPECT_EQ(conversationTitle(conversation), title) << conversation.id;
    }
}

TEST(ChatNames, AFriendsRowShowsTheGameInPlaceOfOnline) {
    const struct {
        FriendInfo friendInfo;
        std::string state;
    } cases[] = {
        {friendNamed("bruno", true), "Online"},
        {friendNamed("chen", false), "Offline"},
        {friendNamed("dana", false, "Sky Harbor"), "Sky Harbor"},
    };
    for (const auto& [friendInfo, state] : cases) {
        EXPECT_EQ(friendStateText(friendInfo), state) << friendInfo.username;
    }
}

} // namespace
} // namespace corvandell
