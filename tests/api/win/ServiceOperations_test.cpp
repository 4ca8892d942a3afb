// Every service operation through the real WinHTTP client against the stand-in, in the
// flows the client uses them in, so a wrong path, body or reader shows up as a broken flow.
#include "api/win/WinHttpApiClient.hpp"

#include <algorithm>
#include <tuple>

#include "api/JsonText.hpp"
#include "support/ThrownText.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

namespace corvandell::win {
namespace {

// A valid P-256 public key; signing is tested with the stand-in's own tests, so no private half.
constexpr char kPublicKey[] =
    "BD7Xoo7GSO3OXVt+JS9rKq+7RINRFKJLPKqPcQ9kmTvCVxGjTNySKQgLY58Jl3/rfKkezOFkm/6orYXHKyBq3n4=";
constexpr char kPaperMoth[] = "6c2605c5-4c84-522e-b052-c8337030cd28"; // a free title with a build

TEST(ServiceOperationsTest, AccountTokensProfileAndDeviceKey) {
    Settings settings = signedInSettings("ops-account");
    WinHttpApiClient client(&settings);

    const AuthTokens renewed = client.refreshTokens(settings.refreshToken);
    settings.bearerToken = renewed.accessToken;
    const MeResult me = client.getMe();
    EXPECT_EQ(std::tie(me.id, me.email), std::tuple(renewed.userId, "ops-account@corvandell.test"));

    client.setNickname("Ann \"the Bold\"");
    EXPECT_EQ(client.getMe().nickname, "Ann \"the Bold\"");
    client.setProfileMetadata(R"({"bio":"line one\nline two","path":"C:\\Games"})");
    EXPECT_EQ(client.getProfileMetadata(), R"({"bio":"line one\nline two","path":"C:\\Games"})");

    const std::string image("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    client.uploadAvatar(image);
    EXPECT_EQ(client.getMyAvatar(), image);
    EXPECT_EQ(client.getUserAvatar(me.id), image);

    const KeyChallenge challenge = client.startKeyChallenge("ECDSA-P256", kPublicKey);
    EXPECT_FALSE(challenge.challengeId.empty());
    EXPECT_TRUE(hasKey(challenge.replyText, "payload")) << challenge.replyText;
    const std::string refused = test::thrownText([&] {
        client.completeKeyChallenge(challenge.challengeId, "MAYCAQECAQE=", "ECDSA-P256", kPublicKey);
    });
    EXPECT_EQ(refused.rfind("Corvandell API HTTP 401: ", 0), 0u) << refused;

    EXPECT_TRUE(client.registerKey("kay@corvandell.test", "ECDSA-P256", kPublicKey).emailSent);
    const auto mails = readObjectList(callStandIn("GET", "/__test/outbox"), "items");
    ASSERT_FALSE(mails.empty());
    const AuthTokens verified = client.verifyKeyRegistration(readString(mails.back(), "token"));
    settings.bearerToken = verified.accessToken;
    EXPECT_EQ(client.getMe().email, "kay@corvandell.test");
}

TEST(ServiceOperationsTest, CatalogueDownloadsPlaySessionsRatingsAndFeed) {
    Settings playerSettings = signedInSettings("ops-player");
    Settings friendSettings = signedInSettings("ops-watcher");
    WinHttpApiClient player(&playerSettings);
    WinHttpApiClient watcher(&friendSettings);
    player.sendFriendRequest(watcher.getMe().id);
    watcher.sendFriendRequest(player.getMe().id);

    const auto racing = player.listSoftware("name", "", "racing", "windows");
    ASSERT_FALSE(racing.empty());
    EXPECT_TRUE(std::all_of(racing.begin(), racing.end(), [](const SoftwareItem& item) {
        return item.category == "Racing" && item.platform == "windows";
    }));
    const auto found = player.listSoftware("name", "paper moth", "", "");
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].id, kPaperMoth);

    const auto owned = player.listEntitlements();
    EXPECT_TRUE(std::any_of(owned.begin(), owned.end(), [](const Entitlement& e) {
        return e.softwareTitleId == kPaperMoth && !e.isRevoked;
    }));
    EXPECT_EQ(player.latestBuild(kPaperMoth).version, "1.0.1");
    const auto grant = player.requestDownload(kPaperMoth);
    ASSERT_EQ(grant.size(), 1u);
    EXPECT_EQ(grant[0].signedUrl.rfind(serviceBaseUrl(), 0), 0u) << grant[0].signedUrl;

    const LaunchStart launch = player.startLaunch(kPaperMoth);
    advanceServiceClock(600);
    player.endLaunch(launch.launchId);
    EXPECT_EQ(player.getPlaytime(kPaperMoth).totalMinutes, 10);
    const auto friendsTime = watcher.getFriendsPlaytime(kPaperMoth, 5);
    ASSERT_EQ(friendsTime.size(), 1u);
    EXPECT_EQ(std::tie(friendsTime[0].username, friendsTime[0].minutes), std::tuple("ops-player", 10));

    const LaunchStart external = player.startExternalLaunch("steam", "620", "Portal 2");
    advanceServiceClock(125);
    player.endExternalLaunch(external.launchId);
    EXPECT_EQ(player.getExternalPlaytime("steam", "620").totalSeconds, 125);
    const auto externalFriends = watcher.getExternalFriendsPlaytime("steam", "620", 3);
    ASSERT_EQ(externalFriends.size(), 1u);
    EXPECT_EQ(externalFriends[0].seconds, 125);

