// The main window's install action: what it says for rows the client does not install,
// and for a service title the whole way against the stand-in: "Preparing download...", the
// progress in the status line, library.json written, and after the refresh the row shown
// installed with Launch as its action; failures leave library.json untouched.
#include <windows.h>

#include "api/JsonText.hpp"
#include "app/LibraryCache.hpp"
#include "app/LibraryMerge.hpp"
#include "app/win/MainWindow.hpp"
#include "base/Utf8Path.hpp"
#include "base/win/WideText.hpp"
#include "launch/InstalledBuild.hpp"
#include "support/ScriptedService.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/TestGames.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kEmberKeep[] = "2860dc9d-ab01-5354-8304-4c562bcb86fb";
constexpr char kStarfallCourier[] = "6002ee77-26af-5cc2-bf16-cd2cf996effb";

// Every text the status line is given, as the user would have seen it, however quickly
// the next one followed.
class StatusRecorder {
public:
    explicit StatusRecorder(HWND status) : status_(status) {
        SetPropW(status_, kProp, this);
        previous_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(status_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&StatusRecorder::procedure)));
    }
    ~StatusRecorder() {
        if (IsWindow(status_)) {
            SetWindowLongPtrW(status_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_));
            RemovePropW(status_, kProp);
        }
    }
    StatusRecorder(const StatusRecorder&) = delete;
    StatusRecorder& operator=(const StatusRecorder&) = delete;

    const std::vector<std::wstring>& texts() const { return texts_; }
    bool saw(const std::wstring& text) const {
        return std::find(texts_.begin(), texts_.end(), text) != texts_.end();
    }
    void clear() { texts_.clear(); }

private:
    static constexpr wchar_t kProp[] = L"CorvandellTestStatusRecorder";
    static LRESULT CALLBACK procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* self = static_cast<StatusRecorder*>(GetPropW(hwnd, kProp));
        if (message == WM_SETTEXT && lParam != 0) {
            self->texts_.emplace_back(reinterpret_cast<const wchar_t*>(lParam));
        }
        return CallWindowProcW(self->previous_, hwnd, message, wParam, lParam);
    }

    HWND status_;
    WNDPROC previous_ = nullptr;
    std::vector<std::wstring> texts_;
};

std::wstring joined(const std::vector<std::wstring>& texts) {
    std::wstring all;
    for (const std::wstring& text : texts) {
        all += L"[" + text + L"] ";
    }
    return all;
}

