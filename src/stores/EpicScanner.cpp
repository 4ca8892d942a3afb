// Epic Games: one JSON manifest per install in the launcher's Manifests folder.
//
// Reads HKLM SOFTWARE\WOW6432Node\Epic Games\EpicGamesLauncher `AppDataPath` + "Manifests",
// else %ProgramData%\Epic\EpicGamesLauncher\Data\Manifests; from each *.item file
// `bIsIncompleteInstall`, `AppCategories`, `AppName`, `DisplayName`, `InstallLocation` and
// `LaunchExecutable`. Add-ons and engine plug-ins have manifests of their own and are not
// games; an add-on marked "addons/launchable" is, since the launcher starts it by itself.
#include "api/JsonText.hpp"
#include "base/AsciiText.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"

#include <algorithm>
#include <optional>

namespace corvandell {

namespace {

constexpr std::string_view kStoreName = "Epic Games";
constexpr std::string_view kLauncherKey = "SOFTWARE\\WOW6432Node\\Epic Games\\EpicGamesLauncher";

std::filesystem::path manifestFolder(const StoreHost& host) {
    if (auto appData =
            readNonEmptyString(host.registry, RegistryHive::LocalMachine, kLauncherKey, "AppDataPath")) {
        return storePath(*appData) / "Manifests";
    }
    if (auto programData = host.environment.folderVariable("ProgramData")) {
        return *programData / "Epic" / "EpicGamesLauncher" / "Data" / "Manifests";
    }
    return {};
}

bool isManifestFile(const std::filesystem::directory_entry& entry) {
    std::error_code error;
    return equalsIgnoringAsciiCase(utf8Text(entry.path().extension()), ".item") &&
           entry.is_regular_file(error);
}

// The folder's manifests in name order, so rows come out the same on every scan.
std::vector<std::filesystem::path> manifestFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    std::filesystem::directory_iterator it(folder, error);
    for (; !error && it != std::filesystem::directory_iterator(); it.increment(error)) {
        if (isManifestFile(*it)) {
            files.push_back(it->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Why a manifest is not an installed game; nothing when it is one.
std::optional<std::string> exclusionReason(const std::string& text) {
    if (readBool(text, "bIsIncompleteInstall", false)) {
        return "the install is not complete";
    }
    const auto categories = readStringList(text, "AppCategories");
    auto has = [&](std::string_view category) {
        return std::find(categories.begin(), categories.end(), category) != categories.end();
    };
    if (has("addons") && !has("addons/launchable")) {
        return "an add-on of another game";
    }
    const bool isPlugin = std::any_of(categories.begin(), categories.end(), [](const std::string& category) {
        return category == "plugins" || category.starts_with("plugins/");
    });
    if (isPlugin) {
        return "an engine plug-in, not a game";
    }
    if (readString(text, "AppName").empty() || readString(text, "InstallLocation").empty()) {
        return "the manifest is damaged or empty";
    }
    return std::nullopt;
}

void scanManifest(const std::filesystem::path& file, ScanReport& report) {
    const std::string entry = utf8Text(file);
    const auto text = readStoreText(file);
    if (!text) {
        report.skip(std::string(kStoreName), entry, storeFileProblem(file));
        return;
    }
    if (auto reason = exclusionReason(*text)) {
        report.skip(std::string(kStoreName), entry, std::move(*reason));
        return;
    }
    const std::string appName = readString(*text, "AppName");
    const auto folder = storePath(readString(*text, "InstallLocation"));
    if (!isExistingFolder(folder)) {
        report.skip(std::string(kStoreName), entry, "the install folder no longer exists");
        return;
    }
    std::string title = readString(*text, "DisplayName");
    if (title.empty()) {
        title = appName;
    }
    report.games.push_back(makeStoreRow(
        "epic", appName, title, folder, existingFileUnder(folder, readString(*text, "LaunchExecutable")),
        "com.epicgames.launcher://apps/" + appName + "?action=launch&silent=true"));
}

} // namespace

void scanEpicGames(const StoreHost& host, ScanReport& report) {
    const auto folder = manifestFolder(host);
    if (folder.empty()) {
        return;
    }
    for (const auto& file : manifestFiles(folder)) {
        scanManifest(file, report);
    }
}

} // namespace corvandell
