// Keys the stand-in's flows leave unchecked, and the defaults bad values fall back to.
#include "api/ServiceReaders.hpp"

#include <tuple>

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(ServiceReaders, ListsUnderItemsOrBareArraysReadEveryFieldAndDefaultTheRest) {
    const auto items = readSoftwareList(
        R"({"items":[{"id":"s1","name":"Star \"Lanes\"","description":"Race.\nFast","publisherId":"p1",)"
        R"("category":"Racing","platform":"windows","releaseStatus":"released","tags":["cars", "neon"]},)"
        R"({"id":"s2","name":"Moss","tags":[]}],"page":1,"total":2})");
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(std::tie(items[0].name, items[0].description, items[0].publisherId, items[0].releaseStatus),
              std::tuple("Star \"Lanes\"", "Race.\nFast", "p1", "released"));
    EXPECT_EQ(items[0].tags, (std::vector<std::string>{"cars", "neon"}));
    EXPECT_EQ(std::tie(items[1].category, items[1].tags), std::tuple("", std::vector<std::string>{}));

    const auto owned = readEntitlements(
        R"([{"id":"e1","userId":"u1","softwareTitleId":"s1","isRevoked":false},{"id":"e2","isRevoked": true}])");
    ASSERT_EQ(owned.size(), 2u);
    EXPECT_EQ(std::tie(owned[0].id, owned[0].userId, owned[0].isRevoked, owned[1].isRevoked),
              std::tuple("e1", "u1", false, true));

    const auto friends = readFriends(R"({"items":[{"userId":"u2","username":"kit","online":true,)"
                                     R"("currentGame":"Moss"},{"userId":"u3","online":null}]})");
    ASSERT_EQ(friends.size(), 2u);
    EXPECT_EQ(std::tie(friends[0].username, friends[0].online, friends[0].currentGame, friends[1].online),
              std::tuple("kit", true, "Moss", false));

    const auto messages = readMessages(
        R"({"items":[{"id":"m1","senderId":"u2","senderUsername":"kit","sentAt":"2026-11-01T10:00:00Z",)"
        R"("isDeleted":true,"conversationId":"c1","content":""},{"id":"m2","content":"say \"hi\"\tthere"}]})");
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(
        std::tie(messages[0].senderId, messages[0].sentAt, messages[0].isDeleted, messages[1].isDeleted),
        std::tuple("u2", "2026-11-01T10:00:00Z", true, false));
    EXPECT_EQ(std::tie(messages[1].content, messages[1].senderUsername), std::tuple("say \"hi\"\tthere", ""));

    const auto rooms = readVoiceRooms(R"({"items":[{"id":"v1","status":"active","maxParticipants":8,)"
                                      R"("participants":[{"userId":"u2","muted":false}]},{"id":"v2"}]})");
    ASSERT_EQ(rooms.size(), 2u);
    EXPECT_EQ(std::tie(rooms[0].status, rooms[0].maxParticipants, rooms[1].maxParticipants),
              std::tuple("active", 8, 0));

    const auto times = readFriendPlaytimes(R"({"items":[{"userId":"u2","minutes":90,"seconds":5400}]})");
    ASSERT_EQ(times.size(), 1u);
    EXPECT_EQ(std::tie(times[0].userId, times[0].username), std::tuple("u2", ""));
    const auto feed =
        readFeed(R"({"items":[{"type":"rate","userId":"u2","timestamp":"2026-11-02T08:00:00Z"}]})");
    ASSERT_EQ(feed.size(), 1u);
    EXPECT_EQ(std::tie(feed[0].userId, feed[0].timestamp, feed[0].minutes),
              std::tuple("u2", "2026-11-02T08:00:00Z", 0));

    const auto games =
        readRepositoryGames(R"([{"id":"g1","repoUrl":"https://github.com/o/r","displayName":"R"},)"
                            R"({"id":"g2","isVerifiedOwner":"maybe"}])");
    ASSERT_EQ(games.size(), 2u);
    EXPECT_EQ(std::tie(games[0].repoUrl, games[0].displayName, games[1].isVerifiedOwner),
              std::tuple("https://github.com/o/r", "R", false));
    EXPECT_TRUE(readFeed("not json at all").empty());
}

