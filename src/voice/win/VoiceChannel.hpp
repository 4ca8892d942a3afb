// The audio channel of one voice room: the microphone goes out over the relay's WebSocket in
// 20 ms blocks, the other members' blocks come back and are played.
//
// Two threads run while the channel is up: the capture thread cycles the ring of capture
// blocks and sends each finished one; the receive thread reassembles messages, strips the
// sender header and queues the PCM to the speakers. Stopping shuts the socket down first,
// which wakes the receive thread, then joins both threads and closes the devices, so a
// closed chat window leaves nothing running. When the connection ends on its own (the
// service closed it, or it dropped), the channel tells its window with a posted message
// and leaves the tidying to the window's stop().
#pragma once

#include <windows.h>

#include "voice/win/VoiceSocket.hpp"
#include "voice/win/WaveDevices.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace corvandell::win {

struct VoiceChannelOptions {
    std::string baseUrl;
    std::string bearerToken;
    std::string inputDevice;  // "" is the system's default
    std::string outputDevice; // "" is the system's default
    int inputVolumePercent = 100;
    int outputVolumePercent = 100;
    bool startsMuted = false;
};

// wParam of the end message: why the connection ended without stop() being called.
enum class VoiceEnd : WPARAM { ClosedByService = 1, ConnectionLost = 2 };

// Seen on the channel's threads, for a level meter or a measurement: a block just sent, or
// just queued to the speakers (after the volume was applied).
enum class VoiceBlockEvent { Sent, Played };
using VoiceBlockObserver = std::function<void(VoiceBlockEvent, std::span<const std::uint8_t> pcm)>;

class VoiceChannel {
public:
    // `notify` gets `endMessage` when the connection ends by itself; null for nobody.
    VoiceChannel(HWND notify, UINT endMessage) : notify_(notify), endMessage_(endMessage) {}
    VoiceChannel(const VoiceChannel&) = delete;
    VoiceChannel& operator=(const VoiceChannel&) = delete;
    ~VoiceChannel() { stop(); }

    // Connects to the room's socket, opens both devices and starts the threads. Blocks for
    // the connection, so it runs on a background job. False, with failureText() saying
    // why, when any step fails; the channel is then stopped.
    bool start(const std::string& roomId, const VoiceChannelOptions& options);
    void stop() noexcept;

    void setMuted(bool isMuted) noexcept { isMuted_ = isMuted; }
    bool isMuted() const noexcept { return isMuted_; }
    bool isRunning() const noexcept { return isRunning_; }
    std::string failureText() const;
    // Blocks written to the speakers and not yet played, as of the last write: each is 20 ms
    // that a newly written block waits before it is heard.
    std::size_t queuedPlaybackBlocks() const noexcept { return queuedPlaybackBlocks_; }

    // Set before start.
    void setObserver(VoiceBlockObserver observer) { observer_ = std::move(observer); }

private:
    // Shuts the socket down, joins the threads, closes the devices; lifecycle_ is held.
    void tearDown() noexcept;
    void captureLoop() noexcept;
    void receiveLoop() noexcept;
    void notifyObserver(VoiceBlockEvent event, std::span<const std::uint8_t> pcm) noexcept;

    HWND notify_;
    UINT endMessage_;
    VoiceBlockObserver observer_;
    int inputVolumePercent_ = 100;
    int outputVolumePercent_ = 100;

    mutable std::mutex lifecycle_; // start and stop may come from different threads
    std::string failureText_;
    std::atomic<bool> isRunning_{false};
    std::atomic<bool> isMuted_{false};
    std::atomic<std::size_t> queuedPlaybackBlocks_{0};
    std::unique_ptr<VoiceSocket> socket_;
    WaveCapture capture_;
    WavePlayback playback_;
    std::thread captureThread_;
    std::thread receiveThread_;
};

} // namespace corvandell::win
