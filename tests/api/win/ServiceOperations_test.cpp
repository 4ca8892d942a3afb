// Service operations through the real WinHTTP client against the stand-in, in the flows the
// client uses them in, so a wrong path, body or reader shows up as a broken flow.
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

// Sign-in, nickname, own avatar, friends, chat, voice rooms, repository games, entitlements
// and downloads are driven against the stand-in by the windows and the client that use them;
// these are the calls no window test makes.
TEST(ServiceOperationsTest, ProfileMetadataOtherUsersAvatarsAndAForgedKeySignature) {
    Settings settings = signedInSettings("ops-account");
    WinHttpApiClient client(&settings);
    const MeResult me = client.getMe();

    client.setProfileMetadata(R"({"bio":"line one\nline two","path":"C:\\Games"})");
    EXPECT_EQ(client.getProfileMetadata(), R"({"bio":"line one\nline two","path":"C:\\Games"})");
    const std::string image("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    client.uploadAvatar(image);
    EXPECT_EQ(client.getUserAvatar(me.id), image);

    const KeyChallenge challenge = client.startKeyChallenge("ECDSA-P256", kPublicKey);
    EXPECT_TRUE(hasKey(challenge.replyText, "payload")) << challenge.replyText;
    const std::string refused = test::thrownText([&] {
        client.completeKeyChallenge(challenge.challengeId, "MAYCAQECAQE=", "ECDSA-P256", kPublicKey);
    });
    EXPECT_EQ(refused.rfind("Corvandell API HTTP 401: ", 0), 0u) << refused;
}

TEST(ServiceOperationsTest, CatalogueFiltersPlaytimeRatingsAndFeed) {
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

} // namespace
} // namespace corvandell::win
