// The records the service operations return. Field names are the JSON keys they are read
// from; a field whose key is missing or malformed keeps the default written here.
#pragma once

#include <string>
#include <vector>

namespace corvandell {

struct AuthTokens {
    std::string userId;
    std::string accessToken;
    std::string refreshToken;
};

// The challenge id, with the whole reply kept beside it: the payload the device key signs
// is rebuilt from that text, not from any one field.
struct KeyChallenge {
    std::string challengeId;
    std::string replyText;
};

struct RegStart {
    std::string registrationId;
    std::string email;
    bool emailSent = false;
    std::string message;
};

struct MeResult {
    std::string id;
    std::string username;
    std::string email;
    std::string nickname;
};

struct SoftwareItem {
    std::string id;
    std::string name;
    std::string description;
    std::string publisherId;
    std::string category;
    std::string platform;
    std::string releaseStatus;
    std::vector<std::string> tags;
};

struct Entitlement {
    std::string id;
    std::string userId;
    std::string softwareTitleId;
    bool isRevoked = false;
};

struct BuildInfo {
    std::string version;
};

struct DownloadAsset {
    std::string assetId;
    std::string type;
    std::string signedUrl;
};

struct LaunchStart {
    std::string launchId;
    std::string startTime;
};

struct FriendInfo {
    std::string userId;
    std::string username;
    bool online = false;
    std::string currentGame;
};

struct Conversation {
    std::string otherUserId;
    std::string otherUsername;
    std::string id;
    std::string type;
    std::string name;
};

struct ChatMessage {
    std::string id;
    std::string senderId;
    std::string senderUsername;
    std::string content;
    std::string sentAt;
    bool isDeleted = false;
};

struct VoiceRoom {
    std::string id;
    std::string conversationId;
    std::string status;
    int maxParticipants = 0;
};

struct Playtime {
    int totalMinutes = 0;
    int totalSeconds = 0;
};

struct FriendPlaytime {
    std::string userId;
    std::string username;
    int minutes = 0;
    int seconds = 0;
};

struct FeedEntry {
    std::string type;
    std::string userId;
    std::string username;
    std::string timestamp;
    int minutes = 0;
    int stars = 0;
};

struct RatingSummary {
    std::string gameKey;
    double average = 0.0;
    int count = 0;
    int myStars = -1; // -1: the user has not rated the game
};

struct RepositoryGame {
    std::string id;
    std::string repoUrl;
    std::string ownerLogin;
    std::string repoName;
    std::string displayName;
    std::string launchPath;
    bool isVerifiedOwner = false;
    std::string submittedByUsername;
};

} // namespace corvandell
