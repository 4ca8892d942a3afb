// Browser games from the main window, end to end: a repository game shared through the Add
// Game dialog against the stand-in, its repository served by the real `git http-backend`
// (the git-http fixture's player/orbit); Install clones it into the data folder's "github"
// folder with the clone's progress in the status line, the row becomes ready, and Launch
// plays the clone in the kiosk browser with its session reported. Failed clones (server
// down, a repository the host does not have) say why and leave the old copy.
#include <windows.h>

#include "api/win/WinHttpApiClient.hpp"
#include "app/LibraryMerge.hpp"
#include "app/win/MainWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"
#include "support/win/FakeBrowsers.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/StatusRecorder.hpp"
#include "webgames/BrowserCommand.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kClosedPort[] = "http://127.0.0.1:1";

std::string gitServerUrl() {
    return test::readTestFile(test::fixtureFolder(L"CORVANDELL_TEST_FIXTURES") / L"git-http" / L"url");
}

void pointStandInAt(const std::string& hostUrl) {
    callStandIn("POST", "/__test/repository-host", R"({"url":")" + hostUrl + R"("})");
}

class MainWindowCloneTest : public ::testing::Test {
protected:
    void SetUp() override {
        username_ = "cloner-" + std::to_string(GetCurrentProcessId()) + "-" +
                    std::to_string(GetTickCount64() % 100000);
        settings_ = signedInSettings(username_);
    }

    void TearDown() override {
        window_.reset();
        // The repositories stay free for the next test: each is shared only once.
        WinHttpApiClient api(&settings_);
        for (const RepositoryGame& game : api.listMyRepositoryGames()) {
            api.deleteRepositoryGame(game.id);
        }
        pointStandInAt("");
    }

    void open(const std::string& hostUrl) {
        pointStandInAt(hostUrl);
        MainWindowJobs jobs;
        jobs.repositoryHost = RepositoryHost{hostUrl, "github.io"};
        Settings settings = defaultSettings(paths_.defaultLibraryFolder);
        settings.apiBaseUrl = settings_.apiBaseUrl;
        settings.bearerToken = settings_.bearerToken;
        settings.overlayHintShown = true; // the first launch's hint box would wait for a click
        window_ = std::make_unique<MainWindow>(GetModuleHandleW(nullptr), paths_, settings,
                                               settingsFileIn(paths_.dataFolder), std::move(jobs));
        ASSERT_TRUE(window_->create(SW_HIDE));
        ASSERT_TRUE(waitForRefresh());
        status_ = std::make_unique<test::StatusTexts>(window_->control(control::Status));
    }

