// Installing and updating from the main window: what the action does for each kind of
// row, the install job of a service title, its progress in the status line and on the
// taskbar button, and recording the installed title in library.json.
//
// The job reports through the UI-thread marshalling rather than touching the window: its
// progress and its result are posted, and only the UI thread changes the status line and
// the library cache. The cache entry is saved before the refresh is asked for, so the
// refresh already finds the title installed.
#include <windows.h>

#include "app/win/MainWindow.hpp"

#include "base/win/WideText.hpp"
#include "launch/win/InstallJob.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace corvandell::win {
namespace {

// Hands each progress report to the window, but only those that change what it shows: a
// fast download would otherwise queue thousands of messages for one status line.
class ProgressPoster {
public:
    explicit ProgressPoster(HWND window) : window_(window) {}

    void operator()(const DownloadProgress& progress) {
        if (progress.percent == lastPercent_ && progress.phase == lastPhase_ &&
            progress.total == lastTotal_) {
            return;
        }
        lastPercent_ = progress.percent;
        lastPhase_ = progress.phase;
        lastTotal_ = progress.total;
        auto record = std::make_unique<DownloadProgress>(progress);
        if (PostMessageW(window_, MsgDownloadProgress, 0, reinterpret_cast<LPARAM>(record.get()))) {
            static_cast<void>(record.release());
        }
    }

private:
    HWND window_;
    int lastPercent_ = -1;
    std::wstring lastPhase_;
    std::uint64_t lastTotal_ = 0;
};

std::int64_t unixNow() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

} // namespace

void MainWindow::installSelected() {
    const int index = selectedRow();
    if (index < 0) {
        return;
    }
    const LibraryItem row = rows_[static_cast<size_t>(index)];
    if (row.isBrowserGame()) {
        if (!row.browserGame->launchTarget.starts_with("https://")) {
            cloneGitHubGame(row);
            return;
        }
        setStatus(L"This game runs from the web - nothing to install. Just press Launch.");
        return;
    }
    if (row.isSteamRow()) {
        setStatus(L"This game is installed and updated by Steam.");
        return;
    }
    if (row.isStoreRow()) {
        setStatus(L"This game is installed and updated by " + widen(row.store->storeName) + L".");
        return;
    }
    if (installs_.running.contains(row.key)) {
        setStatus(widen(row.name) + L" is already being installed.");
        return;
    }

    InstallRequest request{row.key, row.name, settings_.libraryPath, settings_.downloadLimitKbps, {}};
    const auto cached = std::find_if(installedGames_.begin(), installedGames_.end(),
                                     [&](const LibraryRecord& record) { return record.titleId == row.key; });
    if (cached != installedGames_.end()) {
        request.existingInstallPath = cached->installPath;
    }
    if (!installs_.taskbar) {
        installs_.taskbar = std::make_unique<TaskbarProgress>(hwnd_);
    }
    installs_.running.insert(row.key);
    setStatus(L"Preparing download...");
    jobThreads_.start<InstallResult>(
        hwnd_, MsgInstallResult,
        [api = api_.get(), request = std::move(request), window = hwnd_, cancel = &installs_.cancel] {
            CancellableClock clock(*cancel);
            ProgressPoster poster(window);
            return runInstall(*api, request, std::ref(poster), clock, *cancel);
        },
        "Install failed: ");
}

void MainWindow::onDownloadProgress(std::unique_ptr<DownloadProgress> progress) {
    setStatus(progressText(*progress));
    if (!installs_.taskbar) {
        return;
    }
    if (progress->phase == L"Installed") {
        installs_.taskbar->clear();
        return;
    }
    installs_.taskbar->show(progress->received, progress->total);
}

void MainWindow::onInstallResult(std::unique_ptr<InstallResult> result) {
    installs_.running.erase(result->titleId);
    if (!result->succeeded) {
        if (installs_.taskbar) {
            installs_.taskbar->showFailure();
        }
        setStatus(widen(result->errorText));
        return;
    }
    if (installs_.taskbar && installs_.running.empty()) {
        installs_.taskbar->clear();
    }
    LibraryRecord entry{
        result->titleId, result->name, result->installPath, result->executablePath, false, unixNow(), 0};
    const auto cached =
        std::find_if(installedGames_.begin(), installedGames_.end(),
                     [&](const LibraryRecord& record) { return record.titleId == entry.titleId; });
    if (cached != installedGames_.end()) {
        // An update keeps what the user did with the game.
        entry.favorite = cached->favorite;
        entry.lastPlayedAtUnix = cached->lastPlayedAtUnix;
        *cached = std::move(entry);
    } else {
        installedGames_.push_back(std::move(entry));
    }
    try {
        saveLibrary(libraryFile_, installedGames_);
    } catch (const std::exception& error) {
        // The game is installed and the list shows it; only the next start would forget it.
        setStatus(L"Installed, but library.json could not be saved: " + widen(error.what()));
    }
    PostMessageW(hwnd_, WM_COMMAND, MAKEWPARAM(command::Refresh, 0), 0);
}

} // namespace corvandell::win
