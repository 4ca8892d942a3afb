// The browser sign-in's listener on 127.0.0.1:38517: the service sends the browser back
// here with the tokens, and the listener hands them to the sign-in window.
//
// It serves whatever connects, one small page per connection, on a thread of its own, and
// posts each set of tokens to the window as a heap AuthTokens (freed here if the post
// fails). It is built to survive anything else on the machine connecting to it: every
// connection gets at most 3 seconds in all, a head over 8 KiB or anything but a GET is
// dropped unanswered, and when too many connections are open at once the oldest is closed
// to make room, so a flood of idle connections cannot keep out the browser.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <thread>

namespace corvandell::win {

class LoopbackListener {
public:
    static constexpr std::uint16_t kPort = 38517;
    static constexpr DWORD kConnectionTimeMs = 3000;
    static constexpr std::size_t kMaxOpenConnections = 16;

    LoopbackListener() = default;
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;
    ~LoopbackListener() { stop(); }

    // Starts listening unless already listening; false when the port cannot be had (another
    // program holds it), in which case nothing is left open.
    bool start(HWND target, UINT tokensMessage);
    // Closes the listening socket and every open connection and waits for the thread.
    void stop() noexcept;
    bool isListening() const noexcept { return thread_.joinable(); }

private:
    void serve() noexcept;

    SOCKET socket_ = INVALID_SOCKET;
    bool winsockStarted_ = false;
    HWND target_ = nullptr;
    UINT message_ = 0;
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

} // namespace corvandell::win
