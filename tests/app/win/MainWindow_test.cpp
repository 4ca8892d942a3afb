#include <windows.h>

#include <commctrl.h>

#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "support/TempFolder.hpp"
#include "support/win/MessagePump.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace corvandell::win {
namespace {

// Records every refresh the window starts and answers with a scripted result.
struct RefreshLog {
    std::mutex mutex;
    std::vector<std::string> queries;
    LibraryResult answer{true, {}, {}};

    size_t count() {
        std::lock_guard lock(mutex);
        return queries.size();
    }
};

class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        applyTheme(builtInSkins()[0]);
        MainWindowJobs jobs;
        jobs.makeRefresh = [log = log_](const std::string& query) {
            std::lock_guard lock(log->mutex);
            log->queries.push_back(query);
            return [answer = log->answer] { return answer; };
        };
        const DataPaths paths{folder_.path() / "data", folder_.path() / "games"};
        window_ = std::make_unique<MainWindow>(GetModuleHandleW(nullptr), paths,
                                               defaultSettings(paths.defaultLibraryFolder), std::move(jobs));
        ASSERT_TRUE(window_->create(SW_HIDE));
        test::pumpUntil([this] { return window_->statusText() == L"Library refreshed."; }, 5000);
    }

    void TearDown() override {
        window_.reset();
        test::pumpUntilIdle();
    }

    void refreshAndWait(const std::wstring& status) {
        SendMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Refresh, BN_CLICKED), 0);
        EXPECT_TRUE(test::pumpUntil([&] { return window_->statusText() == status; }, 5000));
    }

    test::TempFolder folder_;
    std::shared_ptr<RefreshLog> log_ = std::make_shared<RefreshLog>();
    std::unique_ptr<MainWindow> window_;
};

TEST_F(MainWindowTest, ControlsSitWhereTheLayoutPutsThemAtAKnownClientSize) {
    RECT frame{0, 0, 1001, 700};
    AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0);
    SetWindowPos(window_->hwnd(), nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    struct Expected {
        int id;
        std::wstring text;
        RECT rect; // left, top, right, bottom
    };
    // The list takes 2 * 1001 / 3 = 667 pixels (integer division): list 647 wide, the
    // details column from 675 with 314.
    const std::vector<Expected> expected = {
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
        {control::PlaytimePanel, L"", {675, 318, 989, 666}},
        {control::Status, L"Library refreshed.", {12, 676, 989, 696}},
    };
    for (const Expected& item : expected) {
        HWND control = window_->control(item.id);
        ASSERT_NE(control, nullptr) << item.id;
        RECT rect{};
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, window_->hwnd(), reinterpret_cast<POINT*>(&rect), 2);
        EXPECT_TRUE(EqualRect(&rect, &item.rect))
            << item.id << ": " << rect.left << "," << rect.top << "," << rect.right << "," << rect.bottom;
        EXPECT_EQ(hwndText(control), item.text);
    }

    HWND list = window_->control(command::List);
    const std::vector<std::pair<std::wstring, int>> columns = {
        {L"Title", 320}, {L"State", 110}, {L"Category", 140}, {L"Platform", 110}, {L"Rating", 90}};
    for (size_t i = 0; i < columns.size(); ++i) {
        wchar_t title[32] = {};
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.pszText = title;
        column.cchTextMax = 32;
        ASSERT_TRUE(ListView_GetColumn(list, static_cast<int>(i), &column));
        EXPECT_EQ(std::make_pair(std::wstring(title), column.cx), columns[i]);
    }
}

TEST_F(MainWindowTest, RefreshResultsReachTheListAndTheStatusLine) {
    LibraryItem row;
    row.name = "Sky Forge";
    log_->answer.rows = {row, row};
    refreshAndWait(L"Library refreshed.");
    HWND list = window_->control(command::List);
    ASSERT_EQ(ListView_GetItemCount(list), 2);
    RECT first{};
    RECT second{};
    ListView_GetItemRect(list, 0, &first, LVIR_BOUNDS);
    ListView_GetItemRect(list, 1, &second, LVIR_BOUNDS);
    EXPECT_EQ(second.top - first.top, 24);

    // A failed refresh only changes the status line.
    log_->answer = {false, {}, "Refresh failed: HTTP request failed"};
    refreshAndWait(L"Refresh failed: HTTP request failed");
    EXPECT_EQ(ListView_GetItemCount(list), 2);

    SendMessageW(window_->hwnd(), MsgStoreChanged, 0, 0);
    EXPECT_EQ(window_->statusText(), L"A game store's library changed - refreshing...");
    EXPECT_EQ(log_->count(), 4u);
}

