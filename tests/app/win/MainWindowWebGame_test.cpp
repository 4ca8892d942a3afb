// Browser games from the main window, in process: the fake browser registered where Windows
// lists browsers, followed until it and its child have ended, stopped, its taskbar button,
// the per-game browser choice saved to settings.json, and the sessions the stand-in was told of.
#include <windows.h>

#include <commctrl.h>

#include "base/win/WideText.hpp"
#include "support/win/FakeBrowsers.hpp"
#include "support/win/MainWindowUnderTest.hpp"
#include "support/win/TestGames.hpp"
#include "webgames/BrowserCommand.hpp"
#include "webgames/WebGamePlan.hpp"
#include "webgames/win/WebGameOptionsDialog.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kStartCall[] = "POST /api/v1/activity/external-launches";
constexpr wchar_t kTaskbarClass[] = L"CorvandellWebGameTaskbar";

std::string uniqueUser() {
    static int count = 0;
    return "webgame-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
}

std::string fileText(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

HWND fakeBrowserWindow() {
    return FindWindowW(L"CorvandellFakeBrowser", nullptr);
}

class MainWindowWebGameTest : public ::testing::Test {
protected:
    void SetUp() override {
        w_.signIn(uniqueUser());
        w_.settings.overlayHintShown = true;
        // A space and a "#" in the data folder, as a user's name may have.
        w_.paths.dataFolder = w_.folder.path() / "Ann Lee #1" / "data";
        callsBefore_ = receivedRequests().size();
    }

    void TearDown() override {
        w_.window.reset();
        test::endProcessesUnder(w_.folder.path());
    }

    // A cloned game laid out as the clone leaves it: data folder/github/owner-repo.
    RepositoryGame clonedGame(LibraryResult& result) {
        const fs::path clone = w_.paths.dataFolder / "github" / "ann-star";
        fs::create_directories(clone);
        std::ofstream(clone / "index.html") << "<title>Star</title>";
        result.cloneFolders["7"] = clone.string();
        return RepositoryGame{
            "7", "https://github.com/ann/star", "ann", "star", "Star Game", "index.html", true, "ann"};
    }

    void openWith(LibraryResult result) {
        result.succeeded = true;
        const size_t count = result.browserGames.size();
        w_.jobs = MainWindowJobs{};
        w_.answerRefreshes(result);
        ASSERT_TRUE(w_.open());
        ASSERT_TRUE(test::pumpUntil([&] { return w_->rows().size() == count; }, 10000));
    }

    void select(const std::string& key) const { ASSERT_TRUE(w_.select(key)) << key; }
    void launch(const std::string& key) const {
        select(key);
        SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Launch, BN_CLICKED), 0);
    }

    bool waitForState(int state, DWORD timeoutMs) const {
        return test::pumpUntil([&] { return w_->trackedGame().state == state; }, timeoutMs);
    }

    std::optional<test::BrowserStart> waitForStart(const fs::path& browser) {
        std::optional<test::BrowserStart> start;
        test::pumpUntil([&] { return (start = test::recordedStart(browser)).has_value(); }, 15000);
        return start;
    }

    std::vector<std::string> sessionCalls() const { return test::sessionCallsSince(callsBefore_); }

    fs::path profileOf(const std::string& id) const {
        return w_.paths.dataFolder / "webgames" / ("github_" + id);
    }

    test::MainWindowUnderTest w_;
    test::BrowserRegistrations registry_;
    size_t callsBefore_ = 0;
};