    EXPECT_EQ(player.rateGame(kPaperMoth, 4).myStars, 4);
    const auto summaries = watcher.queryRatings({kPaperMoth, "steam:does-not-exist"});
    ASSERT_EQ(summaries.size(), 2u);
    EXPECT_EQ(std::tie(summaries[0].gameKey, summaries[0].myStars, summaries[1].count),
              std::tuple(kPaperMoth, -1, 0));

    const auto feed = watcher.getGameFeed(kPaperMoth, 20);
    EXPECT_TRUE(std::any_of(feed.begin(), feed.end(), [](const FeedEntry& entry) {
        return entry.type == "play" && entry.username == "ops-player" && entry.minutes == 10;
    }));
}

TEST(ServiceOperationsTest, FriendsConversationsMessagesAndVoiceRooms) {
    Settings annSettings = signedInSettings("ops-ann");
    Settings benSettings = signedInSettings("ops-ben");
    WinHttpApiClient ann(&annSettings);
    WinHttpApiClient ben(&benSettings);
    const std::string benId = ben.getMe().id;

    ann.sendFriendRequest(benId);
    EXPECT_TRUE(ann.listFriends().empty()) << "a request alone makes no friends";
    ben.sendFriendRequest(ann.getMe().id);
    const auto friends = ann.listFriends();
    ASSERT_EQ(friends.size(), 1u);
    EXPECT_EQ(friends[0].userId, benId);

    const Conversation direct = ann.openDirectConversation(benId);
    EXPECT_EQ(std::tie(direct.type, direct.otherUserId, direct.otherUsername),
              std::tuple("direct", benId, "ops-ben"));
    const Conversation group = ann.createGroupConversation({benId}, "Raid \"night\"");
    EXPECT_EQ(group.name, "Raid \"night\"");

    const ChatMessage sent = ann.sendMessage(direct.id, "hi \"ben\"\n\tsecond line");
    EXPECT_EQ(sent.content, "hi \"ben\"\n\tsecond line");
    const auto history = ben.listMessages(direct.id);
    ASSERT_FALSE(history.empty());
    EXPECT_EQ(std::tie(history.back().id, history.back().senderUsername), std::tuple(sent.id, "ops-ann"));

    const VoiceRoom room = ann.createVoiceRoom(group.id);
    EXPECT_EQ(room.conversationId, group.id);
    EXPECT_GT(room.maxParticipants, 0);
    const auto rooms = ben.listVoiceRooms(group.id);
    ASSERT_EQ(rooms.size(), 1u);
    EXPECT_EQ(rooms[0].id, room.id);
    EXPECT_EQ(ben.joinVoiceRoom(room.id).id, room.id);
    ben.setVoiceMuted(room.id, true);
    ben.leaveVoiceRoom(room.id);
    EXPECT_EQ(
        test::thrownText([&] { ben.setVoiceMuted(room.id, false); }).rfind("Corvandell API HTTP 409: ", 0),
        0u);
}

TEST(ServiceOperationsTest, RepositoryGamesSharingClaimingAndAccountLinking) {
    Settings ownerSettings = signedInSettings("ops-owner");
    Settings sharerSettings = signedInSettings("ops-sharer");
    WinHttpApiClient owner(&ownerSettings);
    WinHttpApiClient sharer(&sharerSettings);

    const RepositoryGame shared =
        sharer.submitRepositoryGame("https://github.com/ops-owner-gh/comet", "Comet", "web/index.html");
    EXPECT_EQ(
        std::tie(shared.ownerLogin, shared.repoName, shared.isVerifiedOwner, shared.submittedByUsername),
        std::tuple("ops-owner-gh", "comet", false, "ops-sharer"));

    const std::string conflict = test::thrownText(
        [&] { owner.submitRepositoryGame("github.com/ops-owner-gh/comet", "Comet", "index.html"); });
    EXPECT_EQ(conflict.rfind("Corvandell API HTTP 409: ", 0), 0u) << conflict;
    EXPECT_NE(conflict.find("Already shared by ops-sharer"), std::string::npos) << conflict;

    EXPECT_EQ(owner.getLinkedRepositoryAccount(), "");
    const std::string link = owner.startRepositoryAccountLink();
    ASSERT_EQ(link.rfind(serviceBaseUrl(), 0), 0u) << link;
    // The login comes from the (simulated) provider's reply; one sent by the caller is ignored.
    callStandIn("POST", "/__test/github-account", R"({"username":"ops-owner","login":"ops-owner-gh"})");
    callStandIn("GET", link.substr(serviceBaseUrl().size()) + "&login=someone-else");
    EXPECT_EQ(owner.getLinkedRepositoryAccount(), "ops-owner-gh");

    EXPECT_TRUE(owner.claimRepositoryGame(shared.id).isVerifiedOwner);
    const auto mine = owner.listMyRepositoryGames();
    ASSERT_EQ(mine.size(), 1u);
    EXPECT_EQ(mine[0].launchPath, "web/index.html");
    const auto everyone = sharer.listRepositoryGames();
    EXPECT_TRUE(std::any_of(everyone.begin(), everyone.end(),
                            [&](const RepositoryGame& g) { return g.id == shared.id; }));

    owner.deleteRepositoryGame(shared.id);
    EXPECT_TRUE(owner.listMyRepositoryGames().empty());
}

} // namespace
} // namespace corvandell::win
