// Lifecycle and message routing of the main window. Controls and layout live in
// MainWindowControls.cpp, the list and details pane in MainWindowList.cpp.
#include <windows.h>

#include <commctrl.h>

#include "api/win/WinHttpApiClient.hpp"
#include "app/LibraryActivity.hpp"
#include "app/LibraryMerge.hpp"
#include "app/LibraryRefresh.hpp"
#include "app/win/FriendsLauncher.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/SingleInstance.hpp"
#include "app/win/StarIcon.hpp"
#include "app/win/ThemeHook.hpp"
#include "app/win/UiJob.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/DpiWindow.hpp"
#include "base/win/WideText.hpp"
#include "stores/WatchList.hpp"
#include "stores/win/WindowsStoreHost.hpp"

#include <algorithm>
#include <exception>

namespace corvandell::win {
namespace {

constexpr wchar_t kClassName[] = L"CorvandellClientWindow";
constexpr wchar_t kTitle[] = L"Corvandell";
constexpr wchar_t kBalloonText[] =
    L"Still running here. Right-click the star for Friends, Options, and Exit.";

// Files that could not be read are never written in this run (see GuardedFile), which
// the user has to know: their changes will not be there next time.
std::wstring unsavedFilesNotice(const GuardedFile& settings, const GuardedFile& library) {
    const bool isSettingsUnsaved = settings.condition() == FileCondition::Unreadable;
    const bool isLibraryUnsaved = library.condition() == FileCondition::Unreadable;
    if (isSettingsUnsaved && isLibraryUnsaved) {
        return L"Could not read settings.json and library.json; neither will be saved this session.";
    }
    if (isSettingsUnsaved) {
        return L"Could not read settings.json; your settings will not be saved this session.";
    }
    if (isLibraryUnsaved) {
        return L"Could not read library.json; your installed games will not be saved this session.";
    }
    return {};
}

// A producer may throw although it should not; its failure must still carry the number
// of the refresh it answers, or the window would wait for it forever.
std::function<LibraryResult()> numberedRefresh(std::function<LibraryResult()> producer,
                                               unsigned long generation) {
    return [producer = std::move(producer), generation]() noexcept {
        LibraryResult result;
        try {
            result = producer();
        } catch (const std::exception& error) {
            result = LibraryResult{.succeeded = false,
                                   .errorText = std::string("Refresh failed: ") + error.what()};
        } catch (...) {
            result = LibraryResult{.succeeded = false, .errorText = "Refresh failed: unexpected error"};
        }
        result.generation = generation;
        return result;
    };
}

} // namespace

MainWindow::MainWindow(HINSTANCE instance, DataPaths paths, Settings settings, GuardedFile settingsFile,
                       MainWindowJobs jobs)
    : instance_(instance), paths_(std::move(paths)), dataFolderKey_(dataFolderKey(paths_.dataFolder)),
      settings_(std::move(settings)), jobs_(std::move(jobs)), settingsFile_(std::move(settingsFile)),
      libraryFile_(libraryFileIn(paths_.dataFolder)), installedGames_(loadLibrary(libraryFile_)),
      fileNotice_(unsavedFilesNotice(settingsFile_, libraryFile_)), api_(jobs_.api) {
    if (!api_) {
        api_ = std::make_shared<WinHttpApiClient>(&settings_);
    }
    if (!jobs_.makeRefresh) {
        // The window outlives its jobs, so the job may use its service client.
        jobs_.makeRefresh = [this](const std::string& query) -> std::function<LibraryResult()> {
            return [api = api_.get(), dataFolder = paths_.dataFolder, installed = installedGames_, query,
                    repositoryHost = jobs_.repositoryHost] {
                const WindowsStoreHost stores;
                return gatherLibrary(*api, stores.host(), dataFolder, installed, query, repositoryHost);
            };
        };
    }
}

MainWindow::~MainWindow() {
    if (hwnd_ != nullptr) {
        DestroyWindow(hwnd_);
    }
}

bool MainWindow::create(int showCommand) {
    INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);

    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.style = 0;
    windowClass.lpfnWndProc = &Window::windowProcedure;
    windowClass.hInstance = instance_;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = kClassName;
    RegisterClassExW(&windowClass); // a second window in the same process reuses the class

