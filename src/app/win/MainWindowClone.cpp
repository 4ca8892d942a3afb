// Browser games from the main window: the Add Game dialog, and cloning a shared repository
// game into the data folder so it plays offline.
//
// The clone runs on a worker thread and reports through the UI-thread marshalling: each
// progress text and then its end are posted as CloneReport records, and only the UI thread
// writes the status line. The folder is the one the refresh looks for (both read the row's
// repository address against the same host), so a finished clone makes the row ready.
// The clone empties the old copy only once the new one has fully decoded, so a failed
// update leaves the game playable as it was.
#include <windows.h>

#include "app/win/DialogKeys.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/WideText.hpp"
#include "webgames/RepositoryAddress.hpp"
#include "webgames/WebGameFolders.hpp"
#include "webgames/git/win/GitClient.hpp"

#include <exception>
#include <memory>
#include <optional>

namespace corvandell::win {
namespace {

void postProgress(HWND window, const std::string& key, const std::wstring& text) {
    auto report = std::make_unique<CloneReport>();
    report->key = key;
    report->progress = text;
    if (PostMessageW(window, MsgCloneReport, 0, reinterpret_cast<LPARAM>(report.get()))) {
        static_cast<void>(report.release());
    }
}

} // namespace

void MainWindow::openAddGame() {
    if (addGame_ && addGame_->hwnd() != nullptr) {
        SetForegroundWindow(addGame_->hwnd());
        return;
    }
    const AddGameLook look{&themeHandleMessage, &themeTrackButtonHover, &addDialogKeys, &removeDialogKeys};
    addGame_ = std::make_unique<AddGameDialog>(instance_, hwnd_, api_, jobs_.repositoryHost, look,
                                               AddGameEndNotice{hwnd_, MsgAddGameEnded});
    if (!addGame_->create()) {
        addGame_.reset();
        setStatus(L"Could not open the Add Game window.");
    }
}

void MainWindow::onAddGameEnded(bool wasGameAdded) {
    addGame_.reset();
    if (wasGameAdded) {
        refresh();
    }
}

void MainWindow::cloneGitHubGame(const LibraryItem& row) {
    const RepositoryHost& host = jobs_.repositoryHost;
    const std::optional<RepositoryAddress> address = readRepositoryAddress(row.browserGame->repoUrl, host);
    if (!address) {
        setStatus(L"This game has an invalid repository URL.");
        return;
    }
    if (clones_.running.contains(row.key)) {
        setStatus(widen(row.name) + L" is already being cloned.");
        return;
    }
    clones_.running.insert(row.key);
    setStatus(L"Cloning " + widen(row.name) + L" from GitHub...");
    jobThreads_.start<CloneReport>(
        hwnd_, MsgCloneReport,
        [window = hwnd_, key = row.key, name = row.name, hostUrl = host.url, repository = *address,
         folder = webGameCloneFolder(paths_.dataFolder, *address), cancel = &installs_.cancel] {
            CloneReport report{key, name, true, false, {}, {}};
            try {
                // The clone reports progress before it touches the old copy and once it is
                // done, so closing the client never stops it halfway through the files.
                const git::CloneProgress progress = [&](const std::wstring& text) {
                    cancel->throwIfCancelled();
                    postProgress(window, key, text);
                };
                GitClient::shallowClone(hostUrl, repository.owner, repository.repo, folder, progress);
                report.succeeded = true;
            } catch (const std::exception& error) {
                report.errorText = std::string("Clone failed: ") + error.what();
            } catch (...) {
                report.errorText = "Clone failed: unexpected error";
            }
            return report;
        },
        "Clone failed: ");
}

void MainWindow::onCloneReport(std::unique_ptr<CloneReport> report) {
    if (!report->isFinal) {
        setStatus(report->progress);
        return;
    }
    clones_.running.erase(report->key);
    if (!report->succeeded) {
        setStatus(widen(report->errorText));
        return;
    }
    setStatus(widen(report->name) + L" is cloned and ready to play.");
    PostMessageW(hwnd_, WM_COMMAND, MAKEWPARAM(command::Refresh, 0), 0);
}

} // namespace corvandell::win