class MainWindowInstallTest : public ::testing::Test {
protected:
    void open(MainWindowJobs jobs = {}, int downloadLimitKbps = 0) {
        Settings settings = defaultSettings(paths_.defaultLibraryFolder);
        settings.downloadLimitKbps = downloadLimitKbps;
        settings.overlayHintShown = true; // no hint box to stand between Launch and the game
        const Settings signedIn = signedInSettings("demo");
        settings.apiBaseUrl = signedIn.apiBaseUrl;
        settings.bearerToken = signedIn.bearerToken;
        window_ = std::make_unique<MainWindow>(GetModuleHandleW(nullptr), paths_, settings,
                                               settingsFileIn(paths_.dataFolder), std::move(jobs));
        ASSERT_TRUE(window_->create(SW_HIDE));
        ASSERT_TRUE(test::pumpUntil(
            [this] { return window_->statusText().starts_with(L"Library refreshed."); }, 30'000))
            << narrow(window_->statusText());
        status_ = std::make_unique<StatusRecorder>(window_->control(control::Status));
    }

    int rowNamed(const std::string& name) const {
        const auto& rows = window_->rows();
        const auto found =
            std::find_if(rows.begin(), rows.end(), [&](const LibraryItem& row) { return row.name == name; });
        return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
    }
    const LibraryItem& row(const std::string& name) const {
        return window_->rows().at(static_cast<size_t>(rowNamed(name)));
    }
    void select(const std::string& name) {
        const int index = rowNamed(name);
        ASSERT_GE(index, 0) << name;
        HWND list = window_->control(command::List);
        ListView_SetItemState(list, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }
    // The action button, as a click sends it.
    void pressAction() {
        SendMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Launch, BN_CLICKED),
                     reinterpret_cast<LPARAM>(window_->control(command::Launch)));
    }
    std::wstring actionLabel() const { return hwndText(window_->control(command::Launch)); }
    bool waitForStatus(const std::wstring& prefix, DWORD timeoutMs = 30'000) {
        return test::pumpUntil(
            [&] {
                return std::any_of(status_->texts().begin(), status_->texts().end(),
                                   [&](const std::wstring& text) { return text.starts_with(prefix); });
            },
            timeoutMs);
    }
    fs::path libraryFile() const { return paths_.dataFolder / "library.json"; }

    test::TempFolder folder_;
    const DataPaths paths_{folder_.path() / "data", folder_.path() / "games"};
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<StatusRecorder> status_;
};

TEST_F(MainWindowInstallTest, InstallsASeededTitleAndTheRefreshShowsItInstalledWithLaunch) {
    open();
    struct Case {
        const char* name;
        const char* titleId;
        const wchar_t* lastProgress; // with a Content-Length the percent climbs; without it stays 0
    };
    const Case cases[] = {
        {"Ember Keep", kEmberKeep, L"Downloading 100%"},
        {"Starfall Courier", kStarfallCourier, L"Downloading 0%"},
    };
    std::size_t installed = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        select(c.name);
        EXPECT_EQ(actionLabel(), L"Install");
        EXPECT_FALSE(row(c.name).isInstalled());
        status_->clear();
        pressAction();
        ASSERT_TRUE(test::pumpUntil([&] { return row(c.name).isInstalled(); }, 30'000))
            << narrow(joined(status_->texts()));
        ++installed;

        const std::vector<std::wstring>& seen = status_->texts();
        ASSERT_FALSE(seen.empty());
        EXPECT_EQ(seen.front(), L"Preparing download...");
        EXPECT_TRUE(status_->saw(c.lastProgress)) << narrow(joined(seen));
        EXPECT_TRUE(status_->saw(L"Installed 100%")) << narrow(joined(seen));
        // The refresh that shows the row installed was asked after library.json was saved.
        const auto installedAt = std::find(seen.begin(), seen.end(), L"Installed 100%");
        EXPECT_NE(std::find(installedAt, seen.end(), L"Loading library..."), seen.end())
            << narrow(joined(seen));

        GuardedFile file = libraryFileIn(paths_.dataFolder);
        const std::vector<LibraryRecord> records = loadLibrary(file);
        ASSERT_EQ(records.size(), installed);
        const LibraryRecord& record = records.back();
        const fs::path folder = paths_.defaultLibraryFolder / c.name;
        EXPECT_EQ(record.titleId, c.titleId);
        EXPECT_EQ(record.name, c.name);
        EXPECT_EQ(record.installPath, pathToUtf8(folder));
        EXPECT_EQ(record.executablePath, "");
        EXPECT_GT(record.installedAtUnix, 1'700'000'000);
        EXPECT_EQ(readInstalledBuild(folder).titleId, c.titleId);

        // After the refresh: installed, current, so Launch rather than Update.
        ASSERT_TRUE(test::pumpUntil([&] { return window_->statusText().starts_with(L"Library refreshed."); },
                                    30'000));
        const int index = rowNamed(c.name);
        EXPECT_EQ(window_->cellText(index, 1), L"Installed");
        EXPECT_EQ(row(c.name).installedVersion(), row(c.name).latestVersion);
        EXPECT_FALSE(row(c.name).latestVersion.empty());
        EXPECT_EQ(actionFor(row(c.name)), RowAction::Launch);
        select(c.name);
        EXPECT_EQ(actionLabel(), L"Launch");
    }
}

// Installed through the client, launched from its row, followed to its end, and its session
// opened and closed with the service.
TEST_F(MainWindowInstallTest, AnInstalledBuildLaunchesFromItsRowAndItsSessionIsReported) {
    struct EndGames {
        fs::path folder;
        ~EndGames() { test::endProcessesUnder(folder); }
    } endGames{folder_.path()};
    open();
    const std::string program = test::readTestFile(test::siblingExecutable(L"corvandell-test-game.exe"));
    ASSERT_FALSE(program.empty());
    scriptNextReply(std::string("/api/v1/software/") + kEmberKeep + "/download", 200,
                    "{\"items\":[{\"assetId\":\"bin/Ember.exe\",\"type\":\"data\",\"signedUrl\":\"" +
                        escapeBodyString(serviceBaseUrl() + "/files/ember") + "\"}]}");
    scriptFileReply("/files/ember", program, FileTransfer::WithLength);
    select("Ember Keep");
    pressAction();
    ASSERT_TRUE(test::pumpUntil([&] { return row("Ember Keep").isInstalled(); }, 30'000))
        << narrow(joined(status_->texts()));
    ASSERT_TRUE(
        test::pumpUntil([&] { return window_->statusText().starts_with(L"Library refreshed."); }, 30'000));
    const fs::path executable = paths_.defaultLibraryFolder / "Ember Keep" / "bin" / "Ember.exe.bin";
    EXPECT_EQ(row("Ember Keep").install->executablePath, pathToUtf8(executable));

    const std::size_t callsBefore = receivedRequests().size();
    select("Ember Keep");
    pressAction();
    ASSERT_TRUE(test::pumpUntil([&] { return window_->trackedGame().state == 2; }, 20'000))
        << narrow(window_->statusText());
    EXPECT_EQ(window_->statusText(), L"Ember Keep is running. Shift+Tab opens the Corvandell overlay.");
    ASSERT_EQ(test::processesUnder(paths_.defaultLibraryFolder).size(), 1u);
    select("Ember Keep");
    EXPECT_EQ(actionLabel(), L"Stop");
    pressAction();
    ASSERT_TRUE(test::pumpUntil([&] { return window_->trackedGame().state == 0; }, 20'000))
        << narrow(window_->statusText());
    EXPECT_TRUE(test::processesUnder(paths_.defaultLibraryFolder).empty());

    std::vector<std::string> sessionCalls;
    ASSERT_TRUE(test::pumpUntil(
        [&] {
            const std::vector<std::string> calls = receivedRequests();
            sessionCalls.clear();
            for (std::size_t i = callsBefore; i < calls.size(); ++i) {
                if (calls[i].find("/launch") != std::string::npos) {
                    sessionCalls.push_back(calls[i]);
                }
            }
            return sessionCalls.size() == 2;
        },
        20'000));
    EXPECT_EQ(sessionCalls[0], std::string("POST /api/v1/software/") + kEmberKeep + "/launch");
    EXPECT_TRUE(sessionCalls[1].starts_with("POST /api/v1/activity/launches/")) << sessionCalls[1];
    EXPECT_TRUE(sessionCalls[1].ends_with("/end")) << sessionCalls[1];
}

TEST_F(MainWindowInstallTest, FailedInstallsSayWhyAndLeaveLibraryJsonAlone) {
    open();
    const std::string route = std::string("/api/v1/software/") + kEmberKeep + "/download";
    const std::string cutUrl = serviceBaseUrl() + "/files/cut";
    struct Case {
        std::string grant;
        bool isFileFetched;
        std::wstring status;
    };
    const Case cases[] = {
        {"{\"items\":[]}", false, L"Install failed: No downloadable assets returned by API."},
        {"{\"items\":[{\"assetId\":\"..\\\\..\\\\evil\",\"type\":\"data\",\"signedUrl\":\"" + cutUrl +
             "\"}]}",
         false, L"Install failed: The service gave an unsafe file name: \"..\\..\\evil\"."},
        {"{\"items\":[{\"assetId\":\"core\",\"type\":\"data\",\"signedUrl\":\"" + cutUrl + "\"}]}", true,
         L"Install failed: The download of \"core\" "},
    };
    select("Ember Keep");
    for (const Case& c : cases) {
        SCOPED_TRACE(narrow(c.status));
        scriptNextReply(route, 200, c.grant);
        if (c.isFileFetched) {
            scriptFileReply("/files/cut", std::string(50'000, 'x'), FileTransfer::CutShort);
        }
        status_->clear();
        pressAction();
        ASSERT_TRUE(waitForStatus(c.status)) << narrow(joined(status_->texts()));
        EXPECT_FALSE(fs::exists(libraryFile()));
        EXPECT_FALSE(row("Ember Keep").isInstalled());
        EXPECT_FALSE(status_->saw(L"Loading library...")) << "no refresh after a failure";
    }
    const fs::path folder = paths_.defaultLibraryFolder / "Ember Keep";
    EXPECT_FALSE(fs::exists(folder / "core.bin"));
    EXPECT_FALSE(fs::exists(folder / "core.bin.partial"));
    EXPECT_FALSE(fs::exists(folder / kInstalledBuildFileName));
}

TEST_F(MainWindowInstallTest, OneInstallPerTitleAtATime) {
    open();
    select("Ember Keep");
    pressAction();
    pressAction(); // before the first has had any chance to finish: nothing is pumped between
    EXPECT_TRUE(status_->saw(L"Ember Keep is already being installed.")) << narrow(joined(status_->texts()));
    ASSERT_TRUE(test::pumpUntil([&] { return row("Ember Keep").isInstalled(); }, 30'000));
    // Once it is done, the title may be installed again (the row now offers Launch, so the
    // install is asked for directly).
    status_->clear();
    window_->installSelected();
    EXPECT_EQ(status_->texts().front(), L"Preparing download...");
    EXPECT_TRUE(waitForStatus(L"Library refreshed."));
}

TEST_F(MainWindowInstallTest, ClosingTheClientStopsACappedDownloadAtOnceAndInstallsNothing) {
    open({}, 1); // 1 KiB/s: the file below would take over a minute
    const std::string route = std::string("/api/v1/software/") + kEmberKeep + "/download";
    scriptNextReply(route, 200,
                    "{\"items\":[{\"assetId\":\"slow\",\"type\":\"data\",\"signedUrl\":\"" +
                        serviceBaseUrl() + "/files/slow\"}]}");
    scriptFileReply("/files/slow", std::string(64 * 1024, 's'), FileTransfer::WithLength);
    select("Ember Keep");
    pressAction();
    ASSERT_TRUE(waitForStatus(L"Downloading ")) << narrow(joined(status_->texts()));
    const ULONGLONG start = GetTickCount64();
    status_.reset();
    window_.reset(); // Exit: the window waits for its jobs before it goes
    EXPECT_LT(GetTickCount64() - start, 10'000u);
    GuardedFile file = libraryFileIn(paths_.dataFolder); // saved on exit, with nothing installed
    EXPECT_TRUE(loadLibrary(file).empty());
    EXPECT_FALSE(fs::exists(paths_.defaultLibraryFolder / "Ember Keep" / "slow.bin"));
    EXPECT_FALSE(fs::exists(paths_.defaultLibraryFolder / "Ember Keep" / "slow.bin.partial"));
}

// Rows the client never downloads: Steam's, another store's, hosted browser games, and a
// repository game whose address is not on the repository host.
TEST_F(MainWindowInstallTest, RowsOfOtherInstallersAreExplainedNotDownloaded) {
    MainWindowJobs jobs;
    jobs.api = std::make_shared<test::ScriptedService>(); // any service call would fail the test's texts
    jobs.makeRefresh = [](const std::string&) {
        return [] {
            LibraryResult result{.succeeded = true};
            DetectedGame steam;
            steam.key = "steam:10";
            steam.title = "Moss Valley";
            steam.storeKey = "steam";
            steam.storeName = "Steam";
            steam.externalId = "10";
            steam.steamAppId = "10";
            DetectedGame epic;
            epic.key = "epic:e1";
            epic.title = "Cave Run";
            epic.storeKey = "epic";
            epic.storeName = "Epic Games";
            epic.externalId = "e1";
            result.steamRows = {rowFromDetectedGame(steam)};
            result.storeRows = {rowFromDetectedGame(epic)};
            result.browserGames = {
                // Hosted on loopback, so the site icon the list asks for never leaves the machine.
                {"g1", "https://github.com/chen-plays/pixel-garden", "chen-plays", "pixel-garden",
                 "Pixel Garden", "https://127.0.0.1:9/pixel-garden/", true, "chen"},
                // Not on the repository host, so there is nothing to clone it from.
                {"g2", "https://gitlab.com/alice-codes/tiny-tower", "alice-codes", "tiny-tower", "Tiny Tower",
                 "index.html", true, "alice"}};
            return result;
        };
    };
    open(std::move(jobs));
    const struct {
        const char* name;
        std::wstring status; // empty: nothing is said and nothing starts
    } cases[] = {
        {"Moss Valley", L"This game is installed and updated by Steam."},
        {"Cave Run", L"This game is installed and updated by Epic Games."},
        {"Pixel Garden", L"This game runs from the web - nothing to install. Just press Launch."},
        {"Tiny Tower", L"This game has an invalid repository URL."},
    };
    for (const auto& c : cases) {
        select(c.name);
        status_->clear();
        window_->installSelected();
        test::pumpUntil([] { return false; }, 200);
        if (c.status.empty()) {
            EXPECT_TRUE(status_->texts().empty()) << c.name << ": " << narrow(joined(status_->texts()));
        } else {
            EXPECT_EQ(status_->texts(), std::vector<std::wstring>{c.status}) << c.name;
        }
    }
}

} // namespace
} // namespace corvandell::win
