// Launching and following games from the main window, in process, against real processes
// (the stand-in games copied into game folders of the test's own) and the service stand-in,
// whose log of requests shows the sessions the window opened and closed.
#include <windows.h>

#include <commctrl.h>

#include "support/win/ClientUnderTest.hpp"
#include "support/win/MainWindowUnderTest.hpp"
#include "support/win/TestGames.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kStartCall[] = "POST /api/v1/activity/external-launches";
const std::string kEndCall = std::string(kStartCall) + "/";

bool isEndCall(const std::string& request) {
    return request.starts_with(kEndCall) && request.ends_with("/end");
}

bool isRunning(DWORD processId) {
    const UniqueKernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    return process && WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT;
}

// Shift+Tab belongs to the client exactly while a game is followed.
bool isShiftTabFree() {
    const bool isFree = RegisterHotKey(nullptr, 77, MOD_SHIFT, VK_TAB) != FALSE;
    UnregisterHotKey(nullptr, 77);
    return isFree;
}

// A game another store installed, started directly from `executable` (empty: through
// `storeCommand`); hand-offs are looked for under `installFolder` when it is given.
LibraryItem storeRow(const std::string& name, const fs::path& executable, const fs::path& installFolder = {},
                     const std::string& storeCommand = "") {
    const std::string store = storeCommand.empty() ? "itch" : "riot";
    LibraryItem row;
    row.key = store + ":" + name;
    row.name = name;
    row.install = InstallRecord{narrow(installFolder.wstring()), narrow(executable.wstring()), {}};
    row.store = std::make_shared<const StoreInfo>(
        StoreInfo{store, store == "itch" ? "itch.io" : "Riot Games", name, storeCommand});
    return row;
}

