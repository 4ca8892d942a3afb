// The refresh job over a Steam library on disk and a scripted service.
#include "app/LibraryRefresh.hpp"

#include "app/LibraryActivity.hpp"
#include "app/LibraryMerge.hpp"
#include "app/RowText.hpp"
#include "base/Environment.hpp"
#include "base/Utf8Path.hpp"
#include "launch/InstalledBuild.hpp"
#include "support/FakeRegistry.hpp"
#include "support/ScriptedService.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

namespace fs = std::filesystem;

constexpr char kCatalogue[] = "GET /api/v1/software?pageSize=100&sort=name&platform=windows";

class LibraryRefreshTest : public ::testing::Test {
protected:
    LibraryRefreshTest() {
        const fs::path steam = temp_.path() / "Steam";
        registry_.set(RegistryHive::CurrentUser, "Software\\Valve\\Steam", "SteamPath", pathToUtf8(steam));
        addSteamGame(steam, "620", "Sky-Forge 2");
        addSteamGame(steam, "730", "Moss");
        service_.answer(
            "GET /api/v1/github-games",
            R"({"items":[{"id":"g1","repoUrl":"https://github.com/alice-codes/tiny-tower",)"
            R"("ownerLogin":"alice-codes","repoName":"tiny-tower","displayName":"Tiny Tower",)"
            R"("launchPath":"index.html","isVerifiedOwner":true,"submittedByUsername":"alice"}]})");
        service_.answer(
            "GET /api/v1/me/github-games",
            R"({"items":[{"id":"g1","displayName":"Tiny Tower"},{"id":"g2","ownerLogin":"me",)"
            R"("repoName":"mine","displayName":"Mine","launchPath":"https://me.github.io/mine/"}]})");
        service_.answer(kCatalogue, R"({"items":[{"id":"t1","name":"Sky Forge 2","category":"RPG"},)"
                                    R"({"id":"t2","name":"Ember Keep","tags":["co-op"]}]})");
        service_.answer("GET /api/v1/me/entitlements",
                        R"({"items":[{"id":"e1","softwareTitleId":"t2","isRevoked":false}]})");
        service_.answer("GET /api/v1/software/t2/builds?pageSize=1", R"({"items":[{"version":"1.2.0"}]})");
        temp_.writeFile("data/github/alice-codes-tiny-tower/index.html", "<html></html>");
    }

    void addSteamGame(const fs::path& steam, const std::string& appId, const std::string& name) {
        temp_.writeFile(steam / "steamapps" / ("appmanifest_" + appId + ".acf"),
                        "\"AppState\"\n{\n\"appid\" \"" + appId + "\"\n\"name\" \"" + name +
                            "\"\n\"StateFlags\" \"4\"\n\"installdir\" \"" + name + "\"\n}\n");
        temp_.writeFile(steam / "steamapps" / "common" / name / "Game.exe", "MZ");
    }

    LibraryResult refresh(const std::string& query = "", const std::string& folder = "C:/Games/Ember") {
        const MapEnvironment environment;
        return gatherLibrary(service_, StoreHost{registry_, environment, {}}, temp_.path() / "data",
                             installed(folder), query);
    }
    static std::vector<LibraryRecord> installed(const std::string& folder) {
        return {{"t2", "Ember Keep", folder, "", false, 1, 0}};
    }

    test::TempFolder temp_;
    test::FakeRegistry registry_;
    test::ScriptedService service_;
};

TEST_F(LibraryRefreshTest, GathersEverySourceAndAsksBuildsOnlyForInstalledTitlesAndTheSearch) {
    const LibraryResult result = refresh();
    ASSERT_TRUE(result.succeeded) << result.errorText;
    EXPECT_EQ(service_.requests(),
              (std::vector<std::string>{"GET /api/v1/github-games", "GET /api/v1/me/github-games", kCatalogue,
                                        "GET /api/v1/me/entitlements",
                                        "GET /api/v1/software/t2/builds?pageSize=1"}));
    ASSERT_EQ(result.steamRows.size(), 2u);
    EXPECT_EQ(result.steamRows[0].key + result.steamRows[1].key, "steam:620steam:730");
    EXPECT_TRUE(result.storeRows.empty());
    ASSERT_EQ(result.browserGames.size(), 2u);
    EXPECT_EQ(result.browserGames[1].displayName, "Mine");
    EXPECT_EQ(result.cloneFolders,
              (std::map<std::string, std::string>{
                  {"g1", pathToUtf8(temp_.path() / "data" / "github" / "alice-codes-tiny-tower")}}));
    EXPECT_EQ(result.latestVersions, (std::map<std::string, std::string>{{"t2", "1.2.0"}}));
    ASSERT_EQ(result.catalogue.size(), 2u);
    EXPECT_EQ(result.entitlements.size(), 1u);

    // The search text goes to the service and travels with the result.
    service_.answer("GET /api/v1/software?pageSize=100&sort=name&q=sky%20forge&platform=windows",
                    "{\"items\":[]}");
    const LibraryResult searched = refresh("sky forge");
    EXPECT_TRUE(searched.succeeded) << searched.errorText;
    EXPECT_EQ(searched.query, "sky forge");
}

// library.json has no version field; the installer's record in the title's folder says
// which build is there, so a current install offers Launch and an old one Update.
TEST_F(LibraryRefreshTest, TheInstalledBuildIsReadFromTheTitlesFolderAndDecidesTheAction) {
    struct Case {
        const char* record; // the folder's corvandell-build.json; nullptr: none
        const char* installedVersion;
        RowAction action;
    };
    const Case cases[] = {
        {R"({"titleId":"t2","version":"1.2.0"})", "1.2.0", RowAction::Launch},
        {R"({"titleId":"t2","version":"1.1.4"})", "1.1.4", RowAction::Update},
        {R"({"titleId":"t9","version":"1.2.0"})", "", RowAction::Update}, // another title's folder
        {nullptr, "", RowAction::Update},
    };
    const fs::path folder = temp_.path() / "games" / "Ember Keep";
    for (const Case& c : cases) {
        fs::remove_all(folder);
        fs::create_directories(folder);
        if (c.record != nullptr) {
            temp_.writeFile(folder / kInstalledBuildFileName, c.record);
        }
        const LibraryResult result = refresh("", pathToUtf8(folder));
        ASSERT_TRUE(result.succeeded) << result.errorText;
        const std::vector<LibraryItem> rows = buildLibraryRows(result, installed(pathToUtf8(folder)));
        ASSERT_EQ(rows[1].key, "t2");
        EXPECT_EQ(rows[1].installedVersion(), c.installedVersion) << (c.record ? c.record : "no record");
        EXPECT_EQ(actionFor(rows[1]), c.action) << (c.record ? c.record : "no record");
    }
}

// The refresh looks for a clone exactly where the clone writes it: the folder comes from the
// game's repository address read against the client's repository host, letter case kept,
// never from the listing's owner and name fields.
TEST_F(LibraryRefreshTest, CloneFoldersComeFromTheRepositoryAddressOnTheClientsHost) {
    const RepositoryHost gitHub{"https://github.com", "github.io"};
    const RepositoryHost loopback{"http://127.0.0.1:4567", "github.io"};
    const struct {
        const char* repoUrl;
        const RepositoryHost& host;
        const char* folder; // under data/github; nullptr: no clone can be found
    } cases[] = {
        {"https://github.com/Alice-Codes/Tiny-Tower.git/", gitHub, "Alice-Codes-Tiny-Tower"},
        {"http://127.0.0.1:4567/player/orbit", loopback, "player-orbit"},
        {"https://github.com/player/orbit", loopback, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.repoUrl);
        fs::remove_all(temp_.path() / "data" / "github");
        for (const char* folder : {"Alice-Codes-Tiny-Tower", "player-orbit", "alice-codes-tiny-tower"}) {
            temp_.writeFile(fs::path("data") / "github" / folder / "index.html", "<html></html>");
        }
        service_.answer(
            "GET /api/v1/github-games",
            std::string(R"({"items":[{"id":"g1","repoUrl":")") + c.repoUrl +
                R"(","ownerLogin":"alice-codes","repoName":"tiny-tower","launchPath":"index.html"}]})");
        const MapEnvironment environment;
        const StoreHost host{registry_, environment, {}};
        const LibraryResult result = gatherLibrary(service_, host, temp_.path() / "data", {}, "", c.host);
        ASSERT_TRUE(result.succeeded) << result.errorText;
        std::map<std::string, std::string> expected;
        if (c.folder != nullptr) {
            expected["g1"] = pathToUtf8(temp_.path() / "data" / "github" / c.folder);
        }
        EXPECT_EQ(result.cloneFolders, expected);
    }
}

