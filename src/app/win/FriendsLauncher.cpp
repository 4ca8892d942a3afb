#include "app/win/FriendsLauncher.hpp"

#include "app/Skins.hpp"
#include "app/win/Messages.hpp"
#include "app/win/ThemeHook.hpp"
#include "social/win/FriendsWindow.hpp"

namespace corvandell::win {
namespace {

SocialLook lookOfCurrentSkin() {
    const Skin& skin = currentTheme();
    SocialLook look;
    look.messageHook = &themeHandleMessage;
    look.trackButtonHover = &themeTrackButtonHover;
    look.rowBackground = toColorRef(skin.controlBackground);
    look.rowText = toColorRef(skin.controlText);
    look.selection = toColorRef(skin.selection);
    look.mutedText = toColorRef(skin.mutedText);
    look.accent = toColorRef(skin.accent);
    return look;
}

} // namespace

HWND openFriendsWindow(HINSTANCE instance, HWND mainWindow, const Settings* settings) {
    const ClosedNotice notice{mainWindow, MsgChildClosed, static_cast<WPARAM>(ChildKind::Friends)};
    FriendsWindow* window = FriendsWindow::open(instance, mainWindow, settings, lookOfCurrentSkin(), notice);
    return window != nullptr ? window->hwnd() : nullptr;
}

} // namespace corvandell::win
