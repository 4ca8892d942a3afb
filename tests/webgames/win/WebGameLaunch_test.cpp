// The browser launcher against the real registry of the Wine prefix and real processes:
// the fake browser registered where Windows lists browsers, started in a job with the
// exact command line a real Edge, Chrome or Firefox would get.
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

std::optional<test::BrowserStart> waitForStart(const fs::path& browser) {
    std::optional<test::BrowserStart> start;
    test::pumpUntil([&] { return (start = test::recordedStart(browser)).has_value(); }, 15000);
    return start;
}

bool waitForNoProcessUnder(const fs::path& folder) {
    return test::pumpUntil([&] { return test::processesUnder(folder).empty(); }, 15000);
}

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
    EXPECT_EQ(findChromiumBrowser(), "") << "the prefix has no Edge or Chrome of its own";
    const fs::path chrome = test::placeFakeBrowser(folder_.path() / "Chrome", L"chrome.exe");
    const fs::path edge = test::placeFakeBrowser(folder_.path() / "Edge", L"msedge.exe");
    registry_.addAppPath(HKEY_CURRENT_USER, L"chrome.exe", chrome);
    EXPECT_EQ(findChromiumBrowser(), chrome.string());
    registry_.addAppPath(HKEY_LOCAL_MACHINE, L"msedge.exe", edge);
    EXPECT_EQ(findChromiumBrowser(), edge.string());
}

TEST_F(WebGameLaunchTest, StartsEachKindOfBrowserWithItsCommandLineInTheFolderAndAJob) {
    const fs::path clone = folder_.path() / "github" / "ann-star";
    fs::create_directories(clone);
    const struct {
        const wchar_t* file;
        std::wstring target;
        std::wstring workingFolder;
        std::wstring expectedArguments; // after the quoted browser; @ stands for the profile folder
    } cases[] = {
        {L"msedge.exe", L"file:///C:/games/index.html", clone.wstring(),
         L" --app=file:///C:/games/index.html --kiosk --start-fullscreen --no-first-run "
         L"--no-default-browser-check --disable-features=Translate,TranslateUI --disable-pinch "
         L"--overscroll-history-navigation=0 --user-data-dir=\"@\""},
        {L"Firefox Nightly.exe", L"https://ann.github.io/star/", L"",
         L" -kiosk -new-instance -no-remote -profile \"@\" \"https://ann.github.io/star/\""},
    };
    for (const auto& c : cases) {
        const fs::path browserFolder = folder_.path() / c.file;
        const fs::path browser = test::placeFakeBrowser(browserFolder, c.file);
        const fs::path profile = folder_.path() / "data" / "webgames" / "github_1";
        StartedGame started = launchWebGame(browser.wstring(), c.target, profile, c.workingFolder);
        ASSERT_TRUE(started) << c.file;
        EXPECT_TRUE(fs::is_directory(profile)) << "created with its parents";
        ASSERT_TRUE(started.job) << c.file;
        BOOL isInJob = FALSE;
        EXPECT_TRUE(IsProcessInJob(started.process.get(), started.job.get(), &isInJob) && isInJob);

        const auto start = waitForStart(browser);
        ASSERT_TRUE(start) << c.file;
        std::wstring expected = c.expectedArguments;
        expected.replace(expected.find(L'@'), 1, profile.wstring());
        EXPECT_EQ(start->commandLine, L"\"" + browser.wstring() + L"\"" + expected);
        if (!c.workingFolder.empty()) {
            EXPECT_EQ(fs::path(start->workingFolder), fs::path(c.workingFolder));
        }
        // The browser and its child, both in the job; closing the job ends them.
        ASSERT_TRUE(test::pumpUntil([&] { return test::processesUnder(browserFolder).size() == 2; }, 15000));
        started.job.reset();
        EXPECT_TRUE(waitForNoProcessUnder(browserFolder)) << c.file;
    }
}

TEST_F(WebGameLaunchTest, StartsNothingForATargetThatWouldAddArgumentsOrAMissingBrowser) {
    const fs::path browser = test::placeFakeBrowser(folder_.path() / "Edge", L"msedge.exe");
    const fs::path profile = folder_.path() / "profile";
    for (const wchar_t* target : {L"https://a.github.io/ --no-sandbox", L"-x", L"https://a.github.io/\"x"}) {
        EXPECT_FALSE(launchWebGame(browser.wstring(), target, profile, L"")) << target;
    }
    EXPECT_FALSE(
        launchWebGame((folder_.path() / "none.exe").wstring(), L"https://a.github.io/", profile, L""));
    test::pumpUntil([] { return false; }, 300);
    EXPECT_TRUE(test::processesUnder(folder_.path()).empty());
    EXPECT_FALSE(test::recordedStart(browser));
}

} // namespace
} // namespace corvandell::win
