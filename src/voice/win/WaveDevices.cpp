#include "voice/win/WaveDevices.hpp"

#include "base/win/WideText.hpp"
#include "voice/VoiceFormat.hpp"

namespace corvandell::win {
namespace {

template <class Caps, class GetCaps> std::vector<std::string> deviceNames(UINT count, GetCaps getCaps) {
    std::vector<std::string> names;
    for (UINT id = 0; id < count; ++id) {
        Caps caps{};
        names.push_back(getCaps(id, &caps) == MMSYSERR_NOERROR ? narrow(caps.szPname) : std::string());
    }
    return names;
}

UINT deviceIn(const std::vector<std::string>& names, const std::string& name) noexcept {
    if (name.empty()) {
        return WAVE_MAPPER;
    }
    for (std::size_t id = 0; id < names.size(); ++id) {
        if (names[id] == name) {
            return static_cast<UINT>(id);
        }
    }
    return WAVE_MAPPER;
}

} // namespace

std::vector<std::string> waveInDeviceNames() {
    return deviceNames<WAVEINCAPSW>(waveInGetNumDevs(), [](UINT id, WAVEINCAPSW* caps) {
        return waveInGetDevCapsW(id, caps, sizeof(*caps));
    });
}

std::vector<std::string> waveOutDeviceNames() {
    return deviceNames<WAVEOUTCAPSW>(waveOutGetNumDevs(), [](UINT id, WAVEOUTCAPSW* caps) {
        return waveOutGetDevCapsW(id, caps, sizeof(*caps));
    });
}

UINT waveInDeviceNamed(const std::string& name) noexcept {
    try {
        return deviceIn(waveInDeviceNames(), name);
    } catch (...) {
        return WAVE_MAPPER;
    }
}

UINT waveOutDeviceNamed(const std::string& name) noexcept {
    try {
        return deviceIn(waveOutDeviceNames(), name);
    } catch (...) {
        return WAVE_MAPPER;
    }
}

WAVEFORMATEX voiceWaveFormat() noexcept {
    WAVEFORMATEX format{};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = voice::kChannels;
    format.nSamplesPerSec = voice::kSampleRate;
    format.wBitsPerSample = voice::kBitsPerSample;
    format.nBlockAlign = voice::kBlockAlign;
    format.nAvgBytesPerSec = voice::kBytesPerSecond;
    return format;
}

bool WaveCapture::open(UINT device) noexcept {
    WAVEFORMATEX format = voiceWaveFormat();
    if (waveInOpen(&device_, device, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
        device_ = nullptr;
        return false;
    }
    for (std::size_t block = 0; block < voice::kCaptureBlocks; ++block) {
        WAVEHDR& header = headers_[block];
        header = WAVEHDR{};
        header.lpData = reinterpret_cast<LPSTR>(blocks_[block].data());
        header.dwBufferLength = static_cast<DWORD>(blocks_[block].size());
        if (waveInPrepareHeader(device_, &header, sizeof(header)) != MMSYSERR_NOERROR) {
            close();
            return false;
        }
        isPrepared_[block] = true;
        if (waveInAddBuffer(device_, &header, sizeof(header)) != MMSYSERR_NOERROR) {
            close();
            return false;
        }
    }
    if (waveInStart(device_) != MMSYSERR_NOERROR) {
        close();
        return false;
    }
    return true;
}

void WaveCapture::close() noexcept {
    if (device_ == nullptr) {
        return;
    }
    // Reset hands every queued block back (marked done) so it can be unprepared.
    waveInReset(device_);
    for (std::size_t block = 0; block < voice::kCaptureBlocks; ++block) {
        if (isPrepared_[block]) {
            waveInUnprepareHeader(device_, &headers_[block], sizeof(WAVEHDR));
            isPrepared_[block] = false;
        }
    }
    waveInClose(device_);
    device_ = nullptr;
}

bool WaveCapture::isBlockDone(std::size_t block) {
    return (headers_[block].dwFlags & WHDR_DONE) != 0;
}

std::span<std::uint8_t> WaveCapture::recordedBytes(std::size_t block) {
    return std::span<std::uint8_t>(blocks_[block]).first(headers_[block].dwBytesRecorded);
}

void WaveCapture::requeueBlock(std::size_t block) {
    WAVEHDR& header = headers_[block];
    header.dwFlags &= ~static_cast<DWORD>(WHDR_DONE);
    header.dwBytesRecorded = 0;
    waveInAddBuffer(device_, &header, sizeof(header));
}

bool WavePlayback::open(UINT device) noexcept {
    WAVEFORMATEX format = voiceWaveFormat();
    if (waveOutOpen(&device_, device, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
        device_ = nullptr;
        return false;
    }
    return true;
}

void WavePlayback::close() noexcept {
    if (device_ == nullptr) {
        return;
    }
    // Reset marks everything still queued done, so every block can be unprepared and freed.
    waveOutReset(device_);
    for (const std::unique_ptr<Block>& block : queued_) {
        waveOutUnprepareHeader(device_, &block->header, sizeof(WAVEHDR));
    }
    queued_.clear();
    waveOutClose(device_);
    device_ = nullptr;
}

void WavePlayback::freeFinished() noexcept {
    while (!queued_.empty() && (queued_.front()->header.dwFlags & WHDR_DONE) != 0) {
        waveOutUnprepareHeader(device_, &queued_.front()->header, sizeof(WAVEHDR));
        queued_.pop_front();
    }
}

bool WavePlayback::play(std::span<const std::uint8_t> pcm) noexcept {
    if (device_ == nullptr || pcm.empty()) {
        return false;
    }
    freeFinished();
    if (queued_.size() >= kMaxQueuedBlocks) {
        return false;
    }
    try {
        // Kept in the queue before the device sees it, so nothing can fail between the
        // write and the bookkeeping that frees it later.
        auto made = std::make_unique<Block>();
        made->pcm.assign(pcm.begin(), pcm.end());
        queued_.push_back(std::move(made));
        Block& block = *queued_.back();
        block.header.lpData = reinterpret_cast<LPSTR>(block.pcm.data());
        block.header.dwBufferLength = static_cast<DWORD>(block.pcm.size());
        if (waveOutPrepareHeader(device_, &block.header, sizeof(WAVEHDR)) != MMSYSERR_NOERROR) {
            queued_.pop_back();
            return false;
        }
        if (waveOutWrite(device_, &block.header, sizeof(WAVEHDR)) != MMSYSERR_NOERROR) {
            waveOutUnprepareHeader(device_, &block.header, sizeof(WAVEHDR));
            queued_.pop_back();
            return false;
        }
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace corvandell::win
