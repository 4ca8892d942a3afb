// The main window from the keyboard. Every command has a key (the README lists them):
//   F5 or Ctrl+R   Refresh                 Ctrl+F      to the search box
//   Ctrl+N         Add Game                Ctrl+Shift+F  Friends
//   Ctrl+,         Options                 Shift+F10 or the menu key on a row: its menu
//   Enter          the focused control's command: the selected game's action in the list,
//                  an immediate search in the search box, the focused button
//   Tab/Shift+Tab  between the search box, the buttons, the list and the rating stars
// Enter is not in the table: it depends on where the focus is, which the dialog manager
// asks through DM_GETDEFID.
#include <windows.h>

#include <commctrl.h>

#include "app/win/MainWindow.hpp"

#include <array>

namespace corvandell::win {

UniqueAccelerator createMainWindowKeys() {
    std::array<ACCEL, 7> keys{{
        {FVIRTKEY, VK_F5, command::Refresh},
        {FVIRTKEY | FCONTROL, 'R', command::Refresh},
        {FVIRTKEY | FCONTROL, 'F', command::FocusSearch},
        {FVIRTKEY | FCONTROL, 'N', command::AddGame},
        {FVIRTKEY | FCONTROL | FSHIFT, 'F', command::Friends},
        {FVIRTKEY | FCONTROL, VK_OEM_COMMA, command::Options},
        {FVIRTKEY | FSHIFT, VK_F10, command::RowMenu},
    }};
    return UniqueAccelerator(CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size())));
}

int MainWindow::defaultCommand() const noexcept {
    HWND focus = GetFocus();
    if (focus == nullptr || GetParent(focus) != hwnd_) {
        return command::None;
    }
    const int id = GetDlgCtrlID(focus);
    switch (id) {
    case command::List:
        return selectedRow() >= 0 ? command::Launch : command::None;
    case command::Search:
        return command::Refresh;
    case command::Refresh:
    case command::Launch:
    case command::AddGame:
    case command::Friends:
    case command::Options:
        return id;
    default:
        return command::None;
    }
}

bool MainWindow::onKeyCommand(int id) {
    switch (id) {
    case command::FocusSearch:
        SetFocus(search_);
        SendMessageW(search_, EM_SETSEL, 0, -1);
        return true;
    case command::RowMenu:
        if (GetFocus() == list_) {
            showRowMenu();
        }
        return true;
    default:
        return false;
    }
}

} // namespace corvandell::win
