#include "webgames/BrowserCommand.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

TEST(BrowserCommand, FileUrlEscapesWhatABrowserWouldMisread) {
    EXPECT_EQ(fileUrl(L"C:\\Users\\Ann Lee\\github\\a-b\\index.html"),
              L"file:///C:/Users/Ann%20Lee/github/a-b/index.html");
    EXPECT_EQ(fileUrl(L"D:\\games #1\\100%\\é.html"), L"file:///D:/games%20%231/100%25/é.html");
}

TEST(BrowserCommand, BuildsEachBrowsersCommandLine) {
    const struct {
        const wchar_t* browser;
        const wchar_t* expected;
    } cases[] = {
        {L"C:\\Program Files\\Mozilla Firefox\\FIREFOX.EXE",
         L"\"C:\\Program Files\\Mozilla Firefox\\FIREFOX.EXE\" -kiosk -new-instance -no-remote -profile "
         L"\"D:\\data\\webgames\\g 1\" \"file:///C:/x%20y/index.html\""},
        {L"C:\\Tools\\MyFireFoxDev.exe", L"\"C:\\Tools\\MyFireFoxDev.exe\" -kiosk -new-instance -no-remote "
                                         L"-profile \"D:\\data\\webgames\\g 1\" "
                                         L"\"file:///C:/x%20y/index.html\""},
        {L"C:\\firefox\\msedge.exe",
         L"\"C:\\firefox\\msedge.exe\" --app=file:///C:/x%20y/index.html --kiosk --start-fullscreen "
         L"--no-first-run "
         L"--no-default-browser-check --disable-features=Translate,TranslateUI --disable-pinch "
         L"--overscroll-history-navigation=0 --user-data-dir=\"D:\\data\\webgames\\g 1\""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(browserCommandLine(c.browser, L"file:///C:/x%20y/index.html", L"D:\\data\\webgames\\g 1"),
                  c.expected)
            << c.browser;
    }
}

TEST(BrowserCommand, RefusesUrlsThatWouldAddArguments) {
    const struct {
        const wchar_t* url;
        bool isSafe;
    } cases[] = {
        {L"https://alice.github.io/game/?level=2#start", true},
        {L"https://alice.github.io/game/ --disable-web-security", false},
        {L"https://alice.github.io/game/\"--no-sandbox", false},
        {L"https://alice.github.io/game/\x85", false},
        {L"--user-data-dir=C:\\", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(isSafeOnCommandLine(c.url), c.isSafe) << c.url;
    }
}

} // namespace
} // namespace corvandell
