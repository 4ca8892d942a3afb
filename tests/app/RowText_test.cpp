// The texts and the action of every kind of row, with and without a game being tracked.
#include "app/RowText.hpp"

#include "app/LibraryMerge.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

LibraryItem catalogueRow(bool owned, bool installed, std::string installedVersion, std::string latest) {
    LibraryItem row;
    row.key = "t1";
    row.name = "Ember Keep";
    row.description = "A story-driven role-playing game.";
    row.category = "RPG";
    row.platform = "windows";
    row.tags = {"fantasy", "co-op"};
    if (owned) {
        row.entitlement = std::make_shared<const Entitlement>(Entitlement{"e1", "u1", "t1", false});
    }
    if (installed) {
        row.install = InstallRecord{"C:\\Games\\Ember Keep", "C:\\Games\\Ember Keep\\ember.exe",
                                    std::move(installedVersion)};
    }
    row.latestVersion = std::move(latest);
    return row;
}

LibraryItem steamRow(bool installed) {
    LibraryItem row;
    row.key = "steam:620";
    row.name = "Portal Runner";
    row.category = "Steam";
    row.platform = "windows";
    row.steamAppId = "620";
    if (installed) {
        row.install = InstallRecord{"C:\\Steam\\common\\Portal Runner",
                                    "C:\\Steam\\common\\Portal Runner\\pr.exe", "9"};
    }
    return row;
}

LibraryItem storeRow(bool installed, bool hasExecutable) {
    LibraryItem row;
    row.key = "epic:Moss";
    row.name = "Moss";
    row.category = "Epic Games";
    row.platform = "windows";
    row.store = std::make_shared<const StoreInfo>(
        StoreInfo{"epic", "Epic Games", "Moss", "com.epicgames.launcher://apps/Moss?action=launch"});
    if (installed) {
        row.install = InstallRecord{"D:\\Epic\\Moss", hasExecutable ? "D:\\Epic\\Moss\\moss.exe" : "", ""};
    }
    return row;
}

LibraryItem browserRow(const std::string& launch, bool cloned, bool verified = true) {
    return rowFromBrowserGame(RepositoryGame{"g1", "https://github.com/alice-codes/tiny-tower", "alice-codes",
                                             "tiny-tower", "Tiny Tower", launch, verified, "alice"},
                              cloned ? "C:\\data\\github\\alice-codes-tiny-tower" : "");
}

struct RowCase {
    const char* name;
    LibraryItem row;
    RowAction action;
    std::string label;
    std::string state;
    RowTextClass textClass;
};

TEST(RowText, EachKindOfRowHasItsActionLabelStateAndColour) {
    const std::vector<RowCase> cases{
        {"in the store", catalogueRow(false, false, "", "1.0"), RowAction::Install, "Install", "Store",
         RowTextClass::Other},
        {"owned", catalogueRow(true, false, "", "1.0"), RowAction::Install, "Install", "Owned",
         RowTextClass::OwnedOrBrowser},
        {"installed, no build known", catalogueRow(true, true, "", ""), RowAction::Launch, "Launch",
         "Installed", RowTextClass::Installed},
        {"installed, a newer build", catalogueRow(true, true, "1.1", "1.2"), RowAction::Update, "Update",
         "Installed", RowTextClass::Installed},
        {"installed, version unknown", catalogueRow(false, true, "", "1.2"), RowAction::Update, "Update",
         "Installed", RowTextClass::Installed},
        {"Steam, installed", steamRow(true), RowAction::Launch, "Launch", "Steam", RowTextClass::Installed},
        {"Steam, not installed", steamRow(false), RowAction::None, "Launch", "Store", RowTextClass::Other},
        {"store, installed", storeRow(true, true), RowAction::Launch, "Launch", "Epic Games",
         RowTextClass::Installed},
        {"store, not installed", storeRow(false, false), RowAction::None, "Launch", "Epic Games",
         RowTextClass::Other},
        {"browser, hosted", browserRow("https://alice-codes.github.io/tiny-tower/", false), RowAction::Launch,
         "Launch", "Web (hosted)", RowTextClass::OwnedOrBrowser},
        {"browser, cloned", browserRow("index.html", true), RowAction::Launch, "Launch", "Web (ready)",
         RowTextClass::Installed},
        {"browser, not cloned", browserRow("index.html", false), RowAction::Install, "Install", "Web (ready)",
         RowTextClass::OwnedOrBrowser},
        {"browser, an http address is a path", browserRow("http://x.github.io/", false), RowAction::Install,
         "Install", "Web (ready)", RowTextClass::OwnedOrBrowser},
    };
    for (const RowCase& test : cases) {
        EXPECT_EQ(actionFor(test.row), test.action) << test.name;
        EXPECT_EQ(actionLabel(test.row, {}), test.label) << test.name;
        EXPECT_EQ(stateText(test.row, {}), test.state) << test.name;
        EXPECT_EQ(textClassOf(test.row), test.textClass) << test.name;
    }
}

