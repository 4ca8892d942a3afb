// Stopping downloads when the client closes, and the clock they are paced by.
//
// The main window waits for its background jobs before it goes, and a capped download may
// have minutes left, so every install watches one manual-reset event: closing the client
// sets it, a sleeping cap wakes at once, and the next chunk ends the download (its
// temporary files are removed, nothing installed is touched).
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "launch/DownloadRateCap.hpp"

#include <cstdint>

namespace corvandell::win {

class DownloadCancel {
public:
    DownloadCancel() : event_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

    void cancel() noexcept { SetEvent(event_.get()); }
    bool isCancelled() const noexcept { return WaitForSingleObject(event_.get(), 0) == WAIT_OBJECT_0; }
    // Waits up to `ms`; true when cancelled meanwhile.
    bool waitFor(DWORD ms) const noexcept { return WaitForSingleObject(event_.get(), ms) == WAIT_OBJECT_0; }

    // Throws std::runtime_error("The client is closing.") once cancelled.
    void throwIfCancelled() const;

private:
    UniqueKernelHandle event_;
};

// GetTickCount64 and a sleep that the cancel event cuts short.
class CancellableClock final : public DownloadClock {
public:
    explicit CancellableClock(const DownloadCancel& cancel) : cancel_(cancel) {}
    std::uint64_t nowMs() override { return GetTickCount64(); }
    void sleepMs(std::uint64_t ms) override;

private:
    const DownloadCancel& cancel_;
};

} // namespace corvandell::win
