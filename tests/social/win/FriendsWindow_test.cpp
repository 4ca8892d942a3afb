// The friends window against the service stand-in: the own id, the friends with their
// state or game, friend requests, the clipboard, Chat Selected and the end notice.
#include <windows.h>

#include "base/win/WideText.hpp"
#include "social/win/FriendsWindow.hpp"
#include "social/win/SocialIds.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/SocialUsers.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::win {
namespace {

using test::pumpUntil;
constexpr UINT kClosedMessage = WM_APP + 15;
constexpr char kFreeTitleId[] = "6c2605c5-4c84-522e-b052-c8337030cd28"; // Paper Moth, free for everyone

void click(HWND window, int id) {
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
}

std::vector<std::wstring> listItems(HWND list) {
    std::vector<std::wstring> items;
    const auto count = static_cast<int>(SendMessageW(list, LB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        std::wstring text(static_cast<std::size_t>(SendMessageW(list, LB_GETTEXTLEN, i, 0)) + 1, L'\0');
        text.resize(static_cast<std::size_t>(
            SendMessageW(list, LB_GETTEXT, i, reinterpret_cast<LPARAM>(text.data()))));
        items.push_back(text);
    }
    return items;
}

class FriendsWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        me_ = test::newStandInUser("me");
        pal_ = test::newStandInUser("pal");
        gamer_ = test::newStandInUser("gamer");
        test::makeFriends(me_, pal_);
        test::makeFriends(me_, gamer_);
        test::callAs(gamer_, "POST", std::string("/api/v1/software/") + kFreeTitleId + "/launch");
    }
    void TearDown() override {
        for (const wchar_t* className : {L"CorvandellChatWindow", L"CorvandellFriendsWindow"}) {
            for (HWND window : test::windowsOfClass(className)) {
                DestroyWindow(window);
            }
        }
    }

    void openAndLoad() {
        window_ = FriendsWindow::open(GetModuleHandleW(nullptr), nullptr, &me_.settings, SocialLook{},
                                      ClosedNotice{postBox_.hwnd(), kClosedMessage, 1}, SW_SHOWNOACTIVATE);
        ASSERT_NE(window_, nullptr);
        ASSERT_TRUE(pumpUntil([&] { return status() == L"Friends refreshed"; }, 10000)) << narrow(status());
    }
    std::wstring status() const { return hwndText(window_->control(social::kFriendsStatus)); }

    test::StandInUser me_, pal_, gamer_;
    test::PostBox postBox_;
    FriendsWindow* window_ = nullptr;
};

TEST_F(FriendsWindowTest, ShowsTheOwnIdAndEachFriendWithTheGameAndSaysWhenItCloses) {
    openAndLoad();
    EXPECT_EQ(hwndText(window_->control(social::kOwnIdEdit)), widen(me_.userId));
    const std::vector<std::wstring> names = listItems(window_->control(social::kFriendsList));
    EXPECT_EQ(names, (std::vector{widen(gamer_.username), widen(pal_.username)})); // by name
    ASSERT_EQ(window_->friends().size(), 2u);
    EXPECT_EQ(window_->friends()[0].currentGame, "Paper Moth");
    EXPECT_EQ(window_->friends()[1].currentGame, "");
    EXPECT_EQ(test::windowsOfClass(L"CorvandellFriendsWindow").size(), 1u);
    // Closing tells the main window, with kind 1 and the handle.
    const HWND closed = window_->hwnd();
    DestroyWindow(closed);
    MSG notice{};
    ASSERT_TRUE(postBox_.take(kClosedMessage, notice));
    EXPECT_EQ(notice.wParam, 1u);
    EXPECT_EQ(reinterpret_cast<HWND>(notice.lParam), closed);
}

TEST_F(FriendsWindowTest, AddSendsTheRequestToTheTypedIdAndRefreshes) {
    const test::StandInUser stranger = test::newStandInUser("stranger");
    openAndLoad();
    SetWindowTextW(window_->control(social::kFriendIdEdit), widen(stranger.userId).c_str());
    click(window_->hwnd(), social::kAddButton);
    EXPECT_EQ(status(), L"Sending friend request...");
    ASSERT_TRUE(pumpUntil([&] { return status() == L"Friends refreshed"; }, 10000)) << narrow(status());
    const std::string incoming = test::callAs(stranger, "GET", "/api/v1/me/friend-requests");
    EXPECT_NE(incoming.find(me_.userId), std::string::npos) << incoming;

    // Asking back makes them friends; the next refresh lists the new friend.
    test::callAs(stranger, "POST", "/api/v1/me/friend-requests", "{\"toUserId\":\"" + me_.userId + "\"}");
    click(window_->hwnd(), social::kRefreshButton);
    ASSERT_TRUE(pumpUntil([&] { return window_->friends().size() == 3; }, 10000));
}

TEST_F(FriendsWindowTest, CopyNeedsTheIdThenPutsItOnTheClipboardAndSaysCopied) {
    window_ = FriendsWindow::open(GetModuleHandleW(nullptr), nullptr, &me_.settings, SocialLook{},
                                  ClosedNotice{}, SW_SHOWNOACTIVATE);
    ASSERT_NE(window_, nullptr);
    // The refresh has not come back yet: no id to copy.
    click(window_->hwnd(), social::kCopyButton);
    EXPECT_EQ(status(), L"No user ID yet - sign in first.");
    ASSERT_TRUE(pumpUntil([&] { return status() == L"Friends refreshed"; }, 10000));

    click(window_->hwnd(), social::kCopyButton);
    EXPECT_EQ(status(), L"Your user ID is on the clipboard.");
    EXPECT_EQ(window_->copyTooltipText(), L"Copied!");
    ASSERT_TRUE(OpenClipboard(nullptr));
    HANDLE data = GetClipboardData(CF_UNICODETEXT);
    ASSERT_NE(data, nullptr);
    const std::wstring copied = static_cast<const wchar_t*>(GlobalLock(data));
    GlobalUnlock(data);
    CloseClipboard();
    EXPECT_EQ(copied, widen(me_.userId));
}

TEST_F(FriendsWindowTest, ChatSelectedNeedsASelectionAndOpensANewChatOnEveryPress) {
    openAndLoad();
    click(window_->hwnd(), social::kChatSelectedButton);
    EXPECT_EQ(status(), L"Select at least one friend.");
    EXPECT_TRUE(test::windowsOfClass(L"CorvandellChatWindow").empty());

    SendMessageW(window_->control(social::kFriendsList), LB_SELITEMRANGE, TRUE, MAKELPARAM(0, 1));
    click(window_->hwnd(), social::kChatSelectedButton);
    click(window_->hwnd(), social::kChatSelectedButton);
    const std::vector<HWND> chats = test::windowsOfClass(L"CorvandellChatWindow");
    ASSERT_EQ(chats.size(), 2u);
    // Both are the same group, named after the selected friends in list order.
    const std::wstring title = widen(gamer_.username + ", " + pal_.username);
    EXPECT_TRUE(pumpUntil([&] { return hwndText(chats[0]) == title && hwndText(chats[1]) == title; }, 10000))
        << narrow(hwndText(chats[0]));
}

} // namespace
} // namespace corvandell::win
