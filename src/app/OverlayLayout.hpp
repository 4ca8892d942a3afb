// Where the in-game overlay puts things. The overlay covers the game's whole monitor with a
// dimmed backdrop and draws one centred panel on it: the game's title and session clock
// across the top, the four buttons in a column on the left, the friends list on the right
// and a key hint at the bottom. Written at 96 dots per inch and scaled; a monitor too small
// for the panel at its dots per inch gets the panel scaled down until it fits, so nothing is
// ever cut off on a small or very zoomed screen.
#pragma once

#include <array>

namespace corvandell {

struct OverlayRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int width() const noexcept { return right - left; }
    int height() const noexcept { return bottom - top; }
    bool contains(int x, int y) const noexcept { return x >= left && x < right && y >= top && y < bottom; }
    friend bool operator==(const OverlayRect&, const OverlayRect&) = default;
};

inline constexpr int kOverlayButtonCount = 4; // Return to game, Quit Game, Mute mic, Leave voice

struct OverlayLayout {
    int dpi = 96; // what fonts and lines are sized for: the monitor's, or less when it is small
    OverlayRect panel;
    int cornerRadius = 0;
    int shadowWidth = 0; // the soft shadow around the panel, outside it
    OverlayRect caption;
    OverlayRect title;
    OverlayRect session;
    OverlayRect divider;
    std::array<OverlayRect, kOverlayButtonCount> buttons;
    OverlayRect voiceLine;
    OverlayRect friendsHeading;
    OverlayRect friendsList;
    int friendRowHeight = 0;
    OverlayRect footerDivider;
    OverlayRect hint;
};

// Everything in pixels of a window `width` by `height` at `dpi` dots per inch.
OverlayLayout overlayLayout(int width, int height, int dpi);

// How many friend rows the list shows at once (at least 1).
int visibleFriendRows(const OverlayLayout& layout) noexcept;

} // namespace corvandell
