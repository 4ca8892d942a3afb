#include "app/MainLayout.hpp"

namespace corvandell {

MainLayout computeMainLayout(int clientWidth, int clientHeight, unsigned dpi) {
    const int w = clientWidth;
    const int h = clientHeight;
    const int listRight = (2 * w) / 3;
    // Each constant is scaled on its own, so edges that depend on the client size stay
    // exact instead of drifting by the rounding of a scaled whole.
    const auto s = [dpi](int pixels) { return scaledPixels(pixels, dpi); };
    const auto rect = [&s](int x, int y, int width, int height) {
        return ControlRect{s(x), s(y), s(width), s(height)};
    };
    MainLayout layout;
    layout.searchLabel = rect(12, 17, 96, 18);
    layout.searchEdit = rect(112, 12, 260, 30);
    layout.refreshButton = rect(384, 12, 90, 30);
    layout.launchButton = rect(480, 12, 110, 30);
    layout.addGameButton = rect(596, 12, 100, 30);
    layout.friendsButton = rect(702, 12, 90, 30);
    layout.optionsButton = rect(798, 12, 90, 30);
    // Bottom edges are placed, not summed, so the list and the playtime panel end on the
    // same line at every scale (92 = 58 + 34, 348 = 382 - 34, 20 = 24 - 4 at 96).
    layout.list = {s(12), s(58), listRight - s(20), h - s(34) - s(58)};
    layout.detailsLabel = {listRight + s(8), s(58), s(160), s(18)};
    layout.details = {listRight + s(8), s(80), w - listRight - s(20), h - s(470)};
    layout.playtimePanel = {listRight + s(8), h - s(382), w - listRight - s(20), s(382) - s(34)};
    layout.statusLine = {s(12), h - s(24), w - s(24), s(24) - s(4)};
    return layout;
}

std::array<int, 5> fitListColumns(int width, unsigned dpi) {
    const int stateWidth = scaledPixels(110, dpi);
    const int categoryWidth = scaledPixels(110, dpi);
    const int platformWidth = scaledPixels(80, dpi);
    const int titleMinimum = scaledPixels(160, dpi);
    const int ratingWidth = scaledPixels(kRatingColumnWidth, dpi);
    const int middleWidth = stateWidth + categoryWidth + platformWidth;
    int middle = middleWidth;
    if (width - ratingWidth - middle < titleMinimum) {
        middle = width - ratingWidth - titleMinimum;
        if (middle < 0) {
            middle = 0;
        }
    }
    const int state = middle * stateWidth / middleWidth;
    const int category = middle * categoryWidth / middleWidth;
    const int platform = middle - state - category;
    const int title = width - ratingWidth - middle;
    return {title > 0 ? title : 0, state, category, platform, ratingWidth};
}

} // namespace corvandell
