// The main window in process: layout, list, tray, search debounce and refresh results, with
// refresh jobs that record their query and answer as scripted.
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
#include <tuple>
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

TEST_F(MainWindowTest, ControlsSitWhereTheLayoutPutsThemAtAKnownClientSize) {
    RECT frame{0, 0, 1001, 700};
    AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0);
    SetWindowPos(w_->hwnd(), nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    // Control id, text and left, top, right, bottom. The list takes 2 * 1001 / 3 = 667 pixels (integer
    // division): list 647 wide, the details column from 675 with 314.
    const std::vector<std::tuple<int, std::wstring, RECT>> expected = {
        {control::SearchLabel, L"Search Library", {12, 17, 108, 35}},
        {command::Search, L"", {112, 12, 372, 42}},
        {command::Refresh, L"Refresh", {384, 12, 474, 42}},
        {command::Launch, L"Launch", {480, 12, 590, 42}},
        {command::AddGame, L"Add Game", {596, 12, 696, 42}},
        {command::Friends, L"Friends", {702, 12, 792, 42}},
        {command::Options, L"Options", {798, 12, 888, 42}},
        {command::List, L"", {12, 58, 659, 666}},
        {control::DetailsLabel, L"Game Details", {675, 58, 835, 76}},
        {control::Details, L"Select a game to see its details.", {675, 80, 989, 310}},
        {control::PlaytimePanel, L"Rate this game", {675, 318, 989, 666}},
        {control::Status, L"Library refreshed.", {12, 676, 989, 696}},
    };
    for (const auto& [id, text, expectedRect] : expected) {
        HWND control = w_->control(id);
        ASSERT_NE(control, nullptr) << id;
        RECT rect{};
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, w_->hwnd(), reinterpret_cast<POINT*>(&rect), 2);
        EXPECT_TRUE(EqualRect(&rect, &expectedRect))
            << id << ": " << rect.left << "," << rect.top << "," << rect.right << "," << rect.bottom;
        EXPECT_EQ(hwndText(control), text);
    }

    // The columns (their widths are the column table's) fill the list's rows exactly: no
    // horizontal scroll bar, and room kept for the vertical one.
    HWND list = w_->control(command::List);
    RECT listClient{};
    GetClientRect(list, &listClient);
    const bool hasScrollBar = (GetWindowLongW(list, GWL_STYLE) & WS_VSCROLL) != 0;
    const int rowWidth = listClient.right - (hasScrollBar ? 0 : GetSystemMetrics(SM_CXVSCROLL));
    const std::vector<std::wstring> titles = {L"Title", L"State", L"Category", L"Platform", L"Rating"};
    int total = 0;
    for (size_t i = 0; i < titles.size(); ++i) {
        wchar_t title[32] = {};
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.pszText = title;
        column.cchTextMax = 32;
        ASSERT_TRUE(ListView_GetColumn(list, static_cast<int>(i), &column));
        EXPECT_EQ(std::wstring(title), titles[i]);
        total += column.cx;
    }
    EXPECT_EQ(total, rowWidth);
    EXPECT_EQ(GetWindowLongW(list, GWL_STYLE) & WS_HSCROLL, 0);
}

TEST_F(MainWindowTest, RefreshResultsFillTheListAndAFailureOnlySetsTheStatus) {
    SoftwareItem title;
    title.name = "Sky Forge";
    answer_.catalogue = {title, title};
    refreshAndWait(L"Library refreshed.");
    HWND list = w_->control(command::List);
    ASSERT_EQ(ListView_GetItemCount(list), 2);
    RECT first{};
    RECT second{};
    ListView_GetItemRect(list, 0, &first, LVIR_BOUNDS);
    ListView_GetItemRect(list, 1, &second, LVIR_BOUNDS);
    EXPECT_EQ(second.top - first.top, 24);

    answer_ = LibraryResult{.succeeded = false, .errorText = "Refresh failed: HTTP request failed"};
    refreshAndWait(L"Refresh failed: HTTP request failed");
    EXPECT_EQ(ListView_GetItemCount(list), 2);

    nextProducer_ = []() -> LibraryResult { throw std::runtime_error("Invalid URL"); };
    refreshAndWait(L"Refresh failed: Invalid URL");
    EXPECT_EQ(ListView_GetItemCount(list), 2);
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
    const ULONGLONG lastKeystroke = GetTickCount64() - 100;
    ASSERT_TRUE(test::pumpUntil([this] { return queries_.size() == 2; }, 2000));
    EXPECT_GE(GetTickCount64() - lastKeystroke, 340u);
    test::pumpUntil([] { return false; }, 600);
    EXPECT_EQ(queries_, (std::vector<std::string>{"", "sky"}));
}

} // namespace
} // namespace corvandell::win
