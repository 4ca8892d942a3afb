#include <windows.h>

#include "app/win/OverlayPainter.hpp"

#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"

#include <algorithm>
#include <cmath>

namespace corvandell::win {
namespace {

constexpr int kPanelAlpha = 250;    // a hint of the game behind the panel, never behind its text
constexpr int kBackdropAlpha = 150; // dims the game to about 40%, still recognisable
constexpr int kShadowAlpha = 90;    // at the panel's edge, fading out over the shadow width

Rgb mix(Rgb from, Rgb to, int towardPercent) noexcept {
    const auto channel = [towardPercent](int a, int b) {
        return static_cast<std::uint8_t>(a + (b - a) * towardPercent / 100);
    };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue)};
}

// The skin's window colour pushed far toward black: a veil over the game that keeps the
// skin's tint without washing a light skin's game out to grey.
Rgb backdropColour(const Skin& skin) noexcept {
    return mix(skin.windowBackground, Rgb{0, 0, 0}, 75);
}

RECT toRect(const OverlayRect& rect) noexcept {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

void fill(HDC dc, const RECT& rect, Rgb colour) noexcept {
    FillRect(dc, &rect, themeBrush(colour));
}

void roundedFill(HDC dc, const RECT& rect, int radius, Rgb colour) noexcept {
    const ScopedSelect brush(dc, themeBrush(colour));
    const ScopedSelect pen(dc, GetStockObject(NULL_PEN));
    // The null pen leaves the right and bottom edges one pixel short.
    RoundRect(dc, rect.left, rect.top, rect.right + 1, rect.bottom + 1, 2 * radius, 2 * radius);
}

void roundedOutline(HDC dc, const RECT& rect, int radius, int width, Rgb colour) {
    const UniquePen outline(CreatePen(PS_INSIDEFRAME, width, toColorRef(colour)));
    const ScopedSelect pen(dc, outline.get());
    const ScopedSelect brush(dc, GetStockObject(NULL_BRUSH));
    RoundRect(dc, rect.left, rect.top, rect.right, rect.bottom, 2 * radius, 2 * radius);
}

void text(HDC dc, const std::wstring& line, RECT rect, HFONT font, Rgb colour, UINT format) noexcept {
    const ScopedSelect select(dc, font);
    SetTextColor(dc, toColorRef(colour));
    DrawTextW(dc, line.c_str(), static_cast<int>(line.size()), &rect,
              format | DT_SINGLELINE | DT_NOPREFIX | DT_VCENTER);
}

int textWidth(HDC dc, const std::wstring& line, HFONT font) noexcept {
    const ScopedSelect select(dc, font);
    SIZE extent{};
    GetTextExtentPoint32W(dc, line.c_str(), static_cast<int>(line.size()), &extent);
    return extent.cx;
}

std::uint32_t premultiplied(Rgb colour, int alpha) noexcept {
    const auto scale = [alpha](int channel) {
        return static_cast<std::uint32_t>((channel * alpha + 127) / 255);
    };
    return static_cast<std::uint32_t>(alpha) << 24 | scale(colour.red) << 16 | scale(colour.green) << 8 |
           scale(colour.blue);
}

// Signed distance from a pixel's centre to the edge of a rounded rectangle: negative
// inside. The usual rounded-box distance: the corner circles' centres span an inner box.
struct RoundedBox {
    double centreX;
    double centreY;
    double halfInnerWidth;
    double halfInnerHeight;
    double radius;

    RoundedBox(const OverlayRect& rect, int cornerRadius)
        : centreX((rect.left + rect.right) / 2.0), centreY((rect.top + rect.bottom) / 2.0),
          halfInnerWidth(rect.width() / 2.0 - cornerRadius),
          halfInnerHeight(rect.height() / 2.0 - cornerRadius), radius(cornerRadius) {}

    double distance(int x, int y) const noexcept {
        const double qx = std::abs(x + 0.5 - centreX) - halfInnerWidth;
        const double qy = std::abs(y + 0.5 - centreY) - halfInnerHeight;
        const double outside = std::hypot(std::max(qx, 0.0), std::max(qy, 0.0));
        return outside + std::min(std::max(qx, qy), 0.0) - radius;
    }
};

} // namespace

bool OverlayPainter::ensureSurface(SIZE size) {
    if (bits_ != nullptr && size.cx == size_.cx && size.cy == size_.cy) {
        return true;
    }
    if (dc_ && previousBitmap_ != nullptr) {
        SelectObject(dc_.get(), previousBitmap_);
    }
    bitmap_.reset();
    bits_ = nullptr;
    if (!dc_) {
        dc_ = UniqueMemoryDc(CreateCompatibleDC(nullptr));
    }
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = size.cx;
    info.bmiHeader.biHeight = -size.cy; // top row first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    bitmap_ = UniqueBitmap(CreateDIBSection(dc_.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!dc_ || !bitmap_ || bits == nullptr) {
        bitmap_.reset();
        return false;
    }
    previousBitmap_ = SelectObject(dc_.get(), bitmap_.get());
    bits_ = static_cast<std::uint32_t*>(bits);
    size_ = size;
    return true;
}

