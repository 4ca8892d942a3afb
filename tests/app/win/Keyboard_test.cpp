// The windows from the keyboard, in process, through the client's own message routing. Keys
// are posted as the keyboard driver would queue them; modifier keys are set in this thread's
// key state, which is where TranslateAccelerator reads them.
#include <windows.h>

#include <commctrl.h>

#include "app/win/MessageLoop.hpp"
#include "app/win/ThemeHook.hpp"
#include "auth/win/SignInWindow.hpp"
#include "social/win/FriendsWindow.hpp"
#include "social/win/SocialIds.hpp"
#include "support/ScriptedService.hpp"
#include "support/win/MainWindowUnderTest.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

// As the client's loop pumps: its shortcuts and dialog keys first.
bool pumpClientUntil(HWND main, HACCEL keys, const std::function<bool()>& done, DWORD timeoutMs) {
    return test::pumpUntil(done, timeoutMs,
                           [&](MSG& message) { return preTranslateClientMessage(main, keys, message); });
}

void pressKey(HWND target, WPARAM key) {
    PostMessageW(target, WM_KEYDOWN, key, 1);
    PostMessageW(target, WM_KEYUP, key, 0xC0000001);
}

// Holds modifier keys down in this thread's key state while it lives.
class HeldKeys {
public:
    explicit HeldKeys(std::initializer_list<BYTE> keys) {
        GetKeyboardState(saved_);
        BYTE state[256];
        GetKeyboardState(state);
        for (const BYTE key : keys) {
            state[key] = 0x80;
        }
        SetKeyboardState(state);
    }
    ~HeldKeys() { SetKeyboardState(saved_); }
    HeldKeys(const HeldKeys&) = delete;
    HeldKeys& operator=(const HeldKeys&) = delete;

private:
    BYTE saved_[256] = {};
};

class MainWindowKeysTest : public ::testing::Test {
protected:
    void SetUp() override {
        w_.jobs.makeRefresh = [this](const std::string& query) -> std::function<LibraryResult()> {
            queries_.push_back(query);
            return [] { return LibraryResult{.succeeded = true}; };
        };
        w_.jobs.api = std::make_shared<test::ScriptedService>();
        w_.settings.bearerToken = "token";
        ASSERT_TRUE(w_.open(SW_SHOWNORMAL));
        keys_ = createMainWindowKeys();
        ASSERT_TRUE(keys_);
        pump([this] { return w_->statusText() == L"Library refreshed."; });
        queries_.clear();
    }

    bool pump(const std::function<bool()>& done, DWORD timeoutMs = 5000) {
        return pumpClientUntil(w_->hwnd(), keys_.get(), done, timeoutMs);
    }
    HWND control(int id) const { return w_->control(id); }

    std::vector<std::string> queries_;
    test::MainWindowUnderTest w_;
    UniqueAccelerator keys_;
};

TEST_F(MainWindowKeysTest, ShortcutsReachTheirCommandsOnlyFromTheMainWindow) {
    HWND list = control(command::List);
    SetFocus(list);
    pressKey(list, VK_F5);
    EXPECT_TRUE(pump([this] { return queries_.size() == 1; })) << "F5 did not refresh";
    {
        const HeldKeys held({VK_CONTROL, VK_LCONTROL});
        pressKey(list, 'R');
        EXPECT_TRUE(pump([this] { return queries_.size() == 2; })) << "Ctrl+R did not refresh";
        pressKey(list, 'F');
        EXPECT_TRUE(pump([this] { return GetFocus() == control(command::Search); })) << "Ctrl+F";
    }
    // Another of the client's windows on the same thread keeps its F5 to itself.
    HWND other = CreateWindowExW(0, L"EDIT", L"", WS_POPUP | WS_VISIBLE, 0, 0, 100, 30, nullptr, nullptr,
                                 GetModuleHandleW(nullptr), nullptr);
    SetFocus(other);
    pressKey(other, VK_F5);
    pump([] { return false; }, 100);
    EXPECT_EQ(queries_.size(), 2u) << "F5 in another window refreshed the library";
    DestroyWindow(other);
}

