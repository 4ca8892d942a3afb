// The microphone level the options dialog shows while the user sets the input volume.
#pragma once

#include <cstdint>
#include <span>

namespace corvandell {

// The loudest sample of 16-bit little-endian mono PCM, after the input volume (percent, as
// the voice channel applies it), as 0 to 100 percent of full scale. A trailing odd byte is
// ignored.
int pcmPeakPercent(std::span<const std::uint8_t> pcm, int volumePercent);

} // namespace corvandell