void OverlayPainter::ensureFonts(int dpi) {
    if (dpi == fontDpi_) {
        return;
    }
    const UINT at = static_cast<UINT>(dpi);
    captionFont_ = createUiFont(at, 8, FW_BOLD);
    titleFont_ = createUiFont(at, 20, FW_SEMIBOLD);
    clockFont_ = createUiFont(at, 20, FW_SEMIBOLD);
    labelFont_ = createUiFont(at, 10);
    buttonFont_ = createUiFont(at, 11, FW_SEMIBOLD);
    headingFont_ = createUiFont(at, 12, FW_SEMIBOLD);
    rowFont_ = createUiFont(at, 10, FW_SEMIBOLD);
    smallFont_ = createUiFont(at, 9);
    fontDpi_ = dpi;
}

bool OverlayPainter::present(HWND window, POINT origin, SIZE size, const OverlayLayout& layout,
                             const OverlayScene& scene, const Skin& skin) {
    if (size.cx <= 0 || size.cy <= 0 || !ensureSurface(size)) {
        return false;
    }
    ensureFonts(layout.dpi);
    // Only the panel is drawn with GDI: the alpha pass writes every pixel around it.
    drawPanel(layout, scene, skin);
    GdiFlush(); // GDI may still be writing into the bits
    applyAlpha(layout, skin);

    POINT source{0, 0};
    BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    return UpdateLayeredWindow(window, nullptr, &origin, &size, dc_.get(), &source, 0, &blend, ULW_ALPHA) !=
           FALSE;
}

void OverlayPainter::drawPanel(const OverlayLayout& layout, const OverlayScene& scene, const Skin& skin) {
    HDC dc = dc_.get();
    const auto scaled = [&layout](int at96) { return scaledForDpi(at96, static_cast<UINT>(layout.dpi)); };
    fill(dc, toRect(layout.panel), skin.windowBackground);
    SetBkMode(dc, TRANSPARENT);

    SetTextCharacterExtra(dc, scaled(2)); // a spaced-out small-caps look for the caption
    text(dc, scene.caption, toRect(layout.caption), captionFont_.get(), skin.accent, DT_LEFT);
    SetTextCharacterExtra(dc, 0);
    text(dc, scene.title, toRect(layout.title), titleFont_.get(), skin.controlText,
         DT_LEFT | DT_END_ELLIPSIS);

    // "Session time" quiet, the clock itself large, sharing one baseline at the right.
    const RECT session = toRect(layout.session);
    const int clockWidth = textWidth(dc, scene.sessionClock, clockFont_.get());
    const int baseline = session.bottom - scaled(7);
    SetTextAlign(dc, TA_BASELINE | TA_RIGHT | TA_NOUPDATECP);
    {
        const ScopedSelect select(dc, clockFont_.get());
        SetTextColor(dc, toColorRef(skin.controlText));
        ExtTextOutW(dc, session.right, baseline, 0, nullptr, scene.sessionClock.c_str(),
                    static_cast<UINT>(scene.sessionClock.size()), nullptr);
    }
    {
        const ScopedSelect select(dc, labelFont_.get());
        SetTextColor(dc, toColorRef(skin.mutedText));
        ExtTextOutW(dc, session.right - clockWidth, baseline, 0, nullptr, scene.sessionLabel.c_str(),
                    static_cast<UINT>(scene.sessionLabel.size()), nullptr);
    }
    SetTextAlign(dc, TA_LEFT | TA_TOP | TA_NOUPDATECP);

    fill(dc, toRect(layout.divider), skin.border);
    for (std::size_t i = 0; i < scene.buttons.size(); ++i) {
        drawButton(layout.buttons[i], scene.buttons[i], layout, skin);
    }
    text(dc, scene.voiceLine, toRect(layout.voiceLine), smallFont_.get(), skin.mutedText,
         DT_LEFT | DT_END_ELLIPSIS);
    drawFriends(layout, scene, skin);
    fill(dc, toRect(layout.footerDivider), skin.border);
    text(dc, scene.hint, toRect(layout.hint), smallFont_.get(), skin.mutedText, DT_CENTER | DT_END_ELLIPSIS);
}

