// Message pumping for in-process window tests: drain until idle, or keep pumping so that
// timers and posted results arrive. A WM_QUIT from a destroyed window is dropped.
#pragma once

#include <windows.h>

#include <functional>

namespace corvandell::test {

void pumpUntilIdle();

// Pumps until `done` is true or `timeoutMs` passes; returns `done()`.
bool pumpUntil(const std::function<bool()>& done, DWORD timeoutMs);

inline void pumpFor(DWORD durationMs) {
    pumpUntil([] { return false; }, durationMs);
}

} // namespace corvandell::test
