#include "api/ServiceReaders.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(ServiceReaders, ReadListsUnderItemsOrBareArraysWithEveryField) {
    const std::string catalogue =
        R"({"items":[{"id":"s1","name":"Star \"Lanes\"","description":"Race.\nFast","publisherId":"p1",)"
        R"("category":"Racing","platform":"windows","releaseStatus":"released","tags":["cars", "neon"]},)"
        R"({"id":"s2","name":"Moss","tags":[]}],"page":1,"total":2})";
    const auto items = readSoftwareList(catalogue);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].name, "Star \"Lanes\"");
    EXPECT_EQ(items[0].description, "Race.\nFast");
    EXPECT_EQ(items[0].releaseStatus, "released");
    EXPECT_EQ(items[0].tags, (std::vector<std::string>{"cars", "neon"}));
    EXPECT_EQ(items[1].category, "");
    EXPECT_TRUE(items[1].tags.empty());

    const auto entitlements = readEntitlements(
        R"([{"id":"e1","userId":"u1","softwareTitleId":"s1","isRevoked":false},{"id":"e2","isRevoked": true}])");
    ASSERT_EQ(entitlements.size(), 2u);
    EXPECT_EQ(entitlements[0].softwareTitleId, "s1");
    EXPECT_FALSE(entitlements[0].isRevoked);
    EXPECT_TRUE(entitlements[1].isRevoked);

    const auto friends = readFriends(
        R"({"items":[{"userId":"u2","username":"kit","online":true,"currentGame":"Moss"},{"userId":"u3","online":null}]})");
    ASSERT_EQ(friends.size(), 2u);
    EXPECT_TRUE(friends[0].online);
    EXPECT_EQ(friends[0].currentGame, "Moss");
    EXPECT_FALSE(friends[1].online);

    const auto messages = readMessages(
        R"({"items":[{"id":"m1","senderId":"u2","senderUsername":"kit","sentAt":"2026-11-01T10:00:00Z",)"
        R"("isDeleted":true,"conversationId":"c1","content":""},{"id":"m2","content":"say \"hi\"\tthere"}],)"
        R"("hasMore":false})");
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_TRUE(messages[0].isDeleted);
    EXPECT_EQ(messages[0].sentAt, "2026-11-01T10:00:00Z");
    EXPECT_EQ(messages[1].content, "say \"hi\"\tthere");
    EXPECT_EQ(messages[1].senderUsername, "");

    const auto rooms =
        readVoiceRooms(R"({"items":[{"id":"v1","conversationId":"c1","status":"active","maxParticipants":8,)"
                       R"("participants":[{"userId":"u2","username":"kit","muted":false}]}]})");
    ASSERT_EQ(rooms.size(), 1u);
    EXPECT_EQ(rooms[0].maxParticipants, 8);

    const auto playtimes =
        readFriendPlaytimes(R"({"items":[{"userId":"u2","username":"kit","minutes":90,"seconds":5400}]})");
    ASSERT_EQ(playtimes.size(), 1u);
    EXPECT_EQ(playtimes[0].seconds, 5400);

    const auto feed =
        readFeed(R"({"items":[{"type":"rate","userId":"u2","username":"kit",)"
                 R"("timestamp":"2026-11-02T08:00:00Z","minutes":0,"stars":5,"gameKey":"k"}]})");
    ASSERT_EQ(feed.size(), 1u);
    EXPECT_EQ(feed[0].type, "rate");
    EXPECT_EQ(feed[0].stars, 5);

    const auto games =
        readRepositoryGames(R"([{"id":"g1","repoName":"r"},{"id":"g2","isVerifiedOwner":"maybe"}])");
    ASSERT_EQ(games.size(), 2u);
    EXPECT_FALSE(games[1].isVerifiedOwner);

    const LaunchStart launch =
        readLaunchStart(R"({"launchId":"l1","id":"l1","startTime":"2026-11-02T08:00:00Z"})");
    EXPECT_EQ(launch.launchId, "l1");
    EXPECT_EQ(launch.startTime, "2026-11-02T08:00:00Z");

    EXPECT_TRUE(readMessages(R"({"items":[]})").empty());
    EXPECT_TRUE(readFeed("not json at all").empty());
}

