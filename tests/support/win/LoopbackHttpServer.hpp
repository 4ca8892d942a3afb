// A real HTTP/1.1 server on 127.0.0.1 for tests that need replies the service stand-in
// never sends: chunked in pieces, cut off mid-body, oversized, or redirecting elsewhere.
// Each connection's request head is read and kept, then the test's handler writes the raw
// reply bytes and the connection is closed.
#pragma once

#include <winsock2.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace corvandell::test {

class LoopbackHttpServer {
public:
    using Handler = std::function<void(SOCKET client)>;

    // Listens on a free port; throws when it cannot.
    explicit LoopbackHttpServer(Handler handler);
    ~LoopbackHttpServer();
    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    std::string baseUrl() const; // "http://127.0.0.1:<port>"
    int requestCount() const { return requests_; }
    std::string lastRequestHead() const;

    // Writes all the bytes; false once the peer has gone.
    static bool sendAll(SOCKET client, std::string_view bytes);

private:
    void serve();

    Handler handler_;
    SOCKET listener_ = INVALID_SOCKET;
    int port_ = 0;
    std::atomic<int> requests_{0};
    mutable std::mutex mutex_;
    std::string lastHead_;
    std::thread thread_;
};

} // namespace corvandell::test
