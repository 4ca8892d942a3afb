// Picture files written byte by byte, so tests of picture code never get their input from
// the code under test.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace corvandell::test {

// A 24-bit BMP, `width` x `height`, the left half `left` and the right half `right`
// (0xRRGGBB). Returns the file's path.
inline std::filesystem::path writeTwoColourBmp(const std::filesystem::path& file, int width, int height,
                                               std::uint32_t left, std::uint32_t right) {
    const int stride = (width * 3 + 3) & ~3;
    std::string bytes(54 + static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), '\0');
    auto put32 = [&](std::size_t at, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
        }
    };
    bytes[0] = 'B';
    bytes[1] = 'M';
    put32(2, static_cast<std::uint32_t>(bytes.size()));
    put32(10, 54);
    put32(14, 40);
    put32(18, static_cast<std::uint32_t>(width));
    put32(22, static_cast<std::uint32_t>(height));
    bytes[26] = 1;  // planes
    bytes[28] = 24; // bits per pixel
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::uint32_t colour = x < width / 2 ? left : right;
            const std::size_t at = 54 + static_cast<std::size_t>(y) * static_cast<std::size_t>(stride) +
                                   static_cast<std::size_t>(x) * 3;
            bytes[at] = static_cast<char>(colour & 0xFF);             // blue
            bytes[at + 1] = static_cast<char>((colour >> 8) & 0xFF);  // green
            bytes[at + 2] = static_cast<char>((colour >> 16) & 0xFF); // red
        }
    }
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
}

} // namespace corvandell::test
