// The in-game overlay as a real layered window under Wine: what it shows, how each way of
// leaving it reports to its owner, the voice buttons, and the friends list as the service
// stand-in serves it. The session clock runs on a fake clock; the overlay's own timer
// moves the picture on.
#include <windows.h>

#include "app/Skins.hpp"
#include "app/win/Messages.hpp"
#include "app/win/OverlayWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/SocialUsers.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

namespace corvandell::win {
namespace {

constexpr std::uint64_t kLaunchTick = 50'000'000;

// A top-level window standing in for the main window: it keeps every private message it
// is sent, in order. It is visible, so it is what the system would activate when its
// overlay ends, unless the overlay hands the keyboard back to the game itself.
class RecordingOwner {
public:
    RecordingOwner() {
        registerWindowClass(GetModuleHandleW(nullptr), L"CorvandellTestOwner", &procedure, nullptr);
        hwnd_ = CreateWindowExW(0, L"CorvandellTestOwner", L"owner", WS_POPUP | WS_VISIBLE, 0, 0, 10, 10,
                                nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
        SetWindowLongPtrW(hwnd_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    RecordingOwner(const RecordingOwner&) = delete;
    RecordingOwner& operator=(const RecordingOwner&) = delete;
    ~RecordingOwner() { DestroyWindow(hwnd_); }
    HWND hwnd() const noexcept { return hwnd_; }
    std::vector<MSG> received;

private:
    static LRESULT CALLBACK procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message >= WM_APP) {
            if (auto* self = reinterpret_cast<RecordingOwner*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA))) {
                self->received.push_back(MSG{hwnd, message, wParam, lParam, 0, {}});
            }
            return 0;
        }
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }
    HWND hwnd_;
};

// The session clock, a fake one: it moves only when the test moves it.
using FakeClock = std::shared_ptr<std::atomic<std::uint64_t>>;
FakeClock fakeClock() {
    return std::make_shared<std::atomic<std::uint64_t>>(kLaunchTick);
}

OverlayWindow* openOverlay(HWND owner, const FakeClock& clock = fakeClock(),
                           std::shared_ptr<IApiClient> api = nullptr, HWND game = nullptr) {
    OverlaySetup setup;
    setup.gameWindow = game;
    setup.owner = owner;
    setup.gameTitle = "Ember Keep";
    setup.launchTick = kLaunchTick;
    setup.api = std::move(api);
    setup.clock = [clock] { return clock->load(); };
    return OverlayWindow::open(GetModuleHandleW(nullptr), std::move(setup));
}

std::uint32_t pixelAt(const OverlayFrame& frame, int x, int y) {
    return frame.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(frame.width) +
                        static_cast<std::size_t>(x)];
}

// The pixels of one rectangle of the picture, to see whether it was drawn anew.
std::vector<std::uint32_t> regionOf(const OverlayFrame& frame, const RECT& rect) {
    std::vector<std::uint32_t> pixels;
    for (int y = rect.top; y < rect.bottom; ++y) {
        for (int x = rect.left; x < rect.right; ++x) {
            pixels.push_back(pixelAt(frame, x, y));
        }
    }
    return pixels;
}

LPARAM pointIn(const RECT& rect) {
    return MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
}

