// The thread that follows one launched game to its end and tells the window.
//
// It waits for the game to take input (at most 10 s, then it is called running anyway),
// then for its end: with a job, for the port's word that the job's last process has ended,
// however many processes the game started; without one, for the process itself. Every
// message carries the launch token, so the window ignores a watcher of an earlier launch.
//
// Hand-offs: a launcher may start the real game outside the job (breakaway) or have its
// store restart it, so the job empties early while the game runs on. When that happens in
// the first 15 s, the watcher looks for a process whose image lies under the game's folder
// and follows it by handle. A store launch is followed the same way from the start: the
// watcher looks for the game for up to 60 s.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace corvandell::win {

struct WatcherMessages {
    UINT running;  // wParam token: the game takes input, or 10 s passed
    UINT exited;   // wParam token: the game has ended (or was never found)
    UINT followed; // wParam token, lParam a FollowedProcess the window must free
};

struct FollowedProcess {
    DWORD processId = 0;
    std::uint64_t created = 0; // FILETIME ticks
    std::wstring image;
};

inline constexpr DWORD kInputIdleWaitMs = 10000;
inline constexpr std::uint64_t kHandOffWindowMs = 15000;
inline constexpr std::uint64_t kStoreLaunchSearchMs = 60000;

struct GameWatch {
    HWND target = nullptr;
    WatcherMessages messages{};
    std::uint32_t launchToken = 0;
    UniqueKernelHandle process;     // the watcher's own duplicate; empty: look for the game first
    UniqueKernelHandle port;        // the watcher's own duplicate of the job's port; may be empty
    std::wstring followFolder;      // empty: hand-offs are not followed
    std::uint64_t launchedAt = 0;   // FILETIME ticks at the launch: older processes are not the game
    std::uint64_t launchTickMs = 0; // GetTickCount64 at the launch
    std::uint64_t handOffWindowMs = kHandOffWindowMs;
    std::uint64_t searchWindowMs = kStoreLaunchSearchMs;
    // Set by the window when it stops the game or forgets it: no hand-off is looked for.
    std::shared_ptr<std::atomic<bool>> isAbandoned = std::make_shared<std::atomic<bool>>(false);
};

// Starts the watcher thread, which owns the watch from now on. A thread that cannot be
// started leaves the client unable to follow games: that ends the process.
void startGameWatcher(std::unique_ptr<GameWatch> watch);

// Reads the port until the job reports that its last process has ended (true) or the read
// fails (false).
bool waitForJobToEmpty(HANDLE port) noexcept;

} // namespace corvandell::win
