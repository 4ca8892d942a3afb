// The voice relay's WebSocket over WinHTTP, synchronous: one thread sends, another receives.
//
// Ending it takes WinHttpWebSocketShutdown: a receive blocked in another thread wakes with
// a close at once, while closing the handle never wakes it and WinHttpWebSocketClose
// called meanwhile fails in both threads. So shutdown() comes first, the receiving thread
// is joined, and only then are the handles closed (by the destructor).
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "voice/MessageAssembler.hpp"

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

namespace corvandell::win {

struct VoiceSocketPiece {
    bool isOk = false; // false: the receive failed (connection lost); nothing else is set
    voice::PieceKind kind = voice::PieceKind::Close;
    std::size_t bytes = 0;
};

class VoiceSocket {
public:
    VoiceSocket() = default;
    VoiceSocket(const VoiceSocket&) = delete;
    VoiceSocket& operator=(const VoiceSocket&) = delete;
    ~VoiceSocket() = default;

    // Upgrades GET baseUrl + path to a WebSocket, with "Authorization: Bearer" when a token
    // is given. Throws std::runtime_error: "Invalid URL", "HTTP request failed", or
    // "Voice connection refused: HTTP <status>" when the service answers anything but 101.
    void connect(const std::string& baseUrl, const std::string& path, const std::string& bearerToken);

    bool isOpen() const noexcept { return socket_ && !isShutDown_.load(); }
    // One binary message; false when it could not be sent.
    bool sendBinary(std::span<const std::uint8_t> bytes) noexcept;
    // Blocks for the next piece of a message, written to `buffer`.
    VoiceSocketPiece receive(std::span<std::uint8_t> buffer) noexcept;
    // Starts the closing handshake; a receive blocked elsewhere returns a close.
    void shutdown() noexcept;

private:
    // In creation order, so the socket closes first and the session last.
    UniqueInternetHandle session_;
    UniqueInternetHandle connection_;
    UniqueInternetHandle socket_;
    std::atomic<bool> isShutDown_{false};
};

} // namespace corvandell::win
