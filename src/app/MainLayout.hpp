// Where the main window's controls go for a given client size. The toolbar is fixed; the
// list takes two thirds of the width and the details column the rest.
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

MainLayout computeMainLayout(int clientWidth, int clientHeight);

// Widths of the list's columns Title, State, Category, Platform and Rating for a list whose
// rows are `width` pixels wide: they fill it exactly, so no horizontal scroll bar appears.
// The Title column takes what the others leave; on a narrow list the middle columns give
// way first, and the Rating column keeps room for a full "★ 4.5 (120)".
std::array<int, 5> fitListColumns(int width);

inline constexpr int kRatingColumnWidth = 90;

} // namespace corvandell
