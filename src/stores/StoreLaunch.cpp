#include "stores/StoreLaunch.hpp"

namespace corvandell {

bool needsStoreClient(std::string_view storeKey) {
    return storeKey == "riot" || storeKey == "battlenet" || storeKey == "rockstar";
}

GameLaunch launchOf(const DetectedGame& game) {
    GameLaunch launch;
    launch.executable = game.executable;
    const bool isCommandLine = game.launchAddress.starts_with('"');
    const bool hasStoreCommand = !game.launchAddress.empty();
    if (hasStoreCommand && (needsStoreClient(game.storeKey) || isCommandLine || game.executable.empty())) {
        launch.kind = LaunchKind::StoreCommand;
        launch.storeCommand = game.launchAddress;
        return launch;
    }
    launch.kind = game.executable.empty() ? LaunchKind::None : LaunchKind::Executable;
    return launch;
}

} // namespace corvandell
