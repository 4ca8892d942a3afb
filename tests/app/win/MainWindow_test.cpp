#include <windows.h>

#include <commctrl.h>

#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/MessagePump.hpp"

#include <gtest/gtest.h>

#include <atomic>
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
    LibraryResult answer = [] {
        LibraryResult result;
        result.succeeded = true;
        return result;
    }();

    size_t count() {
        std::lock_guard lock(mutex);
        return queries.size();
    }
};

class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        applyTheme(chooseSkin(builtInSkins(), "dark"));
        paths_.dataFolder = folder_.path() / "data";
        paths_.defaultLibraryFolder = folder_.path() / "games";
        MainWindowJobs jobs;
        jobs.makeRefresh = [log = log_](const std::string& query) {
            std::lock_guard lock(log->mutex);
            log->queries.push_back(query);
            return [answer = log->answer] { return answer; };
        };
        window_ = std::make_unique<MainWindow>(GetModuleHandleW(nullptr), paths_,
                                               defaultSettings(paths_.defaultLibraryFolder), std::move(jobs));
        ASSERT_TRUE(window_->create(SW_HIDE));
        test::pumpUntil([this] { return window_->statusText() == L"Library refreshed."; }, 5000);
    }

    void TearDown() override {
        window_.reset();
        test::pumpUntilIdle();
    }

    // Resizes the window so that its client area is exactly width x height.
    void setClientSize(int width, int height) {
        RECT frame{0, 0, width, height};
        AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0);
        SetWindowPos(window_->hwnd(), nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
        test::pumpUntilIdle();
    }

    RECT controlRect(HWND control) const {
        RECT rect{};
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, window_->hwnd(), reinterpret_cast<POINT*>(&rect), 2);
        return rect;
    }

    static std::wstring textOf(HWND control) {
        wchar_t text[512] = {};
        GetWindowTextW(control, text, 512);
        return text;
    }

    test::TempFolder folder_;
    DataPaths paths_;
    std::shared_ptr<RefreshLog> log_ = std::make_shared<RefreshLog>();
    std::unique_ptr<MainWindow> window_;
};

TEST_F(MainWindowTest, ControlsSitWhereTheLayoutPutsThemAtAKnownClientSize) {
    setClientSize(1000, 700);
    RECT client{};
    GetClientRect(window_->hwnd(), &client);
    ASSERT_EQ(client.right, 1000);
    ASSERT_EQ(client.bottom, 700);

    struct Expected {
        int id;
        std::wstring text;
        RECT rect; // left, top, right, bottom
    };
    const std::vector<Expected> expected = {
        {control::SearchLabel, L"Search Library", {12, 17, 108, 35}},
        {command::Search, L"", {112, 12, 372, 42}},
        {command::Refresh, L"Refresh", {384, 12, 474, 42}},
        {command::Launch, L"Launch", {480, 12, 590, 42}},
        {command::AddGame, L"Add Game", {596, 12, 696, 42}},
        {command::Friends, L"Friends", {702, 12, 792, 42}},
        {command::Options, L"Options", {798, 12, 888, 42}},
        // L = 666: list 12,58 (646 x 608); details column at 674, 314 wide.
        {command::List, L"", {12, 58, 658, 666}},
        {control::DetailsLabel, L"Game Details", {674, 58, 834, 76}},
        {control::Details, L"Select a game to see its details.", {674, 80, 988, 310}},
        {control::PlaytimePanel, L"", {674, 318, 988, 666}},
        {control::Status, L"Library refreshed.", {12, 676, 988, 696}},
    };
    for (const Expected& item : expected) {
        SCOPED_TRACE(item.id);
        HWND control = window_->control(item.id);
        ASSERT_NE(control, nullptr);
        const RECT rect = controlRect(control);
        EXPECT_EQ(rect.left, item.rect.left);
        EXPECT_EQ(rect.top, item.rect.top);
        EXPECT_EQ(rect.right, item.rect.right);
        EXPECT_EQ(rect.bottom, item.rect.bottom);
        EXPECT_EQ(textOf(control), item.text);
    }

    wchar_t className[64] = {};
    GetClassNameW(window_->hwnd(), className, 64);
    EXPECT_STREQ(className, L"CorvandellClientWindow");
    EXPECT_EQ(textOf(window_->hwnd()), L"Corvandell");

    HWND list = window_->control(command::List);
    EXPECT_TRUE((GetWindowLongPtrW(list, GWL_STYLE) & LVS_OWNERDRAWFIXED) != 0);
    const std::vector<std::pair<std::wstring, int>> columns = {
        {L"Title", 320}, {L"State", 110}, {L"Category", 140}, {L"Platform", 110}, {L"Rating", 90}};
    for (size_t i = 0; i < columns.size(); ++i) {
        wchar_t title[32] = {};
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.pszText = title;
        column.cchTextMax = 32;
        ASSERT_TRUE(ListView_GetColumn(list, static_cast<int>(i), &column));
        EXPECT_EQ(title, columns[i].first);
        EXPECT_EQ(column.cx, columns[i].second);
    }
}

