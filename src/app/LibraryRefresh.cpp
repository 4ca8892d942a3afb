#include "app/LibraryRefresh.hpp"

#include "app/LibraryMerge.hpp"
#include "base/Utf8Path.hpp"
#include "launch/InstalledBuild.hpp"
#include "stores/StoreScanners.hpp"
#include "webgames/RepositoryAddress.hpp"
#include "webgames/WebGameFolders.hpp"

#include <exception>
#include <map>
#include <system_error>
#include <unordered_set>

namespace corvandell {
namespace {

void scanStores(const StoreHost& stores, LibraryResult& result) {
    const ScanReport report = scanAllStores(stores);
    for (const DetectedGame& game : report.games) {
        (game.steamAppId.empty() ? result.storeRows : result.steamRows).push_back(rowFromDetectedGame(game));
    }
}

// The games everyone shared, then the user's own that are not listed yet.
std::vector<RepositoryGame> browserGames(IApiClient& api) {
    std::vector<RepositoryGame> games = api.listRepositoryGames();
    std::unordered_set<std::string> seen;
    for (const RepositoryGame& game : games) {
        seen.insert(game.id);
    }
    for (RepositoryGame& game : api.listMyRepositoryGames()) {
        if (seen.insert(game.id).second) {
            games.push_back(std::move(game));
        }
    }
    return games;
}

void findClones(const std::filesystem::path& dataFolder, const RepositoryHost& host, LibraryResult& result) {
    for (const RepositoryGame& game : result.browserGames) {
        if (game.launchPath.starts_with("https://")) {
            continue;
        }
        const std::filesystem::path folder = browserGameCloneFolder(dataFolder, game, host);
        std::error_code error;
        if (!folder.empty() && std::filesystem::is_directory(folder, error)) {
            result.cloneFolders[game.id] = pathToUtf8(folder);
        }
    }
}

void askLatestBuilds(IApiClient& api, const std::vector<LibraryRecord>& installedGames,
                     LibraryResult& result) {
    std::map<std::string, const LibraryRecord*> installed;
    for (const LibraryRecord& record : installedGames) {
        installed.try_emplace(record.titleId, &record);
    }
    for (const SoftwareItem& item : result.catalogue) {
        if (const auto found = installed.find(item.id); found != installed.end()) {
            result.latestVersions[item.id] = api.latestBuild(item.id).version;
            result.installedVersions[item.id] =
                installedVersionIn(pathFromUtf8(found->second->installPath), item.id);
        }
    }
}

} // namespace

std::filesystem::path browserGameCloneFolder(const std::filesystem::path& dataFolder,
                                             const RepositoryGame& game, const RepositoryHost& host) {
    const std::optional<RepositoryAddress> address = readRepositoryAddress(game.repoUrl, host);
    return address ? webGameCloneFolder(dataFolder, *address) : std::filesystem::path();
}

LibraryResult gatherLibrary(IApiClient& api, const StoreHost& stores, const std::filesystem::path& dataFolder,
                            const std::vector<LibraryRecord>& installedGames, const std::string& query,
                            const RepositoryHost& repositoryHost) noexcept {
    LibraryResult result;
    try {
        result.query = query;
        scanStores(stores, result);
        result.browserGames = browserGames(api);
        findClones(dataFolder, repositoryHost, result);
        result.catalogue = api.listSoftware("name", query, "", "windows");
        try {
            result.entitlements = api.listEntitlements();
        } catch (const std::exception&) {
            // Reported by the status line as entitlements being unavailable.
        }
        askLatestBuilds(api, installedGames, result);
        result.succeeded = true;
    } catch (const std::exception& error) {
        result.succeeded = false;
        result.errorText = std::string("Refresh failed: ") + error.what();
    } catch (...) {
        result.succeeded = false;
        result.errorText = "Refresh failed: unexpected error";
    }
    return result;
}

} // namespace corvandell
