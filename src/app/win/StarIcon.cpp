#include <windows.h>

#include "app/StarShape.hpp"
#include "app/win/StarIcon.hpp"

#include <array>

namespace corvandell::win {
namespace {

void fillSquare(HDC dc, int side, COLORREF colour) {
    const RECT all{0, 0, side, side};
    UniqueBrush brush(CreateSolidBrush(colour));
    FillRect(dc, &all, brush.get());
}

} // namespace

void drawStar(HDC dc, const RECT& bounds, COLORREF fill, COLORREF outline) {
    const auto corners = starPolygon(bounds.right - bounds.left);
    std::array<POINT, 10> points{};
    for (size_t i = 0; i < corners.size(); ++i) {
        points[i] = {bounds.left + corners[i].x, bounds.top + corners[i].y};
    }
    UniqueBrush brush(CreateSolidBrush(fill));
    UniquePen pen(CreatePen(PS_SOLID, 1, outline));
    const ScopedSelect selectBrush(dc, brush.get());
    const ScopedSelect selectPen(dc, pen.get());
    Polygon(dc, points.data(), static_cast<int>(points.size()));
}

UniqueIcon createStarIcon(int side, COLORREF colour) {
    const ScopedWindowDc screen(nullptr);
    UniqueMemoryDc dc(CreateCompatibleDC(screen.get()));
    UniqueBitmap colourBitmap(CreateCompatibleBitmap(screen.get(), side, side));
    UniqueBitmap maskBitmap(CreateBitmap(side, side, 1, 1, nullptr));
    if (!dc || !colourBitmap || !maskBitmap) {
        return {};
    }
    {
        const ScopedSelect select(dc.get(), colourBitmap.get());
        fillSquare(dc.get(), side, RGB(0, 0, 0));
        drawStar(dc.get(), {0, 0, side, side}, colour, colour);
    }
    {
        const ScopedSelect select(dc.get(), maskBitmap.get());
        fillSquare(dc.get(), side, RGB(255, 255, 255));
        drawStar(dc.get(), {0, 0, side, side}, RGB(0, 0, 0), RGB(0, 0, 0));
    }
    ICONINFO info{};
    info.fIcon = TRUE;
    info.hbmMask = maskBitmap.get();
    info.hbmColor = colourBitmap.get();
    return UniqueIcon(CreateIconIndirect(&info));
}

} // namespace corvandell::win