TEST_F(MainWindowTest, RowsAreTwentyFourPixelsHigh) {
    LibraryItem row;
    row.key = "a";
    row.name = "Sky Forge";
    log_->answer.rows = {row, row};
    SendMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Refresh, BN_CLICKED), 0);
    ASSERT_TRUE(test::pumpUntil(
        [this] { return ListView_GetItemCount(window_->control(command::List)) == 2; }, 5000));
    RECT first{};
    RECT second{};
    ListView_GetItemRect(window_->control(command::List), 0, &first, LVIR_BOUNDS);
    ListView_GetItemRect(window_->control(command::List), 1, &second, LVIR_BOUNDS);
    EXPECT_EQ(first.bottom - first.top, 24);
    EXPECT_EQ(second.top - first.top, 24);
}

TEST_F(MainWindowTest, ClosingHidesTheWindowAndShowsTheBalloonOnlyOnce) {
    ShowWindow(window_->hwnd(), SW_SHOWNORMAL);
    test::pumpUntilIdle();
    for (int i = 0; i < 2; ++i) {
        SendMessageW(window_->hwnd(), WM_CLOSE, 0, 0);
        test::pumpUntilIdle();
        EXPECT_TRUE(IsWindow(window_->hwnd()));
        EXPECT_FALSE(IsWindowVisible(window_->hwnd()));
        EXPECT_TRUE(window_->hasTrayIcon());
    }
    EXPECT_EQ(window_->balloonsShown(), 1);

    // A left click on the tray icon brings the window back.
    SendMessageW(window_->hwnd(), MsgTrayIcon, 1, WM_LBUTTONUP);
    EXPECT_TRUE(IsWindowVisible(window_->hwnd()));
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

TEST_F(MainWindowTest, FailedRefreshShowsItsErrorInTheStatusLine) {
    log_->answer.succeeded = false;
    log_->answer.errorText = "Refresh failed: HTTP request failed";
    SendMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Refresh, BN_CLICKED), 0);
    EXPECT_EQ(window_->statusText(), L"Loading library...");
    EXPECT_TRUE(test::pumpUntil(
        [this] { return window_->statusText() == L"Refresh failed: HTTP request failed"; }, 5000));
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

TEST_F(MainWindowTest, ExitDestroysTheWindowSavesBothFilesAndQuitsWithZero) {
    PostMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Exit, 0), 0);
    int quitCode = -1;
    bool sawQuit = false;
    test::pumpUntil(
        [&] {
            sawQuit = test::pumpUntilIdle(&quitCode) || sawQuit;
            return sawQuit;
        },
        5000);
    EXPECT_TRUE(sawQuit);
    EXPECT_EQ(quitCode, 0);
    EXPECT_EQ(window_->hwnd(), nullptr);
    EXPECT_EQ(test::readTestFile(paths_.dataFolder / "settings.json"),
              formatSettings(defaultSettings(paths_.defaultLibraryFolder)));
    EXPECT_EQ(test::readTestFile(paths_.dataFolder / "library.json"), "[\n\n]\n");
}

TEST_F(MainWindowTest, StoreChangeRefreshesAndSaysWhy) {
    SendMessageW(window_->hwnd(), MsgStoreChanged, 0, 0);
    EXPECT_EQ(window_->statusText(), L"A game store's library changed - refreshing...");
    EXPECT_EQ(log_->count(), 2u);
}

TEST_F(MainWindowTest, ThemeChangeRepaintsTheListInTheNewSkin) {
    HWND list = window_->control(command::List);
    const Skin light = chooseSkin(builtInSkins(), "light");
    applyTheme(light);
    SendMessageW(window_->hwnd(), MsgThemeChanged, 0, 0);
    EXPECT_EQ(ListView_GetBkColor(list),
              RGB(light.controlBackground.red, light.controlBackground.green, light.controlBackground.blue));
    EXPECT_EQ(ListView_GetTextColor(list),
              RGB(light.controlText.red, light.controlText.green, light.controlText.blue));
}

// Types keys from another thread while the tray menu runs its modal loop on this one.
// A menu that never sees the keys is cancelled after two seconds, so the test fails
// instead of hanging.
void pressKeysLater(HWND owner, std::vector<WORD> keys) {
    std::thread([owner, keys = std::move(keys)] {
        Sleep(300);
        // The menu's modal loop reads every keyboard message of the thread's queue.
        for (WORD key : keys) {
            PostMessageW(owner, WM_KEYDOWN, key, 0);
            PostMessageW(owner, WM_KEYUP, key, 0xC0000001);
            Sleep(50);
        }
        Sleep(2000);
        PostMessageW(owner, WM_CANCELMODE, 0, 0);
    }).detach();
}

TEST_F(MainWindowTest, TrayMenuOpensTheWindowFirstAndExitsLast) {
    // Down picks the first entry, Up wraps to the last one.
    pressKeysLater(window_->hwnd(), {VK_DOWN, VK_RETURN});
    SendMessageW(window_->hwnd(), MsgTrayIcon, 1, WM_RBUTTONUP);
    test::pumpUntil([this] { return IsWindowVisible(window_->hwnd()) != FALSE; }, 3000);
    EXPECT_TRUE(IsWindowVisible(window_->hwnd())) << "Open Corvandell did not show the window";

    pressKeysLater(window_->hwnd(), {VK_UP, VK_RETURN});
    SendMessageW(window_->hwnd(), MsgTrayIcon, 1, WM_CONTEXTMENU);
    test::pumpUntil([this] { return window_->hwnd() == nullptr; }, 3000);
    EXPECT_EQ(window_->hwnd(), nullptr) << "Exit did not end the window";
}

} // namespace
} // namespace corvandell::win
