#include "base/win/Dpi.hpp"

namespace corvandell::win {

UINT windowDpi(HWND window) noexcept {
    const UINT dpi = window != nullptr ? GetDpiForWindow(window) : 0;
    return dpi != 0 ? dpi : kDefaultDpi;
}

UniqueFont createUiFont(UINT dpi, int points, int weight) {
    const int height = -MulDiv(points, static_cast<int>(dpi), 72);
    return UniqueFont(CreateFontW(height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                  OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                                  DEFAULT_PITCH | FF_SWISS, L"Segoe UI"));
}

} // namespace corvandell::win
