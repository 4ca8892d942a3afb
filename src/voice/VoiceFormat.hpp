// The audio the voice relay carries, both ways: raw PCM, no codec.
#pragma once

#include <cstddef>

namespace corvandell::voice {

inline constexpr int kSampleRate = 16000;
inline constexpr int kChannels = 1;
inline constexpr int kBitsPerSample = 16;
inline constexpr int kBlockAlign = kChannels * kBitsPerSample / 8;
inline constexpr int kBytesPerSecond = kSampleRate * kBlockAlign;

// One capture block is 20 ms; four are queued so a late capture thread loses nothing.
inline constexpr std::size_t kCaptureBlockBytes = 640;
inline constexpr std::size_t kCaptureBlocks = 4;

// Every relayed message: the 16 raw bytes of the sender's id, then PCM; never more than
// the receive buffer holds.
inline constexpr std::size_t kSenderHeaderBytes = 16;
inline constexpr std::size_t kMaxMessageBytes = 8192;

} // namespace corvandell::voice
