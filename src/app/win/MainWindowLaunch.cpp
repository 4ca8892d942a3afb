// Launching rows, following the one game that runs, stopping it, and the play sessions
// reported to the service (the main window's share of launch/).
//
// The UI thread owns every handle here. Watchers and stoppers get duplicates, and every
// message they send carries the launch token, so ending or replacing the tracking never
// waits for them and nothing they say about an earlier game changes the current one.
#include <windows.h>

#include <shellapi.h>

#include "app/win/MainWindow.hpp"
#include "base/Utf8Path.hpp"
#include "base/win/WideText.hpp"
#include "launch/LaunchPlan.hpp"
#include "launch/SessionJournal.hpp"
#include "launch/win/GameStopper.hpp"
#include "launch/win/GameWatcher.hpp"
#include "launch/win/ProcessSearch.hpp"

#include <filesystem>
#include <system_error>
#include <utility>

namespace corvandell::win {
namespace {

constexpr wchar_t kHintTitle[] = L"Corvandell";
constexpr wchar_t kHintText[] = L"Note that pressing Shift+Tab will bring up the in-game overlay.";

LaunchSubject subjectOf(const LibraryItem& row) {
    LaunchSubject subject;
    subject.rowKey = row.key;
    subject.title = row.name;
    subject.steamAppId = row.steamAppId;
    if (row.install) {
        subject.executablePath = row.install->executablePath;
        subject.installPath = row.install->installPath;
    }
    if (row.store) {
        subject.storeKey = row.store->providerKey;
        subject.storeName = row.store->storeName;
        subject.storeCommand = row.store->launchTarget;
    }
    return subject;
}

bool openWithShell(HWND owner, const ShellCommand& command) {
    const std::wstring file = widen(command.file);
    const std::wstring parameters = widen(command.parameters);
    const auto result = reinterpret_cast<INT_PTR>(
        ShellExecuteW(owner, L"open", file.c_str(), parameters.empty() ? nullptr : parameters.c_str(),
                      nullptr, SW_SHOWNORMAL));
    return result > 32;
}

UniqueKernelHandle duplicateOf(HANDLE handle) {
    HANDLE copy = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, FALSE,
                         DUPLICATE_SAME_ACCESS)) {
        return {};
    }
    return UniqueKernelHandle(copy);
}

// A folder that is not there holds no process to wait for.
bool isExistingFolder(const std::string& folder) {
    std::error_code error;
    return !folder.empty() && std::filesystem::is_directory(pathFromUtf8(folder), error);
}

} // namespace

void MainWindow::onActionCommand() {
    const int index = selectedRow();
    if (index < 0) {
        return;
    }
    const LibraryItem& row = rows_[static_cast<size_t>(index)];
    if (tracked_.isTracking(row)) {
        stopGame();
        return;
    }
    switch (actionFor(row)) {
    case RowAction::Install:
    case RowAction::Update:
        installSelected();
        return;
    case RowAction::Launch:
        launchSelected();
        return;
    case RowAction::None:
        return;
    }
}

void MainWindow::onListDoubleClick(int item) {
    if (item < 0 || static_cast<size_t>(item) >= rows_.size()) {
        return;
    }
    // The running game's row is stopped only through the action button, never by a
    // double click that may just be a player's impatience.
    if (tracked_.isTracking(rows_[static_cast<size_t>(item)])) {
        return;
    }
    if (actionFor(rows_[static_cast<size_t>(item)]) == RowAction::Launch) {
        launchSelected();
    }
}

