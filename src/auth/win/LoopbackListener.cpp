// One thread polls the listening socket and every open connection together, so a client
// that connects and says nothing holds up no one: each connection is judged by what it has
// sent when its time runs out, not waited for in turn.
#include <winsock2.h>

#include <windows.h>

#include "api/ServiceRecords.hpp"
#include "auth/LoopbackRequest.hpp"
#include "auth/win/LoopbackListener.hpp"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

// How long a poll waits at most, so that stop() is noticed promptly.
constexpr int kPollSliceMs = 100;

struct Connection {
    SOCKET socket = INVALID_SOCKET;
    ULONGLONG deadline = 0;
    std::string received;
};

void closeConnection(Connection& connection) noexcept {
    if (connection.socket != INVALID_SOCKET) {
        closesocket(connection.socket);
        connection.socket = INVALID_SOCKET;
    }
}

void setNonBlocking(SOCKET socket) noexcept {
    u_long on = 1;
    ioctlsocket(socket, FIONBIO, &on);
}

// Small enough for the socket's send buffer, so one non-blocking send takes it all; if it
// does not, the page is lost and the browser shows an error, which a retry fixes.
void sendReply(SOCKET socket, const std::string& reply) noexcept {
    send(socket, reply.data(), static_cast<int>(reply.size()), 0);
    shutdown(socket, SD_SEND);
}

void postTokens(HWND target, UINT message, const AddressTokens& tokens) noexcept {
    try {
        auto record = std::make_unique<AuthTokens>();
        record->accessToken = tokens.accessToken;
        record->refreshToken = tokens.refreshToken;
        if (PostMessageW(target, message, 0, reinterpret_cast<LPARAM>(record.get()))) {
            static_cast<void>(record.release());
        }
    } catch (...) {
        // Out of memory: the browser still got its page; the user can paste the address.
    }
}

} // namespace

bool LoopbackListener::start(HWND target, UINT tokensMessage) {
    if (isListening()) {
        return true;
    }
    WSADATA data{};
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) {
        return false;
    }
    winsockStarted_ = true;
    socket_ = WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_NO_HANDLE_INHERIT);
    // Nobody else may bind the port beside us and read the tokens meant for this window.
    BOOL exclusive = TRUE;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (socket_ == INVALID_SOCKET ||
        setsockopt(socket_, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&exclusive),
                   sizeof(exclusive)) != 0 ||
        bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(socket_, 4) != 0) {
        stop();
        return false;
    }
    setNonBlocking(socket_);
    target_ = target;
    message_ = tokensMessage;
    stopping_ = false;
    try {
        thread_ = std::thread([this] { serve(); });
    } catch (...) {
        stop();
        return false;
    }
    return true;
}

void LoopbackListener::stop() noexcept {
    stopping_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
    if (socket_ != INVALID_SOCKET) {
        closesocket(socket_);
        socket_ = INVALID_SOCKET;
    }
    if (winsockStarted_) {
        WSACleanup();
        winsockStarted_ = false;
    }
}

void LoopbackListener::serve() noexcept {
    std::vector<Connection> open;
    open.reserve(kMaxOpenConnections);
    std::vector<WSAPOLLFD> polled;
    polled.reserve(kMaxOpenConnections + 1);
    std::string chunk(kMaxLoopbackRequestBytes, '\0');
    while (!stopping_) {
        const ULONGLONG now = GetTickCount64();
        // Time is up for whoever has not finished a request by now.
        for (Connection& connection : open) {
            if (connection.deadline <= now) {
                closeConnection(connection);
            }
        }
        std::erase_if(open, [](const Connection& c) { return c.socket == INVALID_SOCKET; });

        int waitMs = kPollSliceMs;
        for (const Connection& connection : open) {
            waitMs = std::min(waitMs, static_cast<int>(connection.deadline - now));
        }
        polled.clear();
        polled.push_back(WSAPOLLFD{socket_, POLLRDNORM, 0});
        for (const Connection& connection : open) {
            polled.push_back(WSAPOLLFD{connection.socket, POLLRDNORM, 0});
        }
        if (WSAPoll(polled.data(), static_cast<ULONG>(polled.size()), std::max(waitMs, 1)) == SOCKET_ERROR) {
            Sleep(kPollSliceMs); // nothing sensible to do but not spin
            continue;
        }

        for (std::size_t i = 0; i < open.size(); ++i) {
            if (polled[i + 1].revents == 0) {
                continue;
            }
            Connection& connection = open[i];
            const std::size_t room = kMaxLoopbackRequestBytes - connection.received.size();
            const int got =
                recv(connection.socket, chunk.data(), static_cast<int>(std::max<std::size_t>(room, 1)), 0);
            if (got <= 0) {
                if (got == 0 || WSAGetLastError() != WSAEWOULDBLOCK) {
                    closeConnection(connection);
                }
                continue;
            }
            connection.received.append(chunk.data(), static_cast<std::size_t>(got));
            const LoopbackRequest request = readLoopbackRequest(connection.received);
            if (request.state == LoopbackRequestState::NeedMore) {
                continue;
            }
            if (request.state == LoopbackRequestState::Complete) {
                const LoopbackAnswer answer = answerLoopbackRequest(request.target);
                sendReply(connection.socket, answer.reply);
                if (answer.hasTokens) {
                    postTokens(target_, message_, answer.tokens);
                }
            }
            closeConnection(connection);
        }
        std::erase_if(open, [](const Connection& c) { return c.socket == INVALID_SOCKET; });

        if ((polled[0].revents & POLLRDNORM) == 0) {
            continue;
        }
        // Take everything waiting, so the small backlog empties at once.
        for (;;) {
            const SOCKET accepted = accept(socket_, nullptr, nullptr);
            if (accepted == INVALID_SOCKET) {
                break;
            }
            setNonBlocking(accepted);
            if (open.size() == kMaxOpenConnections) {
                // The oldest has had the most time to finish; the newest may be the browser.
                closeConnection(open.front());
                open.erase(open.begin());
            }
            open.push_back(Connection{accepted, GetTickCount64() + kConnectionTimeMs, {}});
        }
    }
    for (Connection& connection : open) {
        closeConnection(connection);
    }
}

} // namespace corvandell::win
