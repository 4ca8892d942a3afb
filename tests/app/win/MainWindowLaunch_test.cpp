// Launching and following games from the main window, in process, against real processes
// (the stand-in games copied into game folders of the test's own) and the service stand-in,
// whose log of requests shows the sessions the window opened and closed.
#include <windows.h>

#include <commctrl.h>

#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "base/win/WideText.hpp"
#include "launch/SessionJournal.hpp"
#include "launch/win/ProcessSearch.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ClientUnderTest.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/TestGames.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kStartCall[] = "POST /api/v1/activity/external-launches";

bool isSessionCall(const std::string& request) {
    return request.starts_with("POST /api/v1/activity/") || request.find("/launch") != std::string::npos;
}

bool isEndCall(const std::string& request) {
    return request.starts_with("POST /api/v1/activity/external-launches/") && request.ends_with("/end");
}

std::string uniqueUser() {
    static int count = 0;
    return "launch-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
}

bool isRunning(DWORD processId) {
    const UniqueKernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    return process && WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT;
}

class MainWindowLaunchTest : public ::testing::Test {
protected:
    void SetUp() override {
        applyTheme(builtInSkins()[0]);
        settings_ = signedInSettings(uniqueUser());
        settings_.overlayHintShown = true;
        callsBefore_ = receivedRequests().size();
    }

    void TearDown() override {
        window_.reset();
        test::endProcessesUnder(folder_.path());
    }

    // A game another store installed, started directly from `executable` (empty: through
    // `storeCommand`); hand-offs are looked for under `installFolder` when it is given.
    static LibraryItem storeRow(const std::string& id, const std::string& name, const fs::path& executable,
                                const fs::path& installFolder = {}, const std::string& storeCommand = "",
                                const std::string& store = "itch") {
        LibraryItem row;
        row.key = store + ":" + id;
        row.name = name;
        row.install = InstallRecord{narrow(installFolder.wstring()), narrow(executable.wstring()), {}};
        row.store = std::make_shared<const StoreInfo>(
            StoreInfo{store, store == "itch" ? "itch.io" : "Riot Games", id, storeCommand});
        return row;
    }

    void openWith(std::vector<LibraryItem> rows) {
        MainWindowJobs jobs;
        jobs.makeRefresh = [rows](const std::string&) -> std::function<LibraryResult()> {
            return [rows] {
                LibraryResult result{.succeeded = true,
                                     .entitlements = {Entitlement{"e1", "u1", "t1", false}}};
                result.storeRows = rows;
                return result;
            };
        };
        const DataPaths paths{folder_.path() / "data", folder_.path() / "games"};
        fs::create_directories(paths.dataFolder);
        window_ = std::make_unique<MainWindow>(GetModuleHandleW(nullptr), paths, settings_,
                                               settingsFileIn(paths.dataFolder), std::move(jobs));
        ASSERT_TRUE(window_->create(SW_HIDE));
        // The rows, not the status line: a game followed from the start may speak last.
        ASSERT_TRUE(test::pumpUntil([&] { return window_->rows().size() == rows.size(); }, 10000));
    }

    void select(const std::string& key) {
        const auto& rows = window_->rows();
        const auto found =
            std::find_if(rows.begin(), rows.end(), [&](const LibraryItem& r) { return r.key == key; });
        ASSERT_NE(found, rows.end()) << key;
        const int index = static_cast<int>(found - rows.begin());
        ListView_SetItemState(window_->control(command::List), index, LVIS_SELECTED | LVIS_FOCUSED,
                              LVIS_SELECTED | LVIS_FOCUSED);
    }

    void pressAction() {
        SendMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Launch, BN_CLICKED), 0);
    }

    void launch(const std::string& key) {
        select(key);
        pressAction();
    }

    bool waitForState(int state, DWORD timeoutMs) {
        return test::pumpUntil([&] { return window_->trackedGame().state == state; }, timeoutMs);
    }

    std::wstring actionLabel() const { return hwndText(window_->control(command::Launch)); }

    // The session calls the stand-in received during this test, in order.
    std::vector<std::string> sessionCalls() const {
        std::vector<std::string> calls = receivedRequests();
        calls.erase(calls.begin(),
                    calls.begin() + static_cast<std::ptrdiff_t>(std::min(callsBefore_, calls.size())));
        std::erase_if(calls, [](const std::string& call) { return !isSessionCall(call); });
        return calls;
    }

    bool waitForSessionCalls(size_t count, DWORD timeoutMs) {
        return test::pumpUntil([&] { return sessionCalls().size() >= count; }, timeoutMs);
    }

    // The one stand-in game running under `folder` that is not `except`, once it shows its window.
    DWORD waitForGameUnder(const fs::path& folder, DWORD except = 0) {
        DWORD found = 0;
        test::pumpUntil(
            [&] {
                for (const DWORD id : test::processesUnder(folder)) {
                    if (id != except && test::testGameWindowOf(id) != nullptr) {
                        found = id;
                        return true;
                    }
                }
                return false;
            },
            15000);
        return found;
    }

    test::TempFolder folder_;
    Settings settings_;
    size_t callsBefore_ = 0;
    std::unique_ptr<MainWindow> window_;
};

