// The overlay's life, input and state; OverlayPainter.cpp draws what scene() describes.
#include <windows.h>

#include <windowsx.h>

#include "app/win/OverlayWindow.hpp"

#include "app/SessionClock.hpp"
#include "app/Skins.hpp"
#include "app/win/Messages.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"
#include "social/win/PendingResults.hpp"

#include <algorithm>
#include <exception>

namespace corvandell::win {
namespace {

// Private to the overlay window: the friends job's result.
constexpr UINT MsgOverlayFriends = WM_APP + 1;
constexpr UINT_PTR kClockTimerId = 1;

int index(OverlayButton button) noexcept {
    return static_cast<int>(button);
}

} // namespace

OverlayWindow::OverlayWindow(OverlaySetup setup)
    : setup_(std::move(setup)), title_(widen(setup_.gameTitle)) {}

OverlayWindow* OverlayWindow::open(HINSTANCE instance, OverlaySetup setup, int showCommand) {
    if (!registerWindowClass(instance, kClassName, &Window::windowProcedure, nullptr)) {
        return nullptr;
    }
    const HWND owner = setup.owner;
    auto* window = new OverlayWindow(std::move(setup));
    bool isAttached = false;
    window->attachNotice_ = &isAttached;
    // A tool window: no taskbar button or Alt+Tab entry of its own next to the game's.
    const HWND created = CreateWindowExW(WS_EX_LAYERED | WS_EX_TOPMOST | WS_EX_TOOLWINDOW, kClassName, kTitle,
                                         WS_POPUP, 0, 0, 0, 0, owner, nullptr, instance, window);
    if (created == nullptr) {
        if (!isAttached) {
            delete window; // otherwise WM_NCDESTROY has deleted it already
        }
        return nullptr;
    }
    window->attachNotice_ = nullptr;
    window->coverMonitor();
    window->loadFriends();
    window->onTick(); // draws before the window is shown: the first thing on screen is the whole picture
    ShowWindow(created, showCommand);
    if (showCommand != SW_HIDE && showCommand != SW_SHOWNOACTIVATE && showCommand != SW_SHOWNA) {
        SetForegroundWindow(created);
        SetFocus(created);
    }
    return window;
}

OverlayWindow* OverlayWindow::fromHandle(HWND window) noexcept {
    wchar_t className[64] = {};
    if (window == nullptr || GetClassNameW(window, className, 64) == 0 ||
        lstrcmpW(className, kClassName) != 0) {
        return nullptr;
    }
    return static_cast<OverlayWindow*>(reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA)));
}

void OverlayWindow::coverMonitor() {
    const HMONITOR monitor = setup_.gameWindow != nullptr
                                 ? MonitorFromWindow(setup_.gameWindow, MONITOR_DEFAULTTOPRIMARY)
                                 : MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY);
    MONITORINFO info{};
    info.cbSize = sizeof(info);
    RECT area{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    if (GetMonitorInfoW(monitor, &info)) {
        area = info.rcMonitor;
    }
    origin_ = {area.left, area.top};
    size_ = {area.right - area.left, area.bottom - area.top};
    SetWindowPos(hwnd_, HWND_TOPMOST, origin_.x, origin_.y, size_.cx, size_.cy, SWP_NOACTIVATE);
    layout_ = overlayLayout(size_.cx, size_.cy, static_cast<int>(windowDpi(hwnd_)));
}

void OverlayWindow::attachVoice(OverlayVoice voice) {
    voice_ = std::move(voice);
    hasVoice_ = true;
    present();
}

void OverlayWindow::detachVoice() noexcept {
    voice_ = OverlayVoice{};
    hasVoice_ = false;
    if (!isButtonEnabled(focusedButton())) {
        focus_ = index(OverlayButton::ReturnToGame);
    }
    present();
}

void OverlayWindow::setMicMuted(bool isMuted) noexcept {
    voice_.isMuted = isMuted;
    present();
}

void OverlayWindow::press(OverlayButton button) {
    if (!isButtonEnabled(button)) {
        return;
    }
    switch (button) {
    case OverlayButton::ReturnToGame:
        break;
    case OverlayButton::QuitGame:
        if (setup_.owner != nullptr) {
            PostMessageW(setup_.owner, MsgStopGame, 0, 0);
        }
        break;
    case OverlayButton::Mute:
        voice_.isMuted = !voice_.isMuted;
        if (voice_.setMuted) {
            voice_.setMuted(voice_.isMuted);
        }
        present();
        return;
    case OverlayButton::LeaveVoice: {
        const std::function<void()> leave = std::move(voice_.leave);
        detachVoice();
        if (leave) {
            leave();
        }
        return;
    }
    }
    // Closed through the queue, so that whoever pressed (a click, a key, a test) is done
    // with this object before it is gone.
    PostMessageW(hwnd_, WM_CLOSE, 0, 0);
}

