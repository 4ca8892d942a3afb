// Background job results: one posted to a window that is gone is freed by the worker.
#include <windows.h>

#include "app/win/UiJob.hpp"

#include <gtest/gtest.h>

#include <atomic>

namespace corvandell::win {
namespace {

// Counts how many records of its kind were made and are alive.
struct CountedResult {
    static inline std::atomic<int> live{0};
    static inline std::atomic<int> created{0};
    CountedResult() { ++live, ++created; }
    CountedResult(const CountedResult&) { ++live, ++created; }
    ~CountedResult() { --live; }
};

TEST(UiJob, ResultForAWindowThatIsGoneIsFreedByTheWorker) {
    HWND gone = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_TRUE(DestroyWindow(gone));
    startUiJob<CountedResult>(gone, WM_APP + 40, [] { return CountedResult(); });
    // The heap record is the last one the worker makes: once two exist and none is alive,
    // the record whose post failed was freed.
    const ULONGLONG deadline = GetTickCount64() + 5000;
    while ((CountedResult::created < 2 || CountedResult::live != 0) && GetTickCount64() < deadline) {
        Sleep(5);
    }
    EXPECT_EQ(CountedResult::created, 2);
    EXPECT_EQ(CountedResult::live, 0);
}

} // namespace
} // namespace corvandell::win