TEST_F(MainWindowTest, ClosingHidesTheWindowAndShowsTheBalloonOnlyOnce) {
    ShowWindow(window_->hwnd(), SW_SHOWNORMAL);
    for (int i = 0; i < 2; ++i) {
        SendMessageW(window_->hwnd(), WM_CLOSE, 0, 0);
        EXPECT_TRUE(IsWindow(window_->hwnd()));
        EXPECT_FALSE(IsWindowVisible(window_->hwnd()));
        EXPECT_TRUE(window_->hasTrayIcon());
    }
    EXPECT_EQ(window_->balloonsShown(), 1);

    SendMessageW(window_->hwnd(), MsgTrayIcon, 1, WM_LBUTTONUP);
    EXPECT_TRUE(IsWindowVisible(window_->hwnd()));
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

TEST_F(MainWindowTest, TrayMenuOpensTheWindowFirstAndExitsLast) {
    // Down picks the first entry, Up wraps to the last one.
    chooseFromMenuLater(window_->hwnd(), VK_DOWN);
    SendMessageW(window_->hwnd(), MsgTrayIcon, 1, WM_RBUTTONUP);
    test::pumpUntil([this] { return IsWindowVisible(window_->hwnd()) != FALSE; }, 3000);
    EXPECT_TRUE(IsWindowVisible(window_->hwnd())) << "Open Corvandell did not show the window";

    chooseFromMenuLater(window_->hwnd(), VK_UP);
    SendMessageW(window_->hwnd(), MsgTrayIcon, 1, WM_CONTEXTMENU);
    test::pumpUntil([this] { return window_->hwnd() == nullptr; }, 3000);
    EXPECT_EQ(window_->hwnd(), nullptr) << "Exit did not end the window";
}

TEST_F(MainWindowTest, TypingInTheSearchBoxRefreshesOnceAfterTheLastKeystroke) {
    ASSERT_EQ(log_->count(), 1u); // the refresh at creation
    HWND search = window_->control(command::Search);
    for (const wchar_t* text : {L"s", L"sk", L"sky"}) {
        SetWindowTextW(search, text); // sends EN_CHANGE like a keystroke
        test::pumpFor(100);
    }
    EXPECT_EQ(log_->count(), 1u) << "a refresh started before the typing paused";
    const ULONGLONG lastKeystroke = GetTickCount64() - 100;
    ASSERT_TRUE(test::pumpUntil([this] { return log_->count() == 2; }, 2000));
    EXPECT_GE(GetTickCount64() - lastKeystroke, 340u);
    test::pumpFor(600);
    EXPECT_EQ(log_->count(), 2u);
    std::lock_guard lock(log_->mutex);
    EXPECT_EQ(log_->queries.back(), "sky");
}

TEST_F(MainWindowTest, ChildClosedClearsOnlyTheMatchingHandle) {
    HWND friends = reinterpret_cast<HWND>(static_cast<INT_PTR>(0x1234));
    HWND other = reinterpret_cast<HWND>(static_cast<INT_PTR>(0x5678));
    window_->setChildWindow(ChildKind::Friends, friends);
    struct Case {
        ChildKind kind;
        HWND closed;
        HWND remaining;
    };
    const std::vector<Case> cases = {
        {ChildKind::Friends, other, friends},   // another window of the same kind
        {ChildKind::Options, friends, friends}, // the same handle reported as another kind
        {ChildKind::Friends, friends, nullptr}, // the window itself
    };
    for (const Case& item : cases) {
        SendMessageW(window_->hwnd(), MsgChildClosed, static_cast<WPARAM>(item.kind),
                     reinterpret_cast<LPARAM>(item.closed));
        EXPECT_EQ(window_->childWindow(ChildKind::Friends), item.remaining);
    }
}

TEST_F(MainWindowTest, ThemeChangeRepaintsTheListInTheNewSkin) {
    const Skin light = builtInSkins()[1];
    applyTheme(light);
    SendMessageW(window_->hwnd(), MsgThemeChanged, 0, 0);
    const Rgb background = light.controlBackground;
    EXPECT_EQ(ListView_GetBkColor(window_->control(command::List)),
              RGB(background.red, background.green, background.blue));
}

} // namespace
} // namespace corvandell::win
