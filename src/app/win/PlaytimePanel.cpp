#include <windows.h>

#include <windowsx.h>

#include "app/win/PlaytimePanel.hpp"
#include "app/win/StarIcon.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/UniqueHandle.hpp"

namespace corvandell::win {
namespace {

constexpr wchar_t kClassName[] = L"CorvandellPlaytimePanel";
constexpr int kTextTop = PlaytimePanel::kMargin * 2 + PlaytimePanel::kStarSize;

int textTop(UINT dpi) noexcept {
    return scaledForDpi(kTextTop, dpi);
}

RECT starRect(int index, UINT dpi) noexcept {
    const int left = PlaytimePanel::kMargin + index * (PlaytimePanel::kStarSize + PlaytimePanel::kStarGap);
    return {scaledForDpi(left, dpi), scaledForDpi(PlaytimePanel::kMargin, dpi),
            scaledForDpi(left + PlaytimePanel::kStarSize, dpi),
            scaledForDpi(PlaytimePanel::kMargin + PlaytimePanel::kStarSize, dpi)};
}

const wchar_t* captionFor(int myStars, int hoverStar) noexcept {
    static const wchar_t* const kCaptions[] = {L"Rate this game",       L"You rated it 1 star",
                                               L"You rated it 2 stars", L"You rated it 3 stars",
                                               L"You rated it 4 stars", L"You rated it 5 stars"};
    if (hoverStar != 0) {
        return L"Click to rate";
    }
    return kCaptions[myStars >= 0 && myStars <= 5 ? myStars : 0];
}

} // namespace

PlaytimePanel::PlaytimePanel(HINSTANCE instance, RatingCallback onRate)
    : instance_(instance), onRate_(std::move(onRate)) {}

PlaytimePanel::~PlaytimePanel() {
    if (hwnd_ != nullptr) {
        DestroyWindow(hwnd_);
    }
}

bool PlaytimePanel::create(HWND parent, int controlId) {
    registerWindowClass(instance_, kClassName, &Window::windowProcedure, nullptr);
    CreateWindowExW(0, kClassName, captionFor(0, 0), WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_TABSTOP, 0,
                    0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(controlId)), instance_,
                    this);
    return hwnd_ != nullptr;
}

int PlaytimePanel::starAt(int x, int y, UINT dpi) noexcept {
    for (int i = 0; i < kStarCount; ++i) {
        const RECT rect = starRect(i, dpi);
        if (x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom) {
            return i + 1;
        }
    }
    return 0;
}

void PlaytimePanel::setText(const std::wstring& text) {
    if (text_ != nullptr && hwndText(text_) != text) {
        SetWindowTextW(text_, text.c_str());
    }
}

std::wstring PlaytimePanel::text() const {
    return text_ == nullptr ? std::wstring() : hwndText(text_);
}

void PlaytimePanel::setMyStars(int stars) {
    if (stars == myStars_) {
        return;
    }
    myStars_ = stars;
    if (hwnd_ != nullptr) {
        updateCaption();
        InvalidateRect(hwnd_, nullptr, TRUE);
    }
}

void PlaytimePanel::updateCaption() {
    // What the panel holds, not what the mouse hovers: that is what a screen reader reads.
    SetWindowTextW(hwnd_, captionFor(myStars_, 0));
}

void PlaytimePanel::rate(int stars) {
    if (stars >= 1 && stars <= kStarCount && onRate_) {
        onRate_(stars);
    }
}

void PlaytimePanel::onKey(WPARAM key) {
    const int current = hoverStar_ != 0 ? hoverStar_ : (myStars_ > 0 ? myStars_ : 1);
    switch (key) {
    case VK_LEFT:
        setHoverStar(current > 1 ? current - 1 : 1);
        return;
    case VK_RIGHT:
        setHoverStar(current < kStarCount ? current + 1 : kStarCount);
        return;
    case VK_SPACE:
    case VK_RETURN:
        rate(current);
        return;
    default:
        if (key >= '1' && key <= '5') {
            rate(static_cast<int>(key - '0'));
        }
        return;
    }
}

void PlaytimePanel::setHoverStar(int star) {
    if (star == hoverStar_) {
        return;
    }
    hoverStar_ = star;
    InvalidateRect(hwnd_, nullptr, TRUE);
    if (star != 0) {
        TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, hwnd_, 0};
        TrackMouseEvent(&track);
    }
}

void PlaytimePanel::layoutText(int width, int height) {
    if (text_ != nullptr) {
        const int top = textTop(windowDpi(hwnd_));
        MoveWindow(text_, 0, top, width, height > top ? height - top : 0, TRUE);
    }
}

