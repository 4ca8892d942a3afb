// The in-game overlay as the main window sees it: Shift+Tab opens it over the game being
// tracked and closes it again.
#include <windows.h>

#include "app/win/MainWindow.hpp"
#include "app/win/OverlayWindow.hpp"

#include <utility>

namespace corvandell::win {

void MainWindow::toggleOverlay() {
    if (HWND overlay = childWindow(ChildKind::Overlay); overlay != nullptr && IsWindow(overlay)) {
        DestroyWindow(overlay);
        return;
    }
    if (tracked_.state == 0) {
        return;
    }
    OverlaySetup setup;
    setup.owner = hwnd_;
    setup.gameTitle = tracked_.title.empty() ? "In game" : tracked_.title;
    setup.launchTick = tracked_.launchTick;
    setup.api = api_;
    // The hotkey was pressed in the game, so the game's window has the keyboard: the overlay
    // covers its monitor and hands the keyboard back to it.
    setup.gameWindow = GetForegroundWindow();
    const OverlayWindow* overlay = OverlayWindow::open(instance_, std::move(setup));
    setChildWindow(ChildKind::Overlay, overlay != nullptr ? overlay->hwnd() : nullptr);
}

} // namespace corvandell::win
