#include "app/MainLayout.hpp"

namespace corvandell {

MainLayout computeMainLayout(int clientWidth, int clientHeight) {
    const int w = clientWidth;
    const int h = clientHeight;
    const int listRight = (2 * w) / 3;
    MainLayout layout;
    layout.searchLabel = {12, 17, 96, 18};
    layout.searchEdit = {112, 12, 260, 30};
    layout.refreshButton = {384, 12, 90, 30};
    layout.launchButton = {480, 12, 110, 30};
    layout.addGameButton = {596, 12, 100, 30};
    layout.friendsButton = {702, 12, 90, 30};
    layout.optionsButton = {798, 12, 90, 30};
    layout.list = {12, 58, listRight - 20, h - 92};
    layout.detailsLabel = {listRight + 8, 58, 160, 18};
    layout.details = {listRight + 8, 80, w - listRight - 20, h - 470};
    layout.playtimePanel = {listRight + 8, h - 382, w - listRight - 20, 348};
    layout.statusLine = {12, h - 24, w - 24, 20};
    return layout;
}

std::array<int, 5> fitListColumns(int width) {
    constexpr int kState = 110;
    constexpr int kCategory = 110;
    constexpr int kPlatform = 80;
    constexpr int kTitleMinimum = 160;
    constexpr int kMiddle = kState + kCategory + kPlatform;
    int middle = kMiddle;
    if (width - kRatingColumnWidth - middle < kTitleMinimum) {
        middle = width - kRatingColumnWidth - kTitleMinimum;
        if (middle < 0) {
            middle = 0;
        }
    }
    const int state = middle * kState / kMiddle;
    const int category = middle * kCategory / kMiddle;
    const int platform = middle - state - category;
    const int title = width - kRatingColumnWidth - middle;
    return {title > 0 ? title : 0, state, category, platform, kRatingColumnWidth};
}

} // namespace corvandell
