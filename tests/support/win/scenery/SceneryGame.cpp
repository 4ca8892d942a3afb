// A stand-in for a full-screen game, for pictures of the in-game overlay: one borderless
// window over the whole primary monitor, painted like a game in play (a dusk sky, hills,
// a road, a health bar, a score and a crosshair), so a screenshot shows how the overlay
// reads over something busy and bright. It ends on WM_CLOSE, or after the number of
// seconds given as its argument (default 120) so it never outlives a failed run.
#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <cwchar>
#include <cwctype>
#include <string>

namespace {

using corvandell::win::ScopedSelect;
using corvandell::win::UniqueBrush;
using corvandell::win::UniqueFont;

constexpr wchar_t kClassName[] = L"CorvandellSceneryGame";
constexpr UINT_PTR kLifetimeTimer = 1;

void verticalGradient(HDC dc, RECT rect, COLORREF top, COLORREF bottom) {
    TRIVERTEX vertices[2] = {
        {rect.left, rect.top, static_cast<COLOR16>(GetRValue(top) << 8),
         static_cast<COLOR16>(GetGValue(top) << 8), static_cast<COLOR16>(GetBValue(top) << 8), 0},
        {rect.right, rect.bottom, static_cast<COLOR16>(GetRValue(bottom) << 8),
         static_cast<COLOR16>(GetGValue(bottom) << 8), static_cast<COLOR16>(GetBValue(bottom) << 8), 0},
    };
    GRADIENT_RECT gradient{0, 1};
    GradientFill(dc, vertices, 2, &gradient, 1, GRADIENT_FILL_RECT_V);
}

void polygon(HDC dc, const POINT* points, int count, COLORREF colour) {
    const UniqueBrush brush(CreateSolidBrush(colour));
    const ScopedSelect selectBrush(dc, brush.get());
    const ScopedSelect selectPen(dc, GetStockObject(NULL_PEN));
    Polygon(dc, points, count);
}

void box(HDC dc, RECT rect, COLORREF colour) {
    const UniqueBrush brush(CreateSolidBrush(colour));
    FillRect(dc, &rect, brush.get());
}

void label(HDC dc, int x, int y, int height, const wchar_t* text, COLORREF colour) {
    const UniqueFont font(CreateFontW(-height, 0, 0, 0, FW_BOLD, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                      OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY,
                                      DEFAULT_PITCH, L"Segoe UI"));
    const ScopedSelect select(dc, font.get());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, colour);
    TextOutW(dc, x, y, text, static_cast<int>(wcslen(text)));
}