    CreateWindowExW(0, kClassName, kTitle, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT, 1100, 720,
                    nullptr, nullptr, instance_, this);
    if (hwnd_ == nullptr) {
        return false;
    }
    resizeForDpi(hwnd_, 1100, 720);
    ShowWindow(hwnd_, showCommand);
    UpdateWindow(hwnd_);
    refresh();
    return true;
}

int MainWindow::run(int showCommand) {
    if (!create(showCommand)) {
        return 1;
    }
    const UniqueAccelerator keys = createMainWindowKeys();
    return runClientMessageLoop(hwnd_, keys.get());
}

void MainWindow::refresh() {
    setStatus(L"Loading library...");
    const unsigned long generation = refreshes_.begin();
    jobThreads_.start<LibraryResult>(
        hwnd_, MsgLibraryResult, numberedRefresh(jobs_.makeRefresh(narrow(hwndText(search_))), generation),
        "Refresh failed: ");
}

void MainWindow::loadRowIcons() {
    // Each row is looked at once: a site that gave no icon is not asked again on every
    // keystroke in the search box.
    std::vector<IconRequest> requests = iconRequestsFor(rows_, rowIcons_);
    std::erase_if(requests,
                  [this](const IconRequest& request) { return !iconsAsked_.insert(request.key).second; });
    if (requests.empty()) {
        return;
    }
    jobThreads_.start<IconBatch>(hwnd_, MsgIconBatch,
                                 [requests = std::move(requests), cache = paths_.dataFolder / "iconcache"] {
                                     return loadRowIconBatch(requests, cache);
                                 });
}

void MainWindow::loadRatings() {
    std::vector<std::string> keys;
    keys.reserve(rows_.size());
    for (const LibraryItem& row : rows_) {
        keys.push_back(row.key);
    }
    if (keys.empty()) {
        return;
    }
    jobThreads_.start<RatingsResult>(hwnd_, MsgRatingsLoaded, [api = api_.get(), keys = std::move(keys)] {
        return gatherRatings(*api, keys);
    });
}

void MainWindow::rateSelected(int stars) {
    const int row = selectedRow();
    if (row < 0 || stars < 1 || stars > 5) {
        return;
    }
    if (!isSignedIn()) {
        playtimePanel_->setText(L"Sign in to rate games.");
        return;
    }
    playtimePanel_->setMyStars(stars); // shown at once; the answer confirms or takes it back
    jobThreads_.start<RatingsResult>(hwnd_, MsgRatingResult,
                                     [api = api_.get(), key = rows_[static_cast<size_t>(row)].key, stars] {
                                         return sendRating(*api, key, stars);
                                     });
}

void MainWindow::requestPlaytime(const LibraryItem& row) {
    playtimeKey_ = row.key;
    playtimePanel_->setText(L"Loading...");
    jobThreads_.start<PlaytimeResult>(hwnd_, MsgPlaytimeResult,
                                      [api = api_.get(), row] { return gatherPlaytime(*api, row); });
}

HWND MainWindow::childWindow(ChildKind kind) const noexcept {
    const auto found = childWindows_.find(kind);
    return found == childWindows_.end() ? nullptr : found->second;
}

void MainWindow::setChildWindow(ChildKind kind, HWND window) noexcept {
    try {
        childWindows_[kind] = window;
    } catch (...) {
        // An allocation failure here only loses the reuse of an open window.
    }
}

LRESULT MainWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT themed = 0;
    if (themeHandleMessage(hwnd_, message, wParam, lParam, themed)) {
        return themed;
    }
    return route(message, wParam, lParam);
}

