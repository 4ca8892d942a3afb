// The names a chat is known by: what a new group is called, what a chat window's title
// says, and what a friends-list row says about the friend.
#pragma once

#include <string>
#include <vector>

#include "api/ServiceRecords.hpp"

namespace corvandell {

// The friends' usernames joined by ", ", in selection order.
std::string groupConversationName(const std::vector<FriendInfo>& friends);

// A group shows its name ("Group chat" when it has none); any other conversation the other
// participant's name ("Chat" when there is none).
std::string conversationTitle(const Conversation& conversation);

// The game the friend plays, else "Online" or "Offline".
std::string friendStateText(const FriendInfo& friendInfo);

} // namespace corvandell
