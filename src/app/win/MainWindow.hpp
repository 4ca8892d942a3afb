// The main library window: toolbar, game list, details column, status line and the tray
// icon. It owns the settings record and the library for the life of the process and is
// the window every background job of the library reports back to.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include "api/IApiClient.hpp"
#include "app/DataPaths.hpp"
#include "app/LibraryCache.hpp"
#include "app/LibraryItem.hpp"
#include "app/RefreshSequence.hpp"
#include "app/RowText.hpp"
#include "app/SettingsFile.hpp"
#include "app/win/CloneState.hpp"
#include "app/win/GameTracking.hpp"
#include "app/win/InstallState.hpp"
#include "app/win/MessageLoop.hpp"
#include "app/win/Messages.hpp"
#include "app/win/PlaytimePanel.hpp"
#include "app/win/RowIcons.hpp"
#include "app/win/TrayIcon.hpp"
#include "app/win/UiJob.hpp"
#include "app/win/Window.hpp"
#include "base/win/UniqueHandle.hpp"
#include "launch/DownloadProgress.hpp"
#include "launch/InstallPlan.hpp"
#include "launch/LaunchSessions.hpp"
#include "launch/win/GameStart.hpp"
#include "launch/win/GameWatcher.hpp"
#include "stores/win/StoreWatcher.hpp"
#include "webgames/RepositoryHost.hpp"
#include "webgames/win/AddGameDialog.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace corvandell::win {

// The main window's keyboard shortcuts (MainWindowKeys.cpp).
UniqueAccelerator createMainWindowKeys();

// Seams through which the window's background work is supplied. Production code uses
// the defaults; tests count and script the jobs.
struct MainWindowJobs {
    // The refresh job's producer for the given search text.
    // Empty: the stores of this machine and the service client below.
    std::function<std::function<LibraryResult()>(const std::string& query)> makeRefresh;
    // The service client of every job; empty: the WinHTTP client over the window's settings.
    std::shared_ptr<IApiClient> api;
    // Where browser games are cloned from and hosted; tests put a loopback server here.
    RepositoryHost repositoryHost;
};

class MainWindow final : public Window {
public:
    // `settingsFile` is the guard the settings were loaded through; every later save of
    // them goes through it too.
    MainWindow(HINSTANCE instance, DataPaths paths, Settings settings, GuardedFile settingsFile,
               MainWindowJobs jobs = {});
    ~MainWindow() override;

    // Creates and shows the window, then runs the message loop until Exit; returns the
    // loop's exit code.
    int run(int showCommand);
    // The first half of run: the window exists, is shown and a refresh is under way.
    bool create(int showCommand);

    void createControls();
    void refresh();
    void loadRowIcons();
    void loadRatings();
    void rateSelected(int stars);
    void requestPlaytime(const LibraryItem& row);
    // Installs or updates the selected row when the client installs it; explains otherwise.
    void installSelected();
    void launchSelected();
    // Clones (or updates) a shared repository game into the data folder (MainWindowClone.cpp).
    void cloneGitHubGame(const LibraryItem& row);
    // Opens the Add Game dialog, or brings it forward when it is open.
    void openAddGame();
    AddGameDialog* addGameDialog() noexcept { return addGame_.get(); }
    void recordLaunchStart(const LibraryItem& row);
    // Begins following a started game (the browser launcher hands its games in here too).
    void startTracking(StartedGame game, const std::string& title, const std::string& key,
                       const std::string& followFolder);
    const TrackedGame& trackedGame() const noexcept { return tracked_; }
    DWORD trackedProcessId() const noexcept { return game_.processId; }

