// Message pumping for in-process window tests: drain until idle, or keep pumping for a
// while so timers and posted results arrive.
#pragma once

#include <windows.h>

#include <functional>

namespace corvandell::test {

// Dispatches every queued message of this thread; WM_QUIT is noted and dropped.
// Returns true when a WM_QUIT was seen, and its code in `quitCode`.
bool pumpUntilIdle(int* quitCode = nullptr);

// Pumps for `durationMs`, sleeping in MsgWaitForMultipleObjectsEx between messages.
bool pumpFor(DWORD durationMs, int* quitCode = nullptr);

// Pumps until `done` is true or `timeoutMs` passes; returns `done()`.
bool pumpUntil(const std::function<bool()>& done, DWORD timeoutMs);

} // namespace corvandell::test
