// The real WinHTTP client against the service stand-in on loopback: what goes over the
// wire (checked through the stand-in's record of the last request) and every fixed error.
#include "api/win/WinHttpApiClient.hpp"

#include <tuple>

#include "api/JsonText.hpp"
#include "support/ThrownText.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

namespace corvandell::win {
namespace {

constexpr char kPaperMoth[] = "6c2605c5-4c84-522e-b052-c8337030cd28"; // a free title of the stand-in

TEST(WinHttpApiClientTest, JoinsTheBaseAddressWithExactlyOneSlashWhateverItEndsIn) {
    Settings settings = signedInSettings("slash");
    const std::string base = settings.apiBaseUrl;
    for (const char* suffix : {"", "///"}) {
        settings.apiBaseUrl = base + suffix;
        EXPECT_EQ(WinHttpApiClient(&settings).getMe().username, "slash") << suffix;
        EXPECT_EQ(lastReceivedRequest().path, "/api/v1/me") << suffix;
    }
}

TEST(WinHttpApiClientTest, SendsOnlyTheHeadersThatApply) {
    Settings settings = signedInSettings("headers");
    WinHttpApiClient client(&settings);

    client.setNickname("Ann \"A\"");
    ReceivedRequest received = lastReceivedRequest();
    EXPECT_EQ(std::tie(received.method, received.body), std::tuple("PATCH", R"({"nickname":"Ann \"A\""})"));
    EXPECT_EQ(received.headers["Accept"], "application/json");
    EXPECT_EQ(received.headers["Authorization"], "Bearer " + settings.bearerToken);
    EXPECT_EQ(received.headers["Content-Type"], "application/json");

    client.startLaunch(kPaperMoth); // free, so anyone may launch it
    received = lastReceivedRequest();
    EXPECT_EQ(std::tie(received.method, received.body), std::tuple("POST", ""));
    EXPECT_FALSE(received.headers.contains("Content-Type"));

    settings.bearerToken.clear();
    const std::string refused = test::thrownText([&] { client.listFriends(); });
    EXPECT_EQ(refused.rfind("Corvandell API HTTP 401: {", 0), 0u) << refused;
    EXPECT_FALSE(lastReceivedRequest().headers.contains("Authorization"));
}

// Hostile free text through the client's own writers and readers and back: quotes,
// backslashes, CR, tab, control characters, and text shaped like the fields after it.
TEST(WinHttpApiClientTest, HostileTextComesBackByteForByteAndMovesNoField) {
    Settings annSettings = signedInSettings("hostile-ann");
    Settings benSettings = signedInSettings("hostile-ben");
    WinHttpApiClient ann(&annSettings);
    WinHttpApiClient ben(&benSettings);
    const MeResult benMe = ben.getMe();
    ann.sendFriendRequest(benMe.id);
    ben.sendFriendRequest(ann.getMe().id);
    const std::string texts[] = {
        "q\"b\\c\rt\tx\x01\x1f!",
        "x\",\"id\":\"forged\",\"username\":\"x",
        "\\r\\u0041 \\",
    };
    for (const std::string& text : texts) {
        ben.setNickname(text);
        const MeResult me = ben.getMe();
        EXPECT_EQ(std::tie(me.id, me.username, me.nickname), std::tie(benMe.id, benMe.username, text));

        const Conversation direct = ann.openDirectConversation(benMe.id);
        const ChatMessage sent = ben.sendMessage(direct.id, text);
        EXPECT_EQ(std::tie(sent.senderUsername, sent.content), std::tuple("hostile-ben", text));
        EXPECT_EQ(ann.listMessages(direct.id).back().content, text);
        const Conversation group = ann.createGroupConversation({benMe.id}, text);
        EXPECT_EQ(std::tie(group.type, group.name), std::tuple("group", text));
        EXPECT_EQ(group.id.size(), 36u) << group.id; // a uuid, not text from the name
    }
}

TEST(WinHttpApiClientTest, TransportFailuresHaveTheirOwnTexts) {
    Settings settings;
    settings.apiBaseUrl = "http://127.0.0.1:1";
    EXPECT_EQ(test::thrownText([&] { WinHttpApiClient(&settings).getMe(); }), "HTTP request failed");
    settings.apiBaseUrl = "127.0.0.1:8080";
    EXPECT_EQ(test::thrownText([&] { WinHttpApiClient(&settings).getMe(); }), "Invalid URL");
}

} // namespace
} // namespace corvandell::win
