// What the store watcher waits on: the stores' data folders, and the registry keys of the
// stores that record installs only in the registry, which no folder change reveals.
#pragma once

#include "stores/Registry.hpp"
#include "stores/StoreHost.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace corvandell {

struct WatchedFolder {
    std::filesystem::path path;
    bool watchSubtree = false;
    friend bool operator==(const WatchedFolder&, const WatchedFolder&) = default;
};

struct WatchedRegistryKey {
    RegistryHive hive = RegistryHive::LocalMachine;
    std::string keyPath;
    friend bool operator==(const WatchedRegistryKey&, const WatchedRegistryKey&) = default;
};

// The stores' folders, whether or not they exist (the watcher leaves out those it cannot
// watch): first the fixed table under the environment's folders and the Xbox library
// roots, then Steam's and Epic's folders, whose files change on every install too.
std::vector<WatchedFolder> storeWatchFolders(const StoreHost& host);

// The keys GOG, Ubisoft, Rockstar and Amazon write on install, in both registry views.
std::vector<WatchedRegistryKey> storeWatchKeys();

} // namespace corvandell
