#include "stores/StoreLaunch.hpp"

#include <gtest/gtest.h>

#include <tuple>

namespace corvandell {
namespace {

TEST(StoreLaunch, GamesThatNeedTheirStoreClientStartThroughItWhateverExecutableWasFound) {
    const std::string riotCommand = R"("D:\Riot Client\RiotClientServices.exe" --launch-product=valorant)";
    const struct {
        const char* store;
        std::string address;
        const char* executable;
        LaunchKind kind;
    } cases[] = {
        {"riot", riotCommand, "VALORANT.exe", LaunchKind::StoreCommand},
        // A command line in any store's row means its client is needed.
        {"amazon", R"("C:\Amazon\Client.exe" play x)", "Game.exe", LaunchKind::StoreCommand},
        // Stores whose games run on their own start the executable; the address is the fallback.
        {"epic", "com.epicgames.launcher://apps/Finch?action=launch&silent=true", "Lantern.exe",
         LaunchKind::Executable},
        {"epic", "com.epicgames.launcher://apps/Finch?action=launch&silent=true", "",
         LaunchKind::StoreCommand},
        {"riot", "", "VALORANT.exe", LaunchKind::Executable}, // no client found to start it through
        {"gog", "", "", LaunchKind::None},
    };
    for (const auto& [store, address, executable, kind] : cases) {
        DetectedGame game;
        game.storeKey = store;
        game.launchAddress = address;
        game.executable = executable;
        const GameLaunch launch = launchOf(game);
        EXPECT_EQ(launch.kind, kind) << store << " " << address;
        EXPECT_EQ(launch.storeCommand, kind == LaunchKind::StoreCommand ? address : "") << store;
        EXPECT_EQ(launch.executable, game.executable) << store; // icons and tracking still use it
    }
}

} // namespace
} // namespace corvandell
