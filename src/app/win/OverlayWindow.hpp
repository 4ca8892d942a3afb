// The in-game overlay that Shift+Tab opens over a running game: the game's title and
// session clock, "Return to game", "Quit Game", the voice buttons and the friends list.
//
// It is one layered, topmost pop-up window covering the game's monitor. The whole picture
// (a dimmed backdrop, a shadowed panel with rounded corners, the buttons and the list) is
// drawn into one off-screen bitmap with per-pixel alpha and handed to the system with
// UpdateLayeredWindow, so the game stays visible but subdued behind a panel that is nearly
// opaque and easy to read, and nothing ever flickers: there are no child controls to paint
// one after another. Buttons are therefore drawn and hit-tested here; the keyboard reaches
// all of them (Tab and the arrow keys move, Enter or Space presses, Esc returns to the game).
//
// It owns itself: open() creates it and it deletes itself after its last message. Its owner
// is the main window, which it tells when it ends (MsgChildClosed, kind Overlay) and asks to
// stop the game ("Quit Game" posts MsgStopGame).
#pragma once

#include <windows.h>

#include "api/IApiClient.hpp"
#include "app/OverlayFriends.hpp"
#include "app/OverlayLayout.hpp"
#include "app/win/OverlayPainter.hpp"
#include "base/win/UiJob.hpp"
#include "base/win/Window.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {

enum class OverlayButton { ReturnToGame = 0, QuitGame = 1, Mute = 2, LeaveVoice = 3 };

// The voice channel as the overlay sees it. The buttons "Mute mic"/"Unmute mic" and
// "Leave voice" are enabled only while one is attached. The calls run on the UI thread.
struct OverlayVoice {
    bool isMuted = false;
    std::function<void(bool isMuted)> setMuted; // the user asked for this state
    std::function<void()> leave;                // the user left; the overlay detaches itself
};

struct OverlaySetup {
    HWND owner = nullptr;  // the main window
    std::string gameTitle; // UTF-8
    std::uint64_t launchTick = 0;
    std::shared_ptr<IApiClient> api; // lists the friends; none: the list says so
    // The window the game is in: its monitor is covered and it gets the keyboard back when
    // the overlay ends. None: the primary monitor.
    HWND gameWindow = nullptr;
    std::function<std::uint64_t()> clock; // milliseconds, GetTickCount64 when empty
};

struct OverlayFriendsResult {
    bool succeeded = false;
    std::vector<FriendInfo> friends;
    std::string errorText;
};

class OverlayWindow final : public Window {
public:
    static constexpr wchar_t kClassName[] = L"CorvandellOverlayWindow";
    static constexpr wchar_t kTitle[] = L"Corvandell Overlay";

    // Creates and shows the overlay, takes the keyboard and starts loading the friends;
    // null when the window could not be created.
    static OverlayWindow* open(HINSTANCE instance, OverlaySetup setup, int showCommand = SW_SHOW);
    // The overlay object of an overlay window's handle; null for any other window.
    static OverlayWindow* fromHandle(HWND window) noexcept;

    void attachVoice(OverlayVoice voice);
    void detachVoice() noexcept;
    void setMicMuted(bool isMuted) noexcept;

    // What a click or Enter on the button does; nothing when it is disabled.
    void press(OverlayButton button);

    // What is on screen, as the user reads it.
    std::wstring buttonText(OverlayButton button) const;
    bool isButtonEnabled(OverlayButton button) const noexcept;
    RECT buttonRect(OverlayButton button) const noexcept; // client coordinates
    const std::wstring& gameTitle() const noexcept { return title_; }
    OverlayButton focusedButton() const noexcept { return static_cast<OverlayButton>(focus_); }
    std::wstring sessionText() const;
    const std::vector<OverlayFriendRow>& friendRows() const noexcept { return friends_; }
    const std::wstring& friendsNotice() const noexcept { return friendsNotice_; }
    // The picture last handed to the system.
    OverlayFrame frame() const { return painter_.frame(); }

private:
    explicit OverlayWindow(OverlaySetup setup);
    ~OverlayWindow() override = default;

    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);
    void onFinalMessage() noexcept override { delete this; }

    void coverMonitor();
    void loadFriends(); // starts the job; the caller draws the notice
    void onFriendsResult(std::unique_ptr<OverlayFriendsResult> result);
    void onTick();
    void onKey(UINT key);
    void onMouseMove(int x, int y);
    void onMouseButton(int x, int y, bool isDown);
    void onWheel(int delta);
    void onDestroy() noexcept;
    void moveFocus(int step);
    void scrollFriends(int rows);
    int buttonAt(int x, int y) const noexcept;
    std::uint64_t now() const;
    void present() noexcept;
    OverlayScene scene() const;

    OverlaySetup setup_;
    std::wstring title_;
    bool* attachNotice_ = nullptr; // set while open() waits for WM_NCCREATE
    OverlayLayout layout_;
    POINT origin_{};
    SIZE size_{};
    OverlayPainter painter_;
    OverlayVoice voice_;
    bool hasVoice_ = false;
    int focus_ = 0;
    int hovered_ = -1;
    int pressed_ = -1;
    bool isTrackingLeave_ = false;
    bool hasLostToAnotherProgram_ = false;
    std::vector<OverlayFriendRow> friends_;
    std::wstring friendsNotice_;
    std::wstring friendsCount_;
    int firstFriend_ = 0;
    int wheelRemainder_ = 0;
    // Last, so its jobs end before anything they may use is destroyed.
    UiJobThreads jobThreads_;
};

} // namespace corvandell::win
