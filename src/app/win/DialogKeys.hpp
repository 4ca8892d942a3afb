// Dialog keys for the client's own dialogs, which run in message loops that are not theirs.
//
// The client's loop is a plain get-translate-dispatch loop, so a modeless dialog in it
// would get no Tab, Enter, Escape or Alt+letter handling. While a dialog is registered, a
// message hook on the UI thread offers that dialog's key messages to IsDialogMessage
// first, the documented way for a modeless dialog to work in a loop it does not own. The
// dialog's window procedure must answer DM_GETDEFID (Enter) and WM_NEXTDLGCTL (Tab and
// accelerators; dialogNextControl does it), which only the system's dialog class does by
// itself.
#pragma once

#include <windows.h>

namespace corvandell::win {

// Sent to a registered dialog for Ctrl+Tab (wParam 1) and Ctrl+Shift+Tab (wParam 0), and
// for Ctrl+Page Down and Ctrl+Page Up: the next or previous page of a tabbed dialog.
inline constexpr UINT kMsgDialogNextPage = WM_APP + 60;

// Registered for its life: from its WM_CREATE to its WM_DESTROY.
void addDialogKeys(HWND dialog);
void removeDialogKeys(HWND dialog) noexcept;

// WM_NEXTDLGCTL as the system's dialog class answers it: focus the given control
// (lParam != 0) or the next or previous tab stop, selecting an edit's whole text.
void dialogNextControl(HWND dialog, WPARAM wParam, LPARAM lParam) noexcept;

} // namespace corvandell::win
