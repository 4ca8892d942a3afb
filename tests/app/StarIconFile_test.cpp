#include "app/StarIconFile.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace corvandell {
namespace {

std::uint32_t le32(const std::vector<std::uint8_t>& bytes, size_t at) {
    return bytes.at(at) | bytes.at(at + 1) << 8 | bytes.at(at + 2) << 16 |
           static_cast<std::uint32_t>(bytes.at(at + 3)) << 24;
}

unsigned le16(const std::vector<std::uint8_t>& bytes, size_t at) {
    return bytes.at(at) | bytes.at(at + 1) << 8u;
}

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

TEST(StarIconFile, HoldsEverySizeAsA32BitImageWithTheStarOpaqueInTheMiddleAndClearInTheCorners) {
    const std::vector<std::uint8_t> file = starIconFile(kProgramIconSides, {0xFA, 0xCC, 0x15});
    ASSERT_EQ(le16(file, 0), 0u);
    ASSERT_EQ(le16(file, 2), 1u) << "not an icon";
    ASSERT_EQ(le16(file, 4), std::size(kProgramIconSides));
    size_t expectedOffset = 6 + 16 * std::size(kProgramIconSides);
    for (size_t i = 0; i < std::size(kProgramIconSides); ++i) {
        const int side = kProgramIconSides[i];
        SCOPED_TRACE(side);
        const size_t entry = 6 + 16 * i;
        EXPECT_EQ(file.at(entry), side == 256 ? 0 : side) << "256 is written as 0";
        EXPECT_EQ(file.at(entry + 1), side == 256 ? 0 : side);
        EXPECT_EQ(le16(file, entry + 6), 32u);
        const std::uint32_t size = le32(file, entry + 8);
        const std::uint32_t offset = le32(file, entry + 12);
        ASSERT_EQ(offset, expectedOffset) << "images must follow each other";
        const size_t stride = (side + 31) / 32 * 4;
        ASSERT_EQ(size, 40 + static_cast<size_t>(side) * side * 4 + stride * side);
        EXPECT_EQ(le32(file, offset + 4), static_cast<std::uint32_t>(side));
        EXPECT_EQ(le32(file, offset + 8), static_cast<std::uint32_t>(2 * side)) << "colour and mask rows";
        expectedOffset += size;

        const Pixel centre = pixelAt(file, offset, side, side / 2, side / 2);
        EXPECT_EQ(centre.red, 0xFA);
        EXPECT_EQ(centre.green, 0xCC);
        EXPECT_EQ(centre.blue, 0x15);
        EXPECT_EQ(centre.alpha, 255);
        EXPECT_FALSE(centre.isMasked);
        // The top point is at the top edge's middle, never at a corner.
        EXPECT_GT(pixelAt(file, offset, side, side / 2, 1).alpha, 0) << "the star's top point is missing";
        for (const auto& [x, y] : {std::pair{0, 0}, {side - 1, 0}, {0, side - 1}, {side - 1, side - 1}}) {
            const Pixel corner = pixelAt(file, offset, side, x, y);
            EXPECT_EQ(corner.alpha, 0);
            EXPECT_TRUE(corner.isMasked) << "a clear pixel the mask does not let through";
        }
    }
    EXPECT_EQ(file.size(), expectedOffset);
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
