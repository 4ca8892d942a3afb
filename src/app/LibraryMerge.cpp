#include "app/LibraryMerge.hpp"

#include "base/AsciiText.hpp"
#include "base/Utf8Path.hpp"
#include "stores/GameName.hpp"

#include <algorithm>
#include <unordered_map>

namespace corvandell {
namespace {

bool isSteamCandidate(const LibraryItem& row) {
    return !row.isSteamRow();
}

bool isStoreCandidate(const LibraryItem& row) {
    return !row.isStoreRow() && !row.isSteamRow() && !row.isBrowserGame();
}

// The rows and their normalised names, side by side through both merges, so each name is
// normalised once.
struct NamedRows {
    std::vector<LibraryItem>& rows;
    std::vector<std::string> names;

    NamedRows(std::vector<LibraryItem>& allRows, size_t capacity) : rows(allRows) {
        // The index below keeps views of the names: they must never move.
        names.reserve(capacity);
        rows.reserve(capacity);
        for (const LibraryItem& row : rows) {
            names.push_back(normalizeGameName(row.name));
        }
    }
};

// The rows that may take a found game, by normalised name: one chain of row numbers per
// name, in row order. A row stops being a candidate only by taking a game, which moves
// its chain's head on, so every lookup is amortised constant and the merge linear.
class CandidateIndex {
public:
    CandidateIndex(const NamedRows& named, bool (*isCandidate)(const LibraryItem&))
        : isCandidate_(isCandidate), next_(named.rows.size(), kNone) {
        heads_.reserve(named.rows.size());
        for (size_t i = named.rows.size(); i-- > 0;) { // backwards, so each chain runs forwards
            if (!isCandidate_(named.rows[i])) {
                continue;
            }
            const auto [head, isNew] = heads_.try_emplace(named.names[i], i);
            if (!isNew) {
                next_[i] = head->second;
                head->second = i;
            }
        }
    }

