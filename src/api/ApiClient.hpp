// Every service operation written once, as a path, a body template and a reader, over an
// abstract exchange. The WinHTTP client supplies the exchange on Windows; tests supply a
// recording one, so what goes over the wire is checked natively.
#pragma once

#include <string>
#include <vector>

#include "api/IApiClient.hpp"

namespace corvandell {

class ApiClient : public IApiClient {
public:
    AuthTokens refreshTokens(const std::string& refreshToken) override;
    KeyChallenge startKeyChallenge(const std::string& keyType, const std::string& keyData) override;
    AuthTokens completeKeyChallenge(const std::string& challengeId, const std::string& signature,
                                    const std::string& keyType, const std::string& keyData) override;
    RegStart registerKey(const std::string& email, const std::string& keyType,
                         const std::string& keyData) override;
    AuthTokens verifyKeyRegistration(const std::string& token) override;
    MeResult getMe() override;
    void setNickname(const std::string& nickname) override;
    void uploadAvatar(const std::string& imageBytes) override;
    std::string getMyAvatar() override;
    std::vector<SoftwareItem> listSoftware(const std::string& sort, const std::string& q,
                                           const std::string& category, const std::string& platform) override;
    std::vector<Entitlement> listEntitlements() override;
    std::vector<DownloadAsset> requestDownload(const std::string& softwareId) override;
    BuildInfo latestBuild(const std::string& softwareId) override;
    LaunchStart startLaunch(const std::string& softwareId) override;
    void endLaunch(const std::string& launchId) override;
    std::vector<FriendInfo> listFriends() override;
    void sendFriendRequest(const std::string& toUserId) override;
    Conversation openDirectConversation(const std::string& friendUserId) override;
    Conversation createGroupConversation(const std::vector<std::string>& participantIds,
                                         const std::string& name) override;
    std::vector<ChatMessage> listMessages(const std::string& conversationId) override;
    ChatMessage sendMessage(const std::string& conversationId, const std::string& content) override;
    std::vector<VoiceRoom> listVoiceRooms(const std::string& conversationId) override;
    VoiceRoom createVoiceRoom(const std::string& conversationId) override;
    VoiceRoom joinVoiceRoom(const std::string& roomId) override;
    void leaveVoiceRoom(const std::string& roomId) override;
    void setVoiceMuted(const std::string& roomId, bool muted) override;
    std::vector<RepositoryGame> listRepositoryGames() override;
    std::vector<RepositoryGame> listMyRepositoryGames() override;
    RepositoryGame submitRepositoryGame(const std::string& repoUrl, const std::string& displayName,
                                        const std::string& launchPath) override;
    RepositoryGame claimRepositoryGame(const std::string& gameId) override;
    void deleteRepositoryGame(const std::string& gameId) override;
    std::string getLinkedRepositoryAccount() override;
    std::string startRepositoryAccountLink() override;
    Playtime getPlaytime(const std::string& softwareId) override;
    std::vector<FriendPlaytime> getFriendsPlaytime(const std::string& softwareId, int top) override;
    std::string getUserAvatar(const std::string& userId) override;
    RatingSummary rateGame(const std::string& gameKey, int stars) override;
    std::vector<RatingSummary> queryRatings(const std::vector<std::string>& keys) override;
    std::vector<FeedEntry> getGameFeed(const std::string& key, int limit) override;
    std::string getProfileMetadata() override;
    void setProfileMetadata(const std::string& metadata) override;
    LaunchStart startExternalLaunch(const std::string& provider, const std::string& externalSoftwareId,
                                    const std::string& name) override;
    void endExternalLaunch(const std::string& launchId) override;
    Playtime getExternalPlaytime(const std::string& provider, const std::string& externalId) override;
    std::vector<FriendPlaytime> getExternalFriendsPlaytime(const std::string& provider,
                                                           const std::string& externalId, int top) override;

protected:
    // One exchange: returns the body of a 2xx reply, throws std::runtime_error otherwise.
    virtual std::string request(const std::string& method, const std::string& path,
                                const std::string& body) = 0;
    // A GET whose redirect is not followed; returns the reply's Location header.
    virtual std::string requestRedirectLocation(const std::string& path) = 0;
};

// {"a","b"} as ["a","b"], each element escaped; an empty list gives [].
std::string jsonStringArray(const std::vector<std::string>& values);

} // namespace corvandell
