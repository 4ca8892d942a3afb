// How a detected game is started.
//
// Some games cannot start without their store's client running: Riot's games need the
// Riot client to sign in and patch, Battle.net's refuse to start outside the client, and
// Rockstar's executables are wrappers that exit at once unless the launcher is up. Such a
// game is started through the store's command even when the executable chooser found an
// executable; that executable is still what icons come from and what tracking waits for.
// A row whose launch text is a command line (a quoted client path with arguments) always
// goes through it: the store put it there because the client is needed.
#pragma once

#include "stores/DetectedGame.hpp"

#include <filesystem>
#include <string>
#include <string_view>

namespace corvandell {

enum class LaunchKind {
    StoreCommand, // the row's launch address: a store URI or the client's command line
    Executable,   // the executable, started directly
    None,         // nothing to start
};

struct GameLaunch {
    LaunchKind kind = LaunchKind::None;
    std::string storeCommand;         // set for StoreCommand
    std::filesystem::path executable; // the row's executable, for icons and tracking, whatever the kind
};

// Riot Games, Battle.net and Rockstar Games.
bool needsStoreClient(std::string_view storeKey);

GameLaunch launchOf(const DetectedGame& game);

} // namespace corvandell
