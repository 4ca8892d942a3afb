#include "app/StarShape.hpp"

#include <cmath>
#include <numbers>

namespace corvandell {

std::array<IntPoint, 10> starPolygon(int side) {
    const double centre = side / 2.0;
    const double outer = centre - 1.0;
    const double inner = 0.4 * outer;
    std::array<IntPoint, 10> points{};
    for (int i = 0; i < 10; ++i) {
        const double angle = i * std::numbers::pi / 5.0 - std::numbers::pi / 2.0;
        const double radius = (i % 2 == 0) ? outer : inner;
        points[static_cast<size_t>(i)] = {static_cast<int>(std::lround(std::cos(angle) * radius + centre)),
                                          static_cast<int>(std::lround(std::sin(angle) * radius + centre))};
    }
    return points;
}

} // namespace corvandell
