// Ubisoft Connect: one registry key per install, titled by its uninstall entry.
//
// Reads the subkeys of HKLM SOFTWARE\WOW6432Node\Ubisoft\Launcher\Installs (else the 64-bit
// view's SOFTWARE\Ubisoft\Launcher\Installs): the subkey name is the install id, `InstallDir`
// the folder (written with forward slashes and a trailing one). The install key holds no
// title, so it comes from the HKLM uninstall entry "Uplay Install <id>" (32-bit view
// first); without one the folder's name stands in, which is a poor but honest title.
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/UninstallEntries.hpp"

namespace corvandell {

namespace {

constexpr std::string_view kStoreName = "Ubisoft Connect";

std::string installTitle(const UninstallEntries& uninstall, const std::string& id,
                         const std::filesystem::path& folder) {
    const auto* entry = uninstall.findByKeyName(RegistryHive::LocalMachine, "Uplay Install " + id);
    if (entry && !entry->displayName.empty()) {
        return entry->displayName;
    }
    return utf8Text(folder.filename());
}

void scanInstallKey(const StoreHost& host, const UninstallEntries& uninstall, const std::string& keyPath,
                    const std::string& id, ScanReport& report) {
    const std::string entry = registryKeyText(RegistryHive::LocalMachine, keyPath);
    const auto folder = storePath(
        readNonEmptyString(host.registry, RegistryHive::LocalMachine, keyPath, "InstallDir").value_or(""));
    if (const auto problem = installFolderProblem(folder)) {
        report.skip(std::string(kStoreName), entry, *problem);
        return;
    }
    report.games.push_back(
        makeStoreRow("ubisoft", id, installTitle(uninstall, id, folder), folder, {}, "uplay://launch/" + id));
}

} // namespace

void scanUbisoftGames(const StoreHost& host, ScanReport& report) {
    const auto installs = subkeysOfFirstView(host.registry, RegistryHive::LocalMachine,
                                             "SOFTWARE\\WOW6432Node\\Ubisoft\\Launcher\\Installs",
                                             "SOFTWARE\\Ubisoft\\Launcher\\Installs");
    if (installs.names.empty()) {
        return;
    }
    const UninstallEntries& uninstall = host.uninstallEntries();
    for (const auto& id : installs.names) {
        scanInstallKey(host, uninstall, installs.keyPath + "\\" + id, id, report);
    }
}

} // namespace corvandell
