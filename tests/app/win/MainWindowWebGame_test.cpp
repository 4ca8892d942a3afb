// Browser games from the main window, in process: the fake browser registered where Windows
// lists browsers, started for a cloned and a hosted game, followed until it and its child
// have ended, stopped, its taskbar button, the per-game browser choice saved to
// settings.json, and the sessions the service stand-in was told of.
#include <windows.h>

#include <commctrl.h>

#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/FakeBrowsers.hpp"
#include "support/win/MainWindowUnderTest.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/TestGames.hpp"
#include "webgames/WebGamePlan.hpp"
#include "webgames/win/WebGameOptionsDialog.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kStartCall[] = "POST /api/v1/activity/external-launches";
constexpr wchar_t kTaskbarClass[] = L"CorvandellWebGameTaskbar";

std::string uniqueUser() {
    static int count = 0;
    return "webgame-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
}

std::wstring slashed(std::wstring path) {
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
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

    static RepositoryGame hostedGame(const std::string& address = "https://ann.github.io/moon/") {
        return RepositoryGame{"8",  "https://github.com/ann/moon", "ann", "moon", "Moon Game", address, true,
                              "ann"};
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

    std::vector<std::string> sessionCalls() const {
        std::vector<std::string> calls = receivedRequests();
        calls.erase(calls.begin(),
                    calls.begin() + static_cast<std::ptrdiff_t>(std::min(callsBefore_, calls.size())));
        std::erase_if(calls,
                      [](const std::string& call) { return !call.starts_with("POST /api/v1/activity/"); });
        return calls;
    }

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
    EXPECT_EQ(
        start->commandLine,
        L"\"" + edge.wstring() + L"\" --app=file:///" + slashed(w_.folder.path().wstring()) +
            L"/Ann%20Lee%20%231/data/github/ann-star/index.html --kiosk --start-fullscreen --no-first-run "
            L"--no-default-browser-check --disable-features=Translate,TranslateUI --disable-pinch "
            L"--overscroll-history-navigation=0 --user-data-dir=\"" +
            profileOf("7").wstring() + L"\"");
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

TEST_F(MainWindowWebGameTest, AHostedGameRunsInTheChosenFirefoxAtItsAddressAndStopClosesIt) {
    const fs::path browserFolder = w_.folder.path() / "Fox";
    const fs::path fox = test::placeFakeBrowser(browserFolder, L"FireFox.exe", "--child-lingers-ms 300");
    w_.settings.webGameBrowsers["github:8"] = "\"" + fox.string() + "\" -osint -url \"%1\"";
    LibraryResult result;
    result.browserGames = {hostedGame()};
    openWith(result);

    launch("github:8");
    const auto start = waitForStart(fox);
    ASSERT_TRUE(start);
    EXPECT_EQ(start->commandLine, L"\"" + fox.wstring() + L"\" -kiosk -new-instance -no-remote -profile \"" +
                                      profileOf("8").wstring() + L"\" \"https://ann.github.io/moon/\"");
    ASSERT_TRUE(waitForState(2, 15000));
    ASSERT_TRUE(test::pumpUntil([&] { return test::processesUnder(browserFolder).size() == 2; }, 10000));
    EXPECT_NE(FindWindowW(kTaskbarClass, L"Moon Game"), nullptr);

    SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Launch, BN_CLICKED), 0); // Stop
    EXPECT_EQ(w_->statusText(), L"Stopping Moon Game...");
    ASSERT_TRUE(waitForState(0, 15000));
    EXPECT_EQ(w_->statusText(), L"Moon Game exited.");
    EXPECT_TRUE(test::processesUnder(browserFolder).empty());
    EXPECT_EQ(FindWindowW(kTaskbarClass, L"Moon Game"), nullptr);
}

