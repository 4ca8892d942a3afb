#include <windows.h>

#include "app/win/UiJob.hpp"
#include "app/win/UniqueHandle.hpp"
#include "support/win/MessagePump.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

namespace corvandell::win {
namespace {

constexpr UINT kResultMessage = WM_APP + 40;

// A result record that counts how many of its kind are alive.
struct CountedResult {
    static inline std::atomic<int> live{0};
    static inline std::atomic<int> created{0};
    std::string text;
    explicit CountedResult(std::string value) : text(std::move(value)) { ++live, ++created; }
    CountedResult(const CountedResult& other) : text(other.text) { ++live, ++created; }
    CountedResult(CountedResult&& other) noexcept : text(std::move(other.text)) { ++live, ++created; }
    ~CountedResult() { --live; }
};

std::string g_received;

LRESULT CALLBACK receiverProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kResultMessage) {
        auto result = takeUiJobResult<CountedResult>(lParam);
        g_received = result->text;
        return 0;
    }
    return DefWindowProcW(hwnd, message, wParam, lParam);
}

HWND createReceiver() {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &receiverProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"CorvandellUiJobTestReceiver";
    RegisterClassW(&windowClass);
    return CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                           windowClass.hInstance, nullptr);
}

TEST(UiJob, ResultReachesTheWindowThatOwnsAndFreesIt) {
    g_received.clear();
    HWND receiver = createReceiver();
    ASSERT_NE(receiver, nullptr);
    DWORD producerThread = 0;
    startUiJob<CountedResult>(receiver, kResultMessage, [&producerThread] {
        producerThread = GetCurrentThreadId();
        return CountedResult("done");
    });
    ASSERT_TRUE(test::pumpUntil([] { return !g_received.empty(); }, 5000));
    EXPECT_EQ(g_received, "done");
    EXPECT_NE(producerThread, GetCurrentThreadId());
    EXPECT_EQ(CountedResult::live.load(), 0);
    DestroyWindow(receiver);
}

TEST(UiJob, ResultForAWindowThatIsGoneIsFreedByTheWorker) {
    HWND receiver = createReceiver();
    ASSERT_NE(receiver, nullptr);
    UniqueKernelHandle release(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    HANDLE releaseEvent = release.get();
    startUiJob<CountedResult>(receiver, kResultMessage, [releaseEvent] {
        WaitForSingleObject(releaseEvent, 10000);
        return CountedResult("too late");
    });
    DestroyWindow(receiver);
    const int createdBefore = CountedResult::created.load();
    SetEvent(releaseEvent);
    // The worker's post fails; it must free the record it built. The heap record is the
    // last one the worker makes, so once it exists and nothing is alive, it was freed.
    const ULONGLONG deadline = GetTickCount64() + 5000;
    while ((CountedResult::created.load() < createdBefore + 2 || CountedResult::live.load() != 0) &&
           GetTickCount64() < deadline) {
        Sleep(5);
    }
    EXPECT_GE(CountedResult::created.load(), createdBefore + 2);
    EXPECT_EQ(CountedResult::live.load(), 0);
    test::pumpUntilIdle();
}

} // namespace
} // namespace corvandell::win
