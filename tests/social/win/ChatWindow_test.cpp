// Chat windows against the service stand-in: a direct conversation between two users,
// messages arriving without Refresh, no duplicates, and the texts of the edge cases (sending
// too early, a failed send or load, voice switched off in options). A group chat is opened
// through the friends window (FriendsWindow_test).
#include <windows.h>

#include "api/JsonText.hpp"
#include "base/win/WideText.hpp"
#include "social/win/ChatWindow.hpp"
#include "social/win/SocialIds.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/SocialUsers.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::win {
namespace {

using test::pumpUntil;

void click(HWND window, int id) {
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
}

FriendInfo asFriend(const test::StandInUser& user) {
    return {user.userId, user.username, true, ""};
}

class ChatWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        ann_ = test::newStandInUser("ann");
        ben_ = test::newStandInUser("ben");
        test::makeFriends(ann_, ben_);
    }
    void TearDown() override {
        for (HWND window : test::windowsOfClass(L"CorvandellChatWindow")) {
            DestroyWindow(window);
        }
    }

    ChatWindow* open(const test::StandInUser& user, std::vector<FriendInfo> friends) {
        ChatWindow* window = ChatWindow::open(GetModuleHandleW(nullptr), nullptr, &user.settings,
                                              SocialLook{}, std::move(friends), SW_SHOWNOACTIVATE);
        EXPECT_NE(window, nullptr);
        return window;
    }
    static bool waitForConversation(ChatWindow* window) {
        return pumpUntil([&] { return window->conversation().has_value(); }, 10000);
    }
    static std::string transcript(ChatWindow* window) { return narrow(window->transcriptText()); }
    // Pumps until the transcript holds the text (true) or ten seconds pass (false).
    static bool waitForText(ChatWindow* window, const std::string& text, DWORD timeoutMs = 10000) {
        return pumpUntil([&] { return transcript(window).find(text) != std::string::npos; }, timeoutMs);
    }
    static void type(ChatWindow* window, const std::string& text) {
        SetWindowTextW(window->control(social::kMessageEdit), widen(text).c_str());
    }
    // What is sent shows up once the send's own page comes back.
    static bool sendAndWait(ChatWindow* window, const std::string& text) {
        type(window, text);
        // Enter in the message edit sends, like the Send button.
        SendMessageW(window->control(social::kMessageEdit), WM_KEYDOWN, VK_RETURN, 0);
        return waitForText(window, ": " + text + "\r\n");
    }

    test::StandInUser ann_, ben_;
};

TEST_F(ChatWindowTest, TwoUsersTalkInADirectChatAndNewMessagesArriveWithoutRefresh) {
    ChatWindow* annWindow = open(ann_, {asFriend(ben_)});
    ChatWindow* benWindow = open(ben_, {asFriend(ann_)});
    ASSERT_TRUE(waitForConversation(annWindow) && waitForConversation(benWindow));
    EXPECT_EQ(annWindow->conversation()->id, benWindow->conversation()->id);
    EXPECT_EQ(narrow(hwndText(annWindow->hwnd())), ben_.username);
    EXPECT_EQ(narrow(hwndText(benWindow->hwnd())), ann_.username);
    // The transcript is rebuilt once the conversation is open.
    EXPECT_EQ(transcript(annWindow), "--- " + ben_.username + " ---\r\n");

    ASSERT_TRUE(sendAndWait(annWindow, "hello ben"));
    EXPECT_EQ(hwndText(annWindow->control(social::kMessageEdit)), L"");
    // Ben's window only polls.
    ASSERT_TRUE(waitForText(benWindow, ann_.username + ": hello ben\r\n")) << transcript(benWindow);
    ASSERT_TRUE(sendAndWait(benWindow, "hi ann"));
    // A third message from outside any window, through the service directly.
    test::callAs(ben_, "POST", "/api/v1/chat/conversations/" + annWindow->conversation()->id + "/messages",
                 "{\"content\":\"from the api\"}");
    ASSERT_TRUE(waitForText(annWindow, ": from the api\r\n"));
    click(annWindow->hwnd(), social::kChatRefreshButton);
    click(benWindow->hwnd(), social::kChatRefreshButton);
    pumpUntil([] { return false; }, 3500); // a poll and both refreshes come back

    for (ChatWindow* window : {annWindow, benWindow}) {
        const std::string text = transcript(window);
        std::size_t previous = 0;
        for (const std::string line : {": hello ben\r\n", ": hi ann\r\n", ": from the api\r\n"}) {
            const std::size_t at = text.find(line);
            EXPECT_TRUE(at != std::string::npos && at > previous) << line << "missing or out of order in\n"
                                                                  << text;
            EXPECT_EQ(at, text.rfind(line)) << line << "twice in\n" << text;
            previous = at;
        }
    }
}

