// Format notes: an .ico is a 6-byte header, a 16-byte directory entry per image, then the
// images. Each image here is a BITMAPINFOHEADER whose height counts the colour rows and
// the mask rows together (2 x side), the colour rows bottom-up as B, G, R, A (alpha not
// premultiplied), then the 1-bit AND mask, bottom-up, each row padded to 4 bytes. A width
// or height of 256 is written as 0 in the directory entry. Every image is stored as a
// bitmap, not PNG: Windows reads both at 256 px, and a bitmap needs no compressor.
#include "app/StarIconFile.hpp"

#include "app/StarShape.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace corvandell {
namespace {

constexpr int kSamplesPerAxis = 4; // 16 samples a pixel: smooth enough at 16 px

void putLe16(std::vector<std::uint8_t>& out, unsigned value) {
    out.push_back(static_cast<std::uint8_t>(value & 0xFF));
    out.push_back(static_cast<std::uint8_t>((value >> 8) & 0xFF));
}

void putLe32(std::vector<std::uint8_t>& out, std::uint32_t value) {
    putLe16(out, value & 0xFFFF);
    putLe16(out, value >> 16);
}

// Where a horizontal line at `y` crosses the star's edges, left to right. Points between
// the first and second crossing, the third and fourth and so on are inside (the even-odd
// rule, GDI's default fill mode; the star has no self-overlap, so both rules agree).
std::vector<double> crossingsAt(const std::array<IntPoint, 10>& corners, double y) {
    std::vector<double> crossings;
    for (size_t i = 0, j = corners.size() - 1; i < corners.size(); j = i++) {
        const double xi = corners[i].x;
        const double yi = corners[i].y;
        const double xj = corners[j].x;
        const double yj = corners[j].y;
        if ((yi > y) != (yj > y)) {
            crossings.push_back((xj - xi) * (y - yi) / (yj - yi) + xi);
        }
    }
    std::sort(crossings.begin(), crossings.end());
    return crossings;
}

// Alpha of every pixel, top row first, from kSamplesPerAxis^2 samples a pixel.
std::vector<std::uint8_t> starCoverage(int side) {
    const std::array<IntPoint, 10> corners = starPolygon(side);
    const size_t width = static_cast<size_t>(side);
    std::vector<int> hits(width * width, 0);
    for (int row = 0; row < side * kSamplesPerAxis; ++row) {
        const std::vector<double> crossings = crossingsAt(corners, (row + 0.5) / kSamplesPerAxis);
        size_t passed = 0;
        for (int column = 0; column < side * kSamplesPerAxis; ++column) {
            const double x = (column + 0.5) / kSamplesPerAxis;
            while (passed < crossings.size() && crossings[passed] <= x) {
                ++passed;
            }
            if (passed % 2 == 1) {
                ++hits[static_cast<size_t>(row / kSamplesPerAxis) * width +
                       static_cast<size_t>(column / kSamplesPerAxis)];
            }
        }
    }
    constexpr int kSamples = kSamplesPerAxis * kSamplesPerAxis;
    std::vector<std::uint8_t> alpha(hits.size());
    for (size_t i = 0; i < hits.size(); ++i) {
        alpha[i] = static_cast<std::uint8_t>((hits[i] * 255 + kSamples / 2) / kSamples);
    }
    return alpha;
}

size_t maskStride(int side) {
    return static_cast<size_t>((side + 31) / 32 * 4);
}

std::vector<std::uint8_t> iconImage(int side, IconColour colour) {
    const std::vector<std::uint8_t> alpha = starCoverage(side);
    const size_t pixels = alpha.size();
    std::vector<std::uint8_t> image;
    image.reserve(40 + pixels * 4 + maskStride(side) * static_cast<size_t>(side));
    putLe32(image, 40);                                   // biSize
    putLe32(image, static_cast<std::uint32_t>(side));     // biWidth
    putLe32(image, static_cast<std::uint32_t>(side * 2)); // biHeight: colour + mask
    putLe16(image, 1);                                    // biPlanes
    putLe16(image, 32);                                   // biBitCount
    putLe32(image, 0);                                    // BI_RGB
    putLe32(image, 0);                                    // biSizeImage (may be 0 for BI_RGB)
    putLe32(image, 0);
    putLe32(image, 0);
    putLe32(image, 0);
    putLe32(image, 0);
    for (int y = side - 1; y >= 0; --y) {
        for (int x = 0; x < side; ++x) {
            const std::uint8_t a = alpha[static_cast<size_t>(y * side + x)];
            // Transparent pixels black, as GDI's own icons have them behind the mask.
            image.push_back(a == 0 ? 0 : colour.blue);
            image.push_back(a == 0 ? 0 : colour.green);
            image.push_back(a == 0 ? 0 : colour.red);
            image.push_back(a);
        }
    }
    for (int y = side - 1; y >= 0; --y) {
        std::vector<std::uint8_t> row(maskStride(side), 0);
        for (int x = 0; x < side; ++x) {
            if (alpha[static_cast<size_t>(y * side + x)] == 0) {
                row[static_cast<size_t>(x / 8)] |= static_cast<std::uint8_t>(0x80 >> (x % 8));
            }
        }
        image.insert(image.end(), row.begin(), row.end());
    }
    return image;
}

} // namespace

std::vector<std::uint8_t> starIconFile(std::span<const int> sides, IconColour colour) {
    std::vector<std::vector<std::uint8_t>> images;
    for (const int side : sides) {
        images.push_back(iconImage(side, colour));
    }
    std::vector<std::uint8_t> file;
    putLe16(file, 0); // reserved
    putLe16(file, 1); // icon, not cursor
    putLe16(file, static_cast<unsigned>(sides.size()));
    std::uint32_t offset = static_cast<std::uint32_t>(6 + 16 * sides.size());
    for (size_t i = 0; i < sides.size(); ++i) {
        const auto sideByte = static_cast<std::uint8_t>(sides[i] >= 256 ? 0 : sides[i]);
        file.push_back(sideByte);
        file.push_back(sideByte);
        file.push_back(0); // no palette
        file.push_back(0);
        putLe16(file, 1);  // planes
        putLe16(file, 32); // bits per pixel
        putLe32(file, static_cast<std::uint32_t>(images[i].size()));
        putLe32(file, offset);
        offset += static_cast<std::uint32_t>(images[i].size());
    }
    for (const auto& image : images) {
        file.insert(file.end(), image.begin(), image.end());
    }
    return file;
}

} // namespace corvandell