void MainWindow::launchSelected() {
    const int index = selectedRow();
    if (index < 0) {
        return;
    }
    const LibraryItem row = rows_[static_cast<size_t>(index)];
    if (tracked_.isTracking(row)) {
        stopGame();
        return;
    }
    if (row.isBrowserGame() && actionFor(row) != RowAction::Launch) {
        return; // not cloned yet: Install clones it
    }
    if (settings_.overlayHintShown) {
        launchRow(row);
        return;
    }
    if (!game_.pendingLaunchKey.empty()) {
        return; // one check at a time; the waiting launch goes ahead when it answers
    }
    game_.pendingLaunchKey = row.key;
    setStatus(L"Preparing launch...");
    jobThreads_.start<OverlayHintCheck>(hwnd_, MsgOverlayHintCheck, [api = api_.get(), key = row.key] {
        return checkOverlayHint(*api, key);
    });
}

void MainWindow::onOverlayHintCheck(std::unique_ptr<OverlayHintCheck> check) {
    game_.pendingLaunchKey.clear();
    if (!settings_.overlayHintShown) {
        settings_.overlayHintShown = true;
        try {
            saveSettings(settingsFile_, settings_);
        } catch (...) {
            // Not saved: the hint may show once more next time, nothing worse.
        }
        if (!check->isChecked || !check->isAlreadyShown) {
            if (check->isChecked) {
                // Its answer is a record without a session, which the window drops.
                jobThreads_.start<LaunchRecord>(hwnd_, MsgLaunchRecord, [api = api_.get()] {
                    markOverlayHintShown(*api);
                    return LaunchRecord{};
                });
            }
            // Modal: the launch waits until the player has read it.
            MessageBoxW(hwnd_, kHintText, kHintTitle, MB_OK | MB_ICONINFORMATION | MB_SETFOREGROUND);
        }
    }
    for (const LibraryItem& row : rows_) {
        if (row.key == check->rowKey) {
            const LibraryItem copy = row; // launching may refill the rows
            launchRow(copy);
            return;
        }
    }
}

void MainWindow::launchRow(const LibraryItem& row) {
    if (row.isBrowserGame()) {
        launchBrowserGame(row);
        return;
    }
    const LaunchPlan plan = planLaunch(subjectOf(row));
    if (plan.way == LaunchWay::Direct) {
        StartedGame started =
            startGameDirect(widen(plan.executablePath), widen(plan.workingFolder), widen(plan.steamAppId));
        if (started) {
            startTracking(std::move(started), row.name, row.key, plan.followFolder);
            recordLaunchStart(row);
            return;
        }
    }
    const std::uint64_t launchedAt =
        currentFileTime(); // the store may start the game before the shell returns
    if (plan.way == LaunchWay::Nothing || plan.shell.file.empty() || !openWithShell(hwnd_, plan.shell)) {
        setStatus(widen(plan.nothingStatus));
        return;
    }
    if (isExistingFolder(plan.followFolder)) {
        startStoreSearch(row.name, row.key, plan.followFolder, launchedAt);
    }
    setStatus(widen(plan.shellStatus));
    recordLaunchStart(row);
}

void MainWindow::startTracking(StartedGame game, const std::string& title, const std::string& key,
                               const std::string& followFolder) {
    endTracking();
    game_.processCreated = processCreationTime(game.process.get());
    game_.process = std::move(game.process);
    game_.job = std::move(game.job);
    game_.port = std::move(game.port);
    game_.processId = game.processId;
    tracked_.state = 1;
    tracked_.title = title;
    tracked_.key = key;
    tracked_.launchTick = GetTickCount64();
    ++game_.launchToken;
    RegisterHotKey(hwnd_, kOverlayHotkeyId, MOD_SHIFT, VK_TAB); // taken by another program: no overlay
    setStatus(L"Launching " + widen(title) + L"...");

    auto watch = std::make_unique<GameWatch>();
    watch->process = duplicateOf(game_.process.get());
    if (watch->process) {
        watch->target = hwnd_;
        watch->messages = WatcherMessages{MsgGameRunning, MsgGameExited, MsgGameFollowed};
        watch->launchToken = game_.launchToken;
        if (game_.port) {
            watch->port = duplicateOf(game_.port.get());
        }
        watch->followFolder =
            isExistingFolder(followFolder) ? pathFromUtf8(followFolder).wstring() : std::wstring();
        watch->launchedAt = game_.processCreated != 0 ? game_.processCreated : currentFileTime();
        watch->launchTickMs = tracked_.launchTick;
        game_.isAbandoned = watch->isAbandoned;
        startGameWatcher(std::move(watch));
    } else {
        tracked_.state = 2; // nothing will say when it runs, so it is taken to run now
    }
    redrawTracking();
}