TEST_F(LibraryRefreshTest, FailuresKeepTheLocalGamesAndMissingEntitlementsAreNoFailure) {
    struct FailureCase {
        const char* request;
        bool succeeded;
        std::string errorText;
    };
    const std::vector<FailureCase> cases{
        {"GET /api/v1/me/entitlements", true, ""},
        {kCatalogue, false, "Refresh failed: HTTP request failed"},
        {"GET /api/v1/github-games", false, "Refresh failed: HTTP request failed"},
    };
    for (const FailureCase& test : cases) {
        service_.fail(test.request, "HTTP request failed");
        const LibraryResult result = refresh();
        EXPECT_EQ(result.succeeded, test.succeeded) << test.request;
        EXPECT_EQ(result.errorText, test.errorText) << test.request;
        EXPECT_EQ(result.steamRows.size(), 2u) << test.request;
        service_.clearFailure(test.request);
    }
}

TEST(LibraryActivity, PlaytimeIsAskedByTitleOrByStoreAndReadAsTheUserSeesIt) {
    test::ScriptedService service;
    service.answer("GET /api/v1/activity/software/t1/playtime",
                   R"({"totalMinutes":130,"totalSeconds":7815})");
    service.answer("GET /api/v1/activity/software/t1/friends-playtime?top=5",
                   R"({"items":[{"username":"bruno","minutes":180,"seconds":10800},)"
                   R"({"username":"alice","minutes":45,"seconds":2700}]})");
    service.answer("GET /api/v1/activity/game-feed?key=t1&limit=8",
                   R"({"items":[{"type":"playing","username":"alice","timestamp":"2026-11-25T05:00:00Z"},)"
                   R"({"type":"rate","username":"eve","stars":2,"timestamp":"2026-11-24T10:00:00Z"},)"
                   R"({"type":"play","username":"bruno","minutes":1,"timestamp":"2026-11-23T10:00:00Z"}]})");
    service.answer("GET /api/v1/activity/external/playtime?provider=steam&externalId=620",
                   R"({"totalMinutes":0})");
    service.answer("GET /api/v1/activity/external/friends-playtime?provider=steam&externalId=620&top=5",
                   "{\"items\":[]}");
    service.answer("GET /api/v1/activity/game-feed?key=steam%3A620&limit=8", "{\"items\":[]}");

    LibraryItem title, steam, missing;
    title.key = "t1";
    steam.key = "steam:620";
    steam.steamAppId = "620";
    missing.key = "t404";

    const std::vector<std::pair<LibraryItem, std::string>> cases{
        {title, "You have played: 2 h 10 min\r\n\r\nFriends' playtime\r\n   bruno played 3 h 00 min\r\n"
                "   alice played 45 min\r\n\r\nRecent activity\r\n   alice is playing now\r\n"
                "   eve rated it 2 stars (2026-11-24)\r\n   bruno played 1 min (2026-11-23)"},
        {steam, "You have played: not yet\r\n\r\nFriends' playtime\r\n   None of your friends has played it "
                "yet.\r\n\r\nRecent activity\r\n   Nothing yet."},
        {missing, "Playtime unavailable: Corvandell API HTTP 404: {\"error\":\"not_found\"}"},
    };
    for (const auto& [row, text] : cases) {
        const PlaytimeResult result = gatherPlaytime(service, row);
        EXPECT_EQ(result.key, row.key);
        EXPECT_EQ(playtimeText(result), text);
    }
}