TEST_F(MainWindowWebGameTest, WhatCannotStartSaysWhyAndStartsNothing) {
    const fs::path edge = test::placeFakeBrowser(w_.folder.path() / "Edge", L"msedge.exe");
    LibraryResult result;
    RepositoryGame cloned = clonedGame(result);
    RepositoryGame badFile = cloned;
    badFile.id = "9";
    badFile.launchPath = "../index.html";
    result.cloneFolders["9"] = result.cloneFolders["7"];
    RepositoryGame uncloned = cloned;
    uncloned.id = "10";
    result.browserGames = {cloned, hostedGame("https://evil.example/moon/"), badFile, uncloned};
    // A browser for each but the first, so that what is wrong with the game itself shows.
    w_.settings.webGameBrowsers["github:8"] = edge.string();
    w_.settings.webGameBrowsers["github:9"] = edge.string();
    openWith(result);

    const struct {
        const char* key;
        std::wstring status;
    } cases[] = {
        {"github:7", widen(kNoBrowserText)}, // no choice, and neither Edge nor Chrome
        {"github:8", widen(kBadHostedUrlText)},
        {"github:9", widen(kBadLaunchFileText)},
        {"github:10", L"unchanged"}, // not cloned: Install clones it first
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
    registry_.addBrowser(HKEY_LOCAL_MACHINE, subkey + L"M", L"Machine Browser", L"C:\\B\\b.exe");
    LibraryResult result;
    result.browserGames = {clonedGame(result)};
    openWith(result);
    select("github:7");

    const auto openDialog = [&] {
        SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(command::GameOptions, 0), 0);
        return FindWindowW(WebGameOptionsDialog::kClassName, nullptr);
    };
    const auto entries = [](HWND list) {
        std::vector<std::wstring> texts;
        for (LRESULT i = 0; i < SendMessageW(list, CB_GETCOUNT, 0, 0); ++i) {
            std::wstring text(static_cast<size_t>(SendMessageW(list, CB_GETLBTEXTLEN, i, 0)) + 1, L'\0');
            text.resize(static_cast<size_t>(
                SendMessageW(list, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text.data()))));
            texts.push_back(text);
        }
        return texts;
    };
    const auto choose = [&](HWND dialog, const std::wstring& entry) {
        HWND list = GetDlgItem(dialog, WebGameOptionsDialog::kBrowserList);
        const auto texts = entries(list);
        const auto found = std::find(texts.begin(), texts.end(), entry);
        ASSERT_NE(found, texts.end());
        SendMessageW(list, CB_SETCURSEL, static_cast<WPARAM>(found - texts.begin()), 0);
    };
    const fs::path settingsFile = w_.paths.dataFolder / "settings.json";

    HWND dialog = openDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(hwndText(dialog), L"Star Game - Game Options");
    EXPECT_EQ(hwndText(GetDlgItem(dialog, WebGameOptionsDialog::kLabel)), L"Browser used to run Star Game");
    HWND list = GetDlgItem(dialog, WebGameOptionsDialog::kBrowserList);
    const auto texts = entries(list);
    ASSERT_FALSE(texts.empty());
    EXPECT_EQ(texts[0], L"Automatic (Microsoft Edge or Google Chrome)");
    EXPECT_EQ(SendMessageW(list, CB_GETCURSEL, 0, 0), 0);
    EXPECT_NE(std::find(texts.begin(), texts.end(), L"Fake Fox"), texts.end());
    EXPECT_NE(std::find(texts.begin(), texts.end(), L"Machine Browser"), texts.end());
    EXPECT_EQ(hwndText(GetDlgItem(dialog, IDOK)), L"Save");
    EXPECT_EQ(hwndText(GetDlgItem(dialog, IDCANCEL)), L"Cancel");

    // Cancel keeps what was there.
    choose(dialog, L"Machine Browser");
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
    list = GetDlgItem(dialog, WebGameOptionsDialog::kBrowserList);
    EXPECT_EQ(entries(list)[static_cast<size_t>(SendMessageW(list, CB_GETCURSEL, 0, 0))], L"Fake Fox");
    choose(dialog, L"Automatic (Microsoft Edge or Google Chrome)");
    SendMessageW(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    EXPECT_TRUE(w_->settings().webGameBrowsers.empty());
    EXPECT_EQ(fileText(settingsFile).find("github:7"), std::string::npos);
    EXPECT_NE(fileText(settingsFile).find("\"webGameBrowsers\":{"), std::string::npos);
}

} // namespace
} // namespace corvandell::win
