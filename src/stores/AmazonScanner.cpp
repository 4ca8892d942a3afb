// Amazon Games: found only through its uninstall entries, with the executable from the
// game's fuel.json.
//
// Reads the uninstall entries (HKCU first, where Amazon writes them, then both HKLM views)
// whose key name begins "AmazonGames/" - the slash is part of the key's name - and their
// `DisplayName`, `InstallLocation` and `UninstallString`, whose "-p <id>" carries the
// product id. fuel.json in the install folder is not always strict JSON (comments,
// trailing commas), which the key scanners pass over; its `Main` object's `Command` is the
// executable, relative to the folder. Entries without the "AmazonGames/" prefix are other
// programs, not skipped games, so they are left out of the report.
#include "api/JsonText.hpp"
#include "base/AsciiText.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/UninstallEntries.hpp"

#include <algorithm>

namespace corvandell {

namespace {

constexpr std::string_view kStoreName = "Amazon Games";
constexpr std::string_view kKeyPrefix = "AmazonGames/";

// `Command` of fuel.json's `Main` object; "" when the file or the key is missing. Other
// objects (PostInstall steps) have commands too, so the search starts at "Main".
std::string mainCommand(const std::filesystem::path& folder) {
    const auto text = readStoreText(folder / "fuel.json");
    if (!text) {
        return {};
    }
    const size_t main = text->find("\"Main\"");
    if (main == std::string::npos) {
        return {};
    }
    const auto objects = splitObjects(std::string_view(*text).substr(main));
    return objects.empty() ? std::string() : readString(objects.front(), "Command");
}

void scanAmazonEntry(const UninstallEntry& entry, ScanReport& report) {
    if (entry.installLocation.empty()) {
        report.skip(std::string(kStoreName), entry.registryKey, "no install location is recorded");
        return;
    }
    if (!isExistingFolder(entry.installLocation)) {
        report.skip(std::string(kStoreName), entry.registryKey, "the install folder no longer exists");
        return;
    }
    const std::string keyRemainder = entry.keyName.substr(kKeyPrefix.size());
    std::string id = commandLineValue(entry.uninstallString, " -p ");
    if (id.empty()) {
        id = keyRemainder;
    }
    const bool isKnown = std::any_of(report.games.begin(), report.games.end(),
                                     [&](const DetectedGame& game) { return game.key == "amazon:" + id; });
    if (isKnown) {
        report.skip(std::string(kStoreName), entry.registryKey, "the same game is listed by another entry");
        return;
    }
    const std::string title = entry.displayName.empty() ? keyRemainder : entry.displayName;
    const auto& folder = entry.installLocation;
    report.games.push_back(makeStoreRow("amazon", id, title, folder,
                                        existingFileUnder(folder, mainCommand(folder)),
                                        "amazon-games://play/" + id));
}

} // namespace

void scanAmazonGames(const StoreHost& host, ScanReport& report) {
    for (const auto& entry : host.uninstallEntries().all()) {
        if (startsWithIgnoringAsciiCase(entry.keyName, kKeyPrefix)) {
            scanAmazonEntry(entry, report);
        }
    }
}

} // namespace corvandell
