// The operations' wire format: path parameters go in as given, query values through the
// query encoder, string values in bodies through the body escaper, numbers and booleans
// bare, and bodies compact so the service sees byte-identical requests from every client.
#include "api/ApiClient.hpp"

#include "api/JsonText.hpp"
#include "api/ServiceReaders.hpp"
#include "auth/Base64.hpp"

namespace corvandell {

namespace {

const std::string kGet = "GET";
const std::string kPost = "POST";
const std::string kPut = "PUT";
const std::string kPatch = "PATCH";
const std::string kDelete = "DELETE";
const std::string kNoBody;

// {"name":"value"} with the value escaped.
std::string objectWith(std::string_view name, std::string_view value) {
    return "{\"" + std::string(name) + "\":\"" + escapeBodyString(value) + "\"}";
}

std::string quoted(std::string_view value) {
    return "\"" + escapeBodyString(value) + "\"";
}

std::string externalQuery(const std::string& provider, const std::string& externalId) {
    return "provider=" + encodeQueryValue(provider) + "&externalId=" + encodeQueryValue(externalId);
}

} // namespace

std::string jsonStringArray(const std::vector<std::string>& values) {
    std::string array = "[";
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) {
            array += ',';
        }
        array += quoted(values[i]);
    }
    return array + "]";
}

AuthTokens ApiClient::refreshTokens(const std::string& refreshToken) {
    return readAuthTokens(request(kPost, "/api/v1/auth/refresh", objectWith("refreshToken", refreshToken)));
}

KeyChallenge ApiClient::startKeyChallenge(const std::string& keyType, const std::string& keyData) {
    const std::string body = "{\"keyType\":" + quoted(keyType) + ",\"keyData\":" + quoted(keyData) + "}";
    return readKeyChallenge(request(kPost, "/api/v1/auth/public-key/challenge", body));
}

AuthTokens ApiClient::completeKeyChallenge(const std::string& challengeId, const std::string& signature,
                                           const std::string& keyType, const std::string& keyData) {
    const std::string body = "{\"challengeId\":" + quoted(challengeId) +
                             ",\"signature\":" + quoted(signature) + ",\"keyType\":" + quoted(keyType) +
                             ",\"keyData\":" + quoted(keyData) + "}";
    return readAuthTokens(request(kPost, "/api/v1/auth/public-key/complete", body));
}

RegStart ApiClient::registerKey(const std::string& email, const std::string& keyType,
                                const std::string& keyData) {
    const std::string body = "{\"email\":" + quoted(email) + ",\"keyType\":" + quoted(keyType) +
                             ",\"keyData\":" + quoted(keyData) + "}";
    return readRegStart(request(kPost, "/api/v1/auth/public-key/register", body));
}

AuthTokens ApiClient::verifyKeyRegistration(const std::string& token) {
    return readAuthTokens(
        request(kGet, "/api/v1/auth/public-key/verify?token=" + encodeQueryValue(token), kNoBody));
}

MeResult ApiClient::getMe() {
    return readMe(request(kGet, "/api/v1/me", kNoBody));
}

void ApiClient::setNickname(const std::string& nickname) {
    request(kPatch, "/api/v1/me", objectWith("nickname", nickname));
}

void ApiClient::uploadAvatar(const std::string& imageBytes) {
    request(kPut, "/api/v1/me/avatar", objectWith("imageBase64", base64Encode(imageBytes)));
}

std::string ApiClient::getMyAvatar() {
    return request(kGet, "/api/v1/me/avatar", kNoBody);
}

std::vector<SoftwareItem> ApiClient::listSoftware(const std::string& sort, const std::string& q,
                                                  const std::string& category, const std::string& platform) {
    std::string path = "/api/v1/software?pageSize=100&sort=" + encodeQueryValue(sort.empty() ? "name" : sort);
    if (!q.empty()) {
        path += "&q=" + encodeQueryValue(q);
    }
    if (!category.empty()) {
        path += "&category=" + encodeQueryValue(category);
    }
    if (!platform.empty()) {
        path += "&platform=" + encodeQueryValue(platform);
    }
    return readSoftwareList(request(kGet, path, kNoBody));
}

