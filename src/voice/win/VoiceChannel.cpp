#include "voice/win/VoiceChannel.hpp"

#include "voice/CaptureRing.hpp"
#include "voice/MessageAssembler.hpp"
#include "voice/VoiceFormat.hpp"
#include "voice/VoiceFrame.hpp"

#include <array>
#include <exception>

namespace corvandell::win {
namespace {

// Often enough that a finished block waits at most a quarter of a block.
constexpr DWORD kCapturePollMs = 5;

} // namespace

bool VoiceChannel::start(const std::string& roomId, const VoiceChannelOptions& options) {
    std::lock_guard lock(lifecycle_);
    if (isRunning_) {
        return true;
    }
    // A connection that ended by itself leaves its threads to be joined.
    tearDown();
    failureText_.clear();
    inputVolumePercent_ = options.inputVolumePercent;
    outputVolumePercent_ = options.outputVolumePercent;
    isMuted_ = options.startsMuted;
    try {
        auto socket = std::make_unique<VoiceSocket>();
        socket->connect(options.baseUrl, voice::voiceSocketPath(roomId), options.bearerToken);
        if (!playback_.open(waveOutDeviceNamed(options.outputDevice))) {
            throw std::runtime_error("Could not open the speakers");
        }
        if (!capture_.open(waveInDeviceNamed(options.inputDevice))) {
            playback_.close();
            throw std::runtime_error("Could not open the microphone");
        }
        socket_ = std::move(socket);
        isRunning_ = true;
        receiveThread_ = std::thread([this] { receiveLoop(); });
        captureThread_ = std::thread([this] { captureLoop(); });
        return true;
    } catch (const std::exception& error) {
        failureText_ = error.what();
    }
    // Reached only when something failed before the threads existed, or when a thread
    // could not be started: then undo whatever is up.
    tearDown();
    return false;
}

void VoiceChannel::stop() noexcept {
    std::lock_guard lock(lifecycle_);
    tearDown();
}

void VoiceChannel::tearDown() noexcept {
    isRunning_ = false;
    if (socket_) {
        socket_->shutdown();
    }
    if (captureThread_.joinable()) {
        captureThread_.join();
    }
    if (receiveThread_.joinable()) {
        receiveThread_.join();
    }
    capture_.close();
    playback_.close();
    socket_.reset();
}

std::string VoiceChannel::failureText() const {
    std::lock_guard lock(lifecycle_);
    return failureText_;
}

void VoiceChannel::notifyObserver(VoiceBlockEvent event, std::span<const std::uint8_t> pcm) noexcept {
    if (!observer_) {
        return;
    }
    try {
        observer_(event, pcm);
    } catch (...) {
        // An observer's fault must not end the channel's thread.
    }
}

void VoiceChannel::captureLoop() noexcept {
    try {
        while (isRunning_) {
            voice::pumpCaptureRing(capture_, isMuted_, inputVolumePercent_,
                                   [this](std::span<const std::uint8_t> pcm) {
                                       const bool isSent = socket_->sendBinary(pcm);
                                       if (isSent) {
                                           notifyObserver(VoiceBlockEvent::Sent, pcm);
                                       }
                                       return isSent;
                                   });
            Sleep(kCapturePollMs);
        }
    } catch (...) {
        // Nothing in the loop throws but std::function's own bad_function_call.
    }
}

void VoiceChannel::receiveLoop() noexcept {
    std::array<std::uint8_t, voice::kMaxMessageBytes> buffer{};
    voice::MessageAssembler assembler(voice::kMaxMessageBytes);
    std::vector<std::uint8_t> pcm;
    pcm.reserve(voice::kMaxMessageBytes);
    VoiceEnd end = VoiceEnd::ConnectionLost;
    while (isRunning_) {
        const VoiceSocketPiece piece = socket_->receive(buffer);
        if (!piece.isOk) {
            end = VoiceEnd::ConnectionLost;
            break;
        }
        const voice::AssembledKind assembled =
            assembler.add(piece.kind, std::span(buffer).first(piece.bytes));
        if (assembled == voice::AssembledKind::Close) {
            end = VoiceEnd::ClosedByService;
            break;
        }
        if (assembled != voice::AssembledKind::Binary) {
            continue; // text, an unfinished or an oversized message: nothing to play
        }
        const std::span<const std::uint8_t> payload = voice::voicePayload(assembler.message());
        if (payload.empty()) {
            continue;
        }
        pcm.assign(payload.begin(), payload.end());
        voice::applyVolume(pcm, outputVolumePercent_);
        const bool isPlayed = playback_.play(pcm);
        queuedPlaybackBlocks_ = playback_.queuedBlocks();
        if (isPlayed) {
            notifyObserver(VoiceBlockEvent::Played, pcm);
        }
    }
    // Only an end nobody asked for is reported; stop() clears the flag before it shuts down.
    if (isRunning_.exchange(false) && notify_ != nullptr) {
        PostMessageW(notify_, endMessage_, static_cast<WPARAM>(end), 0);
    }
}

} // namespace corvandell::win