TEST_F(MainWindowLaunchTest, TheSessionLastsUntilTheLastProcessOfTheJobEnds) {
    const fs::path game = folder_.path() / "Lantern";
    const fs::path launcher = test::placeTestLauncher(game, L"Launcher.exe", "Game.exe");
    test::placeTestGame(game, L"Game.exe");
    openWith({storeRow("lantern", "Lantern", launcher)});
    launch("itch:lantern");
    EXPECT_EQ(window_->statusText(), L"Launching Lantern...");
    ASSERT_TRUE(waitForState(2, 15000));
    EXPECT_EQ(window_->statusText(), L"Lantern is running. Shift+Tab opens the Corvandell overlay.");
    const DWORD launcherId = window_->trackedProcessId();

    // The launcher started the game and ended; the game is still in the job.
    const DWORD gameId = waitForGameUnder(game, launcherId);
    ASSERT_NE(gameId, 0u);
    ASSERT_TRUE(test::pumpUntil([&] { return !isRunning(launcherId); }, 10000));
    test::pumpUntil([] { return false; }, 1000);
    EXPECT_EQ(window_->trackedGame().state, 2);
    EXPECT_EQ(actionLabel(), L"Stop");
    ASSERT_TRUE(waitForSessionCalls(1, 10000));
    EXPECT_EQ(sessionCalls(), std::vector<std::string>{kStartCall});

    PostMessageW(test::testGameWindowOf(gameId), WM_CLOSE, 0, 0);
    ASSERT_TRUE(waitForState(0, 10000));
    EXPECT_EQ(window_->statusText(), L"Lantern exited.");
    EXPECT_EQ(actionLabel(), L"Launch");
    ASSERT_TRUE(waitForSessionCalls(2, 10000));
    const auto calls = sessionCalls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0], kStartCall);
    EXPECT_TRUE(isEndCall(calls[1])) << calls[1];
}

TEST_F(MainWindowLaunchTest, AGameThatIgnoresCloseIsTerminatedAfterAboutFourSeconds) {
    const fs::path game = folder_.path() / "Stubborn";
    const fs::path executable = test::placeTestGame(game, L"Stubborn.exe", "--ignore-close");
    openWith({storeRow("stubborn", "Stubborn", executable)});
    launch("itch:stubborn");
    ASSERT_TRUE(waitForState(2, 15000));
    ASSERT_NE(waitForGameUnder(game), 0u);

    const ULONGLONG stopped = GetTickCount64();
    pressAction();
    EXPECT_EQ(window_->trackedGame().state, 3);
    EXPECT_EQ(window_->statusText(), L"Stopping Stubborn...");
    EXPECT_EQ(actionLabel(), L"Stopping...");
    ASSERT_TRUE(waitForState(0, 15000));
    const ULONGLONG tookMs = GetTickCount64() - stopped;
    EXPECT_GE(tookMs, 3500u) << "it was not given its time to close";
    EXPECT_LT(tookMs, 9000u);
    EXPECT_EQ(window_->statusText(), L"Stubborn exited.");
    EXPECT_TRUE(test::processesUnder(game).empty());
}

TEST_F(MainWindowLaunchTest, AGameThatNeverTakesInputIsShownRunningAfterTenSeconds) {
    const fs::path game = folder_.path() / "Sleeper";
    const fs::path executable = test::placeTestGame(game, L"Sleeper.exe", "--no-idle-ms 60000");
    openWith({storeRow("sleeper", "Sleeper", executable)});
    const ULONGLONG launched = GetTickCount64();
    launch("itch:sleeper");
    EXPECT_EQ(window_->trackedGame().state, 1);
    EXPECT_EQ(window_->cellText(0, 1), L"Launching...");
    ASSERT_TRUE(waitForState(2, 20000));
    EXPECT_GE(GetTickCount64() - launched, 9500u);
    EXPECT_EQ(window_->cellText(0, 1), L"Running");

    // With no window to close it, stopping ends in termination.
    pressAction();
    ASSERT_TRUE(waitForState(0, 15000));
    EXPECT_TRUE(test::processesUnder(game).empty());
}

