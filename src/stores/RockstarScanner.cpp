// Rockstar Games: one registry key per title under the launcher's own key.
//
// Reads the subkeys of HKLM SOFTWARE\WOW6432Node\Rockstar Games (else the 64-bit view's
// SOFTWARE\Rockstar Games) and their `InstallFolder`, plus the uninstall entries. Only
// `InstallFolder` marks a launcher install: copies bought on Steam or Epic leave
// `InstallFolderSteam`/`InstallFolderEpic` behind, and those stores list them already. The
// title's id ("gta5", "rdr2") appears only in its uninstall entry's "-uninstall=<id>", found
// by the install folder; the key name stands in for both id and title without one.
#include "base/AsciiText.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/UninstallEntries.hpp"

#include <array>

namespace corvandell {

namespace {

constexpr std::string_view kStoreName = "Rockstar Games";
constexpr std::array<std::string_view, 4> kLauncherKeys{"Launcher", "Rockstar Games Launcher", "Social Club",
                                                        "Rockstar Games Social Club"};

bool isLauncherKey(std::string_view name) {
    for (const auto launcherKey : kLauncherKeys) {
        if (equalsIgnoringAsciiCase(name, launcherKey)) {
            return true;
        }
    }
    return false;
}

// The launcher's command line that starts the title in the folder; "" without a launcher.
std::string launchCommand(const std::filesystem::path& launcherFolder,
                          const std::filesystem::path& gameFolder) {
    if (launcherFolder.empty()) {
        return {};
    }
    return "\"" + utf8Text(launcherFolder / "Launcher.exe") + "\" -launchTitleInFolder \"" +
           utf8Text(gameFolder) + "\"";
}

struct RockstarContext {
    const Registry& registry;
    const UninstallEntries& uninstall;
    std::filesystem::path launcherFolder;
};

void scanTitleKey(const RockstarContext& context, const std::string& keyPath, const std::string& name,
                  ScanReport& report) {
    const std::string entry = registryKeyText(RegistryHive::LocalMachine, keyPath);
    if (isLauncherKey(name)) {
        report.skip(std::string(kStoreName), entry, "the launcher's own key, not a game");
        return;
    }
    const auto installFolder =
        readNonEmptyString(context.registry, RegistryHive::LocalMachine, keyPath, "InstallFolder");
    if (!installFolder) {
        report.skip(std::string(kStoreName), entry,
                    "no InstallFolder value, so not installed by the launcher");
        return;
    }
    const auto folder = storePath(*installFolder);
    if (!isExistingFolder(folder)) {
        report.skip(std::string(kStoreName), entry, "the install folder no longer exists");
        return;
    }
    std::string id = name;
    std::string title = name;
    if (const auto* uninstall = context.uninstall.findByInstallFolder(folder)) {
        if (auto titleId = commandLineValue(uninstall->uninstallString, "-uninstall="); !titleId.empty()) {
            id = std::move(titleId);
        }
        if (!uninstall->displayName.empty()) {
            title = uninstall->displayName;
        }
    }
    report.games.push_back(
        makeStoreRow("rockstar", id, title, folder, {}, launchCommand(context.launcherFolder, folder)));
}

} // namespace

void scanRockstarGames(const StoreHost& host, ScanReport& report) {
    const auto [base, names] =
        subkeysOfFirstView(host.registry, RegistryHive::LocalMachine, "SOFTWARE\\WOW6432Node\\Rockstar Games",
                           "SOFTWARE\\Rockstar Games");
    if (names.empty()) {
        return;
    }
    const RockstarContext context{host.registry, host.uninstallEntries(),
                                  storePath(readNonEmptyString(host.registry, RegistryHive::LocalMachine,
                                                               base + "\\Launcher", "InstallFolder")
                                                .value_or(""))};
    for (const auto& name : names) {
        scanTitleKey(context, base + "\\" + name, name, report);
    }
}

} // namespace corvandell