std::vector<Entitlement> ApiClient::listEntitlements() {
    return readEntitlements(request(kGet, "/api/v1/me/entitlements", kNoBody));
}

std::vector<DownloadAsset> ApiClient::requestDownload(const std::string& softwareId) {
    return readDownloadGrant(request(kPost, "/api/v1/software/" + softwareId + "/download", kNoBody));
}

BuildInfo ApiClient::latestBuild(const std::string& softwareId) {
    return readLatestBuild(request(kGet, "/api/v1/software/" + softwareId + "/builds?pageSize=1", kNoBody));
}

LaunchStart ApiClient::startLaunch(const std::string& softwareId) {
    return readLaunchStart(request(kPost, "/api/v1/software/" + softwareId + "/launch", kNoBody));
}

void ApiClient::endLaunch(const std::string& launchId) {
    request(kPost, "/api/v1/activity/launches/" + launchId + "/end", kNoBody);
}

std::vector<FriendInfo> ApiClient::listFriends() {
    return readFriends(request(kGet, "/api/v1/me/friends", kNoBody));
}

void ApiClient::sendFriendRequest(const std::string& toUserId) {
    request(kPost, "/api/v1/me/friend-requests", objectWith("toUserId", toUserId));
}

Conversation ApiClient::openDirectConversation(const std::string& friendUserId) {
    return readConversation(
        request(kPost, "/api/v1/chat/conversations", objectWith("friendUserId", friendUserId)));
}

Conversation ApiClient::createGroupConversation(const std::vector<std::string>& participantIds,
                                                const std::string& name) {
    const std::string body =
        "{\"participantIds\":" + jsonStringArray(participantIds) + ",\"name\":" + quoted(name) + "}";
    return readConversation(request(kPost, "/api/v1/chat/conversations", body));
}

std::vector<ChatMessage> ApiClient::listMessages(const std::string& conversationId) {
    return readMessages(
        request(kGet, "/api/v1/chat/conversations/" + conversationId + "/messages?pageSize=100", kNoBody));
}

ChatMessage ApiClient::sendMessage(const std::string& conversationId, const std::string& content) {
    return readMessage(request(kPost, "/api/v1/chat/conversations/" + conversationId + "/messages",
                               objectWith("content", content)));
}

std::vector<VoiceRoom> ApiClient::listVoiceRooms(const std::string& conversationId) {
    return readVoiceRooms(
        request(kGet, "/api/v1/voice/rooms?conversationId=" + encodeQueryValue(conversationId), kNoBody));
}

VoiceRoom ApiClient::createVoiceRoom(const std::string& conversationId) {
    return readVoiceRoom(request(kPost, "/api/v1/voice/rooms", objectWith("conversationId", conversationId)));
}

VoiceRoom ApiClient::joinVoiceRoom(const std::string& roomId) {
    return readVoiceRoom(request(kPost, "/api/v1/voice/rooms/" + roomId + "/join", kNoBody));
}

void ApiClient::leaveVoiceRoom(const std::string& roomId) {
    request(kPost, "/api/v1/voice/rooms/" + roomId + "/leave", kNoBody);
}

void ApiClient::setVoiceMuted(const std::string& roomId, bool muted) {
    request(kPost, "/api/v1/voice/rooms/" + roomId + "/mute",
            muted ? "{\"muted\":true}" : "{\"muted\":false}");
}

std::vector<RepositoryGame> ApiClient::listRepositoryGames() {
    return readRepositoryGames(request(kGet, "/api/v1/github-games", kNoBody));
}

std::vector<RepositoryGame> ApiClient::listMyRepositoryGames() {
    return readRepositoryGames(request(kGet, "/api/v1/me/github-games", kNoBody));
}