TEST_F(MainWindowLaunchTest, DoubleClickingTheRunningRowDoesNothingAndTheActionButtonStopsIt) {
    const fs::path game = folder_.path() / "Moth";
    const fs::path executable = test::placeTestGame(game, L"Moth.exe");
    openWith({storeRow("moth", "Moth", executable)});
    // Shift+Tab belongs to the client exactly while a game is followed.
    const auto isShiftTabFree = [] {
        const bool isFree = RegisterHotKey(nullptr, 77, MOD_SHIFT, VK_TAB) != FALSE;
        UnregisterHotKey(nullptr, 77);
        return isFree;
    };
    EXPECT_TRUE(isShiftTabFree());
    launch("itch:moth");
    ASSERT_TRUE(waitForState(2, 15000));
    EXPECT_FALSE(isShiftTabFree());
    const DWORD gameId = window_->trackedProcessId();

    NMITEMACTIVATE activate{};
    activate.hdr.hwndFrom = window_->control(command::List);
    activate.hdr.idFrom = command::List;
    activate.hdr.code = NM_DBLCLK;
    activate.iItem = 0;
    SendMessageW(window_->hwnd(), WM_NOTIFY, command::List, reinterpret_cast<LPARAM>(&activate));
    test::pumpUntil([] { return false; }, 1000);
    EXPECT_EQ(window_->trackedGame().state, 2);
    EXPECT_EQ(window_->trackedProcessId(), gameId);
    EXPECT_TRUE(isRunning(gameId));
    EXPECT_EQ(sessionCalls(), std::vector<std::string>{kStartCall}) << "a second session was opened";

    const ULONGLONG stopped = GetTickCount64();
    pressAction();
    ASSERT_TRUE(waitForState(0, 10000));
    EXPECT_LT(GetTickCount64() - stopped, 3000u) << "a game that closes politely was forced";
    EXPECT_FALSE(isRunning(gameId));
    EXPECT_TRUE(isShiftTabFree());
    ASSERT_TRUE(waitForSessionCalls(2, 10000));
    EXPECT_TRUE(isEndCall(sessionCalls()[1]));
}

TEST_F(MainWindowLaunchTest, ASecondLaunchEndsTheFirstSessionAndFollowsOnlyTheSecondGame) {
    const fs::path first = folder_.path() / "First";
    const fs::path second = folder_.path() / "Second";
    openWith({storeRow("first", "First", test::placeTestGame(first, L"First.exe")),
              storeRow("second", "Second", test::placeTestGame(second, L"Second.exe"))});
    launch("itch:first");
    ASSERT_TRUE(waitForState(2, 15000));
    const DWORD firstId = window_->trackedProcessId();
    ASSERT_TRUE(waitForSessionCalls(1, 10000));

    launch("itch:second");
    ASSERT_TRUE(test::pumpUntil(
        [&] { return window_->trackedGame().key == "itch:second" && window_->trackedGame().state == 2; },
        15000));
    ASSERT_TRUE(waitForSessionCalls(3, 10000));
    auto calls = sessionCalls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), kStartCall), 2);
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), isEndCall), 1);
    // Forgetting the first game never ends it: it is the player's.
    EXPECT_TRUE(isRunning(firstId));

    // The first game's end no longer concerns the window.
    test::endProcessesUnder(first);
    test::pumpUntil([] { return false; }, 1000);
    EXPECT_EQ(window_->trackedGame().key, "itch:second");
    EXPECT_EQ(window_->trackedGame().state, 2);

    pressAction(); // the second row is still selected
    ASSERT_TRUE(waitForState(0, 10000));
    ASSERT_TRUE(waitForSessionCalls(4, 10000));
    calls = sessionCalls();
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), isEndCall), 2);
    EXPECT_NE(calls[2], calls[3]);
}

