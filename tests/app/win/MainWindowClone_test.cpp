// Repository games from the main window, end to end: shared through the Add Game dialog
// against the stand-in, served by the real `git http-backend` (the git-http fixture's
// player/orbit), cloned by Install into the data folder's "github" folder with the clone's
// progress in the status line. Failed clones say why and leave the old copy. (Playing a
// clone in the kiosk browser: MainWindowWebGame_test.)
#include <windows.h>

#include "api/win/WinHttpApiClient.hpp"
#include "app/LibraryMerge.hpp"
#include "app/win/MainWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/win/ChildProcess.hpp"
#include "support/win/MainWindowUnderTest.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

std::string gitServerUrl() {
    return test::readTestFile(test::fixtureFolder(L"CORVANDELL_TEST_FIXTURES") / L"git-http" / L"url");
}

void pointStandInAt(const std::string& hostUrl) {
    callStandIn("POST", "/__test/repository-host", R"({"url":")" + hostUrl + R"("})");
}

class MainWindowCloneTest : public ::testing::Test {
protected:
    void SetUp() override {
        w_.signIn("cloner-" + std::to_string(GetCurrentProcessId()) + "-" +
                  std::to_string(GetTickCount64() % 100000));
        w_.settings.overlayHintShown = true; // the first launch's hint box would wait for a click
    }

    void TearDown() override {
        w_.window.reset();
        // The repositories stay free for the next test: each is shared only once.
        WinHttpApiClient api(&w_.settings);
        for (const RepositoryGame& game : api.listMyRepositoryGames()) {
            api.deleteRepositoryGame(game.id);
        }
        pointStandInAt("");
    }

    void open(const std::string& hostUrl) {
        pointStandInAt(hostUrl);
        w_.jobs = MainWindowJobs{};
        w_.jobs.repositoryHost = RepositoryHost{hostUrl, "github.io"};
        ASSERT_TRUE(w_.open());
        ASSERT_TRUE(waitForRefresh());
    }

    bool waitForRefresh() const { return w_.waitForStatus(L"Library refreshed."); }

