// Rows summarised as key | title | State | install folder.
#include "app/LibraryMerge.hpp"

#include "app/RefreshSequence.hpp"
#include "app/RowText.hpp"
#include "base/Utf8Path.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

SoftwareItem title(const std::string& id, const std::string& name) {
    return SoftwareItem{id, name, "", "", "RPG", "windows", "", {}};
}

// DetectedGame fields in order: key, title, store key and name, external id, platform,
// description, folder, executable, launch address, Steam app id, build, last played.
LibraryItem steamGame(const std::string& appId, const std::string& name) {
    const std::filesystem::path folder = "C:/Steam/steamapps/common/" + name;
    return rowFromDetectedGame({"steam:" + appId, name, "steam", "Steam", appId, "windows", "", folder,
                                folder / "game.exe", "", appId, "77", 0});
}

LibraryItem storeGame(const std::string& key, const std::string& id, const std::string& name) {
    return rowFromDetectedGame({key + ":" + id, name, key, key == "epic" ? "Epic Games" : "GOG Galaxy", id,
                                "windows", "", "D:/" + key + "/" + name, "", key + "://launch/" + id, "", "",
                                0});
}

RepositoryGame sharedGame(const std::string& id, const std::string& name, const std::string& launch,
                          bool verified) {
    return RepositoryGame{id, "https://github.com/o/" + id, "o", id, name, launch, verified, "alice"};
}

Entitlement owns(const std::string& titleId, bool revoked = false) {
    return Entitlement{"e-" + titleId, "u1", titleId, revoked};
}

LibraryRecord installedThroughClient(const std::string& titleId) {
    return LibraryRecord{titleId, "x", "C:/Games/" + titleId, "C:/Games/" + titleId + "/run.exe", false,
                         1,       0};
}

// key | title | State | install folder
std::vector<std::string> summary(const std::vector<LibraryItem>& rows) {
    std::vector<std::string> lines;
    for (const LibraryItem& row : rows) {
        lines.push_back(row.key + " | " + row.name + " | " + stateText(row, {}) + " | " +
                        (row.install ? row.install->installPath : "-"));
    }
    return lines;
}

struct MergeCase {
    const char* name;
    LibraryResult result;
    std::vector<LibraryRecord> installed;
    std::vector<std::string> expected;
};