TEST(RowText, TheTrackedGamesRowShowsItsTrackingStateAndOffersStop) {
    const LibraryItem row = steamRow(true);
    const std::vector<std::tuple<TrackedGame, std::string, std::string, std::string>> cases{
        {{"steam:620", 1, "", 0}, "Launching...", "Stop", "Launching..."},
        {{"steam:620", 2, "", 0}, "Running", "Stop", "Running"},
        {{"steam:620", 3, "", 0}, "Stopping...", "Stopping...", "Stopping..."},
        {{"t1", 2, "", 0}, "Steam", "Launch", "Installed (Steam)"},
    };
    for (const auto& [tracked, state, label, detailsState] : cases) {
        EXPECT_EQ(stateText(row, tracked), state);
        EXPECT_EQ(actionLabel(row, tracked), label);
        EXPECT_NE(detailsText(row, tracked).find("\r\nState: " + detailsState + "\r\n"), std::string::npos)
            << detailsText(row, tracked);
    }
}

TEST(RowText, TheRatingShowsOnlyOnceSomeoneHasRated) {
    const std::vector<std::pair<RatingSummary, std::string>> cases{
        {{"t1", 4.24, 4, 5}, "\xE2\x98\x85 4.2 (4)"},
        {{"t1", 3.96, 120, -1}, "\xE2\x98\x85 4.0 (120)"},
        {{"t1", 0.0, 0, -1}, ""},
        {{"t1", 4.0, -2, -1}, ""},
    };
    for (const auto& [rating, text] : cases) {
        EXPECT_EQ(ratingText(rating), text) << rating.average << " " << rating.count;
    }
}

TEST(RowText, TheDetailsPaneDescribesEachKindOfRow) {
    const std::string head = "Ember Keep\r\n\r\nA story-driven role-playing game.\r\n\r\nCategory: RPG\r\n"
                             "Platform: windows\r\nState: ";
    const std::vector<std::pair<LibraryItem, std::string>> cases{
        {catalogueRow(false, false, "", ""), head + "Store\r\nTags: fantasy, co-op"},
        {catalogueRow(true, true, "1.1", "1.2"),
         head + "Installed\r\nTags: fantasy, co-op\r\nUpdate available: 1.1 -> 1.2\r\nInstall path: "
                "C:\\Games\\Ember Keep"},
        {steamRow(true),
         "Portal Runner\r\n\r\nCategory: Steam\r\nPlatform: windows\r\nState: Installed (Steam)\r\n"
         "Steam app id: 620\r\nLaunches directly (no Steam overlay); Shift+Tab in game opens the Corvandell "
         "overlay.\r\nInstall path: C:\\Steam\\common\\Portal Runner"},
        {storeRow(true, true), "Moss\r\n\r\nCategory: Epic Games\r\nPlatform: windows\r\nState: "
                               "Installed\r\nEpic Games id: Moss\r\n"
                               "Launches directly; Shift+Tab in game opens the Corvandell "
                               "overlay.\r\nInstall path: D:\\Epic\\Moss"},
        {storeRow(true, false), "Moss\r\n\r\nCategory: Epic Games\r\nPlatform: windows\r\nState: "
                                "Installed\r\nEpic Games id: Moss\r\n"
                                "Launches through the Epic Games client.\r\nInstall path: D:\\Epic\\Moss"},
        {browserRow("https://alice-codes.github.io/tiny-tower/", false, false),
         "Tiny Tower\r\n\r\nBrowser game from https://github.com/alice-codes/tiny-tower\r\nShared by alice "
         "(unverified submitter)\r\nLoads https://alice-codes.github.io/tiny-tower/ in a fullscreen browser "
         "- "
         "nothing to install.\r\n\r\nCategory: GitHub\r\nPlatform: web\r\nState: Web (hosted)"},
        {browserRow("index.html", false),
         "Tiny Tower\r\n\r\nBrowser game from https://github.com/alice-codes/tiny-tower\r\nShared by alice "
         "(verified repo owner)\r\nLaunches index.html in a fullscreen browser.\r\n\r\nCategory: GitHub\r\n"
         "Platform: web\r\nState: Web (not downloaded yet)\r\nPress Install to download it; it then runs "
         "from "
         "this computer."},
        {browserRow("index.html", true),
         "Tiny Tower\r\n\r\nBrowser game from https://github.com/alice-codes/tiny-tower\r\nShared by alice "
         "(verified repo owner)\r\nLaunches index.html in a fullscreen browser.\r\n\r\nCategory: GitHub\r\n"
         "Platform: web\r\nState: Web (ready)\r\nInstall path: C:\\data\\github\\alice-codes-tiny-tower"},
    };
    for (const auto& [row, text] : cases) {
        EXPECT_EQ(detailsText(row, {}), text);
    }
}

} // namespace
} // namespace corvandell
