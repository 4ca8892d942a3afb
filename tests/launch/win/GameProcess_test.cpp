// Starting games, with the stand-in game as the real process under Wine. Stopping them is
// checked through the main window, which stops games in and out of a job (MainWindowLaunch_test).
#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "launch/win/GameStart.hpp"
#include "support/TempFolder.hpp"
#include "support/win/TestGames.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> linesOf(const fs::path& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool waitForWindowOf(DWORD processId) {
    for (int i = 0; i < 200 && test::testGameWindowOf(processId) == nullptr; ++i) {
        Sleep(50);
    }
    return test::testGameWindowOf(processId) != nullptr;
}

TEST(GameStart, ASteamGameGetsItsVariablesAndEveryGameKeepsTheClientsEnvironment) {
    test::TempFolder folder;
    SetEnvironmentVariableW(L"CORVANDELL_ENV_PROBE", L"kept");
    const struct {
        const wchar_t* appId;
        std::vector<std::string> report;
    } cases[] = {
        {L"620",
         {"SteamAppId=620", "SteamGameId=620", "SteamNoOverlayUIDrawing=1", "CORVANDELL_ENV_PROBE=kept"}},
        {L"", {"SteamAppId", "SteamGameId", "SteamNoOverlayUIDrawing", "CORVANDELL_ENV_PROBE=kept"}},
    };
    int round = 0;
    for (const auto& [appId, report] : cases) {
        const fs::path game = folder.path() / ("game" + std::to_string(++round));
        const fs::path reportFile = game / "environment.txt";
        const fs::path executable = test::placeTestGame(
            game, L"Game.exe", "--report-env \"" + narrow(reportFile.wstring()) + "\" --exit-after-ms 1");
        const StartedGame started = startGameDirect(executable.wstring(), game.wstring(), appId);
        ASSERT_TRUE(started) << "error " << GetLastError();
        EXPECT_TRUE(started.job && started.port) << "a direct start runs in a watched job";
        ASSERT_EQ(WaitForSingleObject(started.process.get(), 20000), WAIT_OBJECT_0);
        EXPECT_EQ(linesOf(reportFile), report) << narrow(appId);
    }
    SetEnvironmentVariableW(L"CORVANDELL_ENV_PROBE", nullptr);
}

TEST(GameStart, ClosingAWatchingJobLeavesTheGameRunningButABrowserGamesJobEndsIt) {
    test::TempFolder folder;
    const fs::path executable = test::placeTestGame(folder.path() / "game", L"Game.exe");

    StartedGame direct = startGameDirect(executable.wstring(), {}, {});
    ASSERT_TRUE(direct && direct.job);
    ASSERT_TRUE(waitForWindowOf(direct.processId));
    direct.port.reset();
    direct.job.reset();
    EXPECT_EQ(WaitForSingleObject(direct.process.get(), 1000), static_cast<DWORD>(WAIT_TIMEOUT))
        << "the client's job took the game with it";
    TerminateProcess(direct.process.get(), 0);

    StartedGame browser = startInJob(L"\"" + executable.wstring() + L"\"", folder.path().wstring());
    ASSERT_TRUE(browser && browser.job && browser.port);
    ASSERT_TRUE(waitForWindowOf(browser.processId));
    browser.job.reset();
    EXPECT_EQ(WaitForSingleObject(browser.process.get(), 5000), WAIT_OBJECT_0);
}

TEST(GameStart, NothingStartedLeavesNoJobBehind) {
    test::TempFolder folder;
    const std::wstring missing = (folder.path() / "missing.exe").wstring();
    const StartedGame direct = startGameDirect(missing, {}, L"620");
    EXPECT_FALSE(direct);
    EXPECT_FALSE(direct.job || direct.port);
    const StartedGame browser = startInJob(L"\"" + missing + L"\"", {});
    EXPECT_FALSE(browser);
    EXPECT_FALSE(browser.job || browser.port);
}

} // namespace
} // namespace corvandell::win
