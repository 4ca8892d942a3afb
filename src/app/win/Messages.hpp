// Private messages of the main window, counted from WM_APP. Number +16 is left
// free on purpose: the browser game launcher takes it.
#pragma once

#include <windows.h>

namespace corvandell::win {

inline constexpr UINT MsgLibraryResult = WM_APP + 11;
inline constexpr UINT MsgDownloadProgress = WM_APP + 12; // lParam: a DownloadProgress to take
inline constexpr UINT MsgInstallResult = WM_APP + 13;    // lParam: an InstallResult to take
inline constexpr UINT MsgThemeChanged = WM_APP + 14;
inline constexpr UINT MsgChildClosed = WM_APP + 15;
inline constexpr UINT MsgCloneReport = WM_APP + 17;  // lParam: a CloneReport to take
inline constexpr UINT MsgAddGameEnded = WM_APP + 18; // wParam 1: a game was added
// lParam a FollowedProcess: the game handed off to a process found under its folder.
inline constexpr UINT MsgGameFollowed = WM_APP + 19;
inline constexpr UINT MsgGameExited = WM_APP + 20;
inline constexpr UINT MsgGameRunning = WM_APP + 21;
inline constexpr UINT MsgTrayIcon = WM_APP + 22;
inline constexpr UINT MsgStoreChanged = WM_APP + 23;
inline constexpr UINT MsgStopGame = WM_APP + 24;
inline constexpr UINT MsgIconBatch = WM_APP + 25;
inline constexpr UINT MsgPlaytimeResult = WM_APP + 26;
inline constexpr UINT MsgLaunchRecord = WM_APP + 27;
inline constexpr UINT MsgSessionEnded = WM_APP + 28;
inline constexpr UINT MsgOverlayHintCheck = WM_APP + 29;
inline constexpr UINT MsgRatingsLoaded = WM_APP + 30;
inline constexpr UINT MsgRatingResult = WM_APP + 31;

// wParam of MsgChildClosed: which of the main window's companions has ended.
enum class ChildKind : WPARAM { Friends = 1, Options = 2, Overlay = 3, BrowserGame = 4 };

// Control and menu command ids of the main window.
namespace command {
inline constexpr int Refresh = 100;
inline constexpr int Launch = 102;
inline constexpr int AddGame = 103;
inline constexpr int List = 104;
inline constexpr int Friends = 105;
inline constexpr int Options = 106;
inline constexpr int Search = 107;
inline constexpr int OpenClient = 108;
inline constexpr int Exit = 109;
inline constexpr int GameOptions = 110;
// Keyboard-only commands (the main window's accelerator table).
inline constexpr int FocusSearch = 140;
inline constexpr int RowMenu = 141;
// What Enter presses where no control has a command of its own: no control has this id.
inline constexpr int None = 0x7FFE;
} // namespace command

// Ids of the controls that send no commands, so tests and layout can find them.
namespace control {
inline constexpr int SearchLabel = 120;
inline constexpr int DetailsLabel = 121;
inline constexpr int Details = 122;
inline constexpr int Status = 123;
inline constexpr int PlaytimePanel = 124;
} // namespace control

inline constexpr UINT_PTR kSearchTimerId = 1;
inline constexpr UINT kSearchDebounceMs = 350;
inline constexpr int kOverlayHotkeyId = 1;

} // namespace corvandell::win