void MainWindow::startStoreSearch(const std::string& title, const std::string& key, const std::string& folder,
                                  std::uint64_t launchedAt) {
    endTracking();
    game_.isSearching = true;
    tracked_.title = title;
    tracked_.key = key;
    ++game_.launchToken;
    auto watch = std::make_unique<GameWatch>();
    watch->target = hwnd_;
    watch->messages = WatcherMessages{MsgGameRunning, MsgGameExited, MsgGameFollowed};
    watch->launchToken = game_.launchToken;
    watch->followFolder = pathFromUtf8(folder).wstring();
    watch->launchedAt = launchedAt;
    watch->launchTickMs = GetTickCount64();
    game_.isAbandoned = watch->isAbandoned;
    startGameWatcher(std::move(watch));
}

void MainWindow::onGameRunning(WPARAM token) {
    if (token != game_.launchToken || tracked_.state != 1) {
        return;
    }
    tracked_.state = 2;
    setStatus(widen(tracked_.title) + L" is running. Shift+Tab opens the Corvandell overlay.");
    redrawTracking();
}

void MainWindow::onGameExited(WPARAM token) {
    if (token != game_.launchToken) {
        return;
    }
    if (game_.isSearching) {
        endTracking(); // the store never started it where we could see: its session ends now
        return;
    }
    if (!game_.isTracked()) {
        return;
    }
    setStatus(widen(tracked_.title) + L" exited.");
    endTracking();
    redrawTracking();
}

void MainWindow::onGameFollowed(WPARAM token, std::unique_ptr<FollowedProcess> followed) {
    if (token != game_.launchToken || (!game_.isTracked() && !game_.isSearching)) {
        return;
    }
    UniqueKernelHandle process = openSameProcess(followed->processId, followed->created);
    if (!process) {
        return; // already gone: the watcher reports the end
    }
    const bool wasSearching = std::exchange(game_.isSearching, false);
    game_.process = std::move(process);
    game_.processId = followed->processId;
    game_.processCreated = followed->created;
    // The job is left behind with the launcher; the game is stopped through its process now.
    game_.port.reset();
    game_.job.reset();
    if (wasSearching) {
        tracked_.state = 1;
        tracked_.launchTick = GetTickCount64();
        RegisterHotKey(hwnd_, kOverlayHotkeyId, MOD_SHIFT, VK_TAB);
    }
    const std::wstring name = std::filesystem::path(followed->image).filename().wstring();
    setStatus(L"Following " + name + L" (process " + std::to_wstring(followed->processId) + L") for " +
              widen(tracked_.title) + L".");
    writeJournal();
    redrawTracking();
}

void MainWindow::stopGame() {
    if (!game_.isTracked() || (tracked_.state != 1 && tracked_.state != 2)) {
        return;
    }
    tracked_.state = 3;
    setStatus(L"Stopping " + widen(tracked_.title) + L"...");
    if (game_.isAbandoned) {
        game_.isAbandoned->store(true); // stopped on purpose: not a hand-off to look for
    }
    if (game_.job) {
        if (UniqueKernelHandle job = duplicateOf(game_.job.get())) {
            stopJobLater(std::move(job));
        } else {
            TerminateJobObject(game_.job.get(), 0);
        }
    } else if (UniqueKernelHandle process = duplicateOf(game_.process.get())) {
        stopProcessLater(std::move(process), game_.processId);
    } else {
        TerminateProcess(game_.process.get(), 0);
    }
    redrawTracking();
}

