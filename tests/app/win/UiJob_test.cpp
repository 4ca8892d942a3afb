// Background job results: a producer that throws anything is still reported, and a result
// posted to a window that is gone is freed by the worker. (An exception's own text in the
// status line: MainWindow_test.)
#include <windows.h>

#include "app/win/UiJob.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>

namespace corvandell::win {
namespace {

constexpr UINT kResultMessage = WM_APP + 40;

struct TextResult {
    bool succeeded = false;
    std::string value;
    std::string errorText;
};

// Counts how many records of its kind were made and are alive.
struct CountedResult {
    static inline std::atomic<int> live{0};
    static inline std::atomic<int> created{0};
    CountedResult() { ++live, ++created; }
    CountedResult(const CountedResult&) { ++live, ++created; }
    ~CountedResult() { --live; }
    std::string errorText;
};

class MessageWindow {
public:
    MessageWindow()
        : hwnd_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {}
    ~MessageWindow() {
        if (hwnd_ != nullptr) {
            DestroyWindow(hwnd_);
        }
    }
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;
    HWND get() const { return hwnd_; }

    // The next posted result, taken out of this thread's queue.
    template <class Result> std::unique_ptr<Result> takeResult(DWORD timeoutMs) const {
        const ULONGLONG deadline = GetTickCount64() + timeoutMs;
        MSG message{};
        while (!PeekMessageW(&message, hwnd_, kResultMessage, kResultMessage, PM_REMOVE)) {
            if (GetTickCount64() >= deadline) {
                return nullptr;
            }
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_POSTMESSAGE);
        }
        return takeUiJobResult<Result>(message.lParam);
    }

private:
    HWND hwnd_;
};

TEST(UiJob, AProducerThatThrowsWhatIsNoExceptionStillReportsItsFailure) {
    const MessageWindow window;
    ASSERT_NE(window.get(), nullptr);
    UiJobThreads threads;
    threads.start<TextResult>(
        window.get(), kResultMessage, []() -> TextResult { throw 42; }, "Refresh failed: ");
    const auto result = window.takeResult<TextResult>(5000);
    ASSERT_NE(result, nullptr) << "nothing was reported";
    EXPECT_FALSE(result->succeeded);
    EXPECT_EQ(result->errorText, "Refresh failed: unexpected error");
}

TEST(UiJob, ResultForAWindowThatIsGoneIsFreedByTheWorker) {
    HWND gone = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_TRUE(DestroyWindow(gone));
    UiJobThreads threads;
    threads.start<CountedResult>(gone, kResultMessage, [] { return CountedResult(); });
    threads.waitForAll();
    // The heap record is the last one the worker makes: two were made and none is alive, so
    // the record whose post failed was freed.
    EXPECT_EQ(CountedResult::created, 2);
    EXPECT_EQ(CountedResult::live, 0);
}

} // namespace
} // namespace corvandell::win