TEST(ServiceReaders, MissingOrMalformedFieldsKeepTheirDefaults) {
    const RatingSummary unrated = readRatingSummary(R"({"gameKey":"k","average":"high","count":"7"})");
    EXPECT_EQ(unrated.gameKey, "k");
    EXPECT_EQ(unrated.average, 0.0);
    EXPECT_EQ(unrated.count, 0);
    EXPECT_EQ(unrated.myStars, -1);

    const auto rated = readRatingSummaries(
        R"({"items":[{"gameKey":"a","average":4.5,"count":2,"myStars":5},{"gameKey":"b","average":1e400}]})");
    ASSERT_EQ(rated.size(), 2u);
    EXPECT_DOUBLE_EQ(rated[0].average, 4.5);
    EXPECT_EQ(rated[0].myStars, 5);
    EXPECT_EQ(rated[1].average, 0.0);

    const Playtime minutesOnly = readPlaytime(R"({"totalMinutes": 95})");
    EXPECT_EQ(minutesOnly.totalMinutes, 95);
    EXPECT_EQ(minutesOnly.totalSeconds, 0);
    EXPECT_EQ(readPlaytime(R"({"totalMinutes":99999999999})").totalMinutes, 0);

    const VoiceRoom room = readVoiceRoom(R"({"id":"v1","conversationId":"c1","status":"open"})");
    EXPECT_EQ(room.status, "open");
    EXPECT_EQ(room.maxParticipants, 0);

    const MeResult me = readMe("<html>502 Bad Gateway</html>");
    EXPECT_EQ(me.id, "");
    EXPECT_EQ(readAuthTokens(R"({"access_token":"a","refresh_token":"r"})").accessToken, "");
    EXPECT_EQ(readLatestBuild(R"({"items":[]})").version, "");
    EXPECT_EQ(readLinkedLogin("{}"), "");
}

TEST(ServiceReaders, SingleRecordsReadNestedAndSiblingFields) {
    const Conversation direct = readConversation(
        R"({"otherParticipant":{"userId":"u2","username":"kit"},"id":"c1","type":"direct","name":""})");
    EXPECT_EQ(direct.otherUserId, "u2");
    EXPECT_EQ(direct.otherUsername, "kit");
    EXPECT_EQ(direct.id, "c1");
    EXPECT_EQ(direct.type, "direct");

    const Conversation group = readConversation(R"({"id":"c2","type":"group","name":"Raid"})");
    EXPECT_EQ(group.otherUserId, "");
    EXPECT_EQ(group.name, "Raid");

    const BuildInfo build = readLatestBuild(R"({"items":[{"version":"1.2.0"},{"version":"1.1.0"}]})");
    EXPECT_EQ(build.version, "1.2.0");

    const KeyChallenge challenge = readKeyChallenge(R"({"challengeId":"ch1","payload":{"nonce":"n"}})");
    EXPECT_EQ(challenge.challengeId, "ch1");
    EXPECT_EQ(challenge.replyText, R"({"challengeId":"ch1","payload":{"nonce":"n"}})");

    const RegStart registration = readRegStart(R"({"registrationId":"r1","email":"a@b.c","emailSent":true})");
    EXPECT_TRUE(registration.emailSent);
    EXPECT_EQ(registration.message, "");

    const RepositoryGame game = readRepositoryGame(
        R"({"id":"g1","repoUrl":"https://github.com/o/r","ownerLogin":"o","repoName":"r","displayName":"R",)"
        R"("launchPath":"index.html","isVerifiedOwner":true,"submittedByUsername":"ann"})");
    EXPECT_EQ(game.ownerLogin, "o");
    EXPECT_TRUE(game.isVerifiedOwner);
    EXPECT_EQ(game.submittedByUsername, "ann");

    EXPECT_EQ(readProfileMetadata(R"({"id":"u1","metadata":"{\"bio\":\"hi\"}"})"), R"({"bio":"hi"})");
}

TEST(ServiceReaders, DownloadGrantTakesTheSingleAddressFormOrTheAssetList) {
    const auto single = readDownloadGrant(R"({"downloadUrl":"http://h/f.zip"})");
    ASSERT_EQ(single.size(), 1u);
    EXPECT_EQ(single[0].assetId, "asset");
    EXPECT_EQ(single[0].signedUrl, "http://h/f.zip");

    const auto assets = readDownloadGrant(
        R"({"items":[{"assetId":"a1","type":"zip","signedUrl":"http://h/1"},{"assetId":"a2","type":"pak"}]})");
    ASSERT_EQ(assets.size(), 2u);
    EXPECT_EQ(assets[0].type, "zip");
    EXPECT_EQ(assets[1].signedUrl, "");

    EXPECT_TRUE(readDownloadGrant("").empty());
}

} // namespace
} // namespace corvandell