std::wstring OverlayWindow::buttonText(OverlayButton button) const {
    switch (button) {
    case OverlayButton::ReturnToGame:
        return L"Return to game";
    case OverlayButton::QuitGame:
        return L"Quit Game";
    case OverlayButton::Mute:
        return voice_.isMuted ? L"Unmute mic" : L"Mute mic";
    case OverlayButton::LeaveVoice:
        return L"Leave voice";
    }
    return {};
}

bool OverlayWindow::isButtonEnabled(OverlayButton button) const noexcept {
    return hasVoice_ || button == OverlayButton::ReturnToGame || button == OverlayButton::QuitGame;
}

RECT OverlayWindow::buttonRect(OverlayButton button) const noexcept {
    const OverlayRect& rect = layout_.buttons[static_cast<std::size_t>(index(button))];
    return {rect.left, rect.top, rect.right, rect.bottom};
}

std::uint64_t OverlayWindow::now() const {
    return setup_.clock ? setup_.clock() : GetTickCount64();
}

std::wstring OverlayWindow::sessionText() const {
    return widen(sessionTimeText(sessionElapsedMs(setup_.launchTick, now())));
}

LRESULT OverlayWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return route(message, wParam, lParam);
}

LRESULT OverlayWindow::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_NCCREATE:
        if (attachNotice_ != nullptr) {
            *attachNotice_ = true;
            attachNotice_ = nullptr;
        }
        break;
    case WM_TIMER:
        if (wParam == kClockTimerId) {
            onTick();
            return 0;
        }
        break;
    case WM_GETDLGCODE:
        // The client's message loop runs the dialog manager for its windows; the overlay
        // draws its own buttons and takes Tab, Enter and Escape itself.
        return DLGC_WANTALLKEYS;
    case WM_KEYDOWN:
        onKey(static_cast<UINT>(wParam));
        return 0;
    case WM_MOUSEMOVE:
        onMouseMove(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        return 0;
    case WM_MOUSELEAVE:
        isTrackingLeave_ = false;
        hovered_ = -1;
        present();
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        onMouseButton(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam), true);
        return 0;
    case WM_LBUTTONUP:
        onMouseButton(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam), false);
        return 0;
    case WM_MOUSEWHEEL:
        onWheel(GET_WHEEL_DELTA_WPARAM(wParam));
        return 0;
    case WM_ACTIVATEAPP:
        // The user went to another program (Alt+Tab, the Start menu): a topmost overlay
        // left behind would cover it.
        if (wParam == FALSE) {
            hasLostToAnotherProgram_ = true;
            PostMessageW(hwnd_, WM_CLOSE, 0, 0);
        }
        return 0;
    case WM_DPICHANGED:
    case WM_DISPLAYCHANGE:
        coverMonitor();
        present();
        return 0;
    case MsgOverlayFriends:
        onFriendsResult(takeUiJobResult<OverlayFriendsResult>(lParam));
        return 0;
    case WM_DESTROY:
        onDestroy();
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void OverlayWindow::onDestroy() noexcept {
    // Off the screen at once, even if a friends request still has to come back.
    ShowWindow(hwnd_, SW_HIDE);
    KillTimer(hwnd_, kClockTimerId);
    jobThreads_.waitForAll();
    discardPendingResults<OverlayFriendsResult>(hwnd_, MsgOverlayFriends);
    if (setup_.owner != nullptr) {
        PostMessageW(setup_.owner, MsgChildClosed, static_cast<WPARAM>(ChildKind::Overlay),
                     reinterpret_cast<LPARAM>(hwnd_));
    }
    // Back to the game, unless the user has gone to another program meanwhile.
    if (!hasLostToAnotherProgram_ && setup_.gameWindow != nullptr && IsWindow(setup_.gameWindow)) {
        SetForegroundWindow(setup_.gameWindow);
    }
}

void OverlayWindow::onTick() {
    present();
    // Timed to just after the next whole second of the session, so the clock never skips
    // or repeats a second.
    const std::uint64_t elapsed = sessionElapsedMs(setup_.launchTick, now());
    SetTimer(hwnd_, kClockTimerId, static_cast<UINT>(1000 - elapsed % 1000 + 15), nullptr);
}

void OverlayWindow::loadFriends() {
    if (!setup_.api) {
        friendsNotice_ = L"Sign in to see your friends here.";
        return;
    }
    friendsNotice_ = L"Loading friends...";
    jobThreads_.start<OverlayFriendsResult>(hwnd_, MsgOverlayFriends, [api = setup_.api] {
        OverlayFriendsResult result;
        try {
            result.friends = api->listFriends();
            result.succeeded = true;
        } catch (const std::exception& error) {
            result.errorText = error.what();
        }
        return result;
    });
}

void OverlayWindow::onFriendsResult(std::unique_ptr<OverlayFriendsResult> result) {
    firstFriend_ = 0;
    if (!result->succeeded) {
        friends_.clear();
        friendsCount_.clear();
        friendsNotice_ = L"Could not load friends: " + widen(result->errorText);
        present();
        return;
    }
    friends_ = overlayFriendRows(result->friends);
    friendsCount_ = widen(onlineCountText(friends_));
    friendsNotice_ = friends_.empty() ? L"No friends yet. Add them in the Friends window." : L"";
    present();
}