TEST(LibraryMerge, BuildsTheRowsInCatalogueOrderWithStoreGamesMergedByNormalisedName) {
    const std::vector<MergeCase> cases{
        {"a Steam game joins the catalogue title it normalises to and makes it Steam-installed",
         {.catalogue = {title("t1", "Sky Forge 2"), title("t2", "Ember Keep")},
          .steamRows = {steamGame("10", "Sky-Forge 2")}},
         {},
         {"t1 | Sky Forge 2 | Steam | C:/Steam/steamapps/common/Sky-Forge 2", "t2 | Ember Keep | Store | -"}},
        {"a title installed through the client keeps its install and the Steam game is dropped",
         {.catalogue = {title("t1", "Sky Forge 2")}, .steamRows = {steamGame("10", "Sky-Forge 2")}},
         {installedThroughClient("t1")},
         {"t1 | Sky Forge 2 | Installed | C:/Games/t1"}},
        {"of two Steam games that normalise alike the first merges and the second is appended",
         {.catalogue = {title("t1", "Sky Forge 2")},
          .steamRows = {steamGame("10", "SKY FORGE 2"), steamGame("11", "sky_forge_2")}},
         {},
         {"t1 | Sky Forge 2 | Steam | C:/Steam/steamapps/common/SKY FORGE 2",
          "steam:11 | sky_forge_2 | Steam | C:/Steam/steamapps/common/sky_forge_2"}},
        {"a store game never joins a Steam row, so it is appended; another joins a plain title",
         {.catalogue = {title("t1", "Sky Forge 2"), title("t2", "Ember Keep")},
          .steamRows = {steamGame("10", "Sky Forge 2")},
          .storeRows = {storeGame("epic", "e1", "Sky Forge 2"), storeGame("gog", "g1", "Ember-Keep")}},
         {},
         {"t1 | Sky Forge 2 | Steam | C:/Steam/steamapps/common/Sky Forge 2",
          "t2 | Ember Keep | GOG Galaxy | D:/gog/Ember-Keep",
          "epic:e1 | Sky Forge 2 | Epic Games | D:/epic/Sky Forge 2"}},
        {"the first non-revoked entitlement owns a title; library.json alone shows nothing",
         {.catalogue = {title("t1", "A"), title("t2", "B"), title("t3", "C")},
          .entitlements = {owns("t2", true), owns("t3"), owns("t3")}},
         {installedThroughClient("t9")},
         {"t1 | A | Store | -", "t2 | B | Store | -", "t3 | C | Owned | -"}},
        {"browser games come last, hosted or ready, and a clone counts as installed",
         {.catalogue = {title("t1", "A")},
          .browserGames = {sharedGame("g1", "Tiny Tower", "index.html", true),
                           sharedGame("g2", "Pixel Garden", "https://o.github.io/g2/", false)},
          .cloneFolders = {{"g1", "C:/data/github/o-g1"}}},
         {},
         {"t1 | A | Store | -", "github:g1 | Tiny Tower | Web (ready) | C:/data/github/o-g1",
          "github:g2 | Pixel Garden | Web (hosted) | -"}},
        {"the search narrows local rows case-insensitively but a catalogue title still merges",
         {.catalogue = {title("t1", "Sky Forge 2")},
          .browserGames = {sharedGame("g1", "Sky Fox", "index.html", true),
                           sharedGame("g2", "Orbit Hop", "index.html", true)},
          .steamRows = {steamGame("10", "Sky-Forge 2"), steamGame("11", "Sky Fort"),
                        steamGame("12", "Skyline")},
          .storeRows = {storeGame("epic", "e1", "DEEP SKY FALL")},
          .query = " sky f "},
         {},
         {"t1 | Sky Forge 2 | Steam | C:/Steam/steamapps/common/Sky-Forge 2",
          "steam:11 | Sky Fort | Steam | C:/Steam/steamapps/common/Sky Fort",
          "epic:e1 | DEEP SKY FALL | Epic Games | D:/epic/DEEP SKY FALL",
          "github:g1 | Sky Fox | Web (ready) | -"}},
    };
    for (const MergeCase& test : cases) {
        EXPECT_EQ(summary(buildLibraryRows(test.result, test.installed)), test.expected) << test.name;
    }
}

TEST(LibraryMerge, RowsCarryTheirSourcesFields) {
    LibraryResult result;
    result.catalogue = {title("t1", "Sky Forge 2")};
    result.catalogue[0].tags = {"space", "co-op"};
    result.entitlements = {owns("t1")};
    result.latestVersions = {{"t1", "1.2.0"}, {"t9", "9"}};
    result.steamRows = {steamGame("10", "Sky-Forge 2")};
    result.storeRows = {storeGame("epic", "e1", "Moss")};
    const auto rows = buildLibraryRows(result, {});
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].latestVersion, "1.2.0");
    EXPECT_EQ(rows[0].install->installedVersion, "77");
    EXPECT_EQ(rows[0].tags, (std::vector<std::string>{"space", "co-op"}));
    EXPECT_EQ(*rows[1].store, (StoreInfo{"epic", "Epic Games", "e1", "epic://launch/e1"}));
    EXPECT_EQ(rows[1].category, "Epic Games");
}

