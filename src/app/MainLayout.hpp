// Where the main window's controls go for a given client size. The toolbar is fixed; the
// list takes two thirds of the width and the details column the rest. Every fixed length
// is written at 96 dots per inch and scaled to the window's own, so the window keeps its
// proportions at 150% or 200%.
#pragma once

#include <array>

namespace corvandell {

struct ControlRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const ControlRect&, const ControlRect&) = default;
};

struct MainLayout {
    ControlRect searchLabel;
    ControlRect searchEdit;
    ControlRect refreshButton;
    ControlRect launchButton;
    ControlRect addGameButton;
    ControlRect friendsButton;
    ControlRect optionsButton;
    ControlRect list;
    ControlRect detailsLabel;
    ControlRect details;
    ControlRect playtimePanel;
    ControlRect statusLine;
};

inline constexpr unsigned kLayoutDpi = 96;

// A length laid out at 96 dots per inch, at `dpi`, rounded to the nearest pixel.
constexpr int scaledPixels(int pixelsAt96, unsigned dpi) {
    const long long scaled = static_cast<long long>(pixelsAt96) * dpi;
    return static_cast<int>((scaled >= 0 ? scaled + kLayoutDpi / 2 : scaled - kLayoutDpi / 2) / kLayoutDpi);
}

MainLayout computeMainLayout(int clientWidth, int clientHeight, unsigned dpi = kLayoutDpi);

// Widths of the list's columns Title, State, Category, Platform and Rating for a list whose
// rows are `width` pixels wide: they fill it exactly, so no horizontal scroll bar appears.
// The Title column takes what the others leave; on a narrow list the middle columns give
// way first, and the Rating column keeps room for a full "★ 4.5 (120)".
std::array<int, 5> fitListColumns(int width, unsigned dpi = kLayoutDpi);

inline constexpr int kRatingColumnWidth = 90;

} // namespace corvandell
