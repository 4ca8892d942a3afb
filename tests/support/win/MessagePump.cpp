#include <windows.h>

#include "support/win/MessagePump.hpp"

#include <algorithm>

namespace corvandell::test {

void pumpUntilIdle() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message != WM_QUIT) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
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
