// The browser launcher against the real registry of the Wine prefix: the fake browser
// registered where Windows lists browsers, and the launch's own refusals. The command lines
// a started browser receives are checked through the main window (MainWindowWebGame_test).
#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "support/TempFolder.hpp"
#include "support/win/FakeBrowsers.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/TestGames.hpp"
#include "webgames/win/WebGameLaunch.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

class WebGameLaunchTest : public ::testing::Test {
protected:
    void TearDown() override { test::endProcessesUnder(folder_.path()); }

    test::TempFolder folder_;
    test::BrowserRegistrations registry_;
};

TEST_F(WebGameLaunchTest, ListsTheRegisteredBrowsersByTheirNamesAndOpenCommands) {
    const fs::path fox = test::placeFakeBrowser(folder_.path() / "Fox", L"firefox.exe");
    const std::wstring subkey = L"CorvandellFox" + std::to_wstring(GetCurrentProcessId());
    registry_.addBrowser(HKEY_CURRENT_USER, subkey, L"Fake Fox",
                         L"\"" + fox.wstring() + L"\" -osint -url \"%1\"");
    registry_.addBrowser(HKEY_LOCAL_MACHINE, subkey + L"M", L"Machine Browser", L"C:\\B\\b.exe");

    const std::vector<BrowserEntry> browsers = installedBrowsers();
    const auto named = [&](const std::string& name) {
        return std::find_if(browsers.begin(), browsers.end(),
                            [&](const BrowserEntry& b) { return b.name == name; });
    };
    ASSERT_NE(named("Fake Fox"), browsers.end());
    EXPECT_EQ(named("Fake Fox")->command, "\"" + fox.string() + "\" -osint -url \"%1\"");
    ASSERT_NE(named("Machine Browser"), browsers.end());
    EXPECT_EQ(named("Machine Browser")->command, "C:\\B\\b.exe");
    // Machine-wide browsers come before the user's own.
    EXPECT_LT(named("Machine Browser"), named("Fake Fox"));
}

TEST_F(WebGameLaunchTest, FindsEdgeBeforeChromeInAppPathsAndNothingWithoutThem) {
    // Which one wins where is BrowserChoice_test's table; this is the real registry's part.
    EXPECT_EQ(findChromiumBrowser(), "") << "the prefix has no Edge or Chrome of its own";
    const fs::path edge = test::placeFakeBrowser(folder_.path() / "Edge", L"msedge.exe");
    registry_.addAppPath(HKEY_LOCAL_MACHINE, L"msedge.exe", edge);
    EXPECT_EQ(findChromiumBrowser(), edge.string());
}

TEST_F(WebGameLaunchTest, StartsNothingForATargetThatWouldAddArgumentsOrAMissingBrowser) {
    const fs::path browser = test::placeFakeBrowser(folder_.path() / "Edge", L"msedge.exe");
    const fs::path profile = folder_.path() / "profile";
    EXPECT_FALSE(launchWebGame(browser.wstring(), L"https://a.github.io/ --no-sandbox", profile, L""));
    EXPECT_FALSE(
        launchWebGame((folder_.path() / "none.exe").wstring(), L"https://a.github.io/", profile, L""));
    test::pumpUntil([] { return false; }, 300);
    EXPECT_TRUE(test::processesUnder(folder_.path()).empty());
    EXPECT_FALSE(test::recordedStart(browser));
}

} // namespace
} // namespace corvandell::win
