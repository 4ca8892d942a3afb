// The client's message loop, shared by every top-level window on the UI thread.
//
// Each keyboard message goes first to the main window's accelerator table, but only when
// it is meant for the main window or one of its controls: F5 in a chat must not refresh the
// library. Then the dialog manager of the message's own top-level window gets it, which
// gives the main, friends and chat windows Tab and Shift+Tab between their controls, Enter
// for the default button each window names (DM_GETDEFID) and Escape (IDCANCEL).
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

namespace corvandell::win {

using UniqueAccelerator = UniqueHandle<NullEmptyTraits<HACCEL, &DestroyAcceleratorTable>>;

// True when the message was handled (translated into a command, or dispatched by a
// window's dialog manager); otherwise the caller translates and dispatches it.
bool preTranslateClientMessage(HWND mainWindow, HACCEL keys, MSG& message) noexcept;

// Runs until WM_QUIT and returns its exit code.
int runClientMessageLoop(HWND mainWindow, HACCEL keys) noexcept;

} // namespace corvandell::win
