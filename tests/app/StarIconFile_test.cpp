// The icon file read pixel by pixel as Windows reads it; the Windows suite draws the built
// icon through the shell at every size.
#include "app/StarIconFile.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace corvandell {
namespace {

struct Pixel {
    std::uint8_t blue, green, red, alpha;
    bool isMasked; // AND mask bit: the screen shows through
};

// Reads a pixel the way Windows does: rows bottom-up, colour first, then the mask.
Pixel pixelAt(const std::vector<std::uint8_t>& file, size_t image, int side, int x, int y) {
    const size_t colour = image + 40 + (static_cast<size_t>(side - 1 - y) * side + x) * 4;
    const size_t stride = (side + 31) / 32 * 4;
    const size_t mask =
        image + 40 + static_cast<size_t>(side) * side * 4 + static_cast<size_t>(side - 1 - y) * stride;
    return {file.at(colour), file.at(colour + 1), file.at(colour + 2), file.at(colour + 3),
            (file.at(mask + x / 8) & (0x80 >> (x % 8))) != 0};
}

TEST(StarIconFile, EdgesAreAntialiasedAndTheMaskAgreesWithTheAlpha) {
    const int side = 48;
    const int sides[] = {side};
    const std::vector<std::uint8_t> file = starIconFile(sides, {0xFA, 0xCC, 0x15});
    int partial = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const Pixel pixel = pixelAt(file, 6 + 16, side, x, y);
            EXPECT_EQ(pixel.isMasked, pixel.alpha == 0) << x << "," << y;
            partial += pixel.alpha > 0 && pixel.alpha < 255 ? 1 : 0;
        }
    }
    EXPECT_GT(partial, 40) << "a hard edge: the star would look jagged at small sizes";
}

} // namespace
} // namespace corvandell
