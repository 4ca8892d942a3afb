// Installing service titles through the main window against the stand-in: real grants and
// signed links for the seeded titles (one sent with a Content-Length, one chunked), scripted
// ones for what the seed never does (hostile names, downloads that break off or are stopped).
#include <windows.h>

#include "api/JsonText.hpp"
#include "app/LibraryCache.hpp"
#include "app/LibraryMerge.hpp"
#include "base/Utf8Path.hpp"
#include "launch/InstalledBuild.hpp"
#include "support/ScriptedService.hpp"
#include "support/win/MainWindowUnderTest.hpp"

#include <gtest/gtest.h>

#include <utility>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr char kEmberKeep[] = "2860dc9d-ab01-5354-8304-4c562bcb86fb";
constexpr char kStarfallCourier[] = "6002ee77-26af-5cc2-bf16-cd2cf996effb";
const std::string kEmberDownload = std::string("/api/v1/software/") + kEmberKeep + "/download";

std::string fileUrl(const std::string& name) {
    return serviceBaseUrl() + "/files/" + name;
}

// A grant of these files: asset name and signed link.
std::string grantOf(const std::vector<std::pair<std::string, std::string>>& assets) {
    std::string items;
    for (const auto& [name, url] : assets) {
        items += (items.empty() ? "" : ",") +
                 ("{\"assetId\":\"" + escapeBodyString(name) + "\",\"type\":\"data\",\"signedUrl\":\"" +
                  escapeBodyString(url) + "\"}");
    }
    return "{\"items\":[" + items + "]}";
}

// Every regular file under `folder`, relative and with '/' separators, sorted.
std::vector<std::string> filesUnder(const fs::path& folder) {
    std::vector<std::string> files;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(folder, error);
         !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        if (it->is_regular_file()) {
            files.push_back(pathToUtf8(fs::relative(it->path(), folder).generic_wstring()));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

class MainWindowInstallTest : public ::testing::Test {
protected:
    void open(int downloadLimitKbps = 0) {
        w_.signIn("demo");
        w_.settings.downloadLimitKbps = downloadLimitKbps;
        w_.settings.overlayHintShown = true; // no hint box to stand between Launch and the game
        ASSERT_TRUE(w_.open());
        ASSERT_TRUE(w_.waitForStatus(L"Library refreshed.")) << narrow(w_->statusText());
        w_.status->clear();
    }
    // Selects the row and presses its action button.
    void press(const std::string& name) {
        ASSERT_TRUE(w_.select(name)) << name;
        w_.pressAction();
    }
    bool waitForInstalled(const std::string& name) {
        return test::pumpUntil([&] { return w_.row(name).isInstalled(); }, 30'000);
    }
    fs::path games() const { return w_.paths.defaultLibraryFolder; }

    test::MainWindowUnderTest w_;
};

TEST_F(MainWindowInstallTest, InstallsSeededBuildsOneAtATimeWithAndWithoutALengthAndTheRefreshShowsThem) {
    open();
    struct Case {
        const char* name;
        const char* titleId;
        std::vector<std::string> files;
        bool isLengthSent;
        const char* version;
    };
    const Case cases[] = {
        {"Ember Keep", kEmberKeep, {"asset.bin"}, true, "1.2.0"},
        {"Starfall Courier",
         kStarfallCourier,
         {"starfall-courier-content.bin", "starfall-courier-core.bin"},
         false,
         "2.0.1"},
    };
    std::size_t installed = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(w_.select(c.name));
        EXPECT_EQ(w_.actionLabel(), L"Install");
        EXPECT_FALSE(w_.row(c.name).isInstalled());
        w_.status->clear();
        w_.pressAction();
        w_.pressAction(); // before the first has had any chance to finish: nothing is pumped between
        EXPECT_TRUE(w_.sawStatus(widen(c.name) + L" is already being installed.")) << w_.statusTexts();
        ASSERT_TRUE(waitForInstalled(c.name)) << w_.statusTexts();
        ++installed;

        // With a Content-Length the percent climbs to 100; without one it stays at 0.
        const std::vector<std::wstring>& seen = w_.status->texts();
        ASSERT_FALSE(seen.empty());
        EXPECT_EQ(seen.front(), L"Preparing download...");
        std::vector<int> percents;
        for (const std::wstring& text : seen) {
            if (text.starts_with(L"Downloading ")) {
                percents.push_back(std::stoi(text.substr(12)));
            }
        }
        ASSERT_FALSE(percents.empty()) << w_.statusTexts();
        EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end())) << w_.statusTexts();
        EXPECT_EQ(percents.back(), c.isLengthSent ? 100 : 0) << w_.statusTexts();
        // The refresh that shows the row installed was asked after library.json was saved.
        const auto installedAt = std::find(seen.begin(), seen.end(), L"Installed 100%");
        ASSERT_NE(installedAt, seen.end()) << w_.statusTexts();
        EXPECT_NE(std::find(installedAt, seen.end(), L"Loading library..."), seen.end()) << w_.statusTexts();

        GuardedFile file = libraryFileIn(w_.paths.dataFolder);
        const std::vector<LibraryRecord> records = loadLibrary(file);
        ASSERT_EQ(records.size(), installed);
        const LibraryRecord& record = records.back();
        const fs::path folder = games() / c.name;
        EXPECT_EQ(record.titleId, c.titleId);
        EXPECT_EQ(record.installPath, pathToUtf8(folder));
        EXPECT_EQ(readInstalledBuild(folder), (InstalledBuild{c.titleId, c.version}));

        std::vector<std::string> expected = c.files;
        expected.push_back(kInstalledBuildFileName);
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(filesUnder(folder), expected) << "a file missing, or a partial one left";

        // After the refresh: installed and current, so Launch rather than Update.
        ASSERT_TRUE(w_.waitForStatus(L"Library refreshed."));
        EXPECT_EQ(w_->cellText(w_.rowOf(c.name), 1), L"Installed");
        w_.select(c.name);
        EXPECT_EQ(w_.actionLabel(), L"Launch");
    }
    // Once done, a title may be installed again (asked for directly: the row offers Launch).
    w_.select("Ember Keep");
    w_.status->clear();
    w_->installSelected();
    EXPECT_EQ(w_.status->texts().front(), L"Preparing download...");
    EXPECT_TRUE(w_.waitForSawStatus(L"Library refreshed."));
}

