#include "webgames/WebGamePlan.hpp"

#include "webgames/WebGameFolders.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

const std::filesystem::path kData = "data";

WebGamePlan plan(const WebGameSubject& game, const std::string& chromium = "C:\\Edge\\msedge.exe") {
    return planWebGameLaunch(game, kData, RepositoryHost{"https://github.com", "github.io"},
                             [&] { return chromium; });
}

TEST(WebGamePlan, StartsAClonedGameFromTheFileUrlOfItsLaunchFileInItsFolder) {
    const WebGamePlan result =
        plan({"github:7", "src/play #1.html", L"C:\\Users\\Ann Lee\\data\\github\\o-r", ""});
    ASSERT_EQ(result.step, WebGameStep::Start);
    EXPECT_EQ(result.browser, L"C:\\Edge\\msedge.exe");
    EXPECT_EQ(result.targetUrl, L"file:///C:/Users/Ann%20Lee/data/github/o-r/src/play%20%231.html");
    EXPECT_EQ(result.workingFolder, L"C:\\Users\\Ann Lee\\data\\github\\o-r");
    EXPECT_EQ(result.profileFolder, webGameProfileFolder(kData, "github:7"));
}

TEST(WebGamePlan, StartsAHostedGameAtItsAddressAsStoredWithoutAWorkingFolder) {
    // Hosted wins over a clone that happens to exist.
    const WebGamePlan result = plan({"github:8", "https://Owner.github.io/Game/?level=2", L"C:\\clone", ""});
    ASSERT_EQ(result.step, WebGameStep::Start);
    EXPECT_EQ(result.targetUrl, L"https://Owner.github.io/Game/?level=2");
    EXPECT_EQ(result.workingFolder, L"");
}

TEST(WebGamePlan, ThePlayersChoiceWinsAndTheFinderIsAskedOnlyWithoutOne) {
    int asked = 0;
    const auto finder = [&] {
        ++asked;
        return std::string();
    };
    const WebGamePlan chosen = planWebGameLaunch(
        {"github:1", "index.html", L"C:\\c", "\"C:\\Mozilla Firefox\\firefox.exe\" -osint -url \"%1\""},
        kData, RepositoryHost{}, finder);
    EXPECT_EQ(chosen.step, WebGameStep::Start);
    EXPECT_EQ(chosen.browser, L"C:\\Mozilla Firefox\\firefox.exe");
    EXPECT_EQ(asked, 0);
    const WebGamePlan none =
        planWebGameLaunch({"github:1", "index.html", L"C:\\c", ""}, kData, RepositoryHost{}, finder);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(none.step, WebGameStep::Refuse);
    EXPECT_EQ(none.statusText, kNoBrowserText);
}

TEST(WebGamePlan, RefusesWhatCannotBeStartedSafely) {
    const struct {
        const char* name;
        WebGameSubject game;
        WebGameStep step;
        const char* text;
    } cases[] = {
        {"neither hosted nor cloned", {"github:1", "index.html", L"", ""}, WebGameStep::Ignore, ""},
        {"hosted elsewhere",
         {"github:1", "https://evil.example/game/", L"", ""},
         WebGameStep::Refuse,
         kBadHostedUrlText},
        {"hosted with a quote",
         {"github:1", "https://o.github.io/r/\"--x", L"", ""},
         WebGameStep::Refuse,
         kBadHostedUrlText},
        {"launch file outside",
         {"github:1", "../index.html", L"C:\\c", ""},
         WebGameStep::Refuse,
         kBadLaunchFileText},
        {"launch file not html",
         {"github:1", "game.exe", L"C:\\c", ""},
         WebGameStep::Refuse,
         kBadLaunchFileText},
    };
    for (const auto& c : cases) {
        const WebGamePlan result = plan(c.game);
        EXPECT_EQ(result.step, c.step) << c.name;
        EXPECT_EQ(result.statusText, c.text) << c.name;
    }
}

TEST(WebGamePlan, NoBrowserIsReportedBeforeTheAddressIsLookedAt) {
    const WebGamePlan result = plan({"github:1", "https://evil.example/", L"", ""}, "");
    EXPECT_EQ(result.statusText, kNoBrowserText);
}

} // namespace
} // namespace corvandell
