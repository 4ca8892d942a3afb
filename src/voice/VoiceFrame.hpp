// What the voice channel does to the PCM it carries: strips the relay's sender header from
// what arrives, and scales samples by the user's volume settings.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace corvandell::voice {

// The PCM after the 16-byte sender header; empty when the message is the header alone or
// shorter (nothing to play). A trailing odd byte is no whole sample and is left out.
std::span<const std::uint8_t> voicePayload(std::span<const std::uint8_t> message) noexcept;

// Scales 16-bit little-endian samples in place by percent/100, clipping at full scale.
// Volumes are clamped to 0..200 %; 100 % leaves the samples untouched.
void applyVolume(std::span<std::uint8_t> pcm, int percent) noexcept;

// The WebSocket path of a room: "/ws/v1/voice?roomId=" and the id, query-encoded.
std::string voiceSocketPath(const std::string& roomId);

} // namespace corvandell::voice