RepositoryGame ApiClient::submitRepositoryGame(const std::string& repoUrl, const std::string& displayName,
                                               const std::string& launchPath) {
    const std::string body = "{\"repoUrl\":" + quoted(repoUrl) + ",\"displayName\":" + quoted(displayName) +
                             ",\"launchPath\":" + quoted(launchPath) + "}";
    return readRepositoryGame(request(kPost, "/api/v1/me/github-games", body));
}

RepositoryGame ApiClient::claimRepositoryGame(const std::string& gameId) {
    return readRepositoryGame(request(kPost, "/api/v1/me/github-games/" + gameId + "/claim", kNoBody));
}

void ApiClient::deleteRepositoryGame(const std::string& gameId) {
    request(kDelete, "/api/v1/me/github-games/" + gameId, kNoBody);
}

std::string ApiClient::getLinkedRepositoryAccount() {
    return readLinkedLogin(request(kGet, "/api/v1/me/github", kNoBody));
}

std::string ApiClient::startRepositoryAccountLink() {
    return requestRedirectLocation("/api/v1/auth/oauth/github/authorize?link=true");
}

Playtime ApiClient::getPlaytime(const std::string& softwareId) {
    return readPlaytime(request(kGet, "/api/v1/activity/software/" + softwareId + "/playtime", kNoBody));
}

std::vector<FriendPlaytime> ApiClient::getFriendsPlaytime(const std::string& softwareId, int top) {
    return readFriendPlaytimes(request(
        kGet, "/api/v1/activity/software/" + softwareId + "/friends-playtime?top=" + std::to_string(top),
        kNoBody));
}

std::string ApiClient::getUserAvatar(const std::string& userId) {
    return request(kGet, "/api/v1/users/" + userId + "/avatar", kNoBody);
}

RatingSummary ApiClient::rateGame(const std::string& gameKey, int stars) {
    const std::string body = "{\"gameKey\":" + quoted(gameKey) + ",\"stars\":" + std::to_string(stars) + "}";
    return readRatingSummary(request(kPut, "/api/v1/me/ratings", body));
}

std::vector<RatingSummary> ApiClient::queryRatings(const std::vector<std::string>& keys) {
    return readRatingSummaries(
        request(kPost, "/api/v1/ratings/query", "{\"keys\":" + jsonStringArray(keys) + "}"));
}

std::vector<FeedEntry> ApiClient::getGameFeed(const std::string& key, int limit) {
    return readFeed(request(
        kGet, "/api/v1/activity/game-feed?key=" + encodeQueryValue(key) + "&limit=" + std::to_string(limit),
        kNoBody));
}

std::string ApiClient::getProfileMetadata() {
    return readProfileMetadata(request(kGet, "/api/v1/me", kNoBody));
}

void ApiClient::setProfileMetadata(const std::string& metadata) {
    request(kPatch, "/api/v1/me", objectWith("metadata", metadata));
}

LaunchStart ApiClient::startExternalLaunch(const std::string& provider, const std::string& externalSoftwareId,
                                           const std::string& name) {
    const std::string body = "{\"provider\":" + quoted(provider) +
                             ",\"externalSoftwareId\":" + quoted(externalSoftwareId) +
                             ",\"name\":" + quoted(name) + "}";
    return readLaunchStart(request(kPost, "/api/v1/activity/external-launches", body));
}

void ApiClient::endExternalLaunch(const std::string& launchId) {
    request(kPost, "/api/v1/activity/external-launches/" + launchId + "/end", kNoBody);
}

Playtime ApiClient::getExternalPlaytime(const std::string& provider, const std::string& externalId) {
    return readPlaytime(
        request(kGet, "/api/v1/activity/external/playtime?" + externalQuery(provider, externalId), kNoBody));
}

std::vector<FriendPlaytime> ApiClient::getExternalFriendsPlaytime(const std::string& provider,
                                                                  const std::string& externalId, int top) {
    return readFriendPlaytimes(request(kGet,
                                       "/api/v1/activity/external/friends-playtime?" +
                                           externalQuery(provider, externalId) +
                                           "&top=" + std::to_string(top),
                                       kNoBody));
}

} // namespace corvandell
