// The floating friends window: the user's own id to share, friend requests by id, the
// friends with their online state or game, and chat windows for the selected friends.
//
// It owns itself: open() creates it, and it deletes itself after its last message. Its
// owner is the main window, so it closes with it; it tells the main window when it ends.
#pragma once

#include <windows.h>

#include "api/ServiceRecords.hpp"
#include "base/Settings.hpp"
#include "base/win/UiJob.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"
#include "social/win/SocialLook.hpp"

#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {

struct FriendsResult {
    std::string ownUserId;
    bool succeeded = false;
    std::vector<FriendInfo> friends;
    std::string errorText;
};

struct FriendRequestDone {
    std::string errorText; // empty: sent
};

class FriendsWindow final : public Window {
public:
    // Creates and shows the window and starts its first refresh; null when it could not
    // be created. `settings` must outlive the window (the main window's record).
    static FriendsWindow* open(HINSTANCE instance, HWND owner, const Settings* settings,
                               const SocialLook& look, ClosedNotice closedNotice, int showCommand = SW_SHOW);

    void refresh();
    HWND control(int id) const noexcept { return GetDlgItem(hwnd_, id); }
    const std::vector<FriendInfo>& friends() const noexcept { return friends_; }
    const std::string& ownUserId() const noexcept { return ownUserId_; }
    std::wstring copyTooltipText() const;

private:
    FriendsWindow(HINSTANCE instance, HWND owner, const Settings* settings, const SocialLook& look,
                  ClosedNotice closedNotice);
    ~FriendsWindow() override = default;

    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);
    void onFinalMessage() noexcept override { delete this; }

    void createControls();
    void layout(int width, int height);
    void onDpiChanged(const RECT& suggested);
    // The button Enter presses where the focus is (DM_GETDEFID); kNoDefaultButton for none.
    int defaultButton() const noexcept;
    void onCommand(int id);
    void onFriendsResult(std::unique_ptr<FriendsResult> result);
    void addFriend();
    void copyOwnId();
    void chatSelected();
    void drawRow(const DRAWITEMSTRUCT& item);
    void setStatus(const std::wstring& text);

    HINSTANCE instance_;
    HWND owner_;
    const Settings* settings_;
    SocialLook look_;
    ClosedNotice closedNotice_;
    std::string ownUserId_;
    std::vector<FriendInfo> friends_;
    UniqueFont font_;
    HWND list_ = nullptr;
    HWND tooltip_ = nullptr;
    // Last, so its jobs end before anything they may use is destroyed.
    UiJobThreads jobThreads_;
};

} // namespace corvandell::win
