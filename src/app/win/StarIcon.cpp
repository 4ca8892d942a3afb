
#include <windows.h>

#include "app/StarShape.hpp"
#include "app/win/StarIcon.hpp"

#include <array>

namespace corvandell::win {
namespace {

void drawStar(HDC dc, int side, COLORREF fill, COLORREF background) {
    RECT all{0, 0, side, side};
    UniqueBrush backgroundBrush(CreateSolidBrush(background));
    FillRect(dc, &all, backgroundBrush.get());

    const auto corners = starPolygon(side);
    std::array<POINT, 10> points{};
    for (size_t i = 0; i < corners.size(); ++i) {
        points[i] = {corners[i].x, corners[i].y};
    }
    UniqueBrush brush(CreateSolidBrush(fill));
    UniquePen pen(CreatePen(PS_SOLID, 1, fill));
    const ScopedSelect selectBrush(dc, brush.get());
    const ScopedSelect selectPen(dc, pen.get());
    Polygon(dc, points.data(), static_cast<int>(points.size()));
}

} // namespace

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
        drawStar(dc.get(), side, colour, RGB(0, 0, 0));
    }
    {
        const ScopedSelect select(dc.get(), maskBitmap.get());
        drawStar(dc.get(), side, RGB(0, 0, 0), RGB(255, 255, 255));
    }
    ICONINFO info{};
    info.fIcon = TRUE;
    info.hbmMask = maskBitmap.get();
    info.hbmColor = colourBitmap.get();
    return UniqueIcon(CreateIconIndirect(&info));
}

} // namespace corvandell::win