    HWND control(int id) const noexcept { return GetDlgItem(hwnd_, id); }
    std::wstring statusText() const;
    HWND childWindow(ChildKind kind) const noexcept;
    // Records a companion window the main window opened, until it reports its end.
    void setChildWindow(ChildKind kind, HWND window) noexcept;
    // Writes settings.json through the guard it was loaded by: "" or what went wrong.
    std::string saveSettingsFile();
    int balloonsShown() const noexcept { return balloonsShown_; }
    bool hasTrayIcon() const noexcept { return trayIcon_.isAdded(); }
    const Settings& settings() const noexcept { return settings_; }
    PlaytimePanel* playtimePanel() noexcept { return playtimePanel_.get(); }
    const std::vector<LibraryItem>& rows() const noexcept { return rows_; }
    bool hasRowIcon(const std::string& key) const { return rowIcons_.contains(key); }
    // What the list shows in a cell, as a screen reader reads it.
    std::wstring cellText(int row, int column) const;
    // Shift+Tab: closes the overlay, or opens it over the tracked game (MainWindowOverlay.cpp).
    void toggleOverlay();
    // Tests stand in for the launch flow with this.
    void setTrackedGameForTest(TrackedGame game) { tracked_ = std::move(game); }

private:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);

    void onCreate();
    void onClose();
    void onDestroy();
    void onEndSession(bool isEnding);
    void onCommand(int id, int notification);
    LRESULT onNotify(const NMHDR& header);
    void onTrayIcon(UINT mouseMessage);
    void onChildClosed(ChildKind kind, HWND window) noexcept;
    void onLibraryResult(std::unique_ptr<LibraryResult> result);
    void onIconBatch(std::unique_ptr<IconBatch> batch);
    void onRatingsLoaded(std::unique_ptr<RatingsResult> result);
    void onRatingResult(std::unique_ptr<RatingsResult> result);
    void onPlaytimeResult(std::unique_ptr<PlaytimeResult> result);
    void onDownloadProgress(std::unique_ptr<DownloadProgress> progress);
    void onInstallResult(std::unique_ptr<InstallResult> result);
    void onCloneReport(std::unique_ptr<CloneReport> report);
    void onAddGameEnded(bool wasGameAdded);
    void discardPendingResults() noexcept;

    // Launching and tracking (MainWindowLaunch.cpp).
    void onActionCommand();
    void onListDoubleClick(int item);
    void onOverlayHintCheck(std::unique_ptr<OverlayHintCheck> check);
    void launchRow(const LibraryItem& row);
    void startStoreSearch(const std::string& title, const std::string& key, const std::string& folder,
                          std::uint64_t launchedAt);
    void onGameRunning(WPARAM token);
    void onGameExited(WPARAM token);
    void onGameFollowed(WPARAM token, std::unique_ptr<FollowedProcess> followed);
    void stopGame();
    void endTracking();
    void onLaunchRecord(std::unique_ptr<LaunchRecord> record);
    void endSession(std::string sessionId, bool isExternal);
    void onSessionEnded();
    // Browser games (MainWindowWebGame.cpp).
    void launchBrowserGame(const LibraryItem& row);
    UniqueIcon taskbarIconFor(const std::string& key) const;
    void openGameOptions();
    void writeJournal();
    void reattachToJournal();
    void redrawTracking();

    void layout(int clientWidth, int clientHeight);
    void onDpiChanged(const RECT& suggested);
    // The command Enter gives where the focus is (DM_GETDEFID); command::None for none.
    int defaultCommand() const noexcept;
    bool onKeyCommand(int id);
    void showFromTray();
    void showTrayMenu();
    void showRowMenu();
    void openOptions();
    void setStatus(const std::wstring& text);
    void saveFiles() noexcept;

    int selectedRow() const noexcept;
    void trackSelection(const NMLISTVIEW& change) noexcept;
    void selectRowByKey(const std::string& key);
    void refillList();
    void fitColumns();
    void fillDetails();
    void showPlaytimeFor(const LibraryItem* row);
    void updateActionButton();
    void drawRow(const DRAWITEMSTRUCT& item);
    void fillDisplayInfo(NMLVDISPINFOW& info);
    bool isSignedIn() const noexcept { return !settings_.bearerToken.empty(); }

    HINSTANCE instance_;
    DataPaths paths_;
    std::uint64_t dataFolderKey_;
    Settings settings_;
    MainWindowJobs jobs_;
    GuardedFile settingsFile_;
    GuardedFile libraryFile_;
    std::vector<LibraryRecord> installedGames_;
    // Why a file will not be saved this session; leads every status text.
    std::wstring fileNotice_;
    std::shared_ptr<IApiClient> api_;
    std::vector<LibraryItem> rows_;
    std::map<std::string, UniqueIcon> rowIcons_;
    std::set<std::string> iconsAsked_; // rows whose icon was looked for, found or not
    std::map<std::string, RatingSummary> ratings_;
    RefreshSequence refreshes_;
    TrackedGame tracked_;
    GameTracking game_;
    std::string playtimeKey_;               // the row the playtime panel shows or waits for
    std::vector<std::string> previousKeys_; // the keys of the rows the list shows, in order
    bool isRefilling_ = false;
    int selectedIndex_ = -1;

    HWND list_ = nullptr;
    HWND details_ = nullptr;
    HWND search_ = nullptr;
    HWND status_ = nullptr;
    std::unique_ptr<PlaytimePanel> playtimePanel_;
    UniqueFont font_;

    std::map<ChildKind, HWND> childWindows_;
    TrayIcon trayIcon_;
    UniqueIcon smallIcon_;
    UniqueIcon largeIcon_;
    StoreWatcher storeWatcher_;
    bool balloonShown_ = false;
    int balloonsShown_ = 0;
    InstallState installs_;
    CloneState clones_;
    std::unique_ptr<AddGameDialog> addGame_;
    // Last, so that on every path its jobs end before anything they may use is destroyed.
    UiJobThreads jobThreads_;
};

} // namespace corvandell::win
