// A sine tone played on one wave-out device (the PulseAudio fixture's sinks, whose monitors
// are the microphones the voice tests listen on), stopped when destroyed.
#pragma once

#include <windows.h>

#include <mmsystem.h>

#include "voice/VoiceFormat.hpp"
#include "voice/win/WaveDevices.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::test {

// The first device whose name holds `part`, or "" when there is none.
inline std::string deviceContaining(const std::vector<std::string>& names, std::string_view part) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const std::string& name) { return name.find(part) != name.npos; });
    return found == names.end() ? std::string() : *found;
}

class TonePlayer {
public:
    TonePlayer(UINT device, double hz, double seconds, double amplitude = 12000.0)
        : samples_(static_cast<std::size_t>(seconds * voice::kSampleRate)) {
        for (std::size_t i = 0; i < samples_.size(); ++i) {
            samples_[i] =
                static_cast<std::int16_t>(amplitude * std::sin(2.0 * std::numbers::pi * hz *
                                                               static_cast<double>(i) / voice::kSampleRate));
        }
        WAVEFORMATEX format = win::voiceWaveFormat();
        if (waveOutOpen(&device_, device, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
            device_ = nullptr;
            return;
        }
        header_.lpData = reinterpret_cast<LPSTR>(samples_.data());
        header_.dwBufferLength = static_cast<DWORD>(samples_.size() * 2);
        waveOutPrepareHeader(device_, &header_, sizeof(header_));
        waveOutWrite(device_, &header_, sizeof(header_));
    }
    TonePlayer(const TonePlayer&) = delete;
    TonePlayer& operator=(const TonePlayer&) = delete;
    ~TonePlayer() {
        if (device_ != nullptr) {
            waveOutReset(device_);
            waveOutUnprepareHeader(device_, &header_, sizeof(header_));
            waveOutClose(device_);
        }
    }
    bool isOpen() const { return device_ != nullptr; }

private:
    HWAVEOUT device_ = nullptr;
    WAVEHDR header_{};
    std::vector<std::int16_t> samples_;
};

} // namespace corvandell::test