void OverlayWindow::onKey(UINT key) {
    const bool isShiftDown = (GetKeyState(VK_SHIFT) & 0x8000) != 0;
    switch (key) {
    case VK_ESCAPE:
        press(OverlayButton::ReturnToGame);
        return;
    case VK_TAB:
        // Shift+Tab is the hotkey that closes the overlay while a game is tracked; without
        // it registered it moves back, as everywhere else.
        moveFocus(isShiftDown ? -1 : 1);
        return;
    case VK_UP:
    case VK_LEFT:
        moveFocus(-1);
        return;
    case VK_DOWN:
    case VK_RIGHT:
        moveFocus(1);
        return;
    case VK_RETURN:
    case VK_SPACE:
        press(focusedButton());
        return;
    case VK_PRIOR:
        scrollFriends(-visibleFriendRows(layout_));
        return;
    case VK_NEXT:
        scrollFriends(visibleFriendRows(layout_));
        return;
    default:
        return;
    }
}

void OverlayWindow::moveFocus(int step) {
    int next = focus_;
    for (int tries = 0; tries < kOverlayButtonCount; ++tries) {
        next = (next + step + kOverlayButtonCount) % kOverlayButtonCount;
        if (isButtonEnabled(static_cast<OverlayButton>(next))) {
            break;
        }
    }
    focus_ = next;
    present();
}

void OverlayWindow::scrollFriends(int rows) {
    const int last = std::max(0, static_cast<int>(friends_.size()) - visibleFriendRows(layout_));
    const int first = std::clamp(firstFriend_ + rows, 0, last);
    if (first != firstFriend_) {
        firstFriend_ = first;
        present();
    }
}

int OverlayWindow::buttonAt(int x, int y) const noexcept {
    for (int i = 0; i < kOverlayButtonCount; ++i) {
        if (layout_.buttons[static_cast<std::size_t>(i)].contains(x, y) &&
            isButtonEnabled(static_cast<OverlayButton>(i))) {
            return i;
        }
    }
    return -1;
}

void OverlayWindow::onMouseMove(int x, int y) {
    if (!isTrackingLeave_) {
        TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, hwnd_, 0};
        isTrackingLeave_ = TrackMouseEvent(&track) != FALSE;
    }
    const int over = buttonAt(x, y);
    if (over != hovered_) {
        hovered_ = over;
        present();
    }
}

void OverlayWindow::onMouseButton(int x, int y, bool isDown) {
    const int over = buttonAt(x, y);
    if (isDown) {
        pressed_ = over;
        if (over >= 0) {
            focus_ = over;
            SetCapture(hwnd_);
        }
        present();
        return;
    }
    const int wasPressed = pressed_;
    pressed_ = -1;
    if (GetCapture() == hwnd_) {
        ReleaseCapture();
    }
    present();
    if (wasPressed >= 0 && wasPressed == over) {
        press(static_cast<OverlayButton>(over));
    }
}

void OverlayWindow::onWheel(int delta) {
    wheelRemainder_ += delta;
    const int notches = wheelRemainder_ / WHEEL_DELTA;
    wheelRemainder_ -= notches * WHEEL_DELTA;
    scrollFriends(-notches);
}

OverlayScene OverlayWindow::scene() const {
    OverlayScene scene;
    scene.caption = L"CORVANDELL OVERLAY";
    scene.title = title_;
    const std::wstring session = sessionText();
    const std::size_t split = session.rfind(L' ') + 1;
    scene.sessionLabel = session.substr(0, split);
    scene.sessionClock = session.substr(split);
    for (int i = 0; i < kOverlayButtonCount; ++i) {
        const auto button = static_cast<OverlayButton>(i);
        OverlayButtonLook& look = scene.buttons[static_cast<std::size_t>(i)];
        look.text = buttonText(button);
        look.isEnabled = isButtonEnabled(button);
        look.isPrimary = button == OverlayButton::ReturnToGame;
        look.isHovered = hovered_ == i;
        look.isPressed = pressed_ == i;
        look.isFocused = focus_ == i;
    }
    scene.buttons[0].keyHint = L"Esc";
    if (!hasVoice_) {
        scene.voiceLine = L"Voice chat: not in a voice channel";
    } else {
        scene.voiceLine = voice_.isMuted ? L"Voice chat: connected, your mic is muted"
                                         : L"Voice chat: connected, your mic is on";
    }
    scene.friendsHeading = L"Friends";
    scene.friendsCount = friendsCount_;
    scene.friends = friends_;
    scene.firstFriend = firstFriend_;
    scene.friendsNotice = friendsNotice_;
    scene.hint = L"Esc or Shift+Tab: back to the game   \u00B7   Tab: next button   \u00B7   Enter: press";
    return scene;
}

void OverlayWindow::present() noexcept {
    if (hwnd_ == nullptr || size_.cx <= 0) {
        return;
    }
    try {
        painter_.present(hwnd_, origin_, size_, layout_, scene(), currentTheme());
    } catch (...) {
        // Out of memory for a frame: the last one stays on screen.
    }
}

} // namespace corvandell::win
