// Results already queued for a window that is being destroyed would die with their queue
// entries; a window takes them out and frees them after its jobs have ended.
#pragma once

#include <windows.h>

#include "base/win/UiJob.hpp"

#include <functional>
#include <memory>

namespace corvandell::win {

template <class Result>
void discardPendingResults(HWND window, UINT message,
                           const std::function<void(Result&)>& lastLook = {}) noexcept {
    MSG queued{};
    while (PeekMessageW(&queued, window, message, message, PM_REMOVE)) {
        std::unique_ptr<Result> result = takeUiJobResult<Result>(queued.lParam);
        if (result && lastLook) {
            try {
                lastLook(*result);
            } catch (...) {
            }
        }
    }
}

} // namespace corvandell::win