// A grant refused for any of its files (hostile names are ruled on by the asset-name table
// test), or a download that breaks off or is refused, writes nothing, says why and leaves
// library.json and the build installed before as they were, on a first install or an update.
TEST_F(MainWindowInstallTest, FailedInstallsSayWhyAndLeaveEverythingAsItWas) {
    const fs::path ember = games() / "Ember Keep";
    w_.folder.writeFile("games/Ember Keep/first.bin", "old first");
    w_.folder.writeFile("games/Ember Keep/second.bin", "old second");
    writeInstalledBuild(ember, {kEmberKeep, "1.1.4"});
    GuardedFile file = libraryFileIn(w_.paths.dataFolder);
    saveLibrary(file, {{kEmberKeep, "Ember Keep", pathToUtf8(ember), "", false, 1'700'000'000, 0}});
    const std::string library = test::readTestFile(w_.paths.dataFolder / "library.json");
    open();
    enum class Second { NotFetched, CutShort, Refused };
    const std::string never = fileUrl("never");
    const std::string twoFiles = grantOf({{"first", fileUrl("first")}, {"second", fileUrl("second")}});
    const auto unsafe = [](const std::string& name) {
        return widen("Install failed: The service gave an unsafe file name: \"" + name + "\".");
    };
    const struct {
        const char* title;
        std::string grant;
        Second second;
        std::wstring status;
    } cases[] = {
        {"Ember Keep", "{\"items\":[]}", Second::NotFetched,
         L"Install failed: No downloadable assets returned by API."},
        {"Starfall Courier", grantOf({{"..\\..\\evil", never}}), Second::NotFetched, unsafe("..\\..\\evil")},
        {"Starfall Courier", grantOf({{"Data", never}, {"data", never}}), Second::NotFetched,
         L"Install failed: The service named the file \"data\" twice."},
        {"Ember Keep", twoFiles, Second::CutShort,
         L"Install failed: The download of \"second\" ended after 30000 of 31000 bytes."},
        {"Starfall Courier", twoFiles, Second::Refused,
         L"Install failed: The download of \"second\" was refused (HTTP 410)."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.grant);
        scriptNextReply(std::string("/api/v1/software/") +
                            (c.title[0] == 'E' ? kEmberKeep : kStarfallCourier) + "/download",
                        200, c.grant);
        if (c.second != Second::NotFetched) {
            scriptFileReply("/files/first", std::string(40'000, '1'), FileTransfer::WithLength);
        }
        if (c.second == Second::CutShort) {
            scriptFileReply("/files/second", std::string(30'000, '2'), FileTransfer::CutShort);
        } else if (c.second == Second::Refused) {
            scriptNextReply("/files/second", 410, "{\"error\":\"link_expired\"}");
        }
        const std::size_t callsBefore = receivedRequests().size();
        ASSERT_TRUE(w_.select(c.title));
        EXPECT_EQ(w_.actionLabel(), c.title[0] == 'E' ? L"Update" : L"Install");
        w_.status->clear();
        w_.pressAction();
        ASSERT_TRUE(w_.waitForSawStatus(c.status)) << w_.statusTexts();
        EXPECT_FALSE(w_.sawStatus(L"Loading library...")) << "no refresh after a failure";
        EXPECT_EQ(w_.row(c.title).isInstalled(), c.title[0] == 'E');
        EXPECT_EQ(test::readTestFile(w_.paths.dataFolder / "library.json"), library);
        EXPECT_EQ(filesUnder(games()),
                  (std::vector<std::string>{"Ember Keep/corvandell-build.json", "Ember Keep/first.bin",
                                            "Ember Keep/second.bin"}));
        EXPECT_EQ(test::readTestFile(ember / "first.bin"), "old first");
        EXPECT_EQ(test::readTestFile(ember / "second.bin"), "old second");
        EXPECT_EQ(readInstalledBuild(ember).version, "1.1.4");
        const std::vector<std::string> calls = test::requestsSince(callsBefore);
        EXPECT_EQ(
            std::count_if(calls.begin(), calls.end(),
                          [](const std::string& call) { return call.find("/files/") != std::string::npos; }),
            c.second == Second::NotFetched ? 0 : 2);
    }
}

TEST_F(MainWindowInstallTest, ClosingTheClientStopsACappedDownloadAtOnceAndInstallsNothing) {
    open(1); // 1 KiB/s: the file below would take over a minute
    scriptNextReply(kEmberDownload, 200, grantOf({{"slow", fileUrl("slow")}}));
    scriptFileReply("/files/slow", std::string(64 * 1024, 's'), FileTransfer::WithLength);
    press("Ember Keep");
    ASSERT_TRUE(w_.waitForSawStatus(L"Downloading ")) << w_.statusTexts();
    const ULONGLONG start = GetTickCount64();
    w_.window.reset(); // Exit: the window waits for its jobs before it goes
    EXPECT_LT(GetTickCount64() - start, 10'000u);
    GuardedFile file = libraryFileIn(w_.paths.dataFolder); // saved on exit, with nothing installed
    EXPECT_TRUE(loadLibrary(file).empty());
    EXPECT_EQ(filesUnder(games()), std::vector<std::string>{}) << "the partial file was left";
}

// Rows the client never downloads: another store's, and a repository game whose address is
// not on the repository host.
TEST_F(MainWindowInstallTest, RowsOfOtherInstallersAreExplainedNotDownloaded) {
    w_.jobs.api = std::make_shared<test::ScriptedService>(); // any service call would fail the test's texts
    const auto detected = [](const char* store, const char* storeName, const char* id, const char* title) {
        DetectedGame game;
        game.key = std::string(store) + ":" + id;
        game.title = title;
        game.storeKey = store;
        game.storeName = storeName;
        game.externalId = id;
        return game;
    };
    LibraryResult result{.succeeded = true};
    result.storeRows = {rowFromDetectedGame(detected("epic", "Epic Games", "e1", "Cave Run"))};
    result.browserGames = {{"g2", "https://gitlab.com/alice-codes/tiny-tower", "alice-codes", "tiny-tower",
                            "Tiny Tower", "index.html", true, "alice"}};
    w_.answerRefreshes(result);
    open();
    const struct {
        const char* name;
        std::vector<std::wstring> status; // empty: nothing is said and nothing starts
    } cases[] = {
        {"Cave Run", {L"This game is installed and updated by Epic Games."}},
        {"Tiny Tower", {L"This game has an invalid repository URL."}},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(w_.select(c.name));
        w_.status->clear();
        w_->installSelected();
        test::pumpUntil([] { return false; }, 200);
        EXPECT_EQ(w_.status->texts(), c.status) << c.name;
    }
}

} // namespace
} // namespace corvandell::win