class MainWindowLaunchTest : public ::testing::Test {
protected:
    void SetUp() override {
        static int count = 0;
        w_.signIn("launch-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count));
        w_.settings.overlayHintShown = true;
        callsBefore_ = receivedRequests().size();
    }
    void TearDown() override {
        w_.window.reset();
        test::endProcessesUnder(w_.folder.path());
    }

    void openWith(std::vector<LibraryItem> rows) {
        LibraryResult result{.succeeded = true, .entitlements = {Entitlement{"e1", "u1", "t1", false}}};
        result.storeRows = rows;
        w_.answerRefreshes(result);
        ASSERT_TRUE(w_.open());
        // The rows, not the status line: a game followed from the start may speak last.
        ASSERT_TRUE(test::pumpUntil([&] { return w_->rows().size() == rows.size(); }, 10000));
    }
    void launch(const std::string& key) {
        ASSERT_TRUE(w_.select(key)) << key;
        w_.pressAction();
    }
    bool waitForState(int state, DWORD timeoutMs = 15000) {
        return test::pumpUntil([&] { return w_->trackedGame().state == state; }, timeoutMs);
    }
    std::vector<std::string> sessionCalls() const { return test::sessionCallsSince(callsBefore_); }
    bool waitForSessionCalls(size_t count) {
        return test::pumpUntil([&] { return sessionCalls().size() >= count; }, 10000);
    }
    void closeGame(DWORD processId) { PostMessageW(test::testGameWindowOf(processId), WM_CLOSE, 0, 0); }

    test::MainWindowUnderTest w_;
    size_t callsBefore_ = 0;
};

// The ways a game is started, followed and ended that the window treats alike: one session
// opened when it runs and closed when its last process ends, Shift+Tab held meanwhile, and a
// double-click on its running row changing nothing.
struct LaunchCase {
    const char* title;
    const char* gameOptions;
    const char* launcher;     // options before the game's name of a launcher that starts it; none: null
    bool isStartedByStore;    // through the store's command line: no executable is known
    bool isFollowedByFolder;  // the launcher hands the game off, so it is found under its folder
    bool isStoppedFromWindow; // the Stop button; otherwise the game closes itself
    ULONGLONG minStopMs, maxStopMs;
};

void PrintTo(const LaunchCase& c, std::ostream* out) {
    *out << c.title;
}

class LaunchCases : public MainWindowLaunchTest, public ::testing::WithParamInterface<LaunchCase> {};

TEST_P(LaunchCases, TheGameIsFollowedToItsLastProcessWithOneSession) {
    const LaunchCase& c = GetParam();
    const std::wstring title = widen(c.title);
    const fs::path folder = w_.folder.path() / c.title;
    fs::path started = test::placeTestGame(folder, title + L".exe", c.gameOptions);
    if (c.launcher != nullptr) {
        started =
            test::placeTestLauncher(folder, L"Launcher.exe", std::string(c.launcher) + c.title + ".exe");
    }
    openWith({c.isStartedByStore ? storeRow(c.title, {}, folder, "\"" + narrow(started.wstring()) + "\"")
                                 : storeRow(c.title, started, c.isFollowedByFolder ? folder : fs::path{})});
    EXPECT_TRUE(isShiftTabFree());
    launch(w_->rows()[0].key);
    if (c.isStartedByStore) {
        EXPECT_EQ(w_->statusText(),
                  L"Launched " + title +
                      L" via Riot Games (no executable found; exit tracking and the overlay "
                      L"are unavailable).");
    } else {
        EXPECT_EQ(w_->statusText(), L"Launching " + title + L"...");
        EXPECT_EQ(w_->cellText(0, 1), L"Launching...");
    }

    // Running once any launcher has ended and only the game is left (with its window).
    DWORD gameId = 0;
    ASSERT_TRUE(test::pumpUntil(
        [&] {
            const std::vector<DWORD> ids = test::processesUnder(folder);
            gameId = ids.size() == 1 ? ids[0] : 0;
            return gameId != 0 && w_->trackedGame().state == 2 &&
                   (c.launcher == nullptr || test::testGameWindowOf(gameId) != nullptr) &&
                   (!c.isFollowedByFolder || w_->trackedProcessId() == gameId);
        },
        25000))
        << w_.statusTexts();
    if (c.isFollowedByFolder) {
        EXPECT_TRUE(w_.sawStatus(L"Following " + title + L".exe (process " + std::to_wstring(gameId) +
                                 L") for " + title + L"."))
            << w_.statusTexts();
    } else {
        EXPECT_TRUE(w_.sawStatus(title + L" is running. Shift+Tab opens the Corvandell overlay."))
            << w_.statusTexts();
    }
    EXPECT_EQ(w_->cellText(0, 1), L"Running");
    EXPECT_EQ(w_.actionLabel(), L"Stop");
    EXPECT_FALSE(isShiftTabFree());

    const DWORD trackedId = w_->trackedProcessId();
    NMITEMACTIVATE activate{};
    activate.hdr.hwndFrom = w_->control(command::List);
    activate.hdr.idFrom = command::List;
    activate.hdr.code = NM_DBLCLK;
    SendMessageW(w_->hwnd(), WM_NOTIFY, command::List, reinterpret_cast<LPARAM>(&activate));
    test::pumpUntil([] { return false; }, 1000);
    EXPECT_EQ(w_->trackedGame().state, 2);
    EXPECT_EQ(w_->trackedProcessId(), trackedId);
    EXPECT_EQ(test::processesUnder(folder), std::vector<DWORD>{gameId});
    ASSERT_TRUE(waitForSessionCalls(1));
    EXPECT_EQ(sessionCalls(), std::vector<std::string>{kStartCall}) << "a second session was opened";

    const ULONGLONG stopped = GetTickCount64();
    if (c.isStoppedFromWindow) {
        w_.pressAction();
        EXPECT_EQ(w_->trackedGame().state, 3);
        EXPECT_EQ(w_->statusText(), L"Stopping " + title + L"...");
        EXPECT_EQ(w_.actionLabel(), L"Stopping...");
    } else {
        closeGame(gameId);
    }
    ASSERT_TRUE(waitForState(0));
    EXPECT_GE(GetTickCount64() - stopped, c.minStopMs) << "it was not given its time to close";
    EXPECT_LT(GetTickCount64() - stopped, c.maxStopMs);
    EXPECT_EQ(w_->statusText(), title + L" exited.");
    EXPECT_EQ(w_.actionLabel(), L"Launch");
    EXPECT_TRUE(test::processesUnder(folder).empty());
    EXPECT_TRUE(isShiftTabFree());
    ASSERT_TRUE(waitForSessionCalls(2));
    const auto calls = sessionCalls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_TRUE(isEndCall(calls[1])) << calls[1];
}

INSTANTIATE_TEST_SUITE_P(
    MainWindowLaunch, LaunchCases,
    ::testing::Values(
        // A launcher that starts the game in the job and ends: the game still holds the session.
        LaunchCase{"Lantern", "", "", false, false, false, 0, 15000},
        // Stop on a game that ignores WM_CLOSE terminates it after about four seconds.
        LaunchCase{"Stubborn", "--ignore-close", nullptr, false, false, true, 3500, 9000},
        // Games out of the job, found under their folder and stopped through their process: one
        // a launcher broke away from the job, and one (closing politely, so not forced) the
        // store's own command line started.
        LaunchCase{"Harbor", "--ignore-close", "--breakaway ", false, true, true, 3500, 9000},
        LaunchCase{"Valor", "", "", true, true, true, 0, 3000}),
    [](const ::testing::TestParamInfo<LaunchCase>& tested) { return std::string(tested.param.title); });

TEST_F(MainWindowLaunchTest, ASecondLaunchEndsTheFirstSessionAndFollowsOnlyTheSecondGame) {
    const fs::path first = w_.folder.path() / "First";
    const fs::path second = w_.folder.path() / "Second";
    openWith({storeRow("First", test::placeTestGame(first, L"First.exe")),
              storeRow("Second", test::placeTestGame(second, L"Second.exe"))});
    launch("itch:First");
    ASSERT_TRUE(waitForState(2));
    const DWORD firstId = w_->trackedProcessId();
    ASSERT_TRUE(waitForSessionCalls(1));

    launch("itch:Second");
    ASSERT_TRUE(test::pumpUntil(
        [&] { return w_->trackedGame().key == "itch:Second" && w_->trackedGame().state == 2; }, 15000));
    ASSERT_TRUE(waitForSessionCalls(3));
    auto calls = sessionCalls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), kStartCall), 2);
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), isEndCall), 1);
    EXPECT_TRUE(isRunning(firstId)) << "forgetting a game never ends it";

    w_.pressAction(); // the second row is still selected
    ASSERT_TRUE(waitForState(0));
    ASSERT_TRUE(waitForSessionCalls(4));
    calls = sessionCalls();
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), isEndCall), 2);
    EXPECT_NE(calls[2], calls[3]);
}

