#include "voice/VoiceFrame.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace corvandell::voice {
namespace {

std::vector<std::uint8_t> bytesCounting(std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i);
    }
    return bytes;
}

TEST(VoiceFrame, TheSenderHeaderIsStrippedAndNothingIsLeftOfAHeaderAlone) {
    const struct {
        std::size_t messageBytes;
        std::size_t pcmBytes;
    } cases[] = {
        {0, 0}, {16, 0}, {17, 0}, {19, 2}, {16 + 640, 640}, // a header alone or half a sample: nothing
    };
    for (const auto& [messageBytes, pcmBytes] : cases) {
        const std::vector<std::uint8_t> message = bytesCounting(messageBytes);
        const auto pcm = voicePayload(message);
        ASSERT_EQ(pcm.size(), pcmBytes) << messageBytes;
        if (!pcm.empty()) {
            EXPECT_EQ(pcm.data(), message.data() + 16) << messageBytes;
        }
    }
}

std::vector<std::uint8_t> samples(std::initializer_list<int> values) {
    std::vector<std::uint8_t> pcm;
    for (int value : values) {
        const auto bits = static_cast<std::uint16_t>(static_cast<std::int16_t>(value));
        pcm.push_back(static_cast<std::uint8_t>(bits & 0xFF));
        pcm.push_back(static_cast<std::uint8_t>(bits >> 8));
    }
    return pcm;
}

TEST(VoiceFrame, VolumeScalesLittleEndianSamplesAndClipsAtFullScale) {
    const struct {
        int percent;
        std::vector<std::uint8_t> in;
        std::vector<std::uint8_t> out;
    } cases[] = {
        {50, samples({1000, -1000, 3, -3}), samples({500, -500, 1, -1})},
        {200, samples({1000, 20000, -20000}), samples({2000, 32767, -32768})},
        {500, samples({1000}), samples({2000})},      // clamped to 200 %
        {-20, samples({1000}), samples({0})},         // clamped to 0 %
        {50, {0x10, 0x27, 0x7F}, {0x88, 0x13, 0x7F}}, // an odd trailing byte is left alone
    };
    for (auto [percent, in, out] : cases) {
        applyVolume(in, percent);
        EXPECT_EQ(in, out) << percent;
    }
}

TEST(VoiceFrame, TheSocketPathCarriesTheRoomIdAsAQueryValue) {
    EXPECT_EQ(voiceSocketPath("5c2a1233-f9b1-515b-ae69-58ea985e6dd6"),
              "/ws/v1/voice?roomId=5c2a1233-f9b1-515b-ae69-58ea985e6dd6");
    EXPECT_EQ(voiceSocketPath("a b&c"), "/ws/v1/voice?roomId=a%20b%26c");
}

} // namespace
} // namespace corvandell::voice
