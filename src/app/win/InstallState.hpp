// What the main window keeps about the installs it started: which titles are under way
// (one install per title at a time), the event that stops them all when the client closes,
// and the taskbar button's progress.
#pragma once

#include <windows.h>

#include "launch/win/DownloadCancel.hpp"
#include "launch/win/TaskbarProgress.hpp"

#include <memory>
#include <set>
#include <string>

namespace corvandell::win {

struct InstallState {
    std::set<std::string> running; // title ids
    DownloadCancel cancel;
    std::unique_ptr<TaskbarProgress> taskbar; // made on the UI thread at the first install
};

} // namespace corvandell::win
