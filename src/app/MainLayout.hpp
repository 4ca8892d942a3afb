// Where the main window's controls go for a given client size. The toolbar is fixed; the
// list takes two thirds of the width and the details column the rest.
#pragma once

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

} // namespace corvandell
