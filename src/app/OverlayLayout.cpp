#include "app/OverlayLayout.hpp"

#include <algorithm>

namespace corvandell {
namespace {

constexpr int kPanelWidth = 760;
constexpr int kPanelHeight = 472;
constexpr int kPadding = 28;
constexpr int kScreenMargin = 16; // kept free around the panel on a small screen
constexpr int kMinimumDpi = 48;   // below half size text is unreadable anyway
constexpr int kButtonHeight = 46;
constexpr int kButtonGap = 12;
constexpr int kLeftColumnWidth = 300;
constexpr int kSessionWidth = 270;

class Scaler {
public:
    Scaler(int dpi, int originX, int originY) : dpi_(dpi), originX_(originX), originY_(originY) {}
    int operator()(int at96) const noexcept { return (at96 * dpi_ + 48) / 96; }
    // A rectangle given at 96 dpi relative to the panel's corner.
    OverlayRect rect(int x, int y, int width, int height) const noexcept {
        const int left = originX_ + (*this)(x);
        const int top = originY_ + (*this)(y);
        return {left, top, originX_ + (*this)(x + width), originY_ + (*this)(y + height)};
    }

private:
    int dpi_;
    int originX_;
    int originY_;
};

int fittingDpi(int width, int height, int dpi) noexcept {
    const int roomX = std::max(width - 2 * kScreenMargin, 0);
    const int roomY = std::max(height - 2 * kScreenMargin, 0);
    const int fitX = roomX * 96 / kPanelWidth;
    const int fitY = roomY * 96 / kPanelHeight;
    return std::max(kMinimumDpi, std::min({dpi, fitX, fitY}));
}

} // namespace

OverlayLayout overlayLayout(int width, int height, int dpi) {
    OverlayLayout layout;
    layout.dpi = fittingDpi(width, height, std::max(dpi, kMinimumDpi));
    const Scaler unit(layout.dpi, 0, 0);
    const int panelWidth = unit(kPanelWidth);
    const int panelHeight = unit(kPanelHeight);
    const int left = (width - panelWidth) / 2;
    const int top = (height - panelHeight) / 2;
    layout.panel = {left, top, left + panelWidth, top + panelHeight};
    layout.cornerRadius = unit(12);
    layout.shadowWidth = unit(28);

    const Scaler at(layout.dpi, left, top);
    constexpr int inner = kPanelWidth - 2 * kPadding;
    layout.caption = at.rect(kPadding, 22, inner, 16);
    layout.title = at.rect(kPadding, 42, inner - kSessionWidth - 16, 36);
    layout.session = at.rect(kPanelWidth - kPadding - kSessionWidth, 42, kSessionWidth, 36);
    layout.divider = at.rect(kPadding, 94, inner, 1);
    for (int i = 0; i < kOverlayButtonCount; ++i) {
        layout.buttons[static_cast<std::size_t>(i)] =
            at.rect(kPadding, 118 + i * (kButtonHeight + kButtonGap), kLeftColumnWidth, kButtonHeight);
    }
    layout.voiceLine = at.rect(kPadding, 118 + 4 * (kButtonHeight + kButtonGap) + 4, kLeftColumnWidth, 20);

    constexpr int listLeft = kPadding + kLeftColumnWidth + kPadding;
    constexpr int listWidth = kPanelWidth - listLeft - kPadding;
    layout.friendsHeading = at.rect(listLeft, 114, listWidth, 24);
    layout.friendsList = at.rect(listLeft, 146, listWidth, 266);
    layout.friendRowHeight = unit(38);
    layout.footerDivider = at.rect(kPadding, kPanelHeight - 48, inner, 1);
    layout.hint = at.rect(kPadding, kPanelHeight - 38, inner, 22);
    return layout;
}

int visibleFriendRows(const OverlayLayout& layout) noexcept {
    if (layout.friendRowHeight <= 0) {
        return 1;
    }
    return std::max(1, layout.friendsList.height() / layout.friendRowHeight);
}

} // namespace corvandell