TEST_F(MainWindowLaunchTest, ASessionTheServiceOpensAfterItsGameHasEndedIsClosedAtOnce) {
    const fs::path game = folder_.path() / "Brief";
    openWith({storeRow("brief", "Brief", test::placeTestGame(game, L"Brief.exe"))});
    launch("itch:brief");
    ASSERT_TRUE(waitForState(2, 15000));
    ASSERT_TRUE(waitForSessionCalls(1, 10000));
    PostMessageW(test::testGameWindowOf(window_->trackedProcessId()), WM_CLOSE, 0, 0);
    ASSERT_TRUE(waitForState(0, 10000));
    ASSERT_TRUE(waitForSessionCalls(2, 10000));

    // Real sessions whose answers arrive late: for the launch just ended (its token, nothing
    // tracked any more) and for an earlier launch (an old token).
    ProbeClient probe(&settings_);
    for (const std::uint32_t token : {1u, 0u}) {
        const std::string id = probe.startExternalLaunch("itch", "brief", "Brief").launchId;
        ASSERT_FALSE(id.empty());
        auto record = std::make_unique<LaunchRecord>(
            LaunchRecord{.launchToken = token, .rowKey = "itch:brief", .sessionId = id, .isExternal = true});
        ASSERT_TRUE(
            PostMessageW(window_->hwnd(), MsgLaunchRecord, 0, reinterpret_cast<LPARAM>(record.get())));
        static_cast<void>(record.release());
        const std::string end = "POST /api/v1/activity/external-launches/" + id + "/end";
        EXPECT_TRUE(test::pumpUntil(
            [&] {
                const auto calls = sessionCalls();
                return std::find(calls.begin(), calls.end(), end) != calls.end();
            },
            10000))
            << "token " << token;
    }
}

TEST_F(MainWindowLaunchTest, AGameThatBreaksAwayFromTheJobIsFollowedByItsFolder) {
    const fs::path game = folder_.path() / "Harbor";
    const fs::path launcher = test::placeTestLauncher(game, L"HarborLauncher.exe", "--breakaway Harbor.exe");
    test::placeTestGame(game, L"Harbor.exe");
    openWith({storeRow("harbor", "Harbor", launcher, game)});
    launch("itch:harbor");
    ASSERT_TRUE(
        test::pumpUntil([&] { return window_->statusText().starts_with(L"Following Harbor.exe"); }, 20000))
        << narrow(window_->statusText());
    const DWORD gameId = window_->trackedProcessId();
    EXPECT_EQ(window_->statusText(),
              L"Following Harbor.exe (process " + std::to_wstring(gameId) + L") for Harbor.");
    ASSERT_EQ(waitForGameUnder(game), gameId);
    EXPECT_NE(window_->trackedGame().state, 0);

    PostMessageW(test::testGameWindowOf(gameId), WM_CLOSE, 0, 0);
    ASSERT_TRUE(waitForState(0, 10000));
    EXPECT_EQ(window_->statusText(), L"Harbor exited.");
    ASSERT_TRUE(waitForSessionCalls(2, 10000));
    const auto calls = sessionCalls();
    EXPECT_EQ(calls.size(), 2u);
    EXPECT_TRUE(isEndCall(calls.back()));
}

TEST_F(MainWindowLaunchTest, AGameItsStoreStartsIsFoundUnderItsFolderAndItsSessionKeptOpen) {
    const fs::path game = folder_.path() / "Valor";
    const fs::path launcher = test::placeTestLauncher(game, L"Client.exe", "Valor.exe");
    test::placeTestGame(game, L"Valor.exe");
    openWith({storeRow("valor", "Valor", {}, game, "\"" + narrow(launcher.wstring()) + "\"", "riot")});
    launch("riot:valor");
    EXPECT_EQ(window_->statusText(), L"Launched Valor via Riot Games (no executable found; exit tracking and "
                                     L"the overlay are unavailable).");
    const DWORD gameId = waitForGameUnder(game);
    ASSERT_NE(gameId, 0u);
    ASSERT_TRUE(test::pumpUntil(
        [&] { return window_->trackedProcessId() == gameId && window_->trackedGame().state == 2; }, 20000))
        << narrow(window_->statusText());
    ASSERT_TRUE(waitForSessionCalls(1, 10000));
    EXPECT_EQ(sessionCalls(), std::vector<std::string>{kStartCall});

    PostMessageW(test::testGameWindowOf(gameId), WM_CLOSE, 0, 0);
    ASSERT_TRUE(waitForState(0, 10000));
    ASSERT_TRUE(waitForSessionCalls(2, 10000));
    EXPECT_TRUE(isEndCall(sessionCalls().back()));
}

