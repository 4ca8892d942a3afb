// The ten corners of the five-pointed star drawn as the window and tray icon.
#pragma once

#include <array>

namespace corvandell {

struct IntPoint {
    int x = 0;
    int y = 0;
    friend bool operator==(const IntPoint&, const IntPoint&) = default;
};

// Corners of a star filling a square of `side` pixels, outer and inner radius alternating,
// the first point straight up.
std::array<IntPoint, 10> starPolygon(int side);

} // namespace corvandell
