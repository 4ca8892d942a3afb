// The options dialog's input meter: the loudest sample of a block, after the input volume.
#include "app/InputLevel.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace corvandell {
namespace {

std::vector<std::uint8_t> samples(std::initializer_list<std::int16_t> values) {
    std::vector<std::uint8_t> pcm;
    for (const std::int16_t value : values) {
        const auto bits = static_cast<std::uint16_t>(value);
        pcm.push_back(static_cast<std::uint8_t>(bits & 0xFF));
        pcm.push_back(static_cast<std::uint8_t>(bits >> 8));
    }
    return pcm;
}

TEST(InputLevel, ThePeakIsTheLoudestSampleOfEitherSignScaledByTheVolume) {
    struct Case {
        std::vector<std::uint8_t> pcm;
        int volume;
        int expected;
    };
    const std::vector<Case> cases = {
        {samples({100, -16384, 8000}), 100, 50},
        {samples({-32768}), 100, 100},
        {samples({16384}), 200, 100},
        {samples({-32768}), 300, 100}, // never past full scale
        {samples({16384}), -10, 0},
        {{0x00, 0x40, 0xFF}, 100, 50}, // the odd byte is not half a sample
        {{}, 100, 0},
    };
    for (const auto& [pcm, volume, expected] : cases) {
        EXPECT_EQ(pcmPeakPercent(pcm, volume), expected) << pcm.size() << " bytes at " << volume << "%";
    }
}

} // namespace
} // namespace corvandell