TEST_F(MainWindowWebGameTest, AClonedGameRunsInEdgeOnItsFileUrlUntilTheBrowserAndItsChildHaveEnded) {
    const fs::path browserFolder = w_.folder.path() / "Edge";
    const fs::path edge = test::placeFakeBrowser(browserFolder, L"msedge.exe", "--child-lingers-ms 2000");
    registry_.addAppPath(HKEY_CURRENT_USER, L"msedge.exe", edge);
    LibraryResult result;
    result.browserGames = {clonedGame(result)};
    openWith(result);

    launch("github:7");
    EXPECT_EQ(w_->statusText(), L"Launching Star Game...");
    const auto start = waitForStart(edge);
    ASSERT_TRUE(start);
    const std::wstring clone = (w_.paths.dataFolder / "github" / "ann-star").wstring();
    // The rest of the command line is the browser command's own table test.
    EXPECT_TRUE(start->commandLine.starts_with(L"\"" + edge.wstring() + L"\" --app=" +
                                               fileUrl(clone + L"\\index.html") + L" --kiosk "))
        << narrow(start->commandLine);
    EXPECT_TRUE(start->commandLine.ends_with(L" --user-data-dir=\"" + profileOf("7").wstring() + L"\""));
    EXPECT_EQ(fs::path(start->workingFolder), fs::path(clone));
    EXPECT_TRUE(fs::is_directory(profileOf("7")));
    ASSERT_TRUE(waitForState(2, 15000));

    // Its own taskbar button while it runs.
    HWND taskbar = FindWindowW(kTaskbarClass, L"Star Game");
    ASSERT_NE(taskbar, nullptr);
    EXPECT_TRUE(IsIconic(taskbar));

    // The browser's window closes; its child lives on a while, and so does the game.
    ASSERT_TRUE(test::pumpUntil([] { return fakeBrowserWindow() != nullptr; }, 10000));
    const DWORD browserId = w_->trackedProcessId();
    PostMessageW(fakeBrowserWindow(), WM_CLOSE, 0, 0);
    ASSERT_TRUE(test::pumpUntil([&] { return test::processesUnder(browserFolder).size() == 1; }, 10000));
    EXPECT_NE(test::processesUnder(browserFolder).front(), browserId) << "the child is what is left";
    EXPECT_EQ(w_->trackedGame().state, 2);
    EXPECT_TRUE(IsWindow(taskbar));

    ASSERT_TRUE(waitForState(0, 15000));
    EXPECT_TRUE(test::processesUnder(browserFolder).empty());
    EXPECT_EQ(w_->statusText(), L"Star Game exited.");
    EXPECT_FALSE(IsWindow(taskbar));
    ASSERT_TRUE(test::pumpUntil([&] { return sessionCalls().size() >= 2; }, 10000));
    const auto calls = sessionCalls();
    EXPECT_EQ(calls[0], kStartCall);
    EXPECT_TRUE(calls[1].starts_with("POST /api/v1/activity/external-launches/") &&
                calls[1].ends_with("/end"))
        << calls[1];
}

// The refusals themselves are the web-game plan's table test; these show they reach the window.
TEST_F(MainWindowWebGameTest, WhatCannotStartSaysWhyAndStartsNothing) {
    const fs::path edge = test::placeFakeBrowser(w_.folder.path() / "Edge", L"msedge.exe");
    LibraryResult result;
    RepositoryGame cloned = clonedGame(result);
    RepositoryGame uncloned = cloned;
    uncloned.id = "10";
    result.browserGames = {cloned, uncloned};
    openWith(result);

    const struct {
        const char* key;
        std::wstring status;
    } cases[] = {
        {"github:7", widen(kNoBrowserText)}, // no choice, and neither Edge nor Chrome
        {"github:10", L"unchanged"},         // not cloned: Install clones it first
    };
    for (const auto& c : cases) {
        SetWindowTextW(w_->control(control::Status), L"unchanged");
        select(c.key);
        w_->launchSelected(); // the launch flow itself, whatever the row's button offers
        test::pumpUntil([] { return false; }, 200);
        EXPECT_EQ(w_->statusText(), c.status) << c.key;
        EXPECT_EQ(w_->trackedGame().state, 0) << c.key;
    }
    // A chosen browser that is gone.
    w_.window.reset();
    w_.settings.webGameBrowsers["github:7"] = (w_.folder.path() / "gone" / "chrome.exe").string();
    openWith(result);
    launch("github:7");
    EXPECT_EQ(w_->statusText(), widen(kLaunchFailedText));
    EXPECT_EQ(w_->trackedGame().state, 0);
    EXPECT_EQ(FindWindowW(kTaskbarClass, nullptr), nullptr);
    EXPECT_FALSE(test::recordedStart(edge));
    EXPECT_TRUE(sessionCalls().empty());
}

