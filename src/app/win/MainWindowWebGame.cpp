// The main window's side of browser games: starting the selected one in its browser and
// following it like any other game, its taskbar button, and its options dialog.
//
// Everything here runs on the UI thread. The decision of what to start is the portable
// planWebGameLaunch; this file only carries it out and reports it.
#include <windows.h>

#include "app/SiteIconLinks.hpp"
#include "app/win/DialogKeys.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/Utf8Path.hpp"
#include "base/win/WideText.hpp"
#include "webgames/WebGamePlan.hpp"
#include "webgames/win/WebGameLaunch.hpp"
#include "webgames/win/WebGameOptionsDialog.hpp"
#include "webgames/win/WebGameTaskbarWindow.hpp"

#include <system_error>

namespace corvandell::win {

void MainWindow::launchBrowserGame(const LibraryItem& row) {
    WebGameSubject subject;
    subject.key = row.key;
    subject.launchTarget = row.browserGame->launchTarget;
    if (row.install) {
        subject.cloneFolder = pathFromUtf8(row.install->installPath).wstring();
    }
    if (const auto chosen = settings_.webGameBrowsers.find(row.key);
        chosen != settings_.webGameBrowsers.end()) {
        subject.chosenBrowser = chosen->second;
    }
    const WebGamePlan plan = planWebGameLaunch(subject, paths_.dataFolder, jobs_.repositoryHost,
                                               [] { return findChromiumBrowser(); });
    if (plan.step == WebGameStep::Ignore) {
        return;
    }
    if (plan.step == WebGameStep::Refuse) {
        setStatus(widen(plan.statusText));
        return;
    }
    StartedGame started = launchWebGame(plan.browser, plan.targetUrl, plan.profileFolder, plan.workingFolder);
    if (!started) {
        setStatus(widen(kLaunchFailedText));
        return;
    }
    startTracking(std::move(started), row.name, row.key, {});
    const TaskbarNotices notices{hwnd_, MsgStopGame, MsgChildClosed,
                                 static_cast<WPARAM>(ChildKind::BrowserGame)};
    if (WebGameTaskbarWindow* taskbar = WebGameTaskbarWindow::open(instance_, widen(row.name), row.key,
                                                                   taskbarIconFor(row.key), notices)) {
        setChildWindow(ChildKind::BrowserGame, taskbar->hwnd());
    }
    recordLaunchStart(row);
}

UniqueIcon MainWindow::taskbarIconFor(const std::string& key) const {
    // A hosted game's icon as fetched from its site; else a copy of the one its row shows.
    const std::filesystem::path cached =
        paths_.dataFolder / "iconcache" / pathFromUtf8(iconCacheFileName(key) + ".img");
    std::error_code error;
    if (std::filesystem::is_regular_file(cached, error)) {
        if (UniqueIcon icon = loadSmallIconFromFile(cached)) {
            return icon;
        }
    }
    const auto shown = rowIcons_.find(key);
    return shown == rowIcons_.end() || !shown->second ? UniqueIcon()
                                                      : UniqueIcon(CopyIcon(shown->second.get()));
}

void MainWindow::openGameOptions() {
    const int index = selectedRow();
    if (index < 0 || !rows_[static_cast<size_t>(index)].isBrowserGame()) {
        return;
    }
    const LibraryItem& row = rows_[static_cast<size_t>(index)];
    // One at a time: a dialog left open for another game is closed as if cancelled.
    if (HWND open = FindWindowW(WebGameOptionsDialog::kClassName, nullptr); open != nullptr) {
        DWORD owner = 0;
        if (GetWindowThreadProcessId(open, &owner) != 0 && owner == GetCurrentProcessId()) {
            DestroyWindow(open);
        }
    }
    WebGameOptionsHost host;
    host.owner = hwnd_;
    host.settings = &settings_;
    host.gameKey = row.key;
    host.gameName = widen(row.name);
    host.browsers = installedBrowsers();
    host.saveSettings = [this] { return saveSettingsFile(); };
    host.showStatus = [this](const std::wstring& text) { setStatus(text); };
    host.look = WebGameOptionsLook{&themeHandleMessage, &themeTrackButtonHover, &addDialogKeys,
                                   &removeDialogKeys, &dialogNextControl};
    WebGameOptionsDialog::open(instance_, std::move(host));
}

} // namespace corvandell::win
