// The loopback listener under hostile local clients: idle connections by the hundred,
// requests that stall, heads over the limit, other methods, noise. None of it may keep a
// real browser redirect (curl from Linux) from being answered and handed on.
#include <winsock2.h>

#include <windows.h>

#include "api/ServiceRecords.hpp"
#include "auth/win/LoopbackListener.hpp"
#include "support/TempFolder.hpp"
#include "support/win/LinuxSide.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

constexpr UINT kTokensMessage = WM_APP + 17;

// A message-only window that collects the tokens the listener posts.
class TokenSink {
public:
    TokenSink() {
        hwnd_ = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    }
    ~TokenSink() {
        take();
        DestroyWindow(hwnd_);
    }
    HWND hwnd() const { return hwnd_; }
    // Every token record posted so far.
    std::vector<AuthTokens> take() {
        std::vector<AuthTokens> received;
        MSG message{};
        while (PeekMessageW(&message, hwnd_, kTokensMessage, kTokensMessage, PM_REMOVE)) {
            std::unique_ptr<AuthTokens> tokens(reinterpret_cast<AuthTokens*>(message.lParam));
            received.push_back(*tokens);
        }
        return received;
    }
    // The records posted so far, once there is at least one or `timeoutMs` has passed.
    std::vector<AuthTokens> waitAndTake(DWORD timeoutMs) {
        const ULONGLONG deadline = GetTickCount64() + timeoutMs;
        MSG message{};
        while (!PeekMessageW(&message, hwnd_, kTokensMessage, kTokensMessage, PM_NOREMOVE) &&
               GetTickCount64() < deadline) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_POSTMESSAGE);
        }
        return take();
    }

private:
    HWND hwnd_ = nullptr;
};

class Winsock {
public:
    Winsock() { WSAStartup(MAKEWORD(2, 2), &data_); }
    ~Winsock() { WSACleanup(); }

private:
    WSADATA data_{};
};

// A client socket connected to the listener, closed with the object.
class Client {
public:
    Client() {
        socket_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
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
    // Everything until the listener closes the connection; waits at most `timeoutMs` per read.
    std::string receiveAll(DWORD timeoutMs) const {
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&timeoutMs),
                   sizeof(timeoutMs));
        std::string all;
        char buffer[4096];
        for (;;) {
            const int got = recv(socket_, buffer, sizeof(buffer), 0);
            if (got <= 0) {
                lastError_ = got == 0 ? 0 : WSAGetLastError();
                return all;
            }
            all.append(buffer, static_cast<std::size_t>(got));
        }
    }
    int lastError() const { return lastError_; }

private:
    SOCKET socket_ = INVALID_SOCKET;
    bool isConnected_ = false;
    mutable int lastError_ = 0;
};

TEST(LoopbackListener, AnswersOnlyWellFormedGetRequestsAndClosesEveryConnection) {
    const Winsock winsock;
    TokenSink sink;
    LoopbackListener listener;
    ASSERT_TRUE(listener.start(sink.hwnd(), kTokensMessage));
    const struct {
        const char* name;
        std::string request;
        const char* answer; // nullptr: closed without a word
    } cases[] = {
        {"a browser's first visit", "GET / HTTP/1.1\r\nHost: 127.0.0.1:38517\r\n\r\n",
         "Completing Corvandell sign-in..."},
        {"tokens", "GET /deliver?access_token=cva_a&refresh_token=cvr_b HTTP/1.1\r\nHost: x\r\n\r\n",
         "You are signed in."},
        {"another method", "POST /?access_token=cva_post HTTP/1.1\r\nContent-Length: 0\r\n\r\n", nullptr},
        {"a head over 8 KiB",
         "GET /?access_token=cva_big HTTP/1.1\r\nX: " + std::string(8200, 'a') + "\r\n\r\n", nullptr},
        {"noise", std::string("\x16\x03\x01\x00\xa5\x01\x00\x00", 8), nullptr},
    };
    for (const auto& c : cases) {
        const Client client;
        ASSERT_TRUE(client.isConnected()) << c.name;
        ASSERT_TRUE(client.sendText(c.request)) << c.name;
        const std::string reply = client.receiveAll(10000);
        EXPECT_NE(client.lastError(), WSAETIMEDOUT) << c.name << ": the listener left the connection open";
        if (c.answer == nullptr) {
            EXPECT_EQ(reply, "") << c.name;
        } else {
            EXPECT_TRUE(reply.starts_with("HTTP/1.1 200 OK\r\n")) << c.name;
            EXPECT_NE(reply.find(c.answer), std::string::npos) << c.name;
        }
    }
    const std::vector<AuthTokens> tokens = sink.waitAndTake(5000);
    ASSERT_EQ(tokens.size(), 1u) << "only the well-formed request's tokens are handed on";
    EXPECT_EQ(tokens[0].accessToken, "cva_a");
    EXPECT_EQ(tokens[0].refreshToken, "cvr_b");
}

TEST(LoopbackListener, ASilentOrStalledClientIsDroppedWhenItsTimeRunsOut) {
    const Winsock winsock;
    TokenSink sink;
    LoopbackListener listener;
    ASSERT_TRUE(listener.start(sink.hwnd(), kTokensMessage));
    const Client silent;
    const Client stalled;
    ASSERT_TRUE(silent.isConnected() && stalled.isConnected());
    ASSERT_TRUE(stalled.sendText("GET /?access_token=cva_slow HTTP/1.1\r\nHost: x\r\n"));
    // Far longer than the listener allows; a listener that waits forever fails here.
    for (const Client* client : {&silent, &stalled}) {
        EXPECT_EQ(client->receiveAll(15000), "");
        EXPECT_EQ(client->lastError(), 0) << "closed by the listener, not by our own wait";
    }
    EXPECT_TRUE(sink.take().empty());
}

TEST(LoopbackListener, AFloodOfIdleConnectionsDoesNotKeepOutTheBrowser) {
    const Winsock winsock;
    TokenSink sink;
    LoopbackListener listener;
    ASSERT_TRUE(listener.start(sink.hwnd(), kTokensMessage));
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
    const std::vector<AuthTokens> tokens = sink.waitAndTake(5000);
    ASSERT_EQ(tokens.size(), 1u);
    EXPECT_EQ(tokens[0].accessToken, "cva_real");
    EXPECT_EQ(tokens[0].refreshToken, "cvr_real");
}

TEST(LoopbackListener, StopsListeningWhenStoppedAndTheSameWindowCanListenAgain) {
    const Winsock winsock;
    TokenSink sink;
    LoopbackListener listener;
    ASSERT_TRUE(listener.start(sink.hwnd(), kTokensMessage));
    {
        LoopbackListener second;
        EXPECT_FALSE(second.start(sink.hwnd(), kTokensMessage)) << "the port is ours alone";
        EXPECT_FALSE(second.isListening());
    }
    EXPECT_TRUE(Client().isConnected());
    listener.stop();
    EXPECT_FALSE(listener.isListening());
    EXPECT_FALSE(Client().isConnected());
    ASSERT_TRUE(listener.start(sink.hwnd(), kTokensMessage));
    EXPECT_TRUE(Client().isConnected());
}

} // namespace
} // namespace corvandell::win
