// One row of the library list, and the records the library's background jobs hand back.
//
// A row is merged from up to four sources: the service catalogue (with the user's
// entitlement and the client's own install record), Steam, the other stores and the shared
// browser games. Which blocks are present says what kind of row it is; the list, the
// details pane and the action button read nothing else.
#pragma once

#include "api/ServiceRecords.hpp"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvandell {

// Where a game is on this machine. For a catalogue title the client's library.json entry,
// for a store game what the store's files said, for a browser game its clone.
struct InstallRecord {
    std::string installPath;
    std::string executablePath; // empty: nothing to start directly
    std::string installedVersion;
    friend bool operator==(const InstallRecord&, const InstallRecord&) = default;
};

// A game shared from a public repository and played in a browser.
struct BrowserGameInfo {
    std::string id;
    std::string repoUrl;
    std::string owner;
    std::string repoName;
    std::string launchTarget; // a path inside the repository, or a hosted "https://" address
    bool isVerifiedOwner = false;
    std::string submitter;
    friend bool operator==(const BrowserGameInfo&, const BrowserGameInfo&) = default;
};

// A game another store installed and keeps up to date.
struct StoreInfo {
    std::string providerKey;  // "epic", "gog", ...
    std::string storeName;    // "Epic Games", ...
    std::string externalId;   // the store's own id of the game
    std::string launchTarget; // the store's launch address; may be empty
    friend bool operator==(const StoreInfo&, const StoreInfo&) = default;
};

struct LibraryItem {
    std::string key;
    std::string name;
    std::string description;
    std::string publisherId;
    std::string category;
    std::string platform;
    std::string releaseStatus;
    std::vector<std::string> tags;
    // The rarely present blocks are shared, not held: a row stays small, which keeps a
    // library of tens of thousands of rows compact, and copying a row stays cheap.
    std::shared_ptr<const Entitlement> entitlement; // present: owned
    std::optional<InstallRecord> install;           // present: installed
    std::string latestVersion;
    std::string steamAppId; // non-empty: a Steam row
    std::shared_ptr<const BrowserGameInfo> browserGame;
    std::shared_ptr<const StoreInfo> store;

    bool isInstalled() const noexcept { return install.has_value(); }
    bool isBrowserGame() const noexcept { return browserGame != nullptr; }
    bool isStoreRow() const noexcept { return store != nullptr; }
    bool isSteamRow() const noexcept { return !steamAppId.empty(); }
    const std::string& installedVersion() const noexcept {
        static const std::string none;
        return install ? install->installedVersion : none;
    }
};

struct LibraryResult {
    bool succeeded = false;
    std::vector<SoftwareItem> catalogue{};
    std::vector<Entitlement> entitlements{};
    std::vector<RepositoryGame> browserGames{};
    std::vector<LibraryItem> steamRows{};
    std::vector<LibraryItem> storeRows{};
    std::map<std::string, std::string> latestVersions{}; // title id to its latest build's version
    // Title id to the build installed through the client, as its folder records it.
    std::map<std::string, std::string> installedVersions{};
    // Browser games already cloned on this machine: game id to the clone folder.
    std::map<std::string, std::string> cloneFolders{};
    std::string query{};          // the search text the refresh ran with
    unsigned long generation = 0; // which refresh this answers; see RefreshSequence
    std::string errorText{};      // the status line when the refresh failed
};

// The playtime panel's answer for one row.
struct PlaytimeResult {
    std::string key;
    bool succeeded = false;
    Playtime mine;
    std::vector<FriendPlaytime> friends; // most played first, at most five
    std::vector<FeedEntry> feed;
    std::string errorText;
};

// The ratings of the rows, or the one rating the user just gave.
struct RatingsResult {
    bool succeeded = false;
    std::vector<RatingSummary> ratings;
    std::string errorText;
};

} // namespace corvandell
