// Paints the client's windows in the current skin's colours.
//
// A window offers every message to themeHandleMessage before its own handling. The hook
// erases backgrounds, answers the control-colour messages and draws owner-drawn push
// buttons (hover, pressed and focus states); everything else it leaves alone.
#pragma once

#include <windows.h>

#include "app/Skins.hpp"

namespace corvandell::win {

COLORREF toColorRef(Rgb colour) noexcept;

// A solid brush of the colour, kept for the life of the process (skins have few colours).
HBRUSH themeBrush(Rgb colour) noexcept;

// True when the hook handled the message; `result` is then the window's answer.
bool themeHandleMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) noexcept;

// Lets an owner-drawn button show the hover colour while the mouse is over it.
void themeTrackButtonHover(HWND button) noexcept;
bool themeIsButtonHovered(HWND button) noexcept;

// List views draw their empty area and header-less background themselves.
void themeApplyToList(HWND list) noexcept;

} // namespace corvandell::win
