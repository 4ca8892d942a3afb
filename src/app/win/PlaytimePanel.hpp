// The panel under the game details: five rating stars and the playtime text.
//
// Clicking a star reports its number (1-5) through the callback; the owner decides what a
// rating means. The text area scrolls, since friends' playtime and the activity feed can
// run long. From the keyboard the panel is one tab stop: Left and Right pick a star,
// Space or Enter gives it, and the digits 1 to 5 rate at once. Its window text is the
// caption beside the stars, which is what a screen reader announces for it.
#pragma once

#include <windows.h>

#include "app/win/Window.hpp"

#include <functional>
#include <string>

namespace corvandell::win {

class PlaytimePanel final : public Window {
public:
    using RatingCallback = std::function<void(int stars)>;

    PlaytimePanel(HINSTANCE instance, RatingCallback onRate);
    ~PlaytimePanel() override;

    // Creates the panel as a child control; false when the window could not be made.
    bool create(HWND parent, int controlId);

    void setText(const std::wstring& text);
    std::wstring text() const;
    // The user's own rating, drawn filled; 0 for none.
    void setMyStars(int stars);
    int myStars() const noexcept { return myStars_; }

    static constexpr int kStarCount = 5;
    static constexpr int kStarSize = 24;
    static constexpr int kStarGap = 4;
    static constexpr int kMargin = 8;
    // 1-5 for the star under the point, 0 elsewhere; the sizes above are at 96 dots per
    // inch and scaled to `dpi`.
    static int starAt(int x, int y, UINT dpi = 96) noexcept;

private:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept override;
    void paint();
    void layoutText(int width, int height);
    void setHoverStar(int star);
    void onKey(WPARAM key);
    void rate(int stars);
    void updateCaption();

    HINSTANCE instance_;
    RatingCallback onRate_;
    HWND text_ = nullptr;
    HFONT font_ = nullptr; // the owner's, which outlives the panel
    int myStars_ = 0;
    int hoverStar_ = 0;
};

} // namespace corvandell::win