void OverlayPainter::drawButton(const OverlayRect& where, const OverlayButtonLook& look,
                                const OverlayLayout& layout, const Skin& skin) {
    HDC dc = dc_.get();
    const auto scaled = [&layout](int at96) { return scaledForDpi(at96, static_cast<UINT>(layout.dpi)); };
    const int radius = scaled(6);
    Rgb background = look.isPrimary ? skin.accent : skin.buttonBackground;
    Rgb caption = look.isPrimary ? skin.accentText : skin.buttonText;
    if (!look.isEnabled) {
        background = mix(skin.buttonBackground, skin.windowBackground, 55);
        caption = skin.mutedText;
    } else if (look.isPressed) {
        background = look.isPrimary ? mix(skin.accent, Rgb{0, 0, 0}, 20) : skin.accent;
        caption = skin.accentText;
    } else if (look.isHovered) {
        background = look.isPrimary ? mix(skin.accent, Rgb{255, 255, 255}, 15) : skin.buttonHover;
    }
    RECT rect = toRect(where);
    if (look.isFocused) {
        // A ring just outside the button, apart from it by a gap of the panel's colour; in
        // the text colour around the accent-coloured button, where an accent ring would
        // melt into it.
        RECT ring = rect;
        const int gap = scaled(3);
        InflateRect(&ring, gap, gap);
        roundedOutline(dc, ring, radius + gap, std::max(1, scaled(2)),
                       look.isPrimary ? skin.controlText : skin.accent);
    }
    roundedFill(dc, rect, radius, background);

    RECT label = rect;
    label.left += scaled(18);
    label.right -= scaled(14);
    if (!look.keyHint.empty()) {
        text(dc, look.keyHint, label, smallFont_.get(), look.isPrimary ? caption : skin.mutedText, DT_RIGHT);
    }
    text(dc, look.text, label, buttonFont_.get(), caption, DT_LEFT | DT_END_ELLIPSIS);
}

void OverlayPainter::drawFriends(const OverlayLayout& layout, const OverlayScene& scene, const Skin& skin) {
    HDC dc = dc_.get();
    const auto scaled = [&layout](int at96) { return scaledForDpi(at96, static_cast<UINT>(layout.dpi)); };
    text(dc, scene.friendsHeading, toRect(layout.friendsHeading), headingFont_.get(), skin.controlText,
         DT_LEFT);
    text(dc, scene.friendsCount, toRect(layout.friendsHeading), smallFont_.get(), skin.mutedText, DT_RIGHT);

    const RECT list = toRect(layout.friendsList);
    roundedFill(dc, list, scaled(6), skin.border);
    RECT inside = list;
    InflateRect(&inside, -1, -1);
    roundedFill(dc, inside, scaled(6) - 1, skin.controlBackground);
    if (scene.friends.empty()) {
        text(dc, scene.friendsNotice, inside, labelFont_.get(), skin.mutedText, DT_CENTER | DT_END_ELLIPSIS);
        return;
    }
    const int rows = visibleFriendRows(layout);
    const int padding = scaled(14);
    const int dot = scaled(8);
    const Rgb separator = mix(skin.controlBackground, skin.border, 60);
    for (int row = 0; row < rows; ++row) {
        const std::size_t index = static_cast<std::size_t>(scene.firstFriend + row);
        if (index >= scene.friends.size()) {
            break;
        }
        const OverlayFriendRow& friendRow = scene.friends[index];
        const bool isAway = friendRow.presence == FriendPresence::Offline;
        const int top = inside.top + row * layout.friendRowHeight;
        const RECT rowRect{inside.left, top, inside.right, top + layout.friendRowHeight};
        if (row > 0) {
            fill(dc, RECT{rowRect.left + padding, top, rowRect.right - padding, top + 1}, separator);
        }
        const int dotTop = top + (layout.friendRowHeight - dot) / 2;
        const RECT dotRect{rowRect.left + padding, dotTop, rowRect.left + padding + dot, dotTop + dot};
        {
            const Rgb dotColour = isAway ? skin.mutedText : skin.accent;
            const ScopedSelect brush(dc, isAway ? themeBrush(skin.controlBackground) : themeBrush(dotColour));
            const UniquePen ring(
                CreatePen(PS_INSIDEFRAME, std::max(1, scaled(1) + 1), toColorRef(dotColour)));
            const ScopedSelect pen(dc, ring.get());
            Ellipse(dc, dotRect.left, dotRect.top, dotRect.right, dotRect.bottom);
        }
        const std::wstring state = widen(friendRow.state);
        RECT stateRect{rowRect.left, top, rowRect.right - padding, rowRect.bottom};
        const int stateWidth = std::min(textWidth(dc, state, smallFont_.get()),
                                        static_cast<int>(rowRect.right - rowRect.left) / 2);
        const Rgb stateColour = friendRow.presence == FriendPresence::Playing ? skin.accent : skin.mutedText;
        stateRect.left = stateRect.right - stateWidth;
        text(dc, state, stateRect, smallFont_.get(), stateColour, DT_RIGHT | DT_END_ELLIPSIS);
        const std::wstring name = widen(friendRow.name);
        const RECT nameRect{dotRect.right + scaled(12), top, stateRect.left - scaled(10), rowRect.bottom};
        text(dc, name, nameRect, rowFont_.get(), isAway ? skin.mutedText : skin.controlText,
             DT_LEFT | DT_END_ELLIPSIS);
    }
    const int total = static_cast<int>(scene.friends.size());
    if (total > rows) {
        // A thin thumb at the right edge: where the visible rows are in the whole list.
        const int track = inside.bottom - inside.top - 2 * scaled(6);
        const int thumb = std::max(scaled(16), track * rows / total);
        const int offset = (track - thumb) * scene.firstFriend / std::max(1, total - rows);
        const int left = inside.right - scaled(6);
        roundedFill(dc,
                    RECT{left, inside.top + scaled(6) + offset, left + scaled(3),
                         inside.top + scaled(6) + offset + thumb},
                    scaled(1), skin.border);
    }
}

