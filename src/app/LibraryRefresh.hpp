// The refresh job: everything the library list is made from, gathered on a worker thread.
//
// The local stores are scanned first, so that when the service cannot be reached the games
// on this machine still travel in the result and an empty window can show them.
#pragma once

#include "api/IApiClient.hpp"
#include "app/LibraryCache.hpp"
#include "app/LibraryItem.hpp"
#include "stores/StoreHost.hpp"
#include "webgames/RepositoryHost.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace corvandell {

// Where a browser game's clone lives: data folder / "github" / owner-repo, read from its
// repository address exactly as the clone itself reads it; empty when the address is not
// one of `host`'s (such a game can never have been cloned).
std::filesystem::path browserGameCloneFolder(const std::filesystem::path& dataFolder,
                                             const RepositoryGame& game, const RepositoryHost& host);

// Never throws: a failure gives a result with the flag clear and "Refresh failed: " + why.
// Latest builds are asked only for the titles installed through the client, the only rows
// that can offer an update.
LibraryResult gatherLibrary(IApiClient& api, const StoreHost& stores, const std::filesystem::path& dataFolder,
                            const std::vector<LibraryRecord>& installedGames, const std::string& query,
                            const RepositoryHost& repositoryHost = {}) noexcept;

} // namespace corvandell
