// The request core against a real HTTP server on loopback that sends the replies the
// stand-in never does: in several chunks, empty, cut off, oversized, and redirecting to
// another server, which must receive nothing (the bearer token would go with the request).
#include "api/win/WinHttpApiClient.hpp"

#include "support/ThrownText.hpp"
#include "support/win/LoopbackHttpServer.hpp"

#include <gtest/gtest.h>

namespace corvandell::win {
namespace {

using test::LoopbackHttpServer;

class ReplyProbe : public WinHttpApiClient {
public:
    using WinHttpApiClient::request;
    using WinHttpApiClient::WinHttpApiClient;
};

// Sends the pieces with a pause between them, so they arrive as separate reads.
LoopbackHttpServer::Handler inPieces(std::vector<std::string> pieces) {
    return [pieces = std::move(pieces)](SOCKET client) {
        for (const auto& piece : pieces) {
            LoopbackHttpServer::sendAll(client, piece);
            Sleep(30);
        }
    };
}

TEST(WinHttpRepliesTest, ReadsChunkedEmptyAndCutOffBodiesAsTheyCame) {
    const struct {
        const char* what;
        std::vector<std::string> pieces;
        const char* result; // the body returned, or the error text
    } cases[] = {
        {"chunked in pieces",
         {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", "6\r\n{\"id\":\r\n", "4\r\n\"a\"}\r\n",
          "0\r\n\r\n"},
         R"({"id":"a"})"},
        {"no content", {"HTTP/1.1 204 No Content\r\n\r\n"}, ""},
        {"error in pieces",
         {"HTTP/1.1 503 Busy\r\nContent-Length: 4\r\n\r\n", "bu", "sy"},
         "Corvandell API HTTP 503: busy"},
        // The body read so far is judged and returned, as every exchange does.
        {"cut off", {"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n", "{\"id\":\"cut"}, "{\"id\":\"cut"},
    };
    for (const auto& [what, pieces, result] : cases) {
        LoopbackHttpServer server(inPieces(pieces));
        Settings settings;
        settings.apiBaseUrl = server.baseUrl();
        ReplyProbe client(&settings);
        std::string got;
        try {
            got = client.request("GET", "/api/v1/me", "");
        } catch (const std::exception& error) {
            got = error.what();
        }
        EXPECT_EQ(got, result) << what;
        EXPECT_EQ(server.requestCount(), 1) << what;
    }
}

TEST(WinHttpRepliesTest, RefusesABodyOver64MegabytesWithoutReadingItAll) {
    constexpr size_t kLimit = size_t{64} << 20;
    // Declared up front: refused from the header, though only a few bytes ever come.
    LoopbackHttpServer declared(
        inPieces({"HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(kLimit + 1) + "\r\n\r\n{}"}));
    // Chunked, so the size shows only as it arrives: 65 chunks of 1 MB.
    LoopbackHttpServer streamed([](SOCKET client) {
        LoopbackHttpServer::sendAll(client, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        const std::string chunk = "100000\r\n" + std::string(1 << 20, 'x') + "\r\n";
        for (int i = 0; i < 65 && LoopbackHttpServer::sendAll(client, chunk); ++i) {
        }
        LoopbackHttpServer::sendAll(client, "0\r\n\r\n");
    });
    for (const LoopbackHttpServer* server : {&declared, &streamed}) {
        Settings settings;
        settings.apiBaseUrl = server->baseUrl();
        EXPECT_EQ(test::thrownText([&] { WinHttpApiClient(&settings).getMe(); }),
                  "Corvandell API reply larger than 64 MB");
    }
    // Exactly the limit is still a reply.
    LoopbackHttpServer atLimit([&](SOCKET client) {
        LoopbackHttpServer::sendAll(client, "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(kLimit) +
                                                "\r\n\r\n" + std::string(kLimit, ' '));
    });
    Settings settings;
    settings.apiBaseUrl = atLimit.baseUrl();
    EXPECT_EQ(ReplyProbe(&settings).request("GET", "/x", "").size(), kLimit);
}

TEST(WinHttpRepliesTest, ARedirectToAnotherServerIsAnErrorAndTheOtherServerHearsNothing) {
    LoopbackHttpServer elsewhere(inPieces({"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"}));
    LoopbackHttpServer service(inPieces({"HTTP/1.1 302 Found\r\nLocation: " + elsewhere.baseUrl() +
                                         "/api/v1/me\r\nContent-Length: 5\r\n\r\nmoved"}));
    Settings settings;
    settings.apiBaseUrl = service.baseUrl();
    settings.bearerToken = "secret-token";
    EXPECT_EQ(test::thrownText([&] { WinHttpApiClient(&settings).getMe(); }),
              "Corvandell API HTTP 302: moved");
    EXPECT_NE(service.lastRequestHead().find("Authorization: Bearer secret-token"), std::string::npos);
    EXPECT_EQ(elsewhere.requestCount(), 0);
}

} // namespace
} // namespace corvandell::win