TEST_F(MainWindowKeysTest, TabLeavesTheSearchBoxAndEnterInItSearchesAtOnce) {
    HWND search = control(command::Search);
    SetFocus(search);
    pressKey(search, VK_TAB);
    EXPECT_TRUE(pump([this] { return GetFocus() == control(command::Refresh); }))
        << "Tab from the search box";

    SetFocus(search);
    SetWindowTextW(search, L"sky"); // starts the pause-then-search timer
    pressKey(search, VK_RETURN);
    EXPECT_TRUE(pump([this] { return queries_.size() == 1; })) << "Enter did not search";
    EXPECT_EQ(queries_.front(), "sky");
    // The search that was waiting for a pause in the typing is the one just made.
    pump([] { return false; }, kSearchDebounceMs + 250);
    EXPECT_EQ(queries_.size(), 1u);

    SetFocus(control(command::Refresh));
    pressKey(control(command::Refresh), VK_RETURN);
    EXPECT_TRUE(pump([this] { return queries_.size() == 2; })) << "Enter on the Refresh button";
}

TEST_F(MainWindowKeysTest, EnterGivesTheFocusedControlsCommandAndNothingElsewhere) {
    const auto defaultCommand = [this] {
        return static_cast<int>(LOWORD(SendMessageW(w_->hwnd(), DM_GETDEFID, 0, 0)));
    };
    SetFocus(control(command::List));
    EXPECT_EQ(defaultCommand(), command::None) << "Enter with no row selected";
    SetFocus(control(command::Friends));
    EXPECT_EQ(defaultCommand(), command::Friends);
    SetFocus(control(control::Details));
    EXPECT_EQ(defaultCommand(), command::None);
}

TEST(DialogKeys, SignInEnterNeverStartsGoogleAndPressesTheFocusedButton) {
    applyTheme(builtInSkins()[0]);
    test::TempFolder folder;
    Settings settings;
    settings.apiBaseUrl = "http://127.0.0.1:9";
    int browserOpened = 0;
    SignInHooks hooks;
    hooks.paintHook = &themeHandleMessage;
    hooks.trackButtonHover = &themeTrackButtonHover;
    hooks.openBrowser = [&browserOpened](const std::wstring&) { ++browserOpened; };
    SignInWindow window(GetModuleHandleW(nullptr), folder.path(), settings, hooks);
    ASSERT_TRUE(window.create(SW_SHOWNORMAL));
    HWND hwnd = window.hwnd();
    // As the sign-in loop pumps: through the dialog manager.
    const auto pumpDialog = [hwnd](const std::function<bool()>& done, DWORD timeoutMs) {
        return test::pumpUntil(done, timeoutMs,
                               [hwnd](MSG& message) { return IsDialogMessageW(hwnd, &message) != FALSE; });
    };
    // Enter on the window itself, and in the status line's reach: "Continue with Google" has
    // the dialog manager's IDOK id, which must not make it the default.
    SetFocus(hwnd);
    pressKey(hwnd, VK_RETURN);
    pumpDialog([] { return false; }, 200);
    EXPECT_EQ(browserOpened, 0) << "Enter started a Google sign-in";
    EXPECT_FALSE(window.isListening());

    HWND skip = window.control(signin::Skip);
    SetFocus(skip);
    pressKey(skip, VK_RETURN);
    EXPECT_TRUE(pumpDialog([&window] { return window.hwnd() == nullptr; }, 5000)) << "Enter on Skip";
    EXPECT_EQ(window.result(), SignInResult::Skipped);
    EXPECT_EQ(browserOpened, 0);
}

TEST(DialogKeys, EnterPressesTheFocusedBoxsButtonAndEscapeClosesTheFriendsWindow) {
    applyTheme(builtInSkins()[0]);
    Settings settings;
    settings.apiBaseUrl = "http://127.0.0.1:9";
    FriendsWindow* friends =
        FriendsWindow::open(GetModuleHandleW(nullptr), nullptr, &settings, SocialLook{}, {}, SW_SHOWNORMAL);
    ASSERT_NE(friends, nullptr);
    HWND hwnd = friends->hwnd();
    HWND idEdit = friends->control(social::kFriendIdEdit);
    SetFocus(idEdit);
    EXPECT_EQ(LOWORD(SendMessageW(hwnd, DM_GETDEFID, 0, 0)), social::kAddButton);
    SetFocus(friends->control(social::kFriendsList));
    EXPECT_EQ(LOWORD(SendMessageW(hwnd, DM_GETDEFID, 0, 0)), social::kChatSelectedButton);

    SetFocus(idEdit);
    pressKey(idEdit, VK_ESCAPE);
    EXPECT_TRUE(pumpClientUntil(
        nullptr, nullptr, [hwnd] { return !IsWindow(hwnd); }, 5000))
        << "Escape left the friends window open";
}

} // namespace
} // namespace corvandell::win