TEST_F(ChatWindowTest, ASendTooEarlySaysStillConnectingAndAFailedSendGivesTheTextBack) {
    ChatWindow* window = open(ann_, {asFriend(ben_)});
    type(window, "too early");
    click(window->hwnd(), social::kSendButton); // the load's result is not pumped yet
    EXPECT_EQ(transcript(window), "Connecting...\r\nStill connecting...\r\n");
    ASSERT_TRUE(waitForConversation(window));
    EXPECT_EQ(transcript(window), "--- " + ben_.username + " ---\r\n");
    const std::string path = "/api/v1/chat/conversations/" + window->conversation()->id + "/messages";
    EXPECT_EQ(test::callAs(ann_, "GET", path + "?pageSize=100").find("too early"), std::string::npos);

    scriptNextReply(path, 500, "{\"error\":\"boom\",\"message\":\"down\"}");
    type(window, "lost words");
    click(window->hwnd(), social::kSendButton);
    EXPECT_TRUE(waitForText(
        window, "Send failed: Corvandell API HTTP 500: {\"error\":\"boom\",\"message\":\"down\"}\r\n"))
        << transcript(window);
    EXPECT_EQ(hwndText(window->control(social::kMessageEdit)), L"lost words");
}

TEST_F(ChatWindowTest, AChatWithSomeoneWhoIsNoFriendFailsToLoadWithTheServicesWords) {
    const test::StandInUser stranger = test::newStandInUser("stranger");
    ChatWindow* window = open(ann_, {asFriend(stranger)});
    EXPECT_TRUE(waitForText(window, "Chat load failed: Corvandell API HTTP 403: ")) << transcript(window);
    EXPECT_EQ(narrow(hwndText(window->hwnd())), "Corvandell Chat");
}

TEST_F(ChatWindowTest, VoiceSwitchedOffInOptionsNeverAsksTheService) {
    ann_.settings.voiceEnabled = false;
    ChatWindow* window = open(ann_, {asFriend(ben_)});
    ASSERT_TRUE(waitForConversation(window));
    click(window->hwnd(), social::kVoiceButton);
    pumpUntil([] { return false; }, 300); // time for a request that should not be made
    EXPECT_NE(transcript(window).find("Voice chat is disabled in options.\r\n"), std::string::npos);
    EXPECT_EQ(hwndText(window->control(social::kVoiceButton)), L"Voice: Off");
    EXPECT_EQ(window->voiceState(), VoiceState::Off);
    EXPECT_EQ(lastReceivedRequest().path.find("/voice/"), std::string::npos);
}

TEST_F(ChatWindowTest, VoiceJoinsTheRoomTogglesOffAndAClosedSocketEndsItWithAStatus) {
    ann_.settings.voiceMuteByDefault = true;
    ChatWindow* window = open(ann_, {asFriend(ben_)});
    ASSERT_TRUE(waitForConversation(window));
    HWND voiceButton = window->control(social::kVoiceButton);
    click(window->hwnd(), social::kVoiceButton);
    ASSERT_TRUE(pumpUntil([&] { return window->voiceState() != VoiceState::Connecting; }, 10000));
    ASSERT_EQ(window->voiceState(), VoiceState::On) << transcript(window);
    EXPECT_EQ(hwndText(voiceButton), L"Voice: On");
    EXPECT_NE(transcript(window).find("Voice channel active for this chat.\r\n"), std::string::npos);
    EXPECT_TRUE(window->voiceChannel()->isRunning());
    EXPECT_TRUE(window->voiceChannel()->isMuted()); // muted by default, here and at the service
    EXPECT_EQ(hwndText(window->control(social::kMuteButton)), L"Unmute mic");
    const std::string rooms =
        test::callAs(ann_, "GET", "/api/v1/voice/rooms?conversationId=" + window->conversation()->id);
    EXPECT_NE(rooms.find("\"userId\":\"" + ann_.userId + "\",\"username\":\"" + ann_.username +
                         "\",\"muted\":true"),
              std::string::npos)
        << rooms;

    click(window->hwnd(), social::kVoiceButton);
    EXPECT_EQ(hwndText(voiceButton), L"Voice: Off");
    EXPECT_FALSE(window->voiceChannel()->isRunning());
    EXPECT_NE(transcript(window).find("Voice channel disconnected.\r\n"), std::string::npos);

    // On again, then the service closes the socket (Ann leaves from elsewhere).
    click(window->hwnd(), social::kVoiceButton);
    ASSERT_TRUE(pumpUntil([&] { return window->voiceState() == VoiceState::On; }, 10000))
        << transcript(window);
    test::callAs(ann_, "POST", "/api/v1/voice/rooms/" + window->voiceRoomId() + "/leave");
    ASSERT_TRUE(pumpUntil([&] { return window->voiceState() == VoiceState::Off; }, 5000));
    EXPECT_TRUE(waitForText(window, "Voice channel disconnected: the service closed it.\r\n", 0))
        << transcript(window);
    EXPECT_EQ(hwndText(voiceButton), L"Voice: Off");
    EXPECT_FALSE(window->voiceChannel()->isRunning());
}

} // namespace
} // namespace corvandell::win