TEST(ServiceReaders, NumbersThatDoNotParseKeepTheirDefaults) {
    const auto rated = readRatingSummaries(R"({"items":[{"gameKey":"a","average":4.5,"count":2,"myStars":5},)"
                                           R"({"gameKey":"k","average":"high","count":"7"}]})");
    ASSERT_EQ(rated.size(), 2u);
    EXPECT_EQ(std::tie(rated[0].average, rated[0].count, rated[0].myStars), std::tuple(4.5, 2, 5));
    EXPECT_EQ(std::tie(rated[1].gameKey, rated[1].average, rated[1].count, rated[1].myStars),
              std::tuple("k", 0.0, 0, -1));
    const Playtime minutesOnly = readPlaytime(R"({"totalMinutes": 95})");
    EXPECT_EQ(std::tie(minutesOnly.totalMinutes, minutesOnly.totalSeconds), std::tuple(95, 0));
    EXPECT_EQ(readPlaytime(R"({"totalMinutes":1,"totalSeconds":99999999999})").totalSeconds, 0);
}

TEST(ServiceReaders, SingleRecordsReadTheirKeysAndNothingElse) {
    EXPECT_EQ(readMe("<html>502 Bad Gateway</html>").id, "");
    const AuthTokens tokens = readAuthTokens(R"({"userId":"u1","accessToken":"a","refreshToken":"r"})");
    EXPECT_EQ(std::tie(tokens.userId, tokens.accessToken, tokens.refreshToken), std::tuple("u1", "a", "r"));
    EXPECT_EQ(readAuthTokens(R"({"access_token":"a","refresh_token":"r"})").accessToken, "");

    const Conversation direct = readConversation(
        R"({"otherParticipant":{"userId":"u2","username":"kit"},"id":"c1","type":"direct","name":""})");
    EXPECT_EQ(std::tie(direct.otherUserId, direct.otherUsername, direct.id), std::tuple("u2", "kit", "c1"));
    EXPECT_EQ(readConversation(R"({"id":"c2","type":"group","name":"Raid"})").otherUserId, "");

    EXPECT_EQ(readLatestBuild(R"({"items":[{"version":"1.2.0"},{"version":"1.1.0"}]})").version, "1.2.0");
    EXPECT_EQ(readLatestBuild(R"({"items":[]})").version, "");
    const std::string challengeReply = R"({"challengeId":"ch1","payload":{"nonce":"n"}})";
    EXPECT_EQ(readKeyChallenge(challengeReply).replyText, challengeReply);
    const RegStart registration = readRegStart(R"({"registrationId":"r1","emailSent":true})");
    EXPECT_EQ(std::tie(registration.registrationId, registration.emailSent, registration.message),
              std::tuple("r1", true, ""));
    const LaunchStart launch =
        readLaunchStart(R"({"id":"x","launchId":"l1","startTime":"2026-11-02T08:00:00Z"})");
    EXPECT_EQ(std::tie(launch.launchId, launch.startTime), std::tuple("l1", "2026-11-02T08:00:00Z"));
}

TEST(ServiceReaders, DownloadGrantTakesTheSingleAddressFormOrTheAssetList) {
    const auto single = readDownloadGrant(R"({"downloadUrl":"http://h/f.zip"})");
    ASSERT_EQ(single.size(), 1u);
    EXPECT_EQ(std::tie(single[0].assetId, single[0].signedUrl), std::tuple("asset", "http://h/f.zip"));
    const auto assets = readDownloadGrant(
        R"({"items":[{"assetId":"a1","type":"zip","signedUrl":"http://h/1"},{"assetId":"a2","type":"pak"}]})");
    ASSERT_EQ(assets.size(), 2u);
    EXPECT_EQ(std::tie(assets[0].assetId, assets[0].type, assets[0].signedUrl, assets[1].signedUrl),
              std::tuple("a1", "zip", "http://h/1", ""));
    EXPECT_TRUE(readDownloadGrant("").empty());
}

} // namespace
} // namespace corvandell