TEST_F(MainWindowLaunchTest, TheFirstLaunchShowsTheOverlayHintOnceAndTellsTheService) {
    settings_.overlayHintShown = false;
    const fs::path game = folder_.path() / "Hint";
    openWith({storeRow("hint", "Hint", test::placeTestGame(game, L"Hint.exe"))});
    struct Seen {
        std::atomic<int> boxes{0};
        std::wstring title;
        std::wstring text;
    };
    auto seen = std::make_shared<Seen>();
    std::atomic<bool> isDone{false};
    std::thread answerer([&] {
        while (!isDone) {
            HWND box = nullptr;
            EnumThreadWindows(
                GetWindowThreadProcessId(window_->hwnd(), nullptr),
                [](HWND window, LPARAM found) -> BOOL {
                    wchar_t className[16] = {};
                    GetClassNameW(window, className, 16);
                    if (std::wstring(className) == L"#32770" && IsWindowVisible(window)) {
                        *reinterpret_cast<HWND*>(found) = window;
                        return FALSE;
                    }
                    return TRUE;
                },
                reinterpret_cast<LPARAM>(&box));
            if (box != nullptr) {
                seen->title = test::windowTextOf(box);
                seen->text = test::messageBoxText(box);
                ++seen->boxes;
                PostMessageW(box, WM_COMMAND, IDOK, 0);
                Sleep(500);
            }
            Sleep(20);
        }
    });
    launch("itch:hint");
    EXPECT_EQ(window_->statusText(), L"Preparing launch...");
    const bool isRunningNow = waitForState(2, 20000);
    EXPECT_TRUE(isRunningNow);
    EXPECT_EQ(seen->boxes, 1);
    EXPECT_EQ(seen->title, L"Corvandell");
    EXPECT_EQ(seen->text, L"Note that pressing Shift+Tab will bring up the in-game overlay.");
    EXPECT_TRUE(window_->settings().overlayHintShown);
    ProbeClient probe(&settings_);
    EXPECT_TRUE(test::pumpUntil(
        [&] { return probe.getProfileMetadata().find("\"overlayHintShown\":true") != std::string::npos; },
        10000));

    // Later launches go straight ahead.
    pressAction();
    ASSERT_TRUE(waitForState(0, 10000));
    launch("itch:hint");
    EXPECT_TRUE(waitForState(2, 15000));
    EXPECT_EQ(seen->boxes, 1);
    isDone = true;
    answerer.join();
}

TEST_F(MainWindowLaunchTest, AGameStillRunningFromTheLastRunIsFollowedAgainAndOneGoneIsClosedAtOnce) {
    // A game the client started before it died, still running, and the journal it left.
    const fs::path game = folder_.path() / "Ember";
    const fs::path executable = test::placeTestGame(game, L"Ember.exe");
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION created{};
    std::wstring commandLine = L"\"" + executable.wstring() + L"\"";
    ASSERT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &created));
    const UniqueKernelHandle process(created.hProcess);
    CloseHandle(created.hThread);
    ProbeClient probe(&settings_);
    const std::string running = probe.startExternalLaunch("itch", "ember", "Ember").launchId;
    const fs::path journal = sessionJournalIn(folder_.path() / "data");
    fs::create_directories(journal.parent_path());
    saveSessionJournal(journal,
                       SessionJournalRecord{running, true, created.dwProcessId,
                                            processCreationTime(process.get()), "itch:ember", "Ember"});
    callsBefore_ = receivedRequests().size();

    openWith({storeRow("ember", "Ember", executable)});
    EXPECT_EQ(window_->trackedGame().key, "itch:ember");
    EXPECT_EQ(window_->trackedProcessId(), created.dwProcessId);
    ASSERT_NE(waitForGameUnder(game), 0u);
    PostMessageW(test::testGameWindowOf(created.dwProcessId), WM_CLOSE, 0, 0);
    ASSERT_TRUE(waitForState(0, 10000));
    ASSERT_TRUE(waitForSessionCalls(1, 10000));
    EXPECT_EQ(sessionCalls(),
              std::vector<std::string>{"POST /api/v1/activity/external-launches/" + running + "/end"});
    EXPECT_FALSE(fs::exists(journal));
    window_.reset();

    // The same journal once the game is gone (its process id may even be in use again).
    const std::string gone = probe.startExternalLaunch("itch", "ember", "Ember").launchId;
    saveSessionJournal(journal,
                       SessionJournalRecord{gone, true, created.dwProcessId,
                                            processCreationTime(process.get()), "itch:ember", "Ember"});
    callsBefore_ = receivedRequests().size();
    openWith({storeRow("ember", "Ember", executable)});
    EXPECT_EQ(window_->trackedGame().state, 0);
    ASSERT_TRUE(waitForSessionCalls(1, 10000));
    EXPECT_EQ(sessionCalls(),
              std::vector<std::string>{"POST /api/v1/activity/external-launches/" + gone + "/end"});
    EXPECT_FALSE(fs::exists(journal));
}

} // namespace
} // namespace corvandell::win
