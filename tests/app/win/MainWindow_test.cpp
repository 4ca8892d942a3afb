// The main window in process: list, tray, search debounce and refresh results, with refresh
// jobs that record their query and answer as scripted. (Where the controls sit is the layout's
// table test; NativeClient_test measures the real client at 150%.)
#include <windows.h>

#include <commctrl.h>

#include "support/ScriptedService.hpp"
#include "support/win/MainWindowUnderTest.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace corvandell::win {
namespace {

class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Called on this thread; the job gets a copy of the answer.
        w_.jobs.makeRefresh = [this](const std::string& query) -> std::function<LibraryResult()> {
            queries_.push_back(query);
            return nextProducer_ ? std::exchange(nextProducer_, nullptr)
                                 : [answer = answer_] { return answer; };
        };
        // Nothing scripted: ratings and playtime fail at once, without a network.
        w_.jobs.api = std::make_shared<test::ScriptedService>();
        w_.settings.bearerToken = "token";
        ASSERT_TRUE(w_.open());
        test::pumpUntil([this] { return w_->statusText() == L"Library refreshed."; }, 5000);
    }

    void refreshAndWait(const std::wstring& status) {
        SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Refresh, BN_CLICKED), 0);
        EXPECT_TRUE(test::pumpUntil([&] { return w_->statusText() == status; }, 5000));
    }

    std::vector<std::string> queries_;
    LibraryResult answer_{.succeeded = true, .entitlements = {Entitlement{"e1", "u1", "t1", false}}};
    std::function<LibraryResult()> nextProducer_; // used once instead of answer_
    test::MainWindowUnderTest w_;
};

TEST_F(MainWindowTest, RefreshResultsFillTheListAndAFailureOnlySetsTheStatus) {
    SoftwareItem title;
    title.name = "Sky Forge";
    answer_.catalogue = {title, title};
    refreshAndWait(L"Library refreshed.");
    HWND list = w_->control(command::List);
    ASSERT_EQ(ListView_GetItemCount(list), 2);
    ListView_SetItemState(list, 1, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);

    answer_ = LibraryResult{.succeeded = false, .errorText = "Refresh failed: HTTP request failed"};
    refreshAndWait(L"Refresh failed: HTTP request failed");
    EXPECT_EQ(ListView_GetItemCount(list), 2);

    nextProducer_ = []() -> LibraryResult { throw std::runtime_error("Invalid URL"); };
    refreshAndWait(L"Refresh failed: Invalid URL");
    EXPECT_EQ(ListView_GetItemCount(list), 2);
    EXPECT_EQ(ListView_GetNextItem(list, -1, LVNI_SELECTED), 1) << "the selection went with the failures";
}

TEST_F(MainWindowTest, DestroyingTheWindowWaitsForTheJobStillRunning) {
    struct JobTrace {
        std::atomic<DWORD> threadId{0};
        std::atomic<bool> isFinished{false};
    };
    auto trace = std::make_shared<JobTrace>();
    nextProducer_ = [trace] {
        trace->threadId = GetCurrentThreadId();
        Sleep(500);
        trace->isFinished = true;
        return LibraryResult{.succeeded = true, .entitlements = {Entitlement{"e1", "u1", "t1", false}}};
    };
    SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Refresh, BN_CLICKED), 0);
    ASSERT_TRUE(test::pumpUntil([&] { return trace->threadId != 0; }, 5000));

    w_.window.reset();
    EXPECT_TRUE(trace->isFinished) << "the window was destroyed under a running job";
    UniqueKernelHandle thread(OpenThread(SYNCHRONIZE, FALSE, trace->threadId));
    EXPECT_TRUE(!thread || WaitForSingleObject(thread.get(), 0) == WAIT_OBJECT_0)
        << "the job's thread lives on";
}

// The tray menu runs a modal loop on this thread, which reads every keyboard message of
// the thread's queue; another thread posts the keys. A menu that never sees them is
// cancelled after two seconds, so the test fails instead of hanging.
void chooseFromMenuLater(HWND owner, WORD key) {
    std::thread([owner, key] {
        Sleep(300);
        for (WORD pressed : {key, static_cast<WORD>(VK_RETURN)}) {
            PostMessageW(owner, WM_KEYDOWN, pressed, 0);
            PostMessageW(owner, WM_KEYUP, pressed, 0xC0000001);
            Sleep(50);
        }
        Sleep(2000);
        PostMessageW(owner, WM_CANCELMODE, 0, 0);
    }).detach();
}

TEST_F(MainWindowTest, TheTrayMenuOpensTheWindowClosingHidesItAndTheMenuExits) {
    // Down picks the first entry, "Open Corvandell"; Up wraps to the last one, "Exit".
    HWND window = w_->hwnd();
    chooseFromMenuLater(window, VK_DOWN);
    SendMessageW(window, MsgTrayIcon, 1, WM_RBUTTONUP);
    EXPECT_TRUE(test::pumpUntil([window] { return IsWindowVisible(window) != FALSE; }, 3000));
    for (int i = 0; i < 2; ++i) {
        SendMessageW(window, WM_CLOSE, 0, 0);
        EXPECT_TRUE(IsWindow(window));
        EXPECT_FALSE(IsWindowVisible(window));
        EXPECT_TRUE(w_->hasTrayIcon());
    }
    EXPECT_EQ(w_->balloonsShown(), 1);
    SendMessageW(window, MsgTrayIcon, 1, WM_LBUTTONUP);
    EXPECT_TRUE(IsWindowVisible(window));
    chooseFromMenuLater(window, VK_UP);
    SendMessageW(window, MsgTrayIcon, 1, WM_CONTEXTMENU);
    EXPECT_TRUE(test::pumpUntil([this] { return w_->hwnd() == nullptr; }, 3000));
}

TEST_F(MainWindowTest, TypingInTheSearchBoxRefreshesOnceAfterTheLastKeystroke) {
    ASSERT_EQ(queries_.size(), 1u); // the refresh at creation
    for (const wchar_t* text : {L"s", L"sk", L"sky"}) {
        SetWindowTextW(w_->control(command::Search), text); // sends EN_CHANGE like a keystroke
        test::pumpUntil([] { return false; }, 100);
    }
    EXPECT_EQ(queries_.size(), 1u) << "a refresh started before the typing paused";
    ASSERT_TRUE(test::pumpUntil([this] { return queries_.size() == 2; }, 2000));
    test::pumpUntil([] { return false; }, 600);
    EXPECT_EQ(queries_, (std::vector<std::string>{"", "sky"}));
}

} // namespace
} // namespace corvandell::win