void MainWindow::endTracking() {
    if (game_.isAbandoned) {
        game_.isAbandoned->store(true);
        game_.isAbandoned.reset();
    }
    for (const ChildKind kind : {ChildKind::Overlay, ChildKind::BrowserGame}) {
        if (HWND window = childWindow(kind); window != nullptr) {
            setChildWindow(kind, nullptr);
            DestroyWindow(window);
        }
    }
    game_.processId = 0;
    game_.processCreated = 0;
    game_.isSearching = false;
    tracked_.state = 0;
    tracked_.key.clear();
    const bool wasExternal = std::exchange(game_.isExternal, false);
    if (!game_.sessionId.empty()) {
        endSession(std::exchange(game_.sessionId, std::string()), wasExternal);
    }
    clearSessionJournal(sessionJournalIn(paths_.dataFolder));
    if (game_.isTracked()) {
        // A direct start's job only watches, so closing it leaves the game running; a
        // browser game's job kills what is left of the browser.
        game_.process.reset();
        game_.port.reset();
        game_.job.reset();
        UnregisterHotKey(hwnd_, kOverlayHotkeyId);
    }
}

void MainWindow::recordLaunchStart(const LibraryItem& row) {
    jobThreads_.start<LaunchRecord>(
        hwnd_, MsgLaunchRecord,
        [api = api_.get(), token = game_.launchToken, key = row.key, title = row.name] {
            return openLaunchSession(*api, token, key, title);
        });
}

void MainWindow::onLaunchRecord(std::unique_ptr<LaunchRecord> record) {
    if (record->sessionId.empty()) {
        return;
    }
    const bool isCurrent = record->launchToken == game_.launchToken && record->rowKey == tracked_.key &&
                           (game_.isTracked() || game_.isSearching);
    if (!isCurrent) {
        // The game ended (or another took its place) before the service answered.
        endSession(record->sessionId, record->isExternal);
        return;
    }
    game_.sessionId = record->sessionId;
    game_.isExternal = record->isExternal;
    writeJournal();
}

void MainWindow::endSession(std::string sessionId, bool isExternal) {
    jobThreads_.start<SessionEnded>(hwnd_, MsgSessionEnded,
                                    [api = api_.get(), sessionId = std::move(sessionId), isExternal] {
                                        closeLaunchSession(*api, sessionId, isExternal);
                                        return SessionEnded{};
                                    });
}

void MainWindow::onSessionEnded() {
    playtimeKey_.clear(); // asked afresh, so the playtime includes the session just ended
    fillDetails();
}

void MainWindow::writeJournal() {
    if (game_.sessionId.empty() || !game_.isTracked() || game_.processCreated == 0) {
        return;
    }
    try {
        saveSessionJournal(sessionJournalIn(paths_.dataFolder),
                           SessionJournalRecord{game_.sessionId, game_.isExternal, game_.processId,
                                                game_.processCreated, tracked_.key, tracked_.title});
    } catch (...) {
        // Without the journal only a crash of the client loses this session's end.
    }
}

void MainWindow::reattachToJournal() {
    const std::filesystem::path journal = sessionJournalIn(paths_.dataFolder);
    const std::optional<SessionJournalRecord> record = loadSessionJournal(journal);
    if (!record) {
        clearSessionJournal(journal);
        return;
    }
    UniqueKernelHandle process = openSameProcess(record->processId, record->processCreated);
    if (!process) {
        clearSessionJournal(journal);
        endSession(record->launchId, record->isExternal); // the game ended while the client was away
        return;
    }
    StartedGame game;
    game.process = std::move(process);
    game.processId = record->processId;
    startTracking(std::move(game), record->title, record->rowKey, {});
    game_.sessionId = record->launchId;
    game_.isExternal = record->isExternal;
    writeJournal();
}

void MainWindow::redrawTracking() {
    InvalidateRect(list_, nullptr, FALSE);
    fillDetails();
}

} // namespace corvandell::win
