// End to end: the real corvandell.exe launches a store game, is killed while the game runs,
// and is started again: it follows the same game to its end and the stand-in sees exactly
// one session, opened once and closed once.
#include <windows.h>

#include <commctrl.h>

#include "api/JsonText.hpp"
#include "app/SettingsFile.hpp"
#include "app/win/Messages.hpp"
#include "base/win/WideText.hpp"
#include "launch/SessionJournal.hpp"
#include "support/win/ClientFolders.hpp"
#include "support/win/MainWindowUnderTest.hpp"
#include "support/win/TestGames.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

// Points a variable of this process (which the client inherits) elsewhere for one test.
class ScopedVariable {
public:
    ScopedVariable(const wchar_t* name, const std::wstring& value) : name_(name) {
        wchar_t old[32768] = {};
        if (GetEnvironmentVariableW(name, old, 32768) > 0) {
            old_ = old;
        }
        SetEnvironmentVariableW(name, value.c_str());
    }
    ~ScopedVariable() { SetEnvironmentVariableW(name_, old_ ? old_->c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const wchar_t* name_;
    std::optional<std::wstring> old_;
};

// Walks the list with the keyboard, as a user would, until the details pane shows the title.
bool selectRowTitled(HWND window, const std::wstring& title) {
    HWND list = GetDlgItem(window, command::List);
    HWND details = GetDlgItem(window, control::Details);
    for (int press = 0; press < 200; ++press) {
        const WPARAM key = press == 0 ? VK_HOME : VK_DOWN;
        PostMessageW(list, WM_KEYDOWN, key, 0);
        PostMessageW(list, WM_KEYUP, key, 0xC0000001);
        if (test::waitUntil([&] { return test::windowTextOf(details).starts_with(title); }, 150)) {
            return true;
        }
    }
    return false;
}

TEST(ClientLaunchTest, AClientKilledDuringAGameFollowsItAgainWhenRestartedAndReportsOneSession) {
    const test::ClientFolders user;
    const test::TempFolder& folder = user.temp();
    const fs::path game = folder.path() / "Games" / "Kiln";
    test::placeTestGame(game, L"Kiln.exe");
    const std::string appName = "kiln" + std::to_string(GetCurrentProcessId());
    folder.writeFile("ProgramData/Epic/EpicGamesLauncher/Data/Manifests/kiln.item",
                     "{\"DisplayName\":\"Kiln Test\",\"InstallLocation\":\"" +
                         escapeBodyString(narrow(game.wstring())) + "\",\"AppName\":\"" + appName +
                         "\",\"LaunchExecutable\":\"Kiln.exe\",\"bIsIncompleteInstall\":false}");
    const ScopedVariable programData(L"ProgramData", (folder.path() / "ProgramData").wstring());
    Settings settings = signedInSettings("kiln-" + std::to_string(GetCurrentProcessId()));
    settings.refreshToken.clear();
    settings.overlayHintShown = true;
    user.writeDataFile("settings.json", formatSettings(settings));
    const size_t before = receivedRequests().size();

    std::string sessionId;
    {
        const auto client = user.start();
        HWND window = client->waitForWindow(30000);
        ASSERT_NE(window, nullptr);
        ASSERT_TRUE(test::waitForStatusLine(window, L"Library refreshed.", 30000));
        ASSERT_TRUE(selectRowTitled(window, L"Kiln Test"));
        PostMessageW(window, WM_COMMAND, MAKEWPARAM(command::Launch, BN_CLICKED), 0);
        ASSERT_TRUE(test::waitForStatusLine(window, L"Kiln Test is running.", 20000))
            << narrow(test::statusLineOf(window));
        // The session is journalled once the service has opened it.
        const fs::path journal = user.dataFolder() / "session.json";
        ASSERT_TRUE(test::waitUntil([&] { return loadSessionJournal(journal).has_value(); }, 10000));
        sessionId = loadSessionJournal(journal)->launchId;
        client->kill();
    }
    const std::vector<DWORD> running = test::processesUnder(game);
    ASSERT_EQ(running.size(), 1u) << "the game did not outlive the client";
    EXPECT_EQ(test::sessionCallsSince(before),
              std::vector<std::string>{"POST /api/v1/activity/external-launches"});

    const auto client = user.start();
    HWND window = client->waitForWindow(30000);
    ASSERT_NE(window, nullptr);
    // The list, not the status line: the game followed again may speak after the library.
    ASSERT_TRUE(test::waitUntil(
        [&] { return SendMessageW(GetDlgItem(window, command::List), LVM_GETITEMCOUNT, 0, 0) > 0; }, 30000));
    Sleep(500);
    EXPECT_EQ(test::sessionCallsSince(before).size(), 1u) << "the session was closed although its game runs";
    PostMessageW(test::testGameWindowOf(running[0]), WM_CLOSE, 0, 0);
    ASSERT_TRUE(test::waitForStatusLine(window, L"Kiln Test exited.", 20000))
        << narrow(test::statusLineOf(window));
    ASSERT_TRUE(test::waitUntil([&] { return test::sessionCallsSince(before).size() >= 2; }, 10000));
    EXPECT_EQ(test::sessionCallsSince(before),
              (std::vector<std::string>{"POST /api/v1/activity/external-launches",
                                        "POST /api/v1/activity/external-launches/" + sessionId + "/end"}));
    EXPECT_FALSE(fs::exists(user.dataFolder() / "session.json"));
    test::exitFromTrayMenu(*client, window);
}

} // namespace
} // namespace corvandell::win
