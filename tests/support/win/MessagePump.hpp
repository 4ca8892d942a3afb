// Message pumping for in-process window tests, so that timers and posted results arrive.
// A WM_QUIT from a destroyed window is dropped.
#pragma once

#include <windows.h>

#include <functional>

namespace corvandell::test {

// Pumps until `done` is true or `timeoutMs` passes; returns `done()`. Each message is offered
// to `handled` first when it is given, as a window's own loop would (accelerators, dialog keys).
inline bool pumpUntil(const std::function<bool()>& done, DWORD timeoutMs,
                      const std::function<bool(MSG&)>& handled = nullptr) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (;;) {
        MSG message{};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message != WM_QUIT && !(handled && handled(message))) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        }
        if (done() || GetTickCount64() >= end) {
            return done();
        }
        MsgWaitForMultipleObjectsEx(0, nullptr, 10, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

} // namespace corvandell::test