    const LibraryItem* row(const std::string& name) const {
        const int index = w_.rowOf(name);
        return index < 0 ? nullptr : &w_->rows()[static_cast<size_t>(index)];
    }
    void send(int id) const {
        SendMessageW(w_->hwnd(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                     reinterpret_cast<LPARAM>(w_->control(id)));
    }
    fs::path cloneFolder() const { return w_.paths.dataFolder / "github" / "player-orbit"; }

    test::MainWindowUnderTest w_;
};

TEST_F(MainWindowCloneTest, AGameSharedThroughAddGameIsClonedByInstallAndBecomesReady) {
    const std::string host = gitServerUrl();
    ASSERT_FALSE(host.empty());
    open(host);

    // Shared through the dialog, which Ctrl+N's command opens over the disabled window.
    send(command::AddGame);
    AddGameDialog* dialog = w_->addGameDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(IsWindowEnabled(w_->hwnd()));
    ASSERT_TRUE(test::pumpUntil([&] { return dialog->hasLinkedLogin(); }, 20'000));
    SetWindowTextW(dialog->control(addgame::Address), widen(host + "/player/orbit").c_str());
    SetWindowTextW(dialog->control(addgame::Name), L"Orbit Arcade");
    SetWindowTextW(dialog->control(addgame::Launch), L"index.html");
    SendMessageW(dialog->hwnd(), WM_COMMAND, MAKEWPARAM(addgame::AddGame, BN_CLICKED),
                 reinterpret_cast<LPARAM>(dialog->control(addgame::AddGame)));
    ASSERT_TRUE(test::pumpUntil([&] { return w_->addGameDialog() == nullptr; }, 20'000))
        << narrow(dialog->statusText());
    EXPECT_TRUE(IsWindowEnabled(w_->hwnd()));

    // The refresh after the add lists it, not cloned yet.
    ASSERT_TRUE(test::pumpUntil([&] { return row("Orbit Arcade") != nullptr; }, 30'000))
        << w_.status->joined();
    ASSERT_TRUE(waitForRefresh());
    EXPECT_EQ(row("Orbit Arcade")->browserGame->repoUrl, host + "/player/orbit");
    EXPECT_FALSE(row("Orbit Arcade")->isInstalled());
    ASSERT_TRUE(w_.select("Orbit Arcade"));
    EXPECT_EQ(w_.actionLabel(), L"Install");

    w_.status->clear();
    send(command::Launch);
    w_->installSelected(); // a second press while the first clone runs starts nothing
    ASSERT_TRUE(test::pumpUntil([&] { return w_.status->sawStart(L"Orbit Arcade is cloned"); }, 60'000))
        << w_.status->joined();
    const auto& seen = w_.status->texts();
    ASSERT_GE(seen.size(), 2u);
    EXPECT_EQ(seen[0], L"Cloning Orbit Arcade from GitHub...");
    EXPECT_EQ(seen[1], L"Orbit Arcade is already being cloned.");
    const std::wstring progress[] = {L"Contacting GitHub...", L"Downloading game files...", L"Unpacking...",
                                     L"Clone complete."};
    auto at = seen.begin();
    for (const std::wstring& text : progress) {
        at = std::find(at, seen.end(), text);
        EXPECT_NE(at, seen.end()) << narrow(text) << " missing or out of order: " << w_.status->joined();
    }
    EXPECT_TRUE(fs::is_regular_file(cloneFolder() / "index.html"));
    EXPECT_TRUE(fs::is_regular_file(cloneFolder() / "js" / "game.js"));
    EXPECT_FALSE(fs::exists(cloneFolder() / ".git"));

    // The refresh finds the clone where the clone put it: the row is ready.
    ASSERT_TRUE(
        test::pumpUntil([&] { return row("Orbit Arcade") && row("Orbit Arcade")->isInstalled(); }, 30'000))
        << w_.status->joined();
    ASSERT_TRUE(waitForRefresh());
    EXPECT_EQ(actionFor(*row("Orbit Arcade")), RowAction::Launch);
    ASSERT_TRUE(w_.select("Orbit Arcade"));
    EXPECT_EQ(w_.actionLabel(), L"Launch");
}

// An update that cannot finish (here, a repository the host does not have) keeps the copy
// the user already plays.
TEST_F(MainWindowCloneTest, AFailedCloneSaysWhyAndLeavesTheOldCopy) {
    const std::string host = gitServerUrl();
    pointStandInAt(host);
    WinHttpApiClient(&w_.settings).submitRepositoryGame(host + "/player/missing", "Old Copy", "index.html");
    const fs::path clone = w_.paths.dataFolder / "github" / "player-missing";
    w_.folder.writeFile(clone / "index.html", "the copy being played");
    open(host);
    ASSERT_NE(row("Old Copy"), nullptr);
    EXPECT_TRUE(row("Old Copy")->isInstalled());
    ASSERT_TRUE(w_.select("Old Copy"));
    w_.status->clear();
    w_->installSelected();
    ASSERT_TRUE(test::pumpUntil([&] { return w_.status->sawStart(L"Clone failed: "); }, 60'000))
        << w_.status->joined();
    EXPECT_TRUE(w_.status->sawStart(L"Clone failed: GitHub returned HTTP 404")) << w_.status->joined();
    EXPECT_EQ(test::readTestFile(clone / "index.html"), "the copy being played");
}

// Closing the client while a clone runs neither hangs nor crashes: the clone stops at its
// next step, before it has touched the old copy.
TEST_F(MainWindowCloneTest, ClosingDuringACloneEndsTheWindowAndKeepsTheOldCopy) {
    const std::string host = gitServerUrl();
    pointStandInAt(host);
    WinHttpApiClient(&w_.settings)
        .submitRepositoryGame(host + "/player/orbit", "Closing Orbit", "index.html");
    w_.folder.writeFile(cloneFolder() / "index.html", "the copy being played");
    open(host);
    ASSERT_TRUE(w_.select("Closing Orbit"));
    w_->installSelected();
    w_.window.reset();
    const std::string now = test::readTestFile(cloneFolder() / "index.html");
    EXPECT_TRUE(now == "the copy being played" || now.starts_with("<!doctype html>")) << now;
}

} // namespace
} // namespace corvandell::win