void paintScene(HDC dc, int width, int height) {
    const int horizon = height * 58 / 100;
    verticalGradient(dc, RECT{0, 0, width, horizon}, RGB(0x2B, 0x1E, 0x5C), RGB(0xF2, 0x8C, 0x4B));
    {
        const UniqueBrush sun(CreateSolidBrush(RGB(0xFF, 0xD9, 0x7A)));
        const ScopedSelect selectBrush(dc, sun.get());
        const ScopedSelect selectPen(dc, GetStockObject(NULL_PEN));
        Ellipse(dc, width * 62 / 100, horizon - height / 5, width * 62 / 100 + height / 4,
                horizon + height / 20);
    }

    const POINT farHills[] = {{0, horizon},
                              {width / 8, horizon - height / 9},
                              {width / 4, horizon - height / 22},
                              {width * 2 / 5, horizon - height / 7},
                              {width * 3 / 5, horizon - height / 30},
                              {width * 4 / 5, horizon - height / 8},
                              {width, horizon - height / 18},
                              {width, horizon}};
    polygon(dc, farHills, 8, RGB(0x5A, 0x3A, 0x6E));
    verticalGradient(dc, RECT{0, horizon, width, height}, RGB(0x3E, 0x7A, 0x45), RGB(0x1C, 0x3B, 0x22));
    const POINT road[] = {{width / 2 - width / 90, horizon},
                          {width / 2 + width / 90, horizon},
                          {width * 3 / 4, height},
                          {width / 4, height}};
    polygon(dc, road, 4, RGB(0x4A, 0x45, 0x42));
    for (int stripe = 0; stripe < 6; ++stripe) {
        const int top = horizon + (height - horizon) * stripe * stripe / 36;
        const int bottom = horizon + (height - horizon) * (stripe * stripe + stripe + 1) / 40;
        const int half = 2 + (bottom - horizon) / 40;
        box(dc, RECT{width / 2 - half, top, width / 2 + half, bottom}, RGB(0xF5, 0xE6, 0x9A));
    }

    // The HUD: health and shield top left, score top right, minimap, crosshair.
    const int unit = height / 60;
    box(dc, RECT{unit * 2, unit * 2, unit * 2 + unit * 22, unit * 3 + unit / 2}, RGB(0x30, 0x10, 0x10));
    box(dc, RECT{unit * 2, unit * 2, unit * 2 + unit * 16, unit * 3 + unit / 2}, RGB(0xE2, 0x3B, 0x3B));
    box(dc, RECT{unit * 2, unit * 4, unit * 2 + unit * 22, unit * 5}, RGB(0x10, 0x20, 0x30));
    box(dc, RECT{unit * 2, unit * 4, unit * 2 + unit * 9, unit * 5}, RGB(0x4F, 0xC3, 0xF7));
    label(dc, width - unit * 22, unit * 2, unit * 2, L"SCORE 12,480", RGB(0xFF, 0xFF, 0xFF));
    label(dc, width - unit * 22, unit * 5, unit + unit / 2, L"WAVE 7 - 2 ALIVE", RGB(0xFF, 0xE0, 0x82));
    box(dc, RECT{width - unit * 14, height - unit * 14, width - unit * 2, height - unit * 2},
        RGB(0x10, 0x18, 0x10));
    box(dc, RECT{width - unit * 9, height - unit * 9, width - unit * 8, height - unit * 8},
        RGB(0xFF, 0x50, 0x50));
    const int cx = width / 2;
    const int cy = height / 2;
    box(dc, RECT{cx - unit * 2, cy - 1, cx - unit / 2, cy + 1}, RGB(0xFF, 0xFF, 0xFF));
    box(dc, RECT{cx + unit / 2, cy - 1, cx + unit * 2, cy + 1}, RGB(0xFF, 0xFF, 0xFF));
    box(dc, RECT{cx - 1, cy - unit * 2, cx + 1, cy - unit / 2}, RGB(0xFF, 0xFF, 0xFF));
    box(dc, RECT{cx - 1, cy + unit / 2, cx + 1, cy + unit * 2}, RGB(0xFF, 0xFF, 0xFF));
}

LRESULT CALLBACK procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint{};
        HDC dc = BeginPaint(hwnd, &paint);
        RECT client{};
        GetClientRect(hwnd, &client);
        paintScene(dc, client.right, client.bottom);
        EndPaint(hwnd, &paint);
        return 0;
    }
    case WM_ERASEBKGND:
        return 1;
    case WM_TIMER:
        if (wParam == kLifetimeTimer) {
            DestroyWindow(hwnd);
        }
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR commandLine, int) {
    UINT seconds = 120;
    if (commandLine != nullptr && std::iswdigit(commandLine[0])) {
        seconds = static_cast<UINT>(std::wcstoul(commandLine, nullptr, 10));
    }
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = &procedure;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = kClassName;
    RegisterClassExW(&windowClass);
    HWND window =
        CreateWindowExW(0, kClassName, L"Scenery Game", WS_POPUP, 0, 0, GetSystemMetrics(SM_CXSCREEN),
                        GetSystemMetrics(SM_CYSCREEN), nullptr, nullptr, instance, nullptr);
    if (window == nullptr) {
        return 1;
    }
    SetTimer(window, kLifetimeTimer, seconds * 1000, nullptr);
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