TEST_F(MainWindowWebGameTest, TheOptionsDialogSavesTheChosenBrowserAndAutomaticRemovesIt) {
    const fs::path fox = test::placeFakeBrowser(w_.folder.path() / "Fox", L"firefox.exe");
    const std::wstring subkey = L"CorvandellFox" + std::to_wstring(GetCurrentProcessId());
    const std::wstring foxCommand = L"\"" + fox.wstring() + L"\" -osint -url \"%1\"";
    registry_.addBrowser(HKEY_CURRENT_USER, subkey, L"Fake Fox", foxCommand);
    LibraryResult result;
    result.browserGames = {clonedGame(result)};
    openWith(result);
    select("github:7");

    const auto openDialog = [&] {
        SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::GameOptions, 0), 0);
        return FindWindowW(WebGameOptionsDialog::kClassName, nullptr);
    };
    const auto indexOf = [](HWND list, const std::wstring& entry) {
        return SendMessageW(list, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                            reinterpret_cast<LPARAM>(entry.c_str()));
    };
    const auto choose = [&](HWND dialog, const std::wstring& entry) {
        HWND list = GetDlgItem(dialog, WebGameOptionsDialog::kBrowserList);
        const LRESULT index = indexOf(list, entry);
        ASSERT_NE(index, CB_ERR) << narrow(entry);
        SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
    };
    const fs::path settingsFile = w_.paths.dataFolder / "settings.json";

    // Cancel keeps what was there.
    HWND dialog = openDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(hwndText(dialog), L"Star Game - Game Options");
    choose(dialog, L"Fake Fox");
    SendMessageW(GetDlgItem(dialog, IDCANCEL), BM_CLICK, 0, 0);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_TRUE(w_->settings().webGameBrowsers.empty());

    dialog = openDialog();
    choose(dialog, L"Fake Fox");
    SendMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(w_->statusText(), L"Saved. Star Game will use the chosen browser on its next launch.");
    EXPECT_EQ(w_->settings().webGameBrowsers.at("github:7"), narrow(foxCommand));
    EXPECT_EQ(parseSettings(fileText(settingsFile), {}).webGameBrowsers["github:7"], narrow(foxCommand));

    // The next launch uses it.
    launch("github:7");
    const auto start = waitForStart(fox);
    ASSERT_TRUE(start);
    EXPECT_TRUE(start->commandLine.starts_with(L"\"" + fox.wstring() + L"\" -kiosk -new-instance"))
        << start->commandLine;
    SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Launch, BN_CLICKED), 0); // Stop
    ASSERT_TRUE(waitForState(0, 15000));

    // Opened again it shows the choice; Automatic takes it away.
    dialog = openDialog();
    HWND list = GetDlgItem(dialog, WebGameOptionsDialog::kBrowserList);
    EXPECT_NE(SendMessageW(list, CB_GETCURSEL, 0, 0), CB_ERR);
    EXPECT_EQ(SendMessageW(list, CB_GETCURSEL, 0, 0), indexOf(list, L"Fake Fox"));
    choose(dialog, L"Automatic (Microsoft Edge or Google Chrome)");
    SendMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    EXPECT_TRUE(w_->settings().webGameBrowsers.empty());
    EXPECT_EQ(fileText(settingsFile).find("github:7"), std::string::npos);
    EXPECT_NE(fileText(settingsFile).find("\"webGameBrowsers\":{"), std::string::npos);
}

} // namespace
} // namespace corvandell::win
