#include "launch/win/GameWatcher.hpp"

#include <process.h>

#include "launch/win/ProcessSearch.hpp"

#include <exception>
#include <optional>

namespace corvandell::win {
namespace {

constexpr DWORD kSearchPauseMs = 250;

bool isAbandoned(const GameWatch& watch) {
    return watch.isAbandoned && watch.isAbandoned->load();
}

// Looks for the game under its folder until `deadlineTickMs`, at least once.
std::optional<FoundProcess> lookForGame(const GameWatch& watch, std::uint64_t deadlineTickMs) {
    for (;;) {
        if (isAbandoned(watch)) {
            return std::nullopt;
        }
        try {
            if (auto found = findProcessUnder(watch.followFolder, watch.launchedAt)) {
                return found;
            }
        } catch (...) {
            return std::nullopt; // out of memory: the game is simply not followed
        }
        if (GetTickCount64() >= deadlineTickMs) {
            return std::nullopt;
        }
        Sleep(kSearchPauseMs);
    }
}

void postFollowed(const GameWatch& watch, const FoundProcess& found) noexcept {
    try {
        auto record =
            std::make_unique<FollowedProcess>(FollowedProcess{found.processId, found.created, found.image});
        if (PostMessageW(watch.target, watch.messages.followed, watch.launchToken,
                         reinterpret_cast<LPARAM>(record.get()))) {
            static_cast<void>(record.release());
        }
    } catch (...) {
        // Without the record the window only misses the name of the process followed.
    }
}

void follow(GameWatch& watch) noexcept {
    if (!watch.process) {
        std::optional<FoundProcess> found = lookForGame(watch, watch.launchTickMs + watch.searchWindowMs);
        if (!found) {
            return;
        }
        postFollowed(watch, *found);
        watch.process = std::move(found->process);
    }
    WaitForInputIdle(watch.process.get(), kInputIdleWaitMs);
    PostMessageW(watch.target, watch.messages.running, watch.launchToken, 0);
    if (watch.port) {
        waitForJobToEmpty(watch.port.get());
    } else {
        WaitForSingleObject(watch.process.get(), INFINITE);
    }
    const bool isEarly = GetTickCount64() < watch.launchTickMs + watch.handOffWindowMs;
    if (!isEarly || watch.followFolder.empty() || isAbandoned(watch)) {
        return;
    }
    std::optional<FoundProcess> handedTo = lookForGame(watch, watch.launchTickMs + watch.handOffWindowMs);
    if (!handedTo) {
        return;
    }
    postFollowed(watch, *handedTo);
    WaitForSingleObject(handedTo->process.get(), INFINITE);
}

unsigned __stdcall runGameWatcher(void* parameter) noexcept {
    std::unique_ptr<GameWatch> watch(static_cast<GameWatch*>(parameter));
    follow(*watch);
    watch->process.reset();
    PostMessageW(watch->target, watch->messages.exited, watch->launchToken, 0);
    return 0;
}

} // namespace

bool waitForJobToEmpty(HANDLE port) noexcept {
    for (;;) {
        DWORD message = 0;
        ULONG_PTR key = 0;
        OVERLAPPED* detail = nullptr;
        if (!GetQueuedCompletionStatus(port, &message, &key, &detail, INFINITE)) {
            return false;
        }
        if (message == JOB_OBJECT_MSG_ACTIVE_PROCESS_ZERO) {
            return true;
        }
    }
}

void startGameWatcher(std::unique_ptr<GameWatch> watch) {
    const uintptr_t thread = _beginthreadex(nullptr, 0, &runGameWatcher, watch.get(), 0, nullptr);
    if (thread == 0) {
        std::terminate();
    }
    static_cast<void>(watch.release());
    CloseHandle(reinterpret_cast<HANDLE>(thread));
}

} // namespace corvandell::win
