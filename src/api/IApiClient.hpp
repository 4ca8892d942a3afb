// The client's whole protocol with the Corvandell service: one blocking operation per
// endpoint. Every operation either returns its record or throws std::runtime_error whose
// text is shown to the user; the declaration order is the interface's slot order.
#pragma once

#include <string>
#include <vector>

#include "api/ServiceRecords.hpp"

namespace corvandell {

class IApiClient {
public:
    virtual ~IApiClient() = default;

    virtual AuthTokens refreshTokens(const std::string& refreshToken) = 0;
    virtual KeyChallenge startKeyChallenge(const std::string& keyType, const std::string& keyData) = 0;
    virtual AuthTokens completeKeyChallenge(const std::string& challengeId, const std::string& signature,
                                            const std::string& keyType, const std::string& keyData) = 0;
    virtual RegStart registerKey(const std::string& email, const std::string& keyType,
                                 const std::string& keyData) = 0;
    virtual AuthTokens verifyKeyRegistration(const std::string& token) = 0;
    virtual MeResult getMe() = 0;
    virtual void setNickname(const std::string& nickname) = 0;
    virtual void uploadAvatar(const std::string& imageBytes) = 0;
    virtual std::string getMyAvatar() = 0;
    virtual std::vector<SoftwareItem> listSoftware(const std::string& sort, const std::string& q,
                                                   const std::string& category,
                                                   const std::string& platform) = 0;
    virtual std::vector<Entitlement> listEntitlements() = 0;
    virtual std::vector<DownloadAsset> requestDownload(const std::string& softwareId) = 0;
    virtual BuildInfo latestBuild(const std::string& softwareId) = 0;
    virtual LaunchStart startLaunch(const std::string& softwareId) = 0;
    virtual void endLaunch(const std::string& launchId) = 0;
    virtual std::vector<FriendInfo> listFriends() = 0;
    virtual void sendFriendRequest(const std::string& toUserId) = 0;
    virtual Conversation openDirectConversation(const std::string& friendUserId) = 0;
    virtual Conversation createGroupConversation(const std::vector<std::string>& participantIds,
                                                 const std::string& name) = 0;
    virtual std::vector<ChatMessage> listMessages(const std::string& conversationId) = 0;
    virtual ChatMessage sendMessage(const std::string& conversationId, const std::string& content) = 0;
    virtual std::vector<VoiceRoom> listVoiceRooms(const std::string& conversationId) = 0;
    virtual VoiceRoom createVoiceRoom(const std::string& conversationId) = 0;
    virtual VoiceRoom joinVoiceRoom(const std::string& roomId) = 0;
    virtual void leaveVoiceRoom(const std::string& roomId) = 0;
    virtual void setVoiceMuted(const std::string& roomId, bool muted) = 0;
    virtual std::vector<RepositoryGame> listRepositoryGames() = 0;
    virtual std::vector<RepositoryGame> listMyRepositoryGames() = 0;
    virtual RepositoryGame submitRepositoryGame(const std::string& repoUrl, const std::string& displayName,
                                                const std::string& launchPath) = 0;
    virtual RepositoryGame claimRepositoryGame(const std::string& gameId) = 0;
    virtual void deleteRepositoryGame(const std::string& gameId) = 0;
    virtual std::string getLinkedRepositoryAccount() = 0;
    virtual std::string startRepositoryAccountLink() = 0;
    virtual Playtime getPlaytime(const std::string& softwareId) = 0;
    virtual std::vector<FriendPlaytime> getFriendsPlaytime(const std::string& softwareId, int top) = 0;
    virtual std::string getUserAvatar(const std::string& userId) = 0;
    virtual RatingSummary rateGame(const std::string& gameKey, int stars) = 0;
    virtual std::vector<RatingSummary> queryRatings(const std::vector<std::string>& keys) = 0;
    virtual std::vector<FeedEntry> getGameFeed(const std::string& key, int limit) = 0;
    virtual std::string getProfileMetadata() = 0;
    virtual void setProfileMetadata(const std::string& metadata) = 0;
    virtual LaunchStart startExternalLaunch(const std::string& provider,
                                            const std::string& externalSoftwareId,
                                            const std::string& name) = 0;
    virtual void endExternalLaunch(const std::string& launchId) = 0;
    virtual Playtime getExternalPlaytime(const std::string& provider, const std::string& externalId) = 0;
    virtual std::vector<FriendPlaytime>
    getExternalFriendsPlaytime(const std::string& provider, const std::string& externalId, int top) = 0;
};

} // namespace corvandell