    // The first row still a candidate under this name; nullptr when there is none.
    LibraryItem* first(std::vector<LibraryItem>& rows, std::string_view normalisedName) {
        const auto found = heads_.find(normalisedName);
        if (found == heads_.end()) {
            return nullptr;
        }
        size_t& head = found->second;
        while (head != kNone && !isCandidate_(rows[head])) {
            head = next_[head];
        }
        return head == kNone ? nullptr : &rows[head];
    }

private:
    static constexpr size_t kNone = static_cast<size_t>(-1);
    bool (*isCandidate_)(const LibraryItem&);
    std::unordered_map<std::string_view, size_t> heads_;
    std::vector<size_t> next_;
};

template <class Join>
void mergeFoundRows(NamedRows& named, const std::vector<LibraryItem>& found, std::string_view query,
                    bool (*isCandidate)(const LibraryItem&), Join join) {
    CandidateIndex index(named, isCandidate);
    for (const LibraryItem& game : found) {
        std::string name = normalizeGameName(game.name);
        LibraryItem* partner = index.first(named.rows, name);
        if (partner == nullptr) {
            if (matchesSearch(game.name, query)) {
                named.rows.push_back(game); // within the reserved room: `partner`s elsewhere stay valid
                named.names.push_back(std::move(name));
            }
            continue;
        }
        if (!partner->isInstalled()) {
            join(*partner, game);
        }
    }
}

void joinSteamGame(LibraryItem& partner, const LibraryItem& game) {
    partner.install = game.install;
    partner.steamAppId = game.steamAppId;
}

void joinStoreGame(LibraryItem& partner, const LibraryItem& game) {
    partner.install = game.install;
    partner.store = game.store;
}

} // namespace

LibraryItem rowFromCatalogue(const SoftwareItem& item) {
    LibraryItem row;
    row.key = item.id;
    row.name = item.name;
    row.description = item.description;
    row.publisherId = item.publisherId;
    row.category = item.category;
    row.platform = item.platform;
    row.releaseStatus = item.releaseStatus;
    row.tags = item.tags;
    return row;
}

LibraryItem rowFromDetectedGame(const DetectedGame& game) {
    LibraryItem row;
    row.key = game.key;
    row.name = game.title;
    row.description = game.description;
    row.platform = game.platform;
    row.install = InstallRecord{pathToUtf8(game.installFolder), pathToUtf8(game.executable), game.build};
    if (!game.steamAppId.empty()) {
        row.steamAppId = game.steamAppId;
        row.category = "Steam";
        if (row.description.empty()) {
            row.description = "Installed with Steam.";
        }
        return row;
    }
    row.category = game.storeName;
    row.store = std::make_shared<const StoreInfo>(
        StoreInfo{game.storeKey, game.storeName, game.externalId, game.launchAddress});
    return row;
}

LibraryItem rowFromBrowserGame(const RepositoryGame& game, const std::string& cloneFolder) {
    LibraryItem row;
    row.key = "github:" + game.id;
    row.name = game.displayName;
    row.category = "GitHub";
    row.platform = "web";
    const std::string repository =
        game.repoUrl.empty() ? game.ownerLogin + "/" + game.repoName : game.repoUrl;
    row.description = "Browser game from " + repository + "\r\nShared by " + game.submittedByUsername +
                      (game.isVerifiedOwner ? " (verified repo owner)" : " (unverified submitter)");
    if (game.launchPath.starts_with("https://")) {
        row.description += "\r\nLoads " + game.launchPath + " in a fullscreen browser - nothing to install.";
    } else {
        row.description += "\r\nLaunches " + game.launchPath + " in a fullscreen browser.";
    }
    row.browserGame = std::make_shared<const BrowserGameInfo>(
        BrowserGameInfo{game.id, game.repoUrl, game.ownerLogin, game.repoName, game.launchPath,
                        game.isVerifiedOwner, game.submittedByUsername});
    if (!cloneFolder.empty()) {
        row.install = InstallRecord{cloneFolder, {}, {}};
    }
    return row;
}

namespace {

// ASCII and the Latin-1 letters (two UTF-8 bytes, 0xC3 then 0x80-0x9E) lower-cased, so
// "ÉCLAIR" finds "Éclair"; anything else compares exactly.
std::string foldCase(std::string_view text) {
    std::string folded(text);
    for (size_t i = 0; i < folded.size(); ++i) {
        const auto byte = static_cast<unsigned char>(folded[i]);
        if (byte == 0xC3 && i + 1 < folded.size()) {
            const auto next = static_cast<unsigned char>(folded[i + 1]);
            if (next >= 0x80 && next <= 0x9E && next != 0x97) {
                folded[i + 1] = static_cast<char>(next + 0x20);
            }
            ++i;
            continue;
        }
        folded[i] = lowerAsciiChar(folded[i]);
    }
    return folded;
}

} // namespace

bool matchesSearch(std::string_view name, std::string_view query) {
    while (!query.empty() && query.front() == ' ') {
        query.remove_prefix(1);
    }
    while (!query.empty() && query.back() == ' ') {
        query.remove_suffix(1);
    }
    if (query.empty()) {
        return true;
    }
    return foldCase(name).find(foldCase(query)) != std::string::npos;
}

void mergeSteamRows(std::vector<LibraryItem>& rows, const std::vector<LibraryItem>& steamRows,
                    std::string_view query) {
    NamedRows named(rows, rows.size() + steamRows.size());
    mergeFoundRows(named, steamRows, query, &isSteamCandidate, &joinSteamGame);
}

void mergeStoreRows(std::vector<LibraryItem>& rows, const std::vector<LibraryItem>& storeRows,
                    std::string_view query) {
    NamedRows named(rows, rows.size() + storeRows.size());
    mergeFoundRows(named, storeRows, query, &isStoreCandidate, &joinStoreGame);
}

std::vector<LibraryItem> buildLibraryRows(const LibraryResult& result,
                                          const std::vector<LibraryRecord>& installedGames) {
    std::unordered_map<std::string, std::shared_ptr<const Entitlement>> entitlements;
    entitlements.reserve(result.entitlements.size());
    for (const Entitlement& entitlement : result.entitlements) {
        if (!entitlement.isRevoked && !entitlements.contains(entitlement.softwareTitleId)) {
            entitlements.emplace(entitlement.softwareTitleId,
                                 std::make_shared<const Entitlement>(entitlement));
        }
    }
    std::unordered_map<std::string, const LibraryRecord*> installs;
    installs.reserve(installedGames.size());
    for (const LibraryRecord& record : installedGames) {
        installs.try_emplace(record.titleId, &record);
    }

    std::vector<LibraryItem> rows;
    rows.reserve(result.catalogue.size() + result.steamRows.size() + result.storeRows.size() +
                 result.browserGames.size());
    for (const SoftwareItem& item : result.catalogue) {
        LibraryItem row = rowFromCatalogue(item);
        if (const auto owned = entitlements.find(item.id); owned != entitlements.end()) {
            row.entitlement = owned->second;
        }
        if (const auto installed = installs.find(item.id); installed != installs.end()) {
            const auto version = result.installedVersions.find(item.id);
            row.install =
                InstallRecord{installed->second->installPath, installed->second->executablePath,
                              version == result.installedVersions.end() ? std::string() : version->second};
        }
        if (const auto latest = result.latestVersions.find(item.id); latest != result.latestVersions.end()) {
            row.latestVersion = latest->second;
        }
        rows.push_back(std::move(row));
    }
    NamedRows named(rows, rows.capacity());
    mergeFoundRows(named, result.steamRows, result.query, &isSteamCandidate, &joinSteamGame);
    mergeFoundRows(named, result.storeRows, result.query, &isStoreCandidate, &joinStoreGame);
    for (const RepositoryGame& game : result.browserGames) {
        if (!matchesSearch(game.displayName, result.query)) {
            continue;
        }
        const auto clone = result.cloneFolders.find(game.id);
        rows.push_back(
            rowFromBrowserGame(game, clone == result.cloneFolders.end() ? std::string() : clone->second));
    }
    return rows;
}

std::string libraryRefreshedText(const LibraryResult& result, bool hasBearerToken) {
    std::string text;
    if (!hasBearerToken) {
        text = "Library refreshed. Add a bearer token (Options > Connection) to load owned games.";
    } else if (result.entitlements.empty()) {
        text = "Library refreshed. Owned-game entitlements are unavailable from the backend.";
    } else {
        text = "Library refreshed.";
    }
    if (!result.steamRows.empty()) {
        text +=
            " Included " + std::to_string(result.steamRows.size()) + " games from your local Steam library.";
    }
    if (!result.storeRows.empty()) {
        text += " " + std::to_string(result.storeRows.size()) +
                " games found in other game stores (Epic, GOG, Xbox, ...).";
    }
    if (!result.browserGames.empty()) {
        text += " " + std::to_string(result.browserGames.size()) + " GitHub browser games available.";
    }
    return text;
}

LibraryApply applyLibraryResult(bool hasRowsShown, const LibraryResult& result,
                                const std::vector<LibraryRecord>& installedGames, bool hasBearerToken) {
    LibraryApply apply;
    if (!result.succeeded) {
        apply.statusText = result.errorText;
        if (!hasRowsShown && (!result.steamRows.empty() || !result.storeRows.empty())) {
            apply.replacesRows = true;
            mergeSteamRows(apply.rows, result.steamRows, result.query);
            mergeStoreRows(apply.rows, result.storeRows, result.query);
        }
        return apply;
    }
    apply.replacesRows = true;
    apply.rows = buildLibraryRows(result, installedGames);
    apply.statusText = libraryRefreshedText(result, hasBearerToken);
    return apply;
}

} // namespace corvandell