TEST(LibraryMerge, TheStatusLineLeadsWithTheAccountHintAndCountsEachSourceBeforeMerging) {
    const LibraryResult catalogueOnly{
        .succeeded = true, .catalogue = {title("t1", "Sky Forge 2")}, .entitlements = {owns("t1")}};
    const LibraryResult noEntitlements{.succeeded = true, .catalogue = catalogueOnly.catalogue};
    LibraryResult withAll = catalogueOnly;
    withAll.steamRows = {steamGame("10", "Sky Forge 2"), steamGame("11", "Moss")};
    withAll.storeRows = {storeGame("epic", "e1", "Moss")};
    withAll.browserGames = {sharedGame("g1", "A", "a.html", true), sharedGame("g2", "B", "b.html", true),
                            sharedGame("g3", "C", "c.html", true)};

    const std::vector<std::tuple<LibraryResult, bool, std::string>> cases{
        {catalogueOnly, true, "Library refreshed."},
        {catalogueOnly, false,
         "Library refreshed. Add a bearer token (Options > Connection) to load owned games."},
        {noEntitlements, true,
         "Library refreshed. Owned-game entitlements are unavailable from the backend."},
        {withAll, true,
         "Library refreshed. Included 2 games from your local Steam library. 1 games found in other game "
         "stores (Epic, GOG, Xbox, ...). 3 GitHub browser games available."},
        {withAll, false,
         "Library refreshed. Add a bearer token (Options > Connection) to load owned games. Included 2 games "
         "from your local Steam library. 1 games found in other game stores (Epic, GOG, Xbox, ...). 3 GitHub "
         "browser games available."},
    };
    for (const auto& [result, hasToken, expected] : cases) {
        const LibraryApply apply = applyLibraryResult(true, result, {}, hasToken);
        EXPECT_TRUE(apply.replacesRows);
        EXPECT_EQ(apply.statusText, expected);
    }
}

TEST(LibraryMerge, AFailedRefreshKeepsTheRowsShownAndOnAnEmptyListShowsTheLocalGames) {
    const LibraryResult failed{
        .catalogue = {title("t1", "Never shown")},
        .steamRows = {steamGame("10", "Moss"), steamGame("11", "MOSS")},
        .storeRows = {storeGame("epic", "e1", "Moss"), storeGame("gog", "g1", "Hades")},
        .errorText = "Refresh failed: HTTP request failed"};
    const LibraryResult failedWithNothing{.errorText = "Refresh failed: Invalid URL"};

    struct FailureCase {
        bool hasRowsShown;
        LibraryResult result;
        bool replacesRows;
        std::vector<std::string> rows;
    };
    const std::vector<FailureCase> cases{
        {true, failed, false, {}},
        {false, failedWithNothing, false, {}},
        {false,
         failed,
         true,
         {"steam:10 | Moss | Steam | C:/Steam/steamapps/common/Moss",
          "steam:11 | MOSS | Steam | C:/Steam/steamapps/common/MOSS",
          "epic:e1 | Moss | Epic Games | D:/epic/Moss", "gog:g1 | Hades | GOG Galaxy | D:/gog/Hades"}},
    };
    for (const FailureCase& test : cases) {
        const LibraryApply apply = applyLibraryResult(test.hasRowsShown, test.result, {}, true);
        EXPECT_EQ(apply.replacesRows, test.replacesRows);
        EXPECT_EQ(summary(apply.rows), test.rows);
        EXPECT_EQ(apply.statusText, test.result.errorText);
    }
}

TEST(LibraryMerge, SearchMatchesAnywhereInTheTitleIgnoringAsciiCaseAndOuterSpaces) {
    const std::vector<std::tuple<std::string, std::string, bool>> cases{
        {"Sky Forge 2", "   ", true},
        {"Sky Forge 2", " forge 2 ", true},
        {"Éclair", "éCLAIR", true},
        {"×", "÷", false},
    };
    for (const auto& [name, query, expected] : cases) {
        EXPECT_EQ(matchesSearch(name, query), expected) << name << " / " << query;
    }
}

TEST(RefreshSequence, OnlyTheLatestRefreshStartedMayApplyItsResult) {
    RefreshSequence refreshes;
    const unsigned long first = refreshes.begin();
    const unsigned long second = refreshes.begin();
    EXPECT_FALSE(refreshes.isCurrent(first)) << "the older answer arrived late and must be dropped";
    EXPECT_TRUE(refreshes.isCurrent(second));
    EXPECT_FALSE(refreshes.isCurrent(0));
}

} // namespace
} // namespace corvandell
