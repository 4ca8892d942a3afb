// Record readers over the key scanners. List replies carry their objects under "items";
// a reply that is a bare array (or a single object) is read the same way, because the
// list reader falls back to splitting the whole text.
#include "api/ServiceReaders.hpp"

#include "api/JsonText.hpp"

namespace corvandell {

namespace {

template <typename Record, typename ReadOne>
std::vector<Record> readItems(const std::string& reply, ReadOne readOne) {
    std::vector<Record> records;
    for (const std::string& object : readObjectList(reply, "items")) {
        records.push_back(readOne(object));
    }
    return records;
}

SoftwareItem readSoftwareItem(const std::string& text) {
    return {readString(text, "id"),
            readString(text, "name"),
            readString(text, "description"),
            readString(text, "publisherId"),
            readString(text, "category"),
            readString(text, "platform"),
            readString(text, "releaseStatus"),
            readStringList(text, "tags")};
}

Entitlement readEntitlement(const std::string& text) {
    return {readString(text, "id"), readString(text, "userId"), readString(text, "softwareTitleId"),
            readBool(text, "isRevoked", false)};
}

DownloadAsset readAsset(const std::string& text) {
    return {readString(text, "assetId"), readString(text, "type"), readString(text, "signedUrl")};
}

FriendInfo readFriend(const std::string& text) {
    return {readString(text, "userId"), readString(text, "username"), readBool(text, "online", false),
            readString(text, "currentGame")};
}

FriendPlaytime readFriendPlaytime(const std::string& text) {
    return {readString(text, "userId"), readString(text, "username"), readInt(text, "minutes", 0),
            readInt(text, "seconds", 0)};
}

FeedEntry readFeedEntry(const std::string& text) {
    return {readString(text, "type"),      readString(text, "userId"),  readString(text, "username"),
            readString(text, "timestamp"), readInt(text, "minutes", 0), readInt(text, "stars", 0)};
}

} // namespace

AuthTokens readAuthTokens(const std::string& reply) {
    return {readString(reply, "userId"), readString(reply, "accessToken"), readString(reply, "refreshToken")};
}

KeyChallenge readKeyChallenge(const std::string& reply) {
    return {readString(reply, "challengeId"), reply};
}

RegStart readRegStart(const std::string& reply) {
    return {readString(reply, "registrationId"), readString(reply, "email"),
            readBool(reply, "emailSent", false), readString(reply, "message")};
}

MeResult readMe(const std::string& reply) {
    return {readString(reply, "id"), readString(reply, "username"), readString(reply, "email"),
            readString(reply, "nickname")};
}

std::vector<SoftwareItem> readSoftwareList(const std::string& reply) {
    return readItems<SoftwareItem>(reply, readSoftwareItem);
}

std::vector<Entitlement> readEntitlements(const std::string& reply) {
    return readItems<Entitlement>(reply, readEntitlement);
}

BuildInfo readLatestBuild(const std::string& reply) {
    const std::vector<std::string> builds = readObjectList(reply, "items");
    if (builds.empty()) {
        return {};
    }
    return {readString(builds.front(), "version")};
}

std::vector<DownloadAsset> readDownloadGrant(const std::string& reply) {
    // A single-file grant names its address directly instead of listing assets.
    if (reply.size() >= 11 && reply.find("downloadUrl") != std::string::npos) {
        return {{"asset", "", readString(reply, "downloadUrl")}};
    }
    return readItems<DownloadAsset>(reply, readAsset);
}

LaunchStart readLaunchStart(const std::string& reply) {
    return {readString(reply, "launchId"), readString(reply, "startTime")};
}

std::vector<FriendInfo> readFriends(const std::string& reply) {
    return readItems<FriendInfo>(reply, readFriend);
}

Conversation readConversation(const std::string& reply) {
    Conversation conversation;
    const std::size_t other = reply.find("\"otherParticipant\"");
    if (other != std::string::npos) {
        const std::string rest = reply.substr(other);
        conversation.otherUserId = readString(rest, "userId");
        conversation.otherUsername = readString(rest, "username");
    }
    conversation.id = readString(reply, "id");
    conversation.type = readString(reply, "type");
    conversation.name = readString(reply, "name");
    return conversation;
}

ChatMessage readMessage(const std::string& reply) {
    return {readString(reply, "id"),      readString(reply, "senderId"), readString(reply, "senderUsername"),
            readString(reply, "content"), readString(reply, "sentAt"),   readBool(reply, "isDeleted", false)};
}

std::vector<ChatMessage> readMessages(const std::string& reply) {
    return readItems<ChatMessage>(reply, readMessage);
}

VoiceRoom readVoiceRoom(const std::string& reply) {
    return {readString(reply, "id"), readString(reply, "conversationId"), readString(reply, "status"),
            readInt(reply, "maxParticipants", 0)};
}

std::vector<VoiceRoom> readVoiceRooms(const std::string& reply) {
    return readItems<VoiceRoom>(reply, readVoiceRoom);
}

Playtime readPlaytime(const std::string& reply) {
    return {readInt(reply, "totalMinutes", 0), readInt(reply, "totalSeconds", 0)};
}

std::vector<FriendPlaytime> readFriendPlaytimes(const std::string& reply) {
    return readItems<FriendPlaytime>(reply, readFriendPlaytime);
}

std::vector<FeedEntry> readFeed(const std::string& reply) {
    return readItems<FeedEntry>(reply, readFeedEntry);
}

RatingSummary readRatingSummary(const std::string& reply) {
    return {readString(reply, "gameKey"), readDouble(reply, "average", 0.0), readInt(reply, "count", 0),
            readInt(reply, "myStars", -1)};
}

std::vector<RatingSummary> readRatingSummaries(const std::string& reply) {
    return readItems<RatingSummary>(reply, readRatingSummary);
}

RepositoryGame readRepositoryGame(const std::string& reply) {
    return {readString(reply, "id"),
            readString(reply, "repoUrl"),
            readString(reply, "ownerLogin"),
            readString(reply, "repoName"),
            readString(reply, "displayName"),
            readString(reply, "launchPath"),
            readBool(reply, "isVerifiedOwner", false),
            readString(reply, "submittedByUsername")};
}

std::vector<RepositoryGame> readRepositoryGames(const std::string& reply) {
    return readItems<RepositoryGame>(reply, readRepositoryGame);
}

std::string readLinkedLogin(const std::string& reply) {
    return readString(reply, "login");
}

std::string readProfileMetadata(const std::string& reply) {
    return readString(reply, "metadata");
}

} // namespace corvandell
