// The crop dialog paints itself double-buffered: the picture, the parts outside the square
// darkened, and the square's outline in the accent colour. All geometry is in
// CropGeometry; this file only turns mouse messages into its calls.
#include <windows.h>

#include <windowsx.h>

#include "app/win/CropDialog.hpp"
#include "app/win/DialogKeys.hpp"
#include "app/win/ProfilePicture.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"

#include <algorithm>
#include <array>

namespace corvandell::win {
namespace {

constexpr wchar_t kClassName[] = L"CorvandellCropPicture";
constexpr wchar_t kTitle[] = L"Choose the square for your picture";
constexpr DWORD kStyle = WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
constexpr DWORD kExStyle = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
constexpr int kClientWidth = 440; // at 96 dots per inch
constexpr int kClientHeight = 516;
constexpr int kViewMargin = 16;
constexpr int kViewSide = 408;
constexpr int kHintId = 10;

struct Child {
    int id;
    const wchar_t* className;
    const wchar_t* text;
    DWORD style;
    int x, y, width, height;
};

constexpr std::array<Child, 3> kChildren{{
    {kHintId, L"STATIC", L"Drag to draw a square; drag inside it to move it.", SS_LEFT | SS_NOPREFIX, 16, 436,
     408, 20},
    {IDOK, L"BUTTON", L"OK", WS_TABSTOP | BS_PUSHBUTTON | BS_OWNERDRAW, 258, 472, 80, 28},
    {IDCANCEL, L"BUTTON", L"Cancel", WS_TABSTOP | BS_PUSHBUTTON | BS_OWNERDRAW, 344, 472, 80, 28},
}};

void fill(HDC dc, const RECT& rect, Rgb colour) {
    FillRect(dc, &rect, themeBrush(colour));
}

// Darkens a rectangle by blending black over it at about half strength.
void shade(HDC dc, int x, int y, int width, int height) {
    if (width <= 0 || height <= 0) {
        return;
    }
    const UniqueMemoryDc black(CreateCompatibleDC(dc));
    const UniqueBitmap pixel(CreateCompatibleBitmap(dc, 1, 1));
    const ScopedSelect select(black.get(), pixel.get());
    const RECT one{0, 0, 1, 1};
    FillRect(black.get(), &one, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    const BLENDFUNCTION blend{AC_SRC_OVER, 0, 150, 0};
    AlphaBlend(dc, x, y, width, height, black.get(), 0, 0, 1, 1, blend);
}

} // namespace

CropDialog::CropDialog(HINSTANCE instance, HWND owner, const ProfilePicture& picture)
    : instance_(instance), owner_(owner), picture_(picture), selection_(centredSquare(picture.size())) {}

CropDialog::~CropDialog() {
    if (hwnd_ != nullptr) {
        DestroyWindow(hwnd_);
    }
}

bool CropDialog::create(int showCommand) {
    if (!registerWindowClass(instance_, kClassName, &Window::windowProcedure, nullptr)) {
        return false;
    }
    if (CreateWindowExW(kExStyle, kClassName, kTitle, kStyle, CW_USEDEFAULT, CW_USEDEFAULT, kClientWidth,
                        kClientHeight, owner_, nullptr, instance_, this) == nullptr) {
        return false;
    }
    if (owner_ != nullptr) {
        isOwnerEnabled_ = !EnableWindow(owner_, FALSE);
    }
    ShowWindow(hwnd_, showCommand);
    UpdateWindow(hwnd_);
    return true;
}

CropSquare CropDialog::run() {
    if (!create()) {
        return {};
    }
    MSG message{};
    while (!isDone_) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got <= 0) {
            if (got == 0) {
                PostQuitMessage(static_cast<int>(message.wParam)); // the outer loop must see it too
            }
            break;
        }
        TranslateMessage(&message); // dialog keys come through DialogKeys' hook
        DispatchMessageW(&message);
    }
    if (!isDone_) {
        end(false);
    }
    return result_;
}

LRESULT CropDialog::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_ERASEBKGND) {
        return 1; // WM_PAINT covers every pixel
    }
    LRESULT themed = 0;
    if (themeHandleMessage(hwnd_, message, wParam, lParam, themed)) {
        return themed;
    }
    return route(message, wParam, lParam);
}

