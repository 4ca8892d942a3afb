// The drawn star: the window and tray icon, and the rating stars.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

namespace corvandell::win {

inline constexpr COLORREF kStarColour = 0x15CCFA;

// Draws the star filling the square `bounds`.
void drawStar(HDC dc, const RECT& bounds, COLORREF fill, COLORREF outline);

// A square icon of `side` pixels: the star in `colour`, transparent around it.
UniqueIcon createStarIcon(int side, COLORREF colour);

} // namespace corvandell::win