TEST(OverlayWindow, OpensOverTheWholeScreenWithItsTitleButtonsAndATickingClock) {
    applyTheme(chooseSkin(builtInSkins(), "dark"));
    RecordingOwner owner;
    const FakeClock clock = fakeClock();
    clock->store(kLaunchTick + 3'723'000);
    OverlayWindow* overlay = openOverlay(owner.hwnd(), clock);
    ASSERT_NE(overlay, nullptr);
    HWND hwnd = overlay->hwnd();

    EXPECT_EQ(hwndText(hwnd), L"Corvandell Overlay");
    const auto extendedStyle = static_cast<DWORD>(GetWindowLongPtrW(hwnd, GWL_EXSTYLE));
    EXPECT_TRUE(extendedStyle & WS_EX_LAYERED);
    EXPECT_TRUE(extendedStyle & WS_EX_TOPMOST);
    EXPECT_TRUE(IsWindowVisible(hwnd));
    EXPECT_EQ(GetWindow(hwnd, GW_OWNER), owner.hwnd());
    RECT rect{};
    GetWindowRect(hwnd, &rect);
    EXPECT_EQ(rect.left, 0);
    EXPECT_EQ(rect.top, 0);
    EXPECT_EQ(rect.right, GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(rect.bottom, GetSystemMetrics(SM_CYSCREEN));

    EXPECT_EQ(overlay->focusedButton(), OverlayButton::ReturnToGame);

    // The picture: the game dimmed but visible around a nearly opaque panel.
    const OverlayFrame frame = overlay->frame();
    ASSERT_EQ(frame.width, rect.right);
    ASSERT_EQ(frame.height, rect.bottom);
    EXPECT_EQ(pixelAt(frame, 0, 0) >> 24, 150u);
    const RECT quit = overlay->buttonRect(OverlayButton::QuitGame);
    EXPECT_GE(pixelAt(frame, quit.left + 2, quit.top + 2) >> 24, 250u);

    EXPECT_EQ(overlay->sessionText(), L"Session time 1:02:03");
    const RECT clockArea{rect.right / 2, 0, rect.right, quit.top};
    const std::vector<std::uint32_t> before = regionOf(frame, clockArea);
    clock->fetch_add(2000);
    EXPECT_EQ(overlay->sessionText(), L"Session time 1:02:05");
    EXPECT_TRUE(test::pumpUntil([&] { return regionOf(overlay->frame(), clockArea) != before; }, 5000))
        << "the clock was not drawn again";
    DestroyWindow(hwnd);
}

TEST(OverlayWindow, EveryWayOutReportsItsEndAndOnlyQuitGameStopsTheGame) {
    enum class Way { EscapeKey, ClickQuit, ClosedByOwner, OtherProgram };
    const struct {
        Way way;
        const char* name;
        bool stopsGame;
        bool givesKeyboardBack;
    } cases[] = {
        {Way::EscapeKey, "Esc", false, true},
        {Way::ClickQuit, "click Quit Game", true, true},
        {Way::ClosedByOwner, "destroyed by the main window", false, true},
        {Way::OtherProgram, "the user went to another program", false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RecordingOwner owner;
        // The game: a window of its own that has the keyboard when Shift+Tab is pressed.
        HWND game = CreateWindowExW(0, L"STATIC", L"game", WS_POPUP | WS_VISIBLE, 0, 0, 320, 200, nullptr,
                                    nullptr, GetModuleHandleW(nullptr), nullptr);
        SetForegroundWindow(game);
        OverlayWindow* overlay = openOverlay(owner.hwnd(), fakeClock(), nullptr, game);
        ASSERT_NE(overlay, nullptr);
        HWND hwnd = overlay->hwnd();
        EXPECT_EQ(GetForegroundWindow(), hwnd);
        switch (c.way) {
        case Way::EscapeKey:
            PostMessageW(hwnd, WM_KEYDOWN, VK_ESCAPE, 0);
            break;
        case Way::ClickQuit: {
            const LPARAM at = pointIn(overlay->buttonRect(OverlayButton::QuitGame));
            PostMessageW(hwnd, WM_MOUSEMOVE, 0, at);
            PostMessageW(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, at);
            PostMessageW(hwnd, WM_LBUTTONUP, 0, at);
            break;
        }
        case Way::ClosedByOwner:
            DestroyWindow(hwnd);
            break;
        case Way::OtherProgram:
            SendMessageW(hwnd, WM_ACTIVATEAPP, FALSE, 0);
            break;
        }
        ASSERT_TRUE(test::pumpUntil([&] { return !IsWindow(hwnd); }, 3000));
        test::pumpUntil([] { return false; }, 50); // the owner's messages
        std::vector<UINT> messages;
        for (const MSG& message : owner.received) {
            messages.push_back(message.message);
        }
        const std::vector<UINT> expected =
            c.stopsGame ? std::vector<UINT>{MsgStopGame, MsgChildClosed} : std::vector<UINT>{MsgChildClosed};
        ASSERT_EQ(messages, expected);
        const MSG& closed = owner.received.back();
        EXPECT_EQ(closed.wParam, static_cast<WPARAM>(ChildKind::Overlay));
        EXPECT_EQ(closed.lParam, reinterpret_cast<LPARAM>(hwnd));
        if (c.givesKeyboardBack) {
            EXPECT_EQ(GetForegroundWindow(), game);
        }
        DestroyWindow(game);
    }
}

TEST(OverlayWindow, VoiceButtonsWorkOnlyWhileAVoiceChannelIsAttached) {
    RecordingOwner owner;
    OverlayWindow* overlay = openOverlay(owner.hwnd());
    ASSERT_NE(overlay, nullptr);
    HWND hwnd = overlay->hwnd();
    std::vector<std::string> calls;

    // Without a channel, a click on the disabled buttons does nothing and the keyboard
    // skips them.
    for (OverlayButton button : {OverlayButton::Mute, OverlayButton::LeaveVoice}) {
        const LPARAM at = pointIn(overlay->buttonRect(button));
        SendMessageW(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, at);
        SendMessageW(hwnd, WM_LBUTTONUP, 0, at);
    }
    SendMessageW(hwnd, WM_KEYDOWN, VK_TAB, 0);
    EXPECT_EQ(overlay->focusedButton(), OverlayButton::QuitGame);
    SendMessageW(hwnd, WM_KEYDOWN, VK_TAB, 0);
    EXPECT_EQ(overlay->focusedButton(), OverlayButton::ReturnToGame);

    overlay->attachVoice(OverlayVoice{false,
                                      [&](bool isMuted) { calls.push_back(isMuted ? "mute" : "unmute"); },
                                      [&] { calls.push_back("leave"); }});
    EXPECT_TRUE(overlay->isButtonEnabled(OverlayButton::Mute));
    EXPECT_TRUE(overlay->isButtonEnabled(OverlayButton::LeaveVoice));
    const LPARAM mute = pointIn(overlay->buttonRect(OverlayButton::Mute));
    SendMessageW(hwnd, WM_LBUTTONDOWN, MK_LBUTTON, mute);
    SendMessageW(hwnd, WM_LBUTTONUP, 0, mute);
    EXPECT_EQ(overlay->buttonText(OverlayButton::Mute), L"Unmute mic");
    SendMessageW(hwnd, WM_KEYDOWN, VK_SPACE, 0); // the click left the focus on it
    EXPECT_EQ(overlay->buttonText(OverlayButton::Mute), L"Mute mic");
    overlay->setMicMuted(true); // muted from the chat window
    EXPECT_EQ(overlay->buttonText(OverlayButton::Mute), L"Unmute mic");
    SendMessageW(hwnd, WM_KEYDOWN, VK_DOWN, 0);
    EXPECT_EQ(overlay->focusedButton(), OverlayButton::LeaveVoice);
    SendMessageW(hwnd, WM_KEYDOWN, VK_RETURN, 0);

    EXPECT_EQ(calls, (std::vector<std::string>{"mute", "unmute", "leave"}));
    EXPECT_FALSE(overlay->isButtonEnabled(OverlayButton::Mute));
    EXPECT_FALSE(overlay->isButtonEnabled(OverlayButton::LeaveVoice));
    EXPECT_EQ(overlay->focusedButton(), OverlayButton::ReturnToGame);
    EXPECT_TRUE(IsWindow(hwnd)) << "leaving voice does not leave the overlay";
    DestroyWindow(hwnd);
}

TEST(OverlayWindow, TheFriendsListShowsWhoPlaysWhatFromTheService) {
    const test::StandInUser me = test::newStandInUser("ovl");
    const test::StandInUser player = test::newStandInUser("ovlp");
    const test::StandInUser idler = test::newStandInUser("ovli");
    test::makeFriends(me, player);
    test::makeFriends(me, idler);
    // The idler's last request ages past the service's online window; the player stays
    // online through an open session.
    advanceServiceClock(400);
    test::callAs(player, "POST", "/api/v1/activity/external-launches",
                 "{\"provider\":\"steam\",\"externalSoftwareId\":\"620\",\"name\":\"Portal Runner\"}");

    RecordingOwner owner;
    OverlayWindow* overlay =
        openOverlay(owner.hwnd(), fakeClock(), std::make_shared<WinHttpApiClient>(&me.settings));
    ASSERT_NE(overlay, nullptr);
    EXPECT_EQ(overlay->friendsNotice(), L"Loading friends...");
    ASSERT_TRUE(test::pumpUntil([&] { return !overlay->friendRows().empty(); }, 10000));
    const std::vector<OverlayFriendRow> expected{
        {player.username, "Portal Runner", FriendPresence::Playing},
        {idler.username, "Offline", FriendPresence::Offline},
    };
    EXPECT_EQ(overlay->friendRows(), expected);
    DestroyWindow(overlay->hwnd());

    // A service failure is said in the list's place.
    scriptNextReply("/api/v1/me/friends", 503, "{\"error\":\"maintenance\"}");
    overlay = openOverlay(owner.hwnd(), fakeClock(), std::make_shared<WinHttpApiClient>(&me.settings));
    ASSERT_NE(overlay, nullptr);
    ASSERT_TRUE(test::pumpUntil([&] { return overlay->friendsNotice() != L"Loading friends..."; }, 10000));
    EXPECT_TRUE(overlay->friendRows().empty());
    EXPECT_EQ(overlay->friendsNotice().rfind(L"Could not load friends: Corvandell API HTTP 503", 0), 0u)
        << narrow(overlay->friendsNotice());
    DestroyWindow(overlay->hwnd());
}

} // namespace
} // namespace corvandell::win
