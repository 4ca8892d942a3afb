#include "api/ApiClient.hpp"

#include <functional>

#include <gtest/gtest.h>

namespace corvandell {
namespace {

struct Exchange {
    std::string method;
    std::string path;
    std::string body;
};

class RecordingClient : public ApiClient {
public:
    Exchange last;

protected:
    std::string request(const std::string& method, const std::string& path,
                        const std::string& body) override {
        last = {method, path, body};
        return "{}";
    }
    std::string requestRedirectLocation(const std::string& path) override {
        last = {"GET (no redirect)", path, ""};
        return "https://example.invalid/authorize";
    }
};

struct OperationCase {
    const char* name;
    std::function<void(IApiClient&)> call;
    Exchange expected;
};

TEST(ApiClient, EveryOperationSendsItsMethodPathAndExactBody) {
    const std::vector<std::string> twoIds{"u1", "u\"2"};
    const std::vector<OperationCase> cases{
        {"refreshTokens",
         [](IApiClient& c) { c.refreshTokens("r\\1"); },
         {"POST", "/api/v1/auth/refresh", R"({"refreshToken":"r\\1"})"}},
        {"startKeyChallenge",
         [](IApiClient& c) { c.startKeyChallenge("ECDSA-P256", "BA+/="); },
         {"POST", "/api/v1/auth/public-key/challenge", R"({"keyType":"ECDSA-P256","keyData":"BA+/="})"}},
        {"completeKeyChallenge",
         [](IApiClient& c) { c.completeKeyChallenge("c1", "MEU=", "ECDSA-P256", "BA=="); },
         {"POST", "/api/v1/auth/public-key/complete",
          R"({"challengeId":"c1","signature":"MEU=","keyType":"ECDSA-P256","keyData":"BA=="})"}},
        {"registerKey",
         [](IApiClient& c) { c.registerKey("a@b.c", "ECDSA-P256", "BA=="); },
         {"POST", "/api/v1/auth/public-key/register",
          R"({"email":"a@b.c","keyType":"ECDSA-P256","keyData":"BA=="})"}},
        {"verifyKeyRegistration",
         [](IApiClient& c) { c.verifyKeyRegistration("a b/é"); },
         {"GET", "/api/v1/auth/public-key/verify?token=a%20b%2F%C3%A9", ""}},
        {"getMe", [](IApiClient& c) { c.getMe(); }, {"GET", "/api/v1/me", ""}},
        {"setNickname",
         [](IApiClient& c) { c.setNickname("Ann \"A\""); },
         {"PATCH", "/api/v1/me", R"({"nickname":"Ann \"A\""})"}},
        {"uploadAvatar",
         [](IApiClient& c) { c.uploadAvatar(std::string("\x89PNG", 4)); },
         {"PUT", "/api/v1/me/avatar", R"({"imageBase64":"iVBORw=="})"}},
        {"getMyAvatar", [](IApiClient& c) { c.getMyAvatar(); }, {"GET", "/api/v1/me/avatar", ""}},
        {"listSoftware (defaults)",
         [](IApiClient& c) { c.listSoftware("", "", "", ""); },
         {"GET", "/api/v1/software?pageSize=100&sort=name", ""}},
        {"listSoftware (all filters)",
         [](IApiClient& c) { c.listSoftware("-rating", "space war", "Action", "win&64"); },
         {"GET", "/api/v1/software?pageSize=100&sort=-rating&q=space%20war&category=Action&platform=win%2664",
          ""}},
        {"listEntitlements",
         [](IApiClient& c) { c.listEntitlements(); },
         {"GET", "/api/v1/me/entitlements", ""}},
        {"requestDownload",
         [](IApiClient& c) { c.requestDownload("s 1"); },
         {"POST", "/api/v1/software/s 1/download", ""}},
        {"latestBuild",
         [](IApiClient& c) { c.latestBuild("s1"); },
         {"GET", "/api/v1/software/s1/builds?pageSize=1", ""}},
        {"startLaunch",
         [](IApiClient& c) { c.startLaunch("s1"); },
         {"POST", "/api/v1/software/s1/launch", ""}},
        {"endLaunch",
         [](IApiClient& c) { c.endLaunch("l1"); },
         {"POST", "/api/v1/activity/launches/l1/end", ""}},
        {"listFriends", [](IApiClient& c) { c.listFriends(); }, {"GET", "/api/v1/me/friends", ""}},
        {"sendFriendRequest",
         [](IApiClient& c) { c.sendFriendRequest("u2"); },
         {"POST", "/api/v1/me/friend-requests", R"({"toUserId":"u2"})"}},
        {"openDirectConversation",
         [](IApiClient& c) { c.openDirectConversation("u2"); },
         {"POST", "/api/v1/chat/conversations", R"({"friendUserId":"u2"})"}},
        {"createGroupConversation",
         [&](IApiClient& c) { c.createGroupConversation(twoIds, "Raid\nnight"); },
         {"POST", "/api/v1/chat/conversations", R"({"participantIds":["u1","u\"2"],"name":"Raid\nnight"})"}},
        {"createGroupConversation (nobody)",
         [](IApiClient& c) { c.createGroupConversation({}, ""); },
         {"POST", "/api/v1/chat/conversations", R"({"participantIds":[],"name":""})"}},
        {"listMessages",
         [](IApiClient& c) { c.listMessages("c1"); },
         {"GET", "/api/v1/chat/conversations/c1/messages?pageSize=100", ""}},
        {"sendMessage",
         [](IApiClient& c) { c.sendMessage("c1", "say \"hi\"\n\tnow\r"); },
         {"POST", "/api/v1/chat/conversations/c1/messages", "{\"content\":\"say \\\"hi\\\"\\n\tnow\r\"}"}},
        {"listVoiceRooms",
         [](IApiClient& c) { c.listVoiceRooms("c/1"); },
         {"GET", "/api/v1/voice/rooms?conversationId=c%2F1", ""}},
        {"createVoiceRoom",
         [](IApiClient& c) { c.createVoiceRoom("c1"); },
         {"POST", "/api/v1/voice/rooms", R"({"conversationId":"c1"})"}},
        {"joinVoiceRoom",
         [](IApiClient& c) { c.joinVoiceRoom("v1"); },
         {"POST", "/api/v1/voice/rooms/v1/join", ""}},
        {"leaveVoiceRoom",
         [](IApiClient& c) { c.leaveVoiceRoom("v1"); },
         {"POST", "/api/v1/voice/rooms/v1/leave", ""}},
        {"setVoiceMuted (true)",
         [](IApiClient& c) { c.setVoiceMuted("v1", true); },
         {"POST", "/api/v1/voice/rooms/v1/mute", R"({"muted":true})"}},
        {"setVoiceMuted (false)",
         [](IApiClient& c) { c.setVoiceMuted("v1", false); },
         {"POST", "/api/v1/voice/rooms/v1/mute", R"({"muted":false})"}},
        {"listRepositoryGames",
         [](IApiClient& c) { c.listRepositoryGames(); },
         {"GET", "/api/v1/github-games", ""}},
        {"listMyRepositoryGames",
         [](IApiClient& c) { c.listMyRepositoryGames(); },
         {"GET", "/api/v1/me/github-games", ""}},
        {"submitRepositoryGame",
         [](IApiClient& c) { c.submitRepositoryGame("https://github.com/o/r", "Orbit", "web/index.html"); },
         {"POST", "/api/v1/me/github-games",
          R"({"repoUrl":"https://github.com/o/r","displayName":"Orbit","launchPath":"web/index.html"})"}},
        {"claimRepositoryGame",
         [](IApiClient& c) { c.claimRepositoryGame("g1"); },
         {"POST", "/api/v1/me/github-games/g1/claim", ""}},
        {"deleteRepositoryGame",
         [](IApiClient& c) { c.deleteRepositoryGame("g1"); },
         {"DELETE", "/api/v1/me/github-games/g1", ""}},
        {"getLinkedRepositoryAccount",
         [](IApiClient& c) { c.getLinkedRepositoryAccount(); },
         {"GET", "/api/v1/me/github", ""}},
        {"startRepositoryAccountLink",
         [](IApiClient& c) { c.startRepositoryAccountLink(); },
         {"GET (no redirect)", "/api/v1/auth/oauth/github/authorize?link=true", ""}},
        {"getPlaytime",
         [](IApiClient& c) { c.getPlaytime("s1"); },
         {"GET", "/api/v1/activity/software/s1/playtime", ""}},
        {"getFriendsPlaytime",
         [](IApiClient& c) { c.getFriendsPlaytime("s1", 5); },
         {"GET", "/api/v1/activity/software/s1/friends-playtime?top=5", ""}},
        {"getUserAvatar",
         [](IApiClient& c) { c.getUserAvatar("u2"); },
         {"GET", "/api/v1/users/u2/avatar", ""}},
        {"rateGame",
         [](IApiClient& c) { c.rateGame("steam:42", 4); },
         {"PUT", "/api/v1/me/ratings", R"({"gameKey":"steam:42","stars":4})"}},
        {"queryRatings",
         [](IApiClient& c) {
             c.queryRatings({"a", "b"});
         },
         {"POST", "/api/v1/ratings/query", R"({"keys":["a","b"]})"}},
        {"getGameFeed",
         [](IApiClient& c) { c.getGameFeed("gh:o/r", 20); },
         {"GET", "/api/v1/activity/game-feed?key=gh%3Ao%2Fr&limit=20", ""}},
        {"getProfileMetadata", [](IApiClient& c) { c.getProfileMetadata(); }, {"GET", "/api/v1/me", ""}},
        {"setProfileMetadata",
         [](IApiClient& c) { c.setProfileMetadata(R"({"bio":"x\y"})"); },
         {"PATCH", "/api/v1/me", R"({"metadata":"{\"bio\":\"x\\y\"}"})"}},
        {"startExternalLaunch",
         [](IApiClient& c) { c.startExternalLaunch("steam", "620", "Portal 2"); },
         {"POST", "/api/v1/activity/external-launches",
          R"({"provider":"steam","externalSoftwareId":"620","name":"Portal 2"})"}},
        {"endExternalLaunch",
         [](IApiClient& c) { c.endExternalLaunch("l2"); },
         {"POST", "/api/v1/activity/external-launches/l2/end", ""}},
        {"getExternalPlaytime",
         [](IApiClient& c) { c.getExternalPlaytime("epic", "Fortnite:Main"); },
         {"GET", "/api/v1/activity/external/playtime?provider=epic&externalId=Fortnite%3AMain", ""}},
        {"getExternalFriendsPlaytime",
         [](IApiClient& c) { c.getExternalFriendsPlaytime("gog", "1 2", 3); },
         {"GET", "/api/v1/activity/external/friends-playtime?provider=gog&externalId=1%202&top=3", ""}},
    };
    for (const OperationCase& operation : cases) {
        SCOPED_TRACE(operation.name);
        RecordingClient client;
        operation.call(client);
        EXPECT_EQ(client.last.method, operation.expected.method);
        EXPECT_EQ(client.last.path, operation.expected.path);
        EXPECT_EQ(client.last.body, operation.expected.body);
    }
}

} // namespace
} // namespace corvandell
