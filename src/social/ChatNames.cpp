#include "social/ChatNames.hpp"

namespace corvandell {

std::string groupConversationName(const std::vector<FriendInfo>& friends) {
    std::string name;
    for (const FriendInfo& friendInfo : friends) {
        if (!name.empty()) {
            name += ", ";
        }
        name += friendInfo.username;
    }
    return name;
}

std::string conversationTitle(const Conversation& conversation) {
    if (conversation.type == "group") {
        return conversation.name.empty() ? "Group chat" : conversation.name;
    }
    return conversation.otherUsername.empty() ? "Chat" : conversation.otherUsername;
}

std::string friendStateText(const FriendInfo& friendInfo) {
    if (!friendInfo.currentGame.empty()) {
        return friendInfo.currentGame;
    }
    return friendInfo.online ? "Online" : "Offline";
}

} // namespace corvandell
