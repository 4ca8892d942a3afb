// Opens the friends window from the main window, painted in the current skin and set to
// report its end with MsgChildClosed kind 1.
#pragma once

#include <windows.h>

#include "base/Settings.hpp"

namespace corvandell::win {

// The new window's handle, or null when it could not be created.
HWND openFriendsWindow(HINSTANCE instance, HWND mainWindow, const Settings* settings);

} // namespace corvandell::win
