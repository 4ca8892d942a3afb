// Private messages and timers of the options dialog, counted from WM_APP on its own window.
#pragma once

#include <windows.h>

namespace corvandell::win::options {

inline constexpr UINT kMsgProfileLoaded = WM_APP + 50;
inline constexpr UINT kMsgProfileSaved = WM_APP + 51;
inline constexpr UINT kMsgPictureUploaded = WM_APP + 52;
inline constexpr UINT kMsgGitHubStep = WM_APP + 53;

inline constexpr UINT_PTR kMeterTimerId = 1;
inline constexpr UINT kMeterIntervalMs = 50;

} // namespace corvandell::win::options
