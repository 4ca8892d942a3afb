#include "support/win/LoopbackHttpServer.hpp"

#include <ws2tcpip.h>

#include <stdexcept>

namespace corvandell::test {

LoopbackHttpServer::LoopbackHttpServer(Handler handler) : handler_(std::move(handler)) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    int length = sizeof(address);
    if (listener_ == INVALID_SOCKET || bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        listen(listener_, 8) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("the loopback test server could not listen");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
}

LoopbackHttpServer::~LoopbackHttpServer() {
    closesocket(listener_); // ends the blocking accept
    thread_.join();
    WSACleanup();
}

std::string LoopbackHttpServer::baseUrl() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

std::string LoopbackHttpServer::lastRequestHead() const {
    const std::lock_guard lock(mutex_);
    return lastHead_;
}

bool LoopbackHttpServer::sendAll(SOCKET client, std::string_view bytes) {
    while (!bytes.empty()) {
        const int sent =
            send(client, bytes.data(), static_cast<int>(std::min<size_t>(bytes.size(), 1 << 20)), 0);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

void LoopbackHttpServer::serve() {
    for (;;) {
        const SOCKET client = accept(listener_, nullptr, nullptr);
        if (client == INVALID_SOCKET) {
            return;
        }
        std::string head;
        char buffer[4096];
        while (head.find("\r\n\r\n") == std::string::npos) {
            const int received = recv(client, buffer, sizeof(buffer), 0);
            if (received <= 0) {
                break;
            }
            head.append(buffer, static_cast<size_t>(received));
        }
        {
            const std::lock_guard lock(mutex_);
            lastHead_ = head;
        }
        ++requests_;
        handler_(client);
        shutdown(client, SD_SEND);
        closesocket(client);
    }
}

} // namespace corvandell::test