void OverlayPainter::applyAlpha(const OverlayLayout& layout, const Skin& skin) {
    const std::uint32_t plainBackdrop = premultiplied(backdropColour(skin), kBackdropAlpha);
    const RoundedBox box(layout.panel, layout.cornerRadius);
    const int shadow = std::max(1, layout.shadowWidth);
    const int reachTop = std::max(0, layout.panel.top - shadow);
    const int reachBottom = std::min<int>(size_.cy, layout.panel.bottom + shadow);
    const int reachLeft = std::max(0, layout.panel.left - shadow);
    const int reachRight = std::min<int>(size_.cx, layout.panel.right + shadow);
    const Rgb rim = skin.border;
    const Rgb under = backdropColour(skin);
    const double backdropOpacity = kBackdropAlpha / 255.0;

    for (int y = 0; y < size_.cy; ++y) {
        std::uint32_t* row = bits_ + static_cast<std::ptrdiff_t>(y) * size_.cx;
        if (y < reachTop || y >= reachBottom) {
            std::fill(row, row + size_.cx, plainBackdrop);
            continue;
        }
        std::fill(row, row + reachLeft, plainBackdrop);
        std::fill(row + reachRight, row + size_.cx, plainBackdrop);
        for (int x = reachLeft; x < reachRight; ++x) {
            const double distance = box.distance(x, y);
            // The backdrop with the shadow laid over it: black at a falling alpha.
            double shadowOpacity = 0;
            if (distance > -1) {
                const double fade = std::clamp(1.0 - distance / shadow, 0.0, 1.0);
                shadowOpacity = kShadowAlpha / 255.0 * fade * fade;
            }
            const double underOpacity = backdropOpacity + shadowOpacity * (1 - backdropOpacity);
            const double underShade = backdropOpacity * (1 - shadowOpacity); // premultiplied factor
            const double coverage = std::clamp(0.5 - distance, 0.0, 1.0);
            if (coverage <= 0) {
                row[x] = static_cast<std::uint32_t>(std::lround(underOpacity * 255)) << 24 |
                         static_cast<std::uint32_t>(std::lround(under.red * underShade)) << 16 |
                         static_cast<std::uint32_t>(std::lround(under.green * underShade)) << 8 |
                         static_cast<std::uint32_t>(std::lround(under.blue * underShade));
                continue;
            }
            const std::uint32_t drawn = row[x];
            double red = (drawn >> 16) & 0xFF;
            double green = (drawn >> 8) & 0xFF;
            double blue = drawn & 0xFF;
            // The outermost pixel of the panel is its rim.
            const double rimShare = std::clamp(1.5 + distance, 0.0, 1.0);
            red += (rim.red - red) * rimShare;
            green += (rim.green - green) * rimShare;
            blue += (rim.blue - blue) * rimShare;
            const double panelOpacity = coverage * kPanelAlpha / 255.0;
            const double keep = 1 - panelOpacity;
            const double alpha = panelOpacity + underOpacity * keep;
            row[x] =
                static_cast<std::uint32_t>(std::lround(alpha * 255)) << 24 |
                static_cast<std::uint32_t>(std::lround(red * panelOpacity + under.red * underShade * keep))
                    << 16 |
                static_cast<std::uint32_t>(
                    std::lround(green * panelOpacity + under.green * underShade * keep))
                    << 8 |
                static_cast<std::uint32_t>(std::lround(blue * panelOpacity + under.blue * underShade * keep));
        }
    }
}

OverlayFrame OverlayPainter::frame() const {
    OverlayFrame frame;
    if (bits_ == nullptr) {
        return frame;
    }
    frame.width = size_.cx;
    frame.height = size_.cy;
    frame.pixels.assign(bits_, bits_ + static_cast<std::ptrdiff_t>(size_.cx) * size_.cy);
    return frame;
}

} // namespace corvandell::win
