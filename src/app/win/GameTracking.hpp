// What the main window holds about the one game it follows, beyond what the rows and the
// overlay see (TrackedGame): the handles, the launch token, the open service session and
// the launch waiting for the overlay hint. Only the UI thread touches it.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace corvandell::win {

struct GameTracking {
    UniqueKernelHandle process; // empty: no game is tracked
    UniqueKernelHandle job;     // set only for games started in a job
    UniqueKernelHandle port;    // the job's completion port
    DWORD processId = 0;
    std::uint64_t processCreated = 0; // FILETIME ticks; names the process in the journal
    // Incremented at every start of tracking (and of a store launch's search); every
    // watcher message carries it, so those of an earlier launch are ignored.
    std::uint32_t launchToken = 0;
    std::string sessionId; // the open service session; empty when none
    bool isExternal = false;
    std::string pendingLaunchKey; // the row waiting for the overlay-hint check
    // A store launch whose game is being looked for: nothing is tracked yet, but the
    // session it opened stays open until the game is found or the search gives up.
    bool isSearching = false;
    std::shared_ptr<std::atomic<bool>> isAbandoned; // shared with the current watcher

    bool isTracked() const noexcept { return static_cast<bool>(process); }
};

} // namespace corvandell::win