LRESULT CropDialog::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        onCreate();
        return 0;
    case WM_PAINT: {
        PAINTSTRUCT paintInfo{};
        HDC dc = BeginPaint(hwnd_, &paintInfo);
        RECT client{};
        GetClientRect(hwnd_, &client);
        const UniqueMemoryDc buffer(CreateCompatibleDC(dc));
        const UniqueBitmap pixels(CreateCompatibleBitmap(dc, client.right, client.bottom));
        {
            const ScopedSelect select(buffer.get(), pixels.get());
            paint(buffer.get());
            BitBlt(dc, 0, 0, client.right, client.bottom, buffer.get(), 0, 0, SRCCOPY);
        }
        EndPaint(hwnd_, &paintInfo);
        return 0;
    }
    case WM_LBUTTONDOWN:
        onMouseDown({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
        return 0;
    case WM_MOUSEMOVE:
        onMouseMove({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
        return 0;
    case WM_LBUTTONUP:
        if (drag_ != Drag::None) {
            onMouseMove({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
            drag_ = Drag::None;
            ReleaseCapture();
        }
        return 0;
    case WM_CAPTURECHANGED:
        drag_ = Drag::None;
        return 0;
    case WM_SETCURSOR:
        if (LOWORD(lParam) == HTCLIENT) {
            POINT cursor{};
            GetCursorPos(&cursor);
            ScreenToClient(hwnd_, &cursor);
            const bool isOverSquare =
                isInside(squareInView(selection_, placement_, picture_.size()), {cursor.x, cursor.y});
            SetCursor(LoadCursorW(nullptr, isOverSquare ? IDC_SIZEALL : IDC_CROSS));
            return TRUE;
        }
        break;
    case WM_COMMAND:
        if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) {
            end(LOWORD(wParam) == IDOK);
        }
        return 0;
    case DM_GETDEFID:
        return MAKELRESULT(IDOK, DC_HASDEFID);
    case WM_NEXTDLGCTL:
        dialogNextControl(hwnd_, wParam, lParam);
        return 0;
    case WM_DESTROY:
        removeDialogKeys(hwnd_);
        return 0;
    case WM_CLOSE:
        end(false);
        return 0;
    case WM_DPICHANGED: {
        dpi_ = HIWORD(wParam);
        const auto* suggested = reinterpret_cast<const RECT*>(lParam);
        SetWindowPos(hwnd_, nullptr, suggested->left, suggested->top, suggested->right - suggested->left,
                     suggested->bottom - suggested->top, SWP_NOZORDER | SWP_NOACTIVATE);
        layout();
        return 0;
    }
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void CropDialog::onCreate() {
    dpi_ = windowDpi(hwnd_);
    for (const Child& child : kChildren) {
        HWND control = CreateWindowExW(
            0, child.className, child.text, WS_CHILD | WS_VISIBLE | child.style, 0, 0, 0, 0, hwnd_,
            reinterpret_cast<HMENU>(static_cast<INT_PTR>(child.id)), instance_, nullptr);
        if ((child.style & BS_OWNERDRAW) == BS_OWNERDRAW) {
            themeTrackButtonHover(control);
        }
    }
    RECT frame{0, 0, scaledForDpi(kClientWidth, dpi_), scaledForDpi(kClientHeight, dpi_)};
    AdjustWindowRectExForDpi(&frame, kStyle, FALSE, kExStyle, dpi_);
    RECT around{};
    if (owner_ == nullptr || !GetWindowRect(owner_, &around)) {
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &around, 0);
    }
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    SetWindowPos(hwnd_, nullptr, around.left + (around.right - around.left - width) / 2,
                 std::max(around.top, around.top + (around.bottom - around.top - height) / 2), width, height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    layout();
    addDialogKeys(hwnd_);
    SetFocus(GetDlgItem(hwnd_, IDOK));
}

void CropDialog::layout() {
    font_ = createUiFont(dpi_);
    for (const Child& child : kChildren) {
        HWND control = GetDlgItem(hwnd_, child.id);
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
        MoveWindow(control, scaledForDpi(child.x, dpi_), scaledForDpi(child.y, dpi_),
                   scaledForDpi(child.width, dpi_), scaledForDpi(child.height, dpi_), TRUE);
    }
    const int margin = scaledForDpi(kViewMargin, dpi_);
    const int side = scaledForDpi(kViewSide, dpi_);
    view_ = {margin, margin, margin + side, margin + side};
    const PixelRect fitted = fitPictureInView(picture_.size(), side, side);
    placement_ = {fitted.x + margin, fitted.y + margin, fitted.width, fitted.height};
    scaled_ = picture_.scaledBitmap(placement_.width, placement_.height);
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void CropDialog::paint(HDC dc) const {
    const Skin& skin = currentTheme();
    RECT client{};
    GetClientRect(hwnd_, &client);
    fill(dc, client, skin.windowBackground);
    fill(dc, view_, skin.controlBackground);
    if (scaled_) {
        const UniqueMemoryDc source(CreateCompatibleDC(dc));
        const ScopedSelect select(source.get(), scaled_.get());
        BitBlt(dc, placement_.x, placement_.y, placement_.width, placement_.height, source.get(), 0, 0,
               SRCCOPY);
    }
    const PixelRect square = squareInView(selection_, placement_, picture_.size());
    const int placementRight = placement_.x + placement_.width;
    const int placementBottom = placement_.y + placement_.height;
    const int squareRight = square.x + square.width;
    const int squareBottom = square.y + square.height;
    shade(dc, placement_.x, placement_.y, placement_.width, square.y - placement_.y);
    shade(dc, placement_.x, squareBottom, placement_.width, placementBottom - squareBottom);
    shade(dc, placement_.x, square.y, square.x - placement_.x, square.height);
    shade(dc, squareRight, square.y, placementRight - squareRight, square.height);
    const int line = std::max(2, scaledForDpi(2, dpi_));
    const RECT edges[] = {
        {square.x, square.y, squareRight, square.y + line},
        {square.x, squareBottom - line, squareRight, squareBottom},
        {square.x, square.y, square.x + line, squareBottom},
        {squareRight - line, square.y, squareRight, squareBottom},
    };
    for (const RECT& edge : edges) {
        fill(dc, edge, skin.accent);
    }
    // A light line inside the accent keeps the edge visible on pictures of the accent's hue.
    const RECT inner[] = {
        {square.x + line, square.y + line, squareRight - line, square.y + line + 1},
        {square.x + line, squareBottom - line - 1, squareRight - line, squareBottom - line},
        {square.x + line, square.y + line, square.x + line + 1, squareBottom - line},
        {squareRight - line - 1, square.y + line, squareRight - line, squareBottom - line},
    };
    for (const RECT& edge : inner) {
        fill(dc, edge, skin.accentText);
    }
}

void CropDialog::onMouseDown(ViewPoint point) {
    const PixelRect square = squareInView(selection_, placement_, picture_.size());
    if (isInside(square, point)) {
        drag_ = Drag::Moving;
    } else if (isInside(placement_, point)) {
        drag_ = Drag::Drawing;
    } else {
        return;
    }
    dragStart_ = point;
    squareAtDragStart_ = selection_;
    SetCapture(hwnd_);
}

void CropDialog::onMouseMove(ViewPoint point) {
    if (drag_ == Drag::None) {
        return;
    }
    if (drag_ == Drag::Moving) {
        selection_ = movedSquare(squareAtDragStart_, placement_, picture_.size(), point.x - dragStart_.x,
                                 point.y - dragStart_.y);
    } else if (const CropSquare drawn = squareFromDrag(placement_, picture_.size(), dragStart_, point);
               drawn.side > 0) {
        selection_ = drawn; // a click without a drag keeps the square there was
    }
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void CropDialog::end(bool isAccepted) {
    if (isDone_) {
        return;
    }
    isDone_ = true;
    result_ = isAccepted ? selection_ : CropSquare{};
    // The owner comes back before this window goes, or Windows would activate another app.
    if (owner_ != nullptr && isOwnerEnabled_) {
        EnableWindow(owner_, TRUE);
        SetActiveWindow(owner_);
    }
    ShowWindow(hwnd_, SW_HIDE);
}

} // namespace corvandell::win
