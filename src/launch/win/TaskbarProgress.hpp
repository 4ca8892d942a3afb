// Download progress on the window's taskbar button (ITaskbarList3).
//
// Lives on the UI thread of the window it draws on. COM is entered there for as long as
// the object lives (apartment-threaded, as the shell expects) and left when it goes; the
// taskbar object is released first. Every call is best effort: a shell without a taskbar
// (or Wine's, which accepts the calls and draws nothing) only loses the picture.
#pragma once

#include <windows.h>

#include <shobjidl.h>

#include <cstdint>

namespace corvandell::win {

class TaskbarProgress {
public:
    explicit TaskbarProgress(HWND window) noexcept;
    ~TaskbarProgress();
    TaskbarProgress(const TaskbarProgress&) = delete;
    TaskbarProgress& operator=(const TaskbarProgress&) = delete;

    bool isAvailable() const noexcept { return taskbar_ != nullptr; }

    // A share of a known total; an unknown total (0) shows the moving bar.
    void show(std::uint64_t done, std::uint64_t total) noexcept;
    void showFailure() noexcept;
    void clear() noexcept;

private:
    HWND window_;
    bool ownsCom_ = false;
    ITaskbarList3* taskbar_ = nullptr;
};

} // namespace corvandell::win
