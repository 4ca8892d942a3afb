// Turning service reply texts into records. Readers never throw for a missing or
// malformed field: each field keeps its record default.
#pragma once

#include <string>
#include <vector>

#include "api/ServiceRecords.hpp"

namespace corvandell {

AuthTokens readAuthTokens(const std::string& reply);
KeyChallenge readKeyChallenge(const std::string& reply);
RegStart readRegStart(const std::string& reply);
MeResult readMe(const std::string& reply);
std::vector<SoftwareItem> readSoftwareList(const std::string& reply);
std::vector<Entitlement> readEntitlements(const std::string& reply);
BuildInfo readLatestBuild(const std::string& reply);
std::vector<DownloadAsset> readDownloadGrant(const std::string& reply);
LaunchStart readLaunchStart(const std::string& reply);
std::vector<FriendInfo> readFriends(const std::string& reply);
Conversation readConversation(const std::string& reply);
ChatMessage readMessage(const std::string& reply);
std::vector<ChatMessage> readMessages(const std::string& reply);
VoiceRoom readVoiceRoom(const std::string& reply);
std::vector<VoiceRoom> readVoiceRooms(const std::string& reply);
Playtime readPlaytime(const std::string& reply);
std::vector<FriendPlaytime> readFriendPlaytimes(const std::string& reply);
std::vector<FeedEntry> readFeed(const std::string& reply);
RatingSummary readRatingSummary(const std::string& reply);
std::vector<RatingSummary> readRatingSummaries(const std::string& reply);
RepositoryGame readRepositoryGame(const std::string& reply);
std::vector<RepositoryGame> readRepositoryGames(const std::string& reply);
std::string readLinkedLogin(const std::string& reply);
std::string readProfileMetadata(const std::string& reply);

} // namespace corvandell