void PlaytimePanel::paint() {
    PAINTSTRUCT ps{};
    HDC dc = BeginPaint(hwnd_, &ps);
    const Skin& skin = currentTheme();
    const UINT dpi = windowDpi(hwnd_);
    RECT client{};
    GetClientRect(hwnd_, &client);
    client.bottom = textTop(dpi);
    FillRect(dc, &client, themeBrush(skin.windowBackground));
    // Hovering previews the rating about to be given; otherwise the user's own shows.
    const int filled = hoverStar_ != 0 ? hoverStar_ : myStars_;
    for (int i = 0; i < kStarCount; ++i) {
        const bool isFilled = i < filled;
        drawStar(dc, starRect(i, dpi), toColorRef(isFilled ? skin.accent : skin.controlBackground),
                 toColorRef(isFilled ? skin.accent : skin.border));
    }
    const bool hasFocus = GetFocus() == hwnd_;
    if (hasFocus) {
        RECT focus = starRect((hoverStar_ != 0 ? hoverStar_ : (myStars_ > 0 ? myStars_ : 1)) - 1, dpi);
        InflateRect(&focus, scaledForDpi(2, dpi), scaledForDpi(2, dpi));
        DrawFocusRect(dc, &focus);
    }
    // What a click does, or what the user gave, beside the stars.
    const wchar_t* caption = captionFor(myStars_, hasFocus ? 0 : hoverStar_);
    const int margin = scaledForDpi(kMargin, dpi);
    RECT label{starRect(kStarCount - 1, dpi).right + margin * 2, margin, client.right - margin,
               margin + scaledForDpi(kStarSize, dpi)};
    const ScopedSelect selectFont(dc, font_ != nullptr ? static_cast<HGDIOBJ>(font_)
                                                       : GetStockObject(DEFAULT_GUI_FONT));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, toColorRef(myStars_ > 0 && hoverStar_ == 0 ? skin.controlText : skin.mutedText));
    DrawTextW(dc, caption, -1, &label, DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    EndPaint(hwnd_, &ps);
}

LRESULT PlaytimePanel::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    try {
        LRESULT themed = 0;
        if (message != WM_DRAWITEM && themeHandleMessage(hwnd_, message, wParam, lParam, themed)) {
            return themed;
        }
        switch (message) {
        case WM_CREATE:
            text_ = CreateWindowExW(0, L"EDIT", L"",
                                    WS_CHILD | WS_VISIBLE | WS_VSCROLL | ES_MULTILINE | ES_READONLY |
                                        ES_AUTOVSCROLL,
                                    0, kTextTop, 0, 0, hwnd_, nullptr, instance_, nullptr);
            return 0;
        case WM_GETDLGCODE:
            // Arrows, digits and Enter pick and give a rating; Tab still moves on.
            if (lParam != 0 && reinterpret_cast<const MSG*>(lParam)->message == WM_KEYDOWN &&
                reinterpret_cast<const MSG*>(lParam)->wParam == VK_RETURN) {
                return DLGC_WANTMESSAGE;
            }
            return DLGC_WANTARROWS | DLGC_WANTCHARS;
        case WM_KEYDOWN:
            onKey(wParam);
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            hoverStar_ = 0;
            InvalidateRect(hwnd_, nullptr, TRUE);
            return 0;
        case WM_LBUTTONDOWN:
            SetFocus(hwnd_);
            return 0;
        case WM_SETFONT:
            font_ = reinterpret_cast<HFONT>(wParam);
            if (text_ != nullptr) {
                SendMessageW(text_, WM_SETFONT, wParam, lParam);
            }
            return 0;
        case WM_SIZE:
            layoutText(LOWORD(lParam), HIWORD(lParam));
            return 0;
        case WM_PAINT:
            paint();
            return 0;
        case WM_MOUSEMOVE:
            setHoverStar(starAt(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam), windowDpi(hwnd_)));
            return 0;
        case WM_MOUSELEAVE:
            setHoverStar(0);
            return 0;
        case WM_LBUTTONUP: {
            rate(starAt(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam), windowDpi(hwnd_)));
            return 0;
        }
        case WM_SETCURSOR:
            if (hoverStar_ != 0) {
                SetCursor(LoadCursorW(nullptr, IDC_HAND));
                return TRUE;
            }
            break;
        default:
            break;
        }
    } catch (...) {
        // Nothing in here is worth crashing the window over.
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

} // namespace corvandell::win
