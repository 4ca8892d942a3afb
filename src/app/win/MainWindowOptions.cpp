// The main window's side of the options dialog: opening it over the window's own settings,
// service client and settings guard, so that what the dialog applies is what the client
// uses and what settings.json holds.
#include <windows.h>

#include "app/win/MainWindow.hpp"
#include "app/win/OptionsDialog.hpp"

#include <exception>

namespace corvandell::win {

void MainWindow::openOptions() {
    OptionsHost host;
    host.mainWindow = hwnd_;
    host.settings = &settings_;
    host.paths = paths_;
    host.saveSettings = [this] { return saveSettingsFile(); };
    host.api = api_;
    OptionsDialog* dialog = OptionsDialog::open(instance_, std::move(host));
    setChildWindow(ChildKind::Options, dialog != nullptr ? dialog->hwnd() : nullptr);
}

std::string MainWindow::saveSettingsFile() {
    try {
        if (!saveSettings(settingsFile_, settings_)) {
            return "settings.json could not be read when Corvandell started, so it is not written this "
                   "session.";
        }
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

} // namespace corvandell::win