LRESULT MainWindow::route(UINT message, WPARAM wParam, LPARAM lParam) {
    // A second corvandell.exe on this data folder asks this one to come forward.
    if (message != 0 && message == showRunningClientMessage()) {
        if (static_cast<std::uint64_t>(lParam) == dataFolderKey_) {
            showFromTray();
        }
        return 0;
    }
    switch (message) {
    case WM_CREATE:
        onCreate();
        return 0;
    case WM_SIZE:
        layout(LOWORD(lParam), HIWORD(lParam));
        return 0;
    case DM_GETDEFID:
        return MAKELRESULT(defaultCommand(), DC_HASDEFID);
    case WM_CONTEXTMENU:
        // From the keyboard (the menu key) only: a right click already came as NM_RCLICK.
        if (reinterpret_cast<HWND>(wParam) != list_ || lParam != -1) {
            break;
        }
        showRowMenu();
        return 0;
    case WM_DPICHANGED:
        onDpiChanged(*reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_CLOSE:
        onClose();
        return 0;
    case WM_DESTROY:
        onDestroy();
        return 0;
    case WM_QUERYENDSESSION:
        return TRUE;
    case WM_ENDSESSION:
        onEndSession(wParam != FALSE);
        return 0;
    case WM_MEASUREITEM: {
        auto* measure = reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
        if (wParam != command::List || measure == nullptr) {
            break;
        }
        measure->itemHeight = static_cast<UINT>(scaledForDpi(24, windowDpi(hwnd_)));
        return 1;
    }
    case WM_DRAWITEM: {
        const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        if (wParam != command::List || item == nullptr) {
            break;
        }
        drawRow(*item);
        return 1;
    }
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        if (header == nullptr || header->idFrom != command::List) {
            break;
        }
        return onNotify(*header);
    }
    case WM_COMMAND:
        onCommand(LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_TIMER:
        if (wParam != kSearchTimerId) {
            break;
        }
        KillTimer(hwnd_, kSearchTimerId);
        refresh();
        return 0;
    case WM_HOTKEY:
        if (wParam == kOverlayHotkeyId) {
            toggleOverlay();
        }
        return 0;
    case MsgLibraryResult:
        onLibraryResult(takeUiJobResult<LibraryResult>(lParam));
        return 0;
    case MsgIconBatch:
        onIconBatch(takeUiJobResult<IconBatch>(lParam));
        return 0;
    case MsgRatingsLoaded:
        onRatingsLoaded(takeUiJobResult<RatingsResult>(lParam));
        return 0;
    case MsgRatingResult:
        onRatingResult(takeUiJobResult<RatingsResult>(lParam));
        return 0;
    case MsgPlaytimeResult:
        onPlaytimeResult(takeUiJobResult<PlaytimeResult>(lParam));
        return 0;
    case MsgDownloadProgress:
        onDownloadProgress(takeUiJobResult<DownloadProgress>(lParam));
        return 0;
    case MsgInstallResult:
        onInstallResult(takeUiJobResult<InstallResult>(lParam));
        return 0;
    case MsgCloneReport:
        onCloneReport(takeUiJobResult<CloneReport>(lParam));
        return 0;
    case MsgAddGameEnded:
        onAddGameEnded(wParam != 0);
        return 0;
    case MsgThemeChanged:
        themeApplyToList(list_);
        RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
        return 0;
    case MsgChildClosed:
        onChildClosed(static_cast<ChildKind>(wParam), reinterpret_cast<HWND>(lParam));
        return 0;
    case MsgTrayIcon:
        onTrayIcon(static_cast<UINT>(lParam));
        return 0;
    case MsgStoreChanged:
        refresh();
        setStatus(L"A game store's library changed - refreshing...");
        return 0;
    case MsgGameRunning:
        onGameRunning(wParam);
        return 0;
    case MsgGameExited:
        onGameExited(wParam);
        return 0;
    case MsgGameFollowed:
        onGameFollowed(wParam, takeUiJobResult<FollowedProcess>(lParam));
        return 0;
    case MsgStopGame:
        stopGame();
        return 0;
    case MsgLaunchRecord:
        onLaunchRecord(takeUiJobResult<LaunchRecord>(lParam));
        return 0;
    case MsgSessionEnded:
        takeUiJobResult<SessionEnded>(lParam).reset();
        onSessionEnded();
        return 0;
    case MsgOverlayHintCheck:
        onOverlayHintCheck(takeUiJobResult<OverlayHintCheck>(lParam));
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void MainWindow::onCreate() {
    createControls();
    themeApplyToList(list_);
    smallIcon_ = createStarIcon(GetSystemMetrics(SM_CXSMICON), kStarColour);
    largeIcon_ = createStarIcon(GetSystemMetrics(SM_CXICON), kStarColour);
    SendMessageW(hwnd_, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(smallIcon_.get()));
    SendMessageW(hwnd_, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(largeIcon_.get()));
    trayIcon_.add(hwnd_, MsgTrayIcon, smallIcon_.get(), kTitle);
    fillDetails();
    const WindowsStoreHost stores;
    storeWatcher_.start(hwnd_, MsgStoreChanged, storeWatchFolders(stores.host()), storeWatchKeys());
    reattachToJournal();
}

void MainWindow::onClose() {
    ShowWindow(hwnd_, SW_HIDE);
    if (balloonShown_) {
        return;
    }
    balloonShown_ = true;
    if (trayIcon_.showBalloon(kTitle, kBalloonText)) {
        ++balloonsShown_;
    }
}

void MainWindow::onDestroy() {
    storeWatcher_.stop();
    endTracking();
    KillTimer(hwnd_, kSearchTimerId);
    trayIcon_.remove();
    SendMessageW(hwnd_, WM_SETICON, ICON_SMALL, 0);
    SendMessageW(hwnd_, WM_SETICON, ICON_BIG, 0);
    smallIcon_.reset();
    largeIcon_.reset();
    rowIcons_.clear();
    saveFiles();
    installs_.cancel.cancel(); // a download or a clone would otherwise keep the client open
    addGame_.reset();
    // A job still running would post to a window that is gone; its result is freed with
    // the rest once it has arrived.
    jobThreads_.waitForAll();
    discardPendingResults();
    PostQuitMessage(0);
}

// Log-off and shutdown may end the process right after this returns, without WM_DESTROY,
// so this is the last moment to save.
void MainWindow::onEndSession(bool isEnding) {
    if (isEnding) {
        saveFiles();
    }
}

void MainWindow::saveFiles() noexcept {
    // Each file is saved on its own: a failure to write one must not cost the other.
    try {
        saveSettings(settingsFile_, settings_);
    } catch (...) {
    }
    try {
        saveLibrary(libraryFile_, installedGames_);
    } catch (...) {
    }
}

// Results already queued for this window would otherwise die with the queue entry.
void MainWindow::discardPendingResults() noexcept {
    MSG message{};
    while (PeekMessageW(&message, hwnd_, MsgLibraryResult, MsgRatingResult, PM_REMOVE)) {
        switch (message.message) {
        case MsgGameFollowed:
            takeUiJobResult<FollowedProcess>(message.lParam).reset();
            break;
        case MsgLaunchRecord:
            takeUiJobResult<LaunchRecord>(message.lParam).reset();
            break;
        case MsgSessionEnded:
            takeUiJobResult<SessionEnded>(message.lParam).reset();
            break;
        case MsgOverlayHintCheck:
            takeUiJobResult<OverlayHintCheck>(message.lParam).reset();
            break;
        case MsgLibraryResult:
            takeUiJobResult<LibraryResult>(message.lParam).reset();
            break;
        case MsgIconBatch:
            takeUiJobResult<IconBatch>(message.lParam).reset();
            break;
        case MsgPlaytimeResult:
            takeUiJobResult<PlaytimeResult>(message.lParam).reset();
            break;
        case MsgDownloadProgress:
            takeUiJobResult<DownloadProgress>(message.lParam).reset();
            break;
        case MsgInstallResult:
            takeUiJobResult<InstallResult>(message.lParam).reset();
            break;
        case MsgCloneReport:
            takeUiJobResult<CloneReport>(message.lParam).reset();
            break;
        case MsgRatingsLoaded:
        case MsgRatingResult:
            takeUiJobResult<RatingsResult>(message.lParam).reset();
            break;
        default:
            break; // the other messages in the range carry no record
        }
    }
}

void MainWindow::onCommand(int id, int notification) {
    if (onKeyCommand(id)) {
        return;
    }
    switch (id) {
    case command::Refresh:
        KillTimer(hwnd_, kSearchTimerId); // a search waiting for its pause is part of this one
        refresh();
        return;
    case command::Launch:
        onActionCommand();
        return;
    case command::GameOptions:
        openGameOptions();
        return;
    case command::Search:
        if (notification == EN_CHANGE) {
            SetTimer(hwnd_, kSearchTimerId, kSearchDebounceMs, nullptr);
        }
        return;
    case command::OpenClient:
        showFromTray();
        return;
    case command::Exit:
        DestroyWindow(hwnd_);
        return;
    case command::AddGame:
        openAddGame();
        return;
    case command::Friends:
    case command::Options:
        if (HWND open = childWindow(id == command::Friends ? ChildKind::Friends : ChildKind::Options);
            open != nullptr && IsWindow(open)) {
            if (IsIconic(open)) {
                ShowWindow(open, SW_RESTORE);
            }
            SetForegroundWindow(open);
        } else if (id == command::Friends) {
            setChildWindow(ChildKind::Friends, openFriendsWindow(instance_, hwnd_, &settings_));
        } else {
            openOptions();
        }
        return;
    default:
        // Game Options acts once browser games have a browser choice of their own.
        return;
    }
}

void MainWindow::onTrayIcon(UINT mouseMessage) {
    switch (mouseMessage) {
    case WM_RBUTTONUP:
    case WM_CONTEXTMENU:
        showTrayMenu();
        return;
    case WM_LBUTTONUP:
    case WM_LBUTTONDBLCLK:
        showFromTray();
        return;
    default:
        return;
    }
}

void MainWindow::showTrayMenu() {
    UniqueMenu menu(CreatePopupMenu());
    if (!menu) {
        return;
    }
    AppendMenuW(menu.get(), MF_STRING, command::OpenClient, L"Open Corvandell");
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu.get(), MF_STRING, command::Friends, L"Friends");
    AppendMenuW(menu.get(), MF_STRING, command::Options, L"Options");
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu.get(), MF_STRING, command::Exit, L"Exit");
    SetMenuDefaultItem(menu.get(), command::OpenClient, FALSE);
    POINT cursor{};
    GetCursorPos(&cursor);
    // Without the foreground the menu would not close when the user clicks elsewhere.
    SetForegroundWindow(hwnd_);
    TrackPopupMenu(menu.get(), TPM_RIGHTBUTTON, cursor.x, cursor.y, 0, hwnd_, nullptr);
    PostMessageW(hwnd_, WM_NULL, 0, 0);
}

void MainWindow::showFromTray() {
    ShowWindow(hwnd_, IsIconic(hwnd_) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(hwnd_);
}

void MainWindow::onChildClosed(ChildKind kind, HWND window) noexcept {
    const auto found = childWindows_.find(kind);
    if (found != childWindows_.end() && found->second == window) {
        found->second = nullptr;
    }
}

void MainWindow::onLibraryResult(std::unique_ptr<LibraryResult> result) {
    if (!refreshes_.isCurrent(result->generation)) {
        return; // a newer refresh is on its way
    }
    LibraryApply apply = applyLibraryResult(!rows_.empty(), *result, installedGames_, isSignedIn());
    if (apply.replacesRows) {
        rows_ = std::move(apply.rows);
        loadRatings();
        loadRowIcons();
        refillList();
    }
    setStatus(widen(apply.statusText));
}

void MainWindow::onIconBatch(std::unique_ptr<IconBatch> batch) {
    for (auto& [key, icon] : batch->icons) {
        rowIcons_[key] = std::move(icon); // a replaced icon is destroyed here
    }
    InvalidateRect(list_, nullptr, FALSE);
}

void MainWindow::onRatingsLoaded(std::unique_ptr<RatingsResult> result) {
    if (!result->succeeded) {
        return; // the list simply shows no ratings
    }
    ratings_.clear();
    for (RatingSummary& rating : result->ratings) {
        ratings_[rating.gameKey] = std::move(rating);
    }
    InvalidateRect(list_, nullptr, FALSE);
    const int row = selectedRow();
    if (row >= 0) {
        const auto mine = ratings_.find(rows_[static_cast<size_t>(row)].key);
        playtimePanel_->setMyStars(mine == ratings_.end() ? 0 : std::max(mine->second.myStars, 0));
    }
}

void MainWindow::onRatingResult(std::unique_ptr<RatingsResult> result) {
    if (!result->succeeded || result->ratings.empty()) {
        setStatus(L"Could not save your rating.");
    } else {
        ratings_[result->ratings.front().gameKey] = result->ratings.front();
        InvalidateRect(list_, nullptr, FALSE);
    }
    const int row = selectedRow();
    if (row >= 0) {
        const auto mine = ratings_.find(rows_[static_cast<size_t>(row)].key);
        playtimePanel_->setMyStars(mine == ratings_.end() ? 0 : std::max(mine->second.myStars, 0));
    }
}

void MainWindow::onPlaytimeResult(std::unique_ptr<PlaytimeResult> result) {
    if (result->key != playtimeKey_) {
        return; // the selection moved on while it was asked
    }
    playtimePanel_->setText(widen(playtimeText(*result)));
}

void MainWindow::setStatus(const std::wstring& text) {
    const std::wstring line = fileNotice_.empty() ? text : fileNotice_ + L" " + text;
    SetWindowTextW(status_, line.c_str());
}

std::wstring MainWindow::statusText() const {
    return hwndText(status_);
}

} // namespace corvandell::win
