#include "voice/VoiceFrame.hpp"

#include "api/JsonText.hpp"
#include "voice/VoiceFormat.hpp"

#include <algorithm>

namespace corvandell::voice {

std::span<const std::uint8_t> voicePayload(std::span<const std::uint8_t> message) noexcept {
    if (message.size() <= kSenderHeaderBytes) {
        return {};
    }
    std::span<const std::uint8_t> pcm = message.subspan(kSenderHeaderBytes);
    return pcm.first(pcm.size() - pcm.size() % kBlockAlign);
}

void applyVolume(std::span<std::uint8_t> pcm, int percent) noexcept {
    const int gain = std::clamp(percent, 0, 200);
    if (gain == 100) {
        return;
    }
    for (std::size_t i = 0; i + 1 < pcm.size(); i += 2) {
        const auto sample = static_cast<std::int16_t>(static_cast<std::uint16_t>(pcm[i] | (pcm[i + 1] << 8)));
        const int scaled = std::clamp(sample * gain / 100, -32768, 32767);
        const auto bits = static_cast<std::uint16_t>(static_cast<std::int16_t>(scaled));
        pcm[i] = static_cast<std::uint8_t>(bits & 0xFF);
        pcm[i + 1] = static_cast<std::uint8_t>(bits >> 8);
    }
}

std::string voiceSocketPath(const std::string& roomId) {
    return "/ws/v1/voice?roomId=" + encodeQueryValue(roomId);
}

} // namespace corvandell::voice
