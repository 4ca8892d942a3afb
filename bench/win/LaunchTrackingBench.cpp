// How soon the client knows that a game has ended: the completion-port watcher the client
// uses against a 500 ms process-list poll, the way other launchers follow games, measured
// on the same game exits in the same run.
//
// Each round starts the stand-in game in a watched job, as the client starts any game, and
// lets it close itself after a varying time (so the poll's phase varies). The client's own
// watcher thread posts its "exited" message to a window; a poller thread takes a Toolhelp
// snapshot every 500 ms and posts its own message when the game's process is gone. Both
// are timed on receipt, on the window's thread, from the process's exit time.
//
//   launch-tracking-bench.exe GAME.exe [ROUNDS]
#include <windows.h>

#include <tlhelp32.h>

#include "launch/win/GameStart.hpp"
#include "launch/win/GameWatcher.hpp"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

using namespace corvandell::win;

namespace {

constexpr UINT kRunning = WM_APP + 1;
constexpr UINT kExited = WM_APP + 2;
constexpr UINT kFollowed = WM_APP + 3;
constexpr UINT kPollSawEnd = WM_APP + 4;
constexpr DWORD kPollIntervalMs = 500;

struct Round {
    std::uint64_t watcherSeen = 0; // FILETIME ticks at receipt
    std::uint64_t pollSeen = 0;
};

Round* current = nullptr;

std::uint64_t preciseNow() {
    FILETIME now{};
    GetSystemTimePreciseAsFileTime(&now);
    return (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
}

LRESULT CALLBACK benchProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kExited && current != nullptr) {
        current->watcherSeen = preciseNow();
        return 0;
    }
    if (message == kPollSawEnd && current != nullptr) {
        current->pollSeen = preciseNow();
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

bool isListed(DWORD processId) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return true;
    }
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    bool isFound = false;
    for (BOOL more = Process32FirstW(snapshot, &entry); more && !isFound;
         more = Process32NextW(snapshot, &entry)) {
        isFound = entry.th32ProcessID == processId;
    }
    CloseHandle(snapshot);
    return isFound;
}

UniqueKernelHandle duplicateOf(HANDLE handle) {
    HANDLE copy = nullptr;
    DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return UniqueKernelHandle(copy);
}

double millisecondsBetween(std::uint64_t from, std::uint64_t to) {
    return static_cast<double>(static_cast<std::int64_t>(to - from)) / 10000.0;
}

struct Summary {
    double mean = 0;
    double median = 0;
    double worst = 0;
};

Summary summaryOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return {std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size()),
            values[values.size() / 2], values.back()};
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: launch-tracking-bench GAME.exe [ROUNDS]\n");
        return 2;
    }
    const std::filesystem::path game = argv[1];
    const int rounds = argc > 2 ? std::max(1, _wtoi(argv[2])) : 20;
    const std::filesystem::path options = std::filesystem::path(game).replace_extension(L".options");

    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &benchProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"CorvandellLaunchBench";
    RegisterClassW(&windowClass);
    HWND window = CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  windowClass.hInstance, nullptr);

    std::vector<double> watcherMs;
    std::vector<double> pollMs;
    for (int round = 0; round < rounds; ++round) {
        // 400 to 1,570 ms of play, so that the exits fall at every phase of the poll.
        std::ofstream(options, std::ios::trunc) << "--exit-after-ms " << 400 + (round * 397) % 1171;
        Round result;
        current = &result;
        StartedGame started = startGameDirect(game.wstring(), game.parent_path().wstring(), L"");
        if (!started || !started.port) {
            std::fprintf(stderr, "could not start %ls in a job (error %lu)\n", game.c_str(), GetLastError());
            return 1;
        }
        auto watch = std::make_unique<GameWatch>();
        watch->target = window;
        watch->messages = WatcherMessages{kRunning, kExited, kFollowed};
        watch->process = duplicateOf(started.process.get());
        watch->port = duplicateOf(started.port.get());
        startGameWatcher(std::move(watch));
        std::thread poller([window, id = started.processId] {
            while (isListed(id)) {
                Sleep(kPollIntervalMs);
            }
            PostMessageW(window, kPollSawEnd, 0, 0);
        });
        MSG message{};
        while ((result.watcherSeen == 0 || result.pollSeen == 0) &&
               GetMessageW(&message, nullptr, 0, 0) > 0) {
            DispatchMessageW(&message);
        }
        poller.join();
        FILETIME created{};
        FILETIME exited{};
        FILETIME kernel{};
        FILETIME user{};
        GetProcessTimes(started.process.get(), &created, &exited, &kernel, &user);
        const std::uint64_t exitedAt =
            (static_cast<std::uint64_t>(exited.dwHighDateTime) << 32) | exited.dwLowDateTime;
        watcherMs.push_back(millisecondsBetween(exitedAt, result.watcherSeen));
        pollMs.push_back(millisecondsBetween(exitedAt, result.pollSeen));
        std::printf("round %2d: completion port %7.2f ms, 500 ms poll %7.2f ms\n", round + 1,
                    watcherMs.back(), pollMs.back());
    }
    current = nullptr;
    const Summary port = summaryOf(watcherMs);
    const Summary poll = summaryOf(pollMs);
    std::printf("\nfrom the game's exit to the session's end, %d exits:\n", rounds);
    std::printf("  completion port: mean %7.2f ms, median %7.2f ms, worst %7.2f ms\n", port.mean, port.median,
                port.worst);
    std::printf("  500 ms poll:     mean %7.2f ms, median %7.2f ms, worst %7.2f ms\n", poll.mean, poll.median,
                poll.worst);
    std::printf("  ratio of means (port / poll): %.3f\n", port.mean / poll.mean);
    DestroyWindow(window);
    return 0;
}