TEST_F(MainWindowLaunchTest, ASessionTheServiceOpensAfterItsGameHasEndedIsClosedAtOnce) {
    openWith({storeRow("Brief", test::placeTestGame(w_.folder.path() / "Brief", L"Brief.exe"))});
    launch("itch:Brief");
    ASSERT_TRUE(waitForState(2));
    ASSERT_TRUE(waitForSessionCalls(1));
    closeGame(w_->trackedProcessId());
    ASSERT_TRUE(waitForState(0));
    ASSERT_TRUE(waitForSessionCalls(2));

    // Sessions whose answers arrive late: for the launch just ended, and for an earlier one.
    ProbeClient probe(&w_.settings);
    for (const std::uint32_t token : {1u, 0u}) {
        const std::string id = probe.startExternalLaunch("itch", "Brief", "Brief").launchId;
        ASSERT_FALSE(id.empty());
        auto record = std::make_unique<LaunchRecord>(
            LaunchRecord{.launchToken = token, .rowKey = "itch:Brief", .sessionId = id, .isExternal = true});
        ASSERT_TRUE(PostMessageW(w_->hwnd(), MsgLaunchRecord, 0, reinterpret_cast<LPARAM>(record.get())));
        static_cast<void>(record.release());
        const std::string end = kEndCall + id + "/end";
        EXPECT_TRUE(test::pumpUntil(
            [&] {
                const auto calls = sessionCalls();
                return std::find(calls.begin(), calls.end(), end) != calls.end();
            },
            10000))
            << "token " << token;
    }
}

// The hint is a message box on this thread; another thread reads and answers it.
TEST_F(MainWindowLaunchTest, TheFirstLaunchShowsTheOverlayHintOnceAndTellsTheService) {
    w_.settings.overlayHintShown = false;
    openWith({storeRow("Hint", test::placeTestGame(w_.folder.path() / "Hint", L"Hint.exe"))});
    std::atomic<int> boxes{0};
    std::wstring text;
    std::atomic<bool> isDone{false};
    std::thread answerer([&] {
        for (; !isDone; Sleep(20)) {
            HWND box = FindWindowW(L"#32770", nullptr);
            if (box != nullptr && IsWindowVisible(box)) {
                text = test::messageBoxText(box);
                ++boxes;
                PostMessageW(box, WM_COMMAND, IDOK, 0);
                Sleep(500);
            }
        }
    });
    for (int launchNumber = 0; launchNumber < 2; ++launchNumber) {
        launch("itch:Hint");
        EXPECT_TRUE(waitForState(2, 20000));
        w_.pressAction();
        EXPECT_TRUE(waitForState(0));
    }
    isDone = true;
    answerer.join();
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(text, L"Note that pressing Shift+Tab will bring up the in-game overlay.");
    ProbeClient probe(&w_.settings);
    EXPECT_TRUE(test::pumpUntil(
        [&] { return probe.getProfileMetadata().find("\"overlayHintShown\":true") != std::string::npos; },
        10000));
}

} // namespace
} // namespace corvandell::win
