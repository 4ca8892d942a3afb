// By hand only (disabled in ctest): the friends window and a group chat as the seeded demo
// user sees them in the dark skin, saved as BMP files into CORVANDELL_SCREENSHOT_DIR so a
// person can look at them. scripts/social-screenshots runs it and turns them into PNGs.
#include <windows.h>

#include "app/Skins.hpp"
#include "app/win/FriendsLauncher.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "base/win/Window.hpp"
#include "social/win/SocialIds.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/SocialUsers.hpp"
#include "support/win/WindowPicture.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

TEST(SocialScreenshots, DISABLED_FriendsWindowAndAGroupChatAsTheDemoUserSeesThem) {
    const wchar_t* folder = _wgetenv(L"CORVANDELL_SCREENSHOT_DIR");
    ASSERT_NE(folder, nullptr) << "set CORVANDELL_SCREENSHOT_DIR";
    applyTheme(chooseSkin(builtInSkins(), "dark"));
    Settings demo = signedInSettings("demo");
    test::StandInUser alice{"alice", "", signedInSettings("alice")};

    HWND friends = openFriendsWindow(GetModuleHandleW(nullptr), nullptr, &demo);
    ASSERT_NE(friends, nullptr);
    HWND list = GetDlgItem(friends, social::kFriendsList);
    ASSERT_TRUE(test::pumpUntil([&] { return SendMessageW(list, LB_GETCOUNT, 0, 0) >= 3; }, 10000));
    SendMessageW(list, LB_SELITEMRANGE, TRUE, MAKELPARAM(0, 1)); // alice and bruno
    SendMessageW(friends, WM_COMMAND, MAKEWPARAM(social::kChatSelectedButton, BN_CLICKED), 0);
    std::vector<HWND> chats = test::windowsOfClass(L"CorvandellChatWindow");
    ASSERT_EQ(chats.size(), 1u);
    HWND chat = chats.front();
    ASSERT_TRUE(test::pumpUntil([&] { return hwndText(chat) == L"alice, bruno"; }, 10000));

    const std::string conversations = test::callAs(alice, "GET", "/api/v1/chat/conversations");
    const std::size_t named = conversations.find("\"name\":\"alice, bruno\"");
    ASSERT_NE(named, std::string::npos);
    const std::size_t idAt = conversations.rfind("{\"id\":\"", named);
    const std::string conversationId = conversations.substr(idAt + 7, 36);
    test::callAs(alice, "POST", "/api/v1/chat/conversations/" + conversationId + "/messages",
                 "{\"content\":\"Ember Keep raid at nine? Bring potions.\"}");
    SetWindowTextW(GetDlgItem(chat, social::kMessageEdit), L"I'm in. Voice on in five.");
    SendMessageW(chat, WM_COMMAND, MAKEWPARAM(social::kSendButton, BN_CLICKED), 0);
    HWND transcript = GetDlgItem(chat, social::kTranscript);
    ASSERT_TRUE(test::pumpUntil(
        [&] {
            const std::wstring text = hwndText(transcript);
            return text.find(L"Bring potions.") != std::wstring::npos &&
                   text.find(L"Voice on in five.") != std::wstring::npos;
        },
        10000));
    SetWindowTextW(GetDlgItem(chat, social::kMessageEdit), L"typing...");

    SetWindowPos(friends, HWND_TOP, 20, 20, 380, 560, SWP_SHOWWINDOW);
    SetWindowPos(chat, HWND_TOP, 420, 20, 560, 480, SWP_SHOWWINDOW);
    for (HWND window : {friends, chat}) {
        RedrawWindow(window, nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW | RDW_FRAME);
    }
    test::pumpUntil([] { return false; }, 800);
    for (const auto& [window, name] :
         {std::pair{friends, "friends-window.bmp"}, std::pair{chat, "group-chat.bmp"}}) {
        EXPECT_TRUE(test::saveWindowBmp(window, std::filesystem::path(folder) / name)) << name;
        DestroyWindow(window);
    }
}

} // namespace
} // namespace corvandell::win
