// Recorded below the transport, so a wrong method, path, encoding or body byte shows up.
#include "api/ApiClient.hpp"

#include <functional>

#include <gtest/gtest.h>

namespace corvandell {
namespace {

class RecordingClient : public ApiClient {
public:
    std::string sent; // "METHOD path"
    std::string sentBody;

protected:
    std::string request(const std::string& method, const std::string& path,
                        const std::string& body) override {
        sent = method + " " + path;
        sentBody = body;
        return "{}";
    }
    std::string requestRedirectLocation(const std::string& path) override {
        sent = "GET (no redirect) " + path;
        return "https://example.invalid/authorize";
    }
};

struct OperationCase {
    std::function<void(IApiClient&)> call;
    std::string request;
    std::string body = "";
};

#define CALL(...) [](IApiClient& c) { c.__VA_ARGS__; }

TEST(ApiClient, EveryOperationSendsItsMethodPathAndExactBody) {
    const std::vector<OperationCase> cases{
        {CALL(refreshTokens("r\\1")), "POST /api/v1/auth/refresh", R"({"refreshToken":"r\\1"})"},
        {CALL(startKeyChallenge("ECDSA-P256", "BA+/=")), "POST /api/v1/auth/public-key/challenge",
         R"({"keyType":"ECDSA-P256","keyData":"BA+/="})"},
        {CALL(completeKeyChallenge("c1", "MEU=", "ECDSA-P256", "BA==")),
         "POST /api/v1/auth/public-key/complete",
         R"({"challengeId":"c1","signature":"MEU=","keyType":"ECDSA-P256","keyData":"BA=="})"},
        {CALL(registerKey("a@b.c", "ECDSA-P256", "BA==")), "POST /api/v1/auth/public-key/register",
         R"({"email":"a@b.c","keyType":"ECDSA-P256","keyData":"BA=="})"},
        {CALL(verifyKeyRegistration("a b/é")), "GET /api/v1/auth/public-key/verify?token=a%20b%2F%C3%A9"},
        {CALL(setNickname("Ann \"A\"")), "PATCH /api/v1/me", R"({"nickname":"Ann \"A\""})"},
        {CALL(uploadAvatar(std::string("\x89PNG", 4))), "PUT /api/v1/me/avatar",
         R"({"imageBase64":"iVBORw=="})"},
        {CALL(listSoftware("", "", "", "")), "GET /api/v1/software?pageSize=100&sort=name"},
        {CALL(listSoftware("-rating", "space war", "Action", "win&64")),
         "GET /api/v1/software?pageSize=100&sort=-rating&q=space%20war&category=Action&platform=win%2664"},
        {CALL(requestDownload("s 1")), "POST /api/v1/software/s 1/download"},
        {CALL(startLaunch("s1")), "POST /api/v1/software/s1/launch"},
        {CALL(endLaunch("l1")), "POST /api/v1/activity/launches/l1/end"},
        {CALL(sendFriendRequest("u2")), "POST /api/v1/me/friend-requests", R"({"toUserId":"u2"})"},
        {CALL(openDirectConversation("u2")), "POST /api/v1/chat/conversations", R"({"friendUserId":"u2"})"},
        {CALL(createGroupConversation({"u1", "u\"2"}, "Raid\nnight")), "POST /api/v1/chat/conversations",
         R"({"participantIds":["u1","u\"2"],"name":"Raid\nnight"})"},
        {CALL(listMessages("c1")), "GET /api/v1/chat/conversations/c1/messages?pageSize=100"},
        {CALL(sendMessage("c1", "say \"hi\"\n\tnow\r")), "POST /api/v1/chat/conversations/c1/messages",
         "{\"content\":\"say \\\"hi\\\"\\n\tnow\r\"}"},
        {CALL(listVoiceRooms("c/1")), "GET /api/v1/voice/rooms?conversationId=c%2F1"},
        {CALL(createVoiceRoom("c1")), "POST /api/v1/voice/rooms", R"({"conversationId":"c1"})"},
        {CALL(setVoiceMuted("v1", true)), "POST /api/v1/voice/rooms/v1/mute", R"({"muted":true})"},
        {CALL(submitRepositoryGame("https://github.com/o/r", "Orbit", "web/index.html")),
         "POST /api/v1/me/github-games",
         R"({"repoUrl":"https://github.com/o/r","displayName":"Orbit","launchPath":"web/index.html"})"},
        {CALL(deleteRepositoryGame("g1")), "DELETE /api/v1/me/github-games/g1"},
        {CALL(startRepositoryAccountLink()),
         "GET (no redirect) /api/v1/auth/oauth/github/authorize?link=true"},
        {CALL(getFriendsPlaytime("s1", 5)), "GET /api/v1/activity/software/s1/friends-playtime?top=5"},
        {CALL(rateGame("steam:42", 4)), "PUT /api/v1/me/ratings", R"({"gameKey":"steam:42","stars":4})"},
        {CALL(queryRatings({"a", "b"})), "POST /api/v1/ratings/query", R"({"keys":["a","b"]})"},
        {CALL(getGameFeed("gh:o/r", 20)), "GET /api/v1/activity/game-feed?key=gh%3Ao%2Fr&limit=20"},
        {CALL(setProfileMetadata(R"({"bio":"x\y"})")), "PATCH /api/v1/me",
         R"({"metadata":"{\"bio\":\"x\\y\"}"})"},
        {CALL(startExternalLaunch("steam", "620", "Portal 2")), "POST /api/v1/activity/external-launches",
         R"({"provider":"steam","externalSoftwareId":"620","name":"Portal 2"})"},
        {CALL(getExternalPlaytime("epic", "Fortnite:Main")),
         "GET /api/v1/activity/external/playtime?provider=epic&externalId=Fortnite%3AMain"},
    };
    for (const OperationCase& operation : cases) {
        RecordingClient client;
        operation.call(client);
        EXPECT_EQ(client.sent, operation.request);
        EXPECT_EQ(client.sentBody, operation.body) << operation.request;
    }
}
#undef CALL

} // namespace
} // namespace corvandell
