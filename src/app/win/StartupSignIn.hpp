// Start-up's sign-in step: the sign-in window before the library when the settings hold
// no usable session.
#pragma once

#include <windows.h>

#include "app/DataPaths.hpp"
#include "app/GuardedFile.hpp"
#include "base/Settings.hpp"

namespace corvandell::win {

// True when start-up goes on to the library: at once when no sign-in is needed, else when
// the user signed in or chose to skip. False when the user closed the window. Tokens and
// user name land in `settings` and are saved through `settingsFile`.
bool passSignIn(HINSTANCE instance, int showCommand, const DataPaths& paths, Settings& settings,
                GuardedFile& settingsFile);

} // namespace corvandell::win
