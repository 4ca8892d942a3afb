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
    for (const char* suffix : {"", "/", "///"}) {
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

TEST(WinHttpApiClientTest, JudgesTheStatusAfterReadingTheBody) {
    Settings settings = signedInSettings("status");
    ProbeClient client(&settings);

    scriptNextReply("/api/v1/me/avatar", 204, "");
    EXPECT_EQ(client.request("GET", "/api/v1/me/avatar", ""), "");

    // Never followed, so the token never travels to wherever the redirect points.
    scriptNextReply("/api/v1/me", 302, "moved", R"({"Location":"http://127.0.0.1:9/elsewhere"})");
    EXPECT_EQ(test::thrownText([&] { client.getMe(); }), "Corvandell API HTTP 302: moved");
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