    bool waitForRefresh() {
        return test::pumpUntil([this] { return window_->statusText().starts_with(L"Library refreshed."); },
                               30'000);
    }

    const LibraryItem* row(const std::string& name) const {
        const auto& rows = window_->rows();
        const auto found =
            std::find_if(rows.begin(), rows.end(), [&](const LibraryItem& r) { return r.name == name; });
        return found == rows.end() ? nullptr : &*found;
    }
    void select(const std::string& name) {
        const auto& rows = window_->rows();
        const auto found =
            std::find_if(rows.begin(), rows.end(), [&](const LibraryItem& r) { return r.name == name; });
        ASSERT_NE(found, rows.end()) << name;
        ListView_SetItemState(window_->control(command::List), static_cast<int>(found - rows.begin()),
                              LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }
    void send(int id) {
        SendMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                     reinterpret_cast<LPARAM>(window_->control(id)));
    }
    std::wstring actionLabel() const { return hwndText(window_->control(command::Launch)); }
    fs::path cloneFolder() const { return paths_.dataFolder / "github" / "player-orbit"; }

    test::TempFolder folder_;
    const DataPaths paths_{folder_.path() / "data", folder_.path() / "games"};
    std::string username_;
    Settings settings_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<test::StatusTexts> status_;
};

TEST_F(MainWindowCloneTest, AGameSharedThroughAddGameIsClonedByInstallAndBecomesReady) {
    const std::string host = gitServerUrl();
    ASSERT_FALSE(host.empty());
    open(host);

    // Shared through the dialog, which Ctrl+N's command opens over the disabled window.
    send(command::AddGame);
    AddGameDialog* dialog = window_->addGameDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(IsWindowEnabled(window_->hwnd()));
    ASSERT_TRUE(test::pumpUntil([&] { return dialog->hasLinkedLogin(); }, 20'000));
    SetWindowTextW(dialog->control(addgame::Address), widen(host + "/player/orbit").c_str());
    SetWindowTextW(dialog->control(addgame::Name), L"Orbit Arcade");
    SetWindowTextW(dialog->control(addgame::Launch), L"index.html");
    SendMessageW(dialog->hwnd(), WM_COMMAND, MAKEWPARAM(addgame::AddGame, BN_CLICKED),
                 reinterpret_cast<LPARAM>(dialog->control(addgame::AddGame)));
    ASSERT_TRUE(test::pumpUntil([&] { return window_->addGameDialog() == nullptr; }, 20'000))
        << narrow(dialog->statusText());
    EXPECT_TRUE(IsWindowEnabled(window_->hwnd()));

    // The refresh after the add lists it, not cloned yet.
    ASSERT_TRUE(test::pumpUntil([&] { return row("Orbit Arcade") != nullptr; }, 30'000)) << status_->joined();
    ASSERT_TRUE(waitForRefresh());
    EXPECT_EQ(row("Orbit Arcade")->browserGame->repoUrl, host + "/player/orbit");
    EXPECT_FALSE(row("Orbit Arcade")->isInstalled());
    select("Orbit Arcade");
    EXPECT_EQ(actionLabel(), L"Install");

    status_->clear();
    send(command::Launch);
    window_->installSelected(); // a second press while the first clone runs starts nothing
    ASSERT_TRUE(test::pumpUntil([&] { return status_->sawStart(L"Orbit Arcade is cloned"); }, 60'000))
        << status_->joined();
    const auto& seen = status_->texts();
    ASSERT_GE(seen.size(), 2u);
    EXPECT_EQ(seen[0], L"Cloning Orbit Arcade from GitHub...");
    EXPECT_EQ(seen[1], L"Orbit Arcade is already being cloned.");
    const std::wstring progress[] = {L"Contacting GitHub...", L"Downloading game files...", L"Unpacking...",
                                     L"Clone complete."};
    auto at = seen.begin();
    for (const std::wstring& text : progress) {
        at = std::find(at, seen.end(), text);
        EXPECT_NE(at, seen.end()) << narrow(text) << " missing or out of order: " << status_->joined();
    }
    EXPECT_TRUE(fs::is_regular_file(cloneFolder() / "index.html"));
    EXPECT_TRUE(fs::is_regular_file(cloneFolder() / "js" / "game.js"));
    EXPECT_FALSE(fs::exists(cloneFolder() / ".git"));

    // The refresh finds the clone where the clone put it: the row is ready.
    ASSERT_TRUE(
        test::pumpUntil([&] { return row("Orbit Arcade") && row("Orbit Arcade")->isInstalled(); }, 30'000))
        << status_->joined();
    ASSERT_TRUE(waitForRefresh());
    EXPECT_EQ(actionFor(*row("Orbit Arcade")), RowAction::Launch);
    select("Orbit Arcade");
    EXPECT_EQ(actionLabel(), L"Launch");

    // Launch plays the clone offline: the kiosk browser opens the clone's own index.html, and
    // the session is reported from start to Stop.
    test::BrowserRegistrations registry;
    const fs::path edge = test::placeFakeBrowser(folder_.path() / "Edge", L"msedge.exe");
    registry.addAppPath(HKEY_CURRENT_USER, L"msedge.exe", edge);
    const std::size_t callsBefore = receivedRequests().size();
    send(command::Launch);
    std::optional<test::BrowserStart> start;
    ASSERT_TRUE(test::pumpUntil([&] { return (start = test::recordedStart(edge)).has_value(); }, 15'000));
    const std::wstring indexUrl = fileUrl((cloneFolder() / "index.html").wstring());
    EXPECT_NE(start->commandLine.find(L" --app=" + indexUrl + L" --kiosk "), std::wstring::npos)
        << narrow(start->commandLine);
    EXPECT_EQ(fs::path(start->workingFolder), cloneFolder());
    ASSERT_TRUE(test::pumpUntil([&] { return window_->trackedGame().state == 2; }, 15'000));
    send(command::Launch); // Stop
    ASSERT_TRUE(test::pumpUntil([&] { return window_->trackedGame().state == 0; }, 15'000));
    const auto sessionCalls = [&] {
        std::vector<std::string> calls = receivedRequests();
        calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(callsBefore));
        std::erase_if(calls,
                      [](const std::string& call) { return !call.starts_with("POST /api/v1/activity/"); });
        return calls;
    };
    ASSERT_TRUE(test::pumpUntil([&] { return sessionCalls().size() >= 2; }, 10'000));
    EXPECT_EQ(sessionCalls()[0], "POST /api/v1/activity/external-launches");
    EXPECT_TRUE(sessionCalls()[1].ends_with("/end")) << sessionCalls()[1];
}

// An update that cannot finish keeps the copy the user already plays.
TEST_F(MainWindowCloneTest, AFailedCloneSaysWhyAndLeavesTheOldCopy) {
    const struct {
        std::string hostUrl;
        std::string repo;
        std::wstring status;
    } cases[] = {
        {kClosedPort, "orbit", L"Clone failed: git HTTP request failed"},
        {gitServerUrl(), "missing", L"Clone failed: GitHub returned HTTP 404"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.hostUrl + "/player/" + c.repo);
        pointStandInAt(c.hostUrl);
        const RepositoryGame game =
            WinHttpApiClient(&settings_)
                .submitRepositoryGame(c.hostUrl + "/player/" + c.repo, "Old Copy", "index.html");
        const fs::path clone = paths_.dataFolder / "github" / ("player-" + c.repo);
        folder_.writeFile(clone / "index.html", "the copy being played");
        open(c.hostUrl);
        ASSERT_NE(row("Old Copy"), nullptr);
        EXPECT_TRUE(row("Old Copy")->isInstalled());
        select("Old Copy");
        status_->clear();
        window_->installSelected();
        ASSERT_TRUE(test::pumpUntil([&] { return status_->sawStart(L"Clone failed: "); }, 60'000))
            << status_->joined();
        EXPECT_TRUE(status_->sawStart(c.status)) << status_->joined();
        EXPECT_EQ(test::readTestFile(clone / "index.html"), "the copy being played");
        window_.reset();
        WinHttpApiClient(&settings_).deleteRepositoryGame(game.id);
    }
}

// Closing the client while a clone runs neither hangs nor crashes: the clone stops at its
// next step, before it has touched the old copy.
TEST_F(MainWindowCloneTest, ClosingDuringACloneEndsTheWindowAndKeepsTheOldCopy) {
    const std::string host = gitServerUrl();
    pointStandInAt(host);
    WinHttpApiClient(&settings_).submitRepositoryGame(host + "/player/orbit", "Closing Orbit", "index.html");
    folder_.writeFile(cloneFolder() / "index.html", "the copy being played");
    open(host);
    select("Closing Orbit");
    window_->installSelected();
    window_.reset();
    const std::string now = test::readTestFile(cloneFolder() / "index.html");
    EXPECT_TRUE(now == "the copy being played" || now.starts_with("<!doctype html>")) << now;
}

} // namespace
} // namespace corvandell::win
