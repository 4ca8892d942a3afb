// GOG Galaxy: one registry key per installed game, written by Galaxy and by GOG's offline
// installers alike.
//
// Reads the subkeys of HKLM SOFTWARE\WOW6432Node\GOG.com\Games (the 64-bit view's
// SOFTWARE\GOG.com\Games only when the 32-bit one lists nothing): the subkey name is the
// game id, with values `gameName`, `path`, `exe` and `dependsOn`. A DLC or component
// carries `dependsOn` and shares its game's folder, so it is never a row of its own.
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/UninstallEntries.hpp"

namespace corvandell {

namespace {

constexpr std::string_view kStoreName = "GOG Galaxy";

void scanGogKey(const Registry& registry, const std::string& keyPath, const std::string& id,
                ScanReport& report) {
    const std::string entry = registryKeyText(RegistryHive::LocalMachine, keyPath);
    auto value = [&](std::string_view name) {
        return readNonEmptyString(registry, RegistryHive::LocalMachine, keyPath, name);
    };
    if (value("dependsOn")) {
        report.skip(std::string(kStoreName), entry, "a DLC or component of another game");
        return;
    }
    const auto folder = storePath(value("path").value_or(""));
    if (const auto problem = installFolderProblem(folder)) {
        report.skip(std::string(kStoreName), entry, *problem);
        return;
    }
    const std::string title = value("gameName").value_or(utf8Text(folder.filename()));
    auto executable = storePath(value("exe").value_or(""));
    if (!isExistingFile(executable)) {
        executable.clear();
    }
    report.games.push_back(
        makeStoreRow("gog", id, title, folder, executable, "goggalaxy://openGameView/" + id));
}

} // namespace

void scanGogGames(const StoreHost& host, ScanReport& report) {
    const auto games =
        subkeysOfFirstView(host.registry, RegistryHive::LocalMachine, "SOFTWARE\\WOW6432Node\\GOG.com\\Games",
                           "SOFTWARE\\GOG.com\\Games");
    for (const auto& id : games.names) {
        scanGogKey(host.registry, games.keyPath + "\\" + id, id, report);
    }
}

} // namespace corvandell
