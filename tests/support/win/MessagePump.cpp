#include <windows.h>

#include "support/win/MessagePump.hpp"

#include <algorithm>

namespace corvandell::test {

bool pumpUntilIdle(int* quitCode) {
    bool sawQuit = false;
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            sawQuit = true;
            if (quitCode != nullptr) {
                *quitCode = static_cast<int>(message.wParam);
            }
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return sawQuit;
}

bool pumpFor(DWORD durationMs, int* quitCode) {
    bool sawQuit = false;
    const ULONGLONG end = GetTickCount64() + durationMs;
    for (;;) {
        sawQuit = pumpUntilIdle(quitCode) || sawQuit;
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            return sawQuit;
        }
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
    }
}

bool pumpUntil(const std::function<bool()>& done, DWORD timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    while (!done()) {
        pumpUntilIdle();
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            return done();
        }
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(std::min<ULONGLONG>(end - now, 20)),
                                    QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
    return true;
}

} // namespace corvandell::test
