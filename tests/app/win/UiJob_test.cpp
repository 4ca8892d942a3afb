#include <windows.h>

#include "app/win/UiJob.hpp"
#include "app/win/UniqueHandle.hpp"

#include <gtest/gtest.h>

#include <atomic>

namespace corvandell::win {
namespace {

// A result record that counts how many of its kind were made and are alive.
struct CountedResult {
    static inline std::atomic<int> live{0};
    static inline std::atomic<int> created{0};
    CountedResult() { ++live, ++created; }
    CountedResult(const CountedResult&) { ++live, ++created; }
    ~CountedResult() { --live; }
};

TEST(UiJob, ResultForAWindowThatIsGoneIsFreedByTheWorker) {
    HWND receiver =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_NE(receiver, nullptr);
    UniqueKernelHandle release(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    HANDLE releaseEvent = release.get();
    startUiJob<CountedResult>(receiver, WM_APP + 40, [releaseEvent] {
        WaitForSingleObject(releaseEvent, 10000);
        return CountedResult();
    });
    DestroyWindow(receiver);
    SetEvent(releaseEvent);
    // The worker's post fails, so it must free the record it built. The heap record is
    // the last one it makes: once two exist and none is alive, it was freed.
    const ULONGLONG deadline = GetTickCount64() + 5000;
    while ((CountedResult::created.load() < 2 || CountedResult::live.load() != 0) &&
           GetTickCount64() < deadline) {
        Sleep(5);
    }
    EXPECT_EQ(CountedResult::created.load(), 2);
    EXPECT_EQ(CountedResult::live.load(), 0);
}

} // namespace
} // namespace corvandell::win
