// Starting a game's process so that the client can follow it to its end.
//
// Every game the client starts runs in a job object with a completion port: a launcher
// that starts the real game and exits leaves the game in the job, and the port says when
// the last process of the job has ended, at that moment, without polling. Games started
// directly get a job that only watches: closing the client (and with it the job handle)
// must never kill the user's game, and a process that asks to break away may leave it
// (the watcher then looks for it by its folder). Browser games keep a job that kills
// what is left when it closes, because the kiosk browser is the client's own to end.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <string>

namespace corvandell::win {

struct StartedGame {
    UniqueKernelHandle process; // empty: nothing was started
    DWORD processId = 0;
    UniqueKernelHandle job;  // empty when the process could not be put in one
    UniqueKernelHandle port; // the job's completion port; empty with the job
    explicit operator bool() const noexcept { return static_cast<bool>(process); }
};

// The quoted executable in `workingFolder` (inherited when empty). With a Steam app id the
// process gets the Steam environment, else this process's own. Empty on failure, with the
// system's error code kept in GetLastError.
StartedGame startGameDirect(const std::wstring& executable, const std::wstring& workingFolder,
                            const std::wstring& steamAppId);

// The command line started suspended in a job that kills what is left of it when the job is
// closed. A job that cannot be made or assigned is dropped and the process runs without
// it; a process that cannot be created gives an empty result.
StartedGame startInJob(const std::wstring& commandLine, const std::wstring& workingFolder);

} // namespace corvandell::win