TEST(LibraryActivity, RatingsAreAskedInOneRequestAndARatingAnswersWithTheNewSummary) {
    test::ScriptedService service;
    service.answer("POST /api/v1/ratings/query",
                   R"({"items":[{"gameKey":"t1","average":4.5,"count":2,"myStars":5},{"gameKey":"t2"}]})");
    service.answer("PUT /api/v1/me/ratings", R"({"gameKey":"t1","average":4.0,"count":3,"myStars":3})");
    const RatingsResult all = gatherRatings(service, {"t1", "t2"});
    ASSERT_TRUE(all.succeeded);
    ASSERT_EQ(all.ratings.size(), 2u);
    EXPECT_EQ(all.ratings[1].myStars, -1);
    const RatingsResult mine = sendRating(service, "t1", 3);
    ASSERT_TRUE(mine.succeeded);
    EXPECT_EQ(mine.ratings[0].count, 3);
    EXPECT_EQ(service.requests(),
              (std::vector<std::string>{"POST /api/v1/ratings/query {\"keys\":[\"t1\",\"t2\"]}",
                                        "PUT /api/v1/me/ratings {\"gameKey\":\"t1\",\"stars\":3}"}));
    service.fail("PUT /api/v1/me/ratings", "HTTP request failed");
    const RatingsResult failed = sendRating(service, "t1", 4);
    EXPECT_FALSE(failed.succeeded);
    EXPECT_EQ(failed.errorText, "HTTP request failed");
}

TEST(LibraryActivity, DurationsReadAsPeopleSayThem) {
    const std::vector<std::pair<int, std::string>> cases{
        {59, "less than a minute"},
        {60, "1 min"},
        {3600, "1 h 00 min"},
        {7815, "2 h 10 min"},
    };
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(durationText(seconds), text) << seconds;
    }
}

} // namespace
} // namespace corvandell
