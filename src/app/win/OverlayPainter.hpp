// Draws the in-game overlay into an off-screen 32-bit bitmap and hands it to its layered
// window with per-pixel alpha.
//
// GDI draws the colours (it cannot draw alpha: text leaves the alpha byte at zero), so the
// alpha is laid on afterwards in one pass that knows the shapes: the backdrop dims the game
// evenly, a soft shadow darkens it near the panel, and the panel itself, with anti-aliased
// rounded corners and a one-pixel rim, is nearly opaque. The bitmap is kept between frames
// and only remade when the window's size changes.
#pragma once

#include <windows.h>

#include "app/OverlayFriends.hpp"
#include "app/OverlayLayout.hpp"
#include "app/Skins.hpp"
#include "base/win/UniqueHandle.hpp"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvandell::win {

struct OverlayButtonLook {
    std::wstring text;
    std::wstring keyHint; // a small key name at the button's right edge, e.g. "Esc"
    bool isEnabled = true;
    bool isPrimary = false;
    bool isHovered = false;
    bool isPressed = false;
    bool isFocused = false;
};

// Everything the overlay shows, already in words.
struct OverlayScene {
    std::wstring caption;
    std::wstring title;
    std::wstring sessionLabel; // "Session time "
    std::wstring sessionClock; // "1:02:03"
    std::array<OverlayButtonLook, kOverlayButtonCount> buttons;
    std::wstring voiceLine;
    std::wstring friendsHeading;
    std::wstring friendsCount;
    std::vector<OverlayFriendRow> friends;
    int firstFriend = 0;
    std::wstring friendsNotice; // in the list's place while it has no rows
    std::wstring hint;
};

// A frame as premultiplied 0xAARRGGBB pixels, top row first.
struct OverlayFrame {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

class OverlayPainter {
public:
    // Draws the scene and shows it in `window`, whose top-left corner goes to `origin` on
    // the screen. False when the system refused the frame.
    bool present(HWND window, POINT origin, SIZE size, const OverlayLayout& layout, const OverlayScene& scene,
                 const Skin& skin);
    OverlayFrame frame() const;

private:
    bool ensureSurface(SIZE size);
    void ensureFonts(int dpi);
    void drawPanel(const OverlayLayout& layout, const OverlayScene& scene, const Skin& skin);
    void drawButton(const OverlayRect& rect, const OverlayButtonLook& look, const OverlayLayout& layout,
                    const Skin& skin);
    void drawFriends(const OverlayLayout& layout, const OverlayScene& scene, const Skin& skin);
    void applyAlpha(const OverlayLayout& layout, const Skin& skin);

    // The bitmap before the DC, so the DC is deleted first and lets go of it.
    UniqueBitmap bitmap_;
    UniqueMemoryDc dc_;
    HGDIOBJ previousBitmap_ = nullptr;
    std::uint32_t* bits_ = nullptr;
    SIZE size_{};
    int fontDpi_ = 0;
    UniqueFont captionFont_;
    UniqueFont titleFont_;
    UniqueFont clockFont_;
    UniqueFont labelFont_;
    UniqueFont buttonFont_;
    UniqueFont rowFont_;
    UniqueFont smallFont_;
    UniqueFont headingFont_;
};

} // namespace corvandell::win
