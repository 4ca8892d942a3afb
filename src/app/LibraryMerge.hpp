// Turning a refresh's sources into the rows of the list.
//
// The catalogue comes first and keeps its order; games the stores found join the
// catalogue title of the same normalised name ("Sky-Forge 2" is "Sky Forge 2") or are
// appended; browser games come last. Matching goes through an index by normalised name,
// so a library of tens of thousands of rows merges in linear time.
#pragma once

#include "app/LibraryCache.hpp"
#include "app/LibraryItem.hpp"
#include "stores/DetectedGame.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

LibraryItem rowFromCatalogue(const SoftwareItem& item);
// A Steam game when the detected game has a Steam app id, another store's game otherwise.
LibraryItem rowFromDetectedGame(const DetectedGame& game);
// `cloneFolder` is empty while the game is not on this machine.
LibraryItem rowFromBrowserGame(const RepositoryGame& game, const std::string& cloneFolder);

// Whether the search text names the title: a case-insensitive substring; an empty or
// blank search names everything.
bool matchesSearch(std::string_view name, std::string_view query);

// Merges the found rows into `rows` by normalised name. Steam rows join a row without a
// Steam app id; other stores' rows join a row that is none of a Steam, store or browser
// row. A row that finds no partner is appended, when it matches `query`; one whose partner
// is already installed is dropped.
void mergeSteamRows(std::vector<LibraryItem>& rows, const std::vector<LibraryItem>& steamRows,
                    std::string_view query);
void mergeStoreRows(std::vector<LibraryItem>& rows, const std::vector<LibraryItem>& storeRows,
                    std::string_view query);

// Every row of a successful refresh, in list order. The catalogue was already searched by
// the service; the local rows are filtered here by the same text.
std::vector<LibraryItem> buildLibraryRows(const LibraryResult& result,
                                          const std::vector<LibraryRecord>& installedGames);

// The status line after a successful refresh.
std::string libraryRefreshedText(const LibraryResult& result, bool hasBearerToken);

// What applying a refresh's result does to the window.
struct LibraryApply {
    bool replacesRows = false; // false: the rows shown stay as they are
    std::vector<LibraryItem> rows;
    std::string statusText;
};

// A failed refresh never takes rows away: only when nothing is shown yet do the Steam and
// store games it still found become the list.
LibraryApply applyLibraryResult(bool hasRowsShown, const LibraryResult& result,
                                const std::vector<LibraryRecord>& installedGames, bool hasBearerToken);

} // namespace corvandell
