// The drawn star that serves as the window and tray icon.
#pragma once

#include <windows.h>

#include "app/win/UniqueHandle.hpp"

namespace corvandell::win {

inline constexpr COLORREF kStarColour = 0x15CCFA;

// A square icon of `side` pixels: the star in `colour`, transparent around it.
UniqueIcon createStarIcon(int side, COLORREF colour);

} // namespace corvandell::win
