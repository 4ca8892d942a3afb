// The loopback listener under hostile local clients: idle connections by the hundred,
// requests that stall, heads over the limit, other methods. None of it may keep a real
// browser redirect (curl from Linux) from being answered and handed on. Which requests are
// well formed is decided by readLoopbackRequest, tested on its own.
#include <winsock2.h>

#include <windows.h>

#include "api/ServiceRecords.hpp"
#include "auth/win/LoopbackListener.hpp"
#include "support/TempFolder.hpp"
#include "support/win/LinuxSide.hpp"
#include "support/win/SocialUsers.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

constexpr UINT kTokensMessage = WM_APP + 17;

// A client socket connected to the listener, closed with the object.
class Client {
public:
    Client() : socket_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(LoopbackListener::kPort);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        isConnected_ = connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~Client() { closesocket(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool isConnected() const { return isConnected_; }
    bool sendText(const std::string& text) const {
        return send(socket_, text.data(), static_cast<int>(text.size()), 0) == static_cast<int>(text.size());
    }
    // Everything until the listener closes the connection. `error` is 0 when it did so
    // gracefully, WSAETIMEDOUT when a read waited `timeoutMs` in vain instead.
    std::string receiveAll(DWORD timeoutMs, int& error) const {
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&timeoutMs),
                   sizeof(timeoutMs));
        std::string all;
        char buffer[4096];
        int got = 0;
        while ((got = recv(socket_, buffer, sizeof(buffer), 0)) > 0) {
            all.append(buffer, static_cast<std::size_t>(got));
        }
        error = got == 0 ? 0 : WSAGetLastError();
        return all;
    }

private:
    SOCKET socket_;
    bool isConnected_ = false;
};

class LoopbackListenerTest : public ::testing::Test {
protected:
    LoopbackListenerTest() { WSAStartup(MAKEWORD(2, 2), &winsock_); }
    ~LoopbackListenerTest() override {
        listener_.stop();
        takeTokens(0);
        WSACleanup();
    }
    void SetUp() override { ASSERT_TRUE(listener_.start(box_.hwnd(), kTokensMessage)); }

    // The token records posted so far, once there is at least one or `timeoutMs` has passed.
    std::vector<AuthTokens> takeTokens(DWORD timeoutMs) {
        const ULONGLONG deadline = GetTickCount64() + timeoutMs;
        MSG message{};
        while (!PeekMessageW(&message, box_.hwnd(), kTokensMessage, kTokensMessage, PM_NOREMOVE) &&
               GetTickCount64() < deadline) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_POSTMESSAGE);
        }
        std::vector<AuthTokens> received;
        while (box_.take(kTokensMessage, message)) {
            received.push_back(*std::unique_ptr<AuthTokens>(reinterpret_cast<AuthTokens*>(message.lParam)));
        }
        return received;
    }

    WSADATA winsock_{};
    test::PostBox box_;
    LoopbackListener listener_;
};

TEST_F(LoopbackListenerTest, AnswersOnlyWellFormedGetRequestsAndClosesEveryConnection) {
    const struct {
        const char* name;
        std::string request;
        const char* answer; // nullptr: closed without a word
    } cases[] = {
        {"tokens", "GET /deliver?access_token=cva_a&refresh_token=cvr_b HTTP/1.1\r\nHost: x\r\n\r\n",
         "You are signed in."},
        {"another method", "POST /?access_token=cva_post HTTP/1.1\r\nContent-Length: 0\r\n\r\n", nullptr},
        {"a head over 8 KiB",
         "GET /?access_token=cva_big HTTP/1.1\r\nX: " + std::string(8200, 'a') + "\r\n\r\n", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Client client;
        ASSERT_TRUE(client.isConnected());
        ASSERT_TRUE(client.sendText(c.request));
        int error = 0;
        const std::string reply = client.receiveAll(10000, error);
        EXPECT_NE(error, WSAETIMEDOUT) << "the listener left the connection open";
        if (c.answer == nullptr) {
            EXPECT_EQ(reply, "");
        } else {
            EXPECT_TRUE(reply.starts_with("HTTP/1.1 200 OK\r\n"));
            EXPECT_NE(reply.find(c.answer), std::string::npos);
        }
    }
    const std::vector<AuthTokens> tokens = takeTokens(5000);
    ASSERT_EQ(tokens.size(), 1u) << "only the well-formed request's tokens are handed on";
    EXPECT_EQ(tokens[0].accessToken, "cva_a");
    EXPECT_EQ(tokens[0].refreshToken, "cvr_b");
}

TEST_F(LoopbackListenerTest, ASilentOrStalledClientIsDroppedWhenItsTimeRunsOut) {
    const Client silent;
    const Client stalled;
    ASSERT_TRUE(silent.isConnected() && stalled.isConnected());
    ASSERT_TRUE(stalled.sendText("GET /?access_token=cva_slow HTTP/1.1\r\nHost: x\r\n"));
    // Far longer than the listener allows; a listener that waits forever fails here.
    for (const Client* client : {&silent, &stalled}) {
        int error = 0;
        EXPECT_EQ(client->receiveAll(15000, error), "");
        EXPECT_EQ(error, 0) << "closed by the listener, not by our own wait";
    }
    EXPECT_TRUE(takeTokens(0).empty());
}

TEST_F(LoopbackListenerTest, AFloodOfIdleConnectionsDoesNotKeepOutTheBrowser) {
    std::vector<std::unique_ptr<Client>> flood;
    for (int i = 0; i < 200; ++i) {
        flood.push_back(std::make_unique<Client>());
        ASSERT_TRUE(flood.back()->isConnected()) << "connection " << i;
        if (i % 10 == 0) {
            flood.back()->sendText("GET /?access_token=cva_flood HTTP/1.1\r\n"); // and never finish
        }
    }
    // All 200 are still open on our side while the browser comes back.
    const test::TempFolder folder;
    const std::string page = test::linuxPathOf(folder.path() / "page.html");
    ASSERT_FALSE(page.empty());
    ASSERT_TRUE(test::runLinuxShell(
        "curl -s --max-time 10 -o '" + page +
        "' 'http://127.0.0.1:38517/deliver?access_token=cva_real&refresh_token=cvr_real'"));
    EXPECT_NE(test::readTestFile(folder.path() / "page.html").find("You are signed in."), std::string::npos);
    const std::vector<AuthTokens> tokens = takeTokens(5000);
    ASSERT_EQ(tokens.size(), 1u);
    EXPECT_EQ(tokens[0].accessToken, "cva_real");
    EXPECT_EQ(tokens[0].refreshToken, "cvr_real");
}

} // namespace
} // namespace corvandell::win
