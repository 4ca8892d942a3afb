// Ending a game the user asked to stop: politely first, by force after about 4 s.
//
// The game's own top-level windows are asked to close, as if the user had clicked their
// close box, so a game may save; only what is still running when the time is up is
// terminated. Each stopper runs on its own thread with its own duplicated handle, so the
// window may forget the game meanwhile; the end itself is seen by the watcher.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

namespace corvandell::win {

inline constexpr int kJobStopChecks = 16;
inline constexpr DWORD kJobStopPauseMs = 250;
inline constexpr DWORD kProcessStopWaitMs = 4000;

// WM_CLOSE to every visible top-level window without an owner whose process is in the job,
// then up to 16 checks 250 ms apart for an empty job, then the job is terminated.
void stopJobLater(UniqueKernelHandle job);
// WM_CLOSE to the process's visible unowned top-level windows, up to 4000 ms for it to
// end, then it is terminated.
void stopProcessLater(UniqueKernelHandle process, DWORD processId);

} // namespace corvandell::win
