// The folder table keeps the order the stores are listed in, so the watcher's wait list
// (and what a diagnostic prints) is stable from run to run.
#include "stores/WatchList.hpp"

#include "stores/SteamScanner.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreScanners.hpp"

#include <algorithm>
#include <span>

namespace corvandell {

namespace {

struct FolderUnderVariable {
    const char* variable;
    const char* relative; // backslashes; the path is built one component at a time
    bool watchSubtree;
};

constexpr FolderUnderVariable kStoreFolders[] = {
    {"ProgramData", "GOG.com\\Galaxy\\storage", false},
    {"ProgramData", "EA Desktop", false},
    {"ProgramData", "Battle.net\\Agent", false},
    {"ProgramData", "Riot Games\\Metadata", true},
};

constexpr FolderUnderVariable kUserStoreFolders[] = {
    {"LOCALAPPDATA", "Ubisoft Game Launcher", false},
    {"LOCALAPPDATA", "Amazon Games\\Data\\Games", false},
    {"APPDATA", "itch\\apps", false},
    {"USERPROFILE", "Documents\\Rockstar Games\\Launcher", false},
};

std::filesystem::path joinComponents(std::filesystem::path base, std::string_view relative) {
    size_t start = 0;
    while (start <= relative.size()) {
        const size_t end = std::min(relative.find('\\', start), relative.size());
        base /= std::string(relative.substr(start, end - start));
        start = end + 1;
    }
    return base;
}

void addUnderVariables(const Environment& environment, std::span<const FolderUnderVariable> table,
                       std::vector<WatchedFolder>& folders) {
    for (const auto& entry : table) {
        if (const auto base = environment.folderVariable(entry.variable)) {
            folders.push_back({joinComponents(*base, entry.relative), entry.watchSubtree});
        }
    }
}

std::filesystem::path epicManifestFolder(const StoreHost& host) {
    if (const auto appData =
            readNonEmptyString(host.registry, RegistryHive::LocalMachine,
                               "SOFTWARE\\WOW6432Node\\Epic Games\\EpicGamesLauncher", "AppDataPath")) {
        return storePath(*appData) / "Manifests";
    }
    const auto programData = host.environment.folderVariable("ProgramData");
    return programData ? joinComponents(*programData, "Epic\\EpicGamesLauncher\\Data\\Manifests")
                       : std::filesystem::path();
}

} // namespace

std::vector<WatchedFolder> storeWatchFolders(const StoreHost& host) {
    std::vector<WatchedFolder> folders;
    addUnderVariables(host.environment, kStoreFolders, folders);
    for (const auto& root : xboxLibraryRoots(host.driveRoots)) {
        folders.push_back({root, false});
    }
    addUnderVariables(host.environment, kUserStoreFolders, folders);
    if (const auto steamRoot = findSteamRoot(host.registry); !steamRoot.empty()) {
        for (const auto& library : findSteamLibraries(steamRoot)) {
            folders.push_back({library / "steamapps", false});
        }
    }
    if (auto epic = epicManifestFolder(host); !epic.empty()) {
        folders.push_back({std::move(epic), false});
    }
    return folders;
}

std::vector<WatchedRegistryKey> storeWatchKeys() {
    using enum RegistryHive;
    return {
        {LocalMachine, "SOFTWARE\\WOW6432Node\\GOG.com\\Games"},
        {LocalMachine, "SOFTWARE\\GOG.com\\Games"},
        {LocalMachine, "SOFTWARE\\WOW6432Node\\Ubisoft\\Launcher\\Installs"},
        {LocalMachine, "SOFTWARE\\Ubisoft\\Launcher\\Installs"},
        {LocalMachine, "SOFTWARE\\WOW6432Node\\Rockstar Games"},
        {LocalMachine, "SOFTWARE\\Rockstar Games"},
        {CurrentUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall"},
    };
}

} // namespace corvandell
