// Battle.net games.
//
// Reads: %ProgramData%\Battle.net\Agent\product.db, a protocol buffers message
// Database{1: repeated ProductInstall}, ProductInstall{1: uid, 2: productCode,
// 3: UserSettings}, UserSettings{1: installPath}; and for titles the uninstall entries'
// UninstallString and DisplayName.
//
// product.db holds no titles, so the uninstall entry that names the install's uid
// ("--uid=<uid>") gives one, else the install folder's name. The launch address needs the
// client's launch code, which differs from the product code, hence the fixed table.
#include "base/AsciiText.hpp"
#include "stores/ProtobufReader.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/UninstallEntries.hpp"

#include <string>
#include <utility>

namespace corvandell {

namespace {

constexpr std::string_view kStoreKey = "battlenet";
constexpr std::string_view kStoreName = "Battle.net";
// The client and its services install as products too.
constexpr std::string_view kClientProducts[] = {"agent", "battle.net", "bna", "bts"};
constexpr std::pair<std::string_view, std::string_view> kLaunchCodes[] = {
    {"pro", "Pro"},      {"hsb", "WTCG"},  {"fenris", "Fen"},  {"viper", "VIPR"},
    {"lazarus", "LAZR"}, {"wow", "WoW"},   {"s2", "S2"},       {"osi", "OSI"},
    {"zeus", "ZEUS"},    {"auks", "AUKS"}, {"gryphon", "GRY"},
};

struct ProductInstall {
    std::string uid;
    std::string productCode;
    std::string installPath;
};

std::string installPathOf(std::string_view settings) {
    std::string path;
    ProtobufReader reader(settings);
    while (const auto field = reader.next()) {
        if (field->number == 1 && field->wireType == ProtobufWireType::LengthDelimited) {
            path = std::string(field->bytes);
        }
    }
    return path;
}

ProductInstall readProductInstall(std::string_view message) {
    ProductInstall install;
    ProtobufReader reader(message);
    while (const auto field = reader.next()) {
        if (field->wireType != ProtobufWireType::LengthDelimited) {
            continue;
        }
        if (field->number == 1) {
            install.uid = std::string(field->bytes);
        } else if (field->number == 2) {
            install.productCode = std::string(field->bytes);
        } else if (field->number == 3) {
            install.installPath = installPathOf(field->bytes);
        }
    }
    return install;
}

// "--uid=<uid>" ending at a blank or the end, so the uid "wow" does not match "--uid=wow_beta".
bool namesUid(std::string_view command, const std::string& uid) {
    const std::string pattern = "--uid=" + uid;
    for (size_t at = command.find(pattern); at != std::string_view::npos;
         at = command.find(pattern, at + 1)) {
        const size_t end = at + pattern.size();
        if (end == command.size() || command[end] == ' ' || command[end] == '\t') {
            return true;
        }
    }
    return false;
}

std::string titleOf(const ProductInstall& install, const UninstallEntries& uninstall,
                    const std::filesystem::path& folder) {
    for (const auto& entry : uninstall.all()) {
        if (!entry.displayName.empty() && namesUid(entry.uninstallString, install.uid)) {
            return entry.displayName;
        }
    }
    return utf8Text(folder.filename());
}

std::string launchAddressOf(std::string_view productCode) {
    for (const auto& [product, launchCode] : kLaunchCodes) {
        if (equalsIgnoringAsciiCase(product, productCode)) {
            return "battlenet://" + std::string(launchCode);
        }
    }
    return {};
}

bool isClientProduct(std::string_view productCode) {
    for (const auto product : kClientProducts) {
        if (equalsIgnoringAsciiCase(product, productCode)) {
            return true;
        }
    }
    return false;
}

void addInstall(const ProductInstall& install, const UninstallEntries& uninstall, ScanReport& report) {
    const std::string entry = install.uid.empty() ? install.productCode : install.uid;
    auto skip = [&](std::string reason) { report.skip(std::string(kStoreName), entry, std::move(reason)); };
    if (isClientProduct(install.productCode)) {
        return skip("part of the Battle.net client, not a game");
    }
    if (install.uid.empty()) {
        return skip("the install has no uid");
    }
    const auto folder = storePath(install.installPath);
    if (const auto problem = installFolderProblem(folder)) {
        return skip(*problem);
    }
    report.games.push_back(makeStoreRow(kStoreKey, install.uid, titleOf(install, uninstall, folder), folder,
                                        {}, launchAddressOf(install.productCode)));
}

} // namespace

void scanBattleNetGames(const StoreHost& host, ScanReport& report) {
    const auto programData = host.environment.folderVariable("ProgramData");
    if (!programData) {
        return;
    }
    const auto file = *programData / "Battle.net" / "Agent" / "product.db";
    if (!isExistingFile(file)) {
        return;
    }
    const auto database = readStoreFile(file, kMaxProductDbBytes);
    if (!database) {
        return report.skip(std::string(kStoreName), utf8Text(file),
                           storeFileProblem(file, kMaxProductDbBytes, false));
    }
    const UninstallEntries& uninstall = host.uninstallEntries();
    ProtobufReader reader(*database);
    while (const auto field = reader.next()) {
        if (field->number == 1 && field->wireType == ProtobufWireType::LengthDelimited) {
            addInstall(readProductInstall(field->bytes), uninstall, report);
        }
    }
    if (reader.isDamaged()) {
        report.skip(std::string(kStoreName), utf8Text(file),
                    "the file is damaged; installs after the damage were not read");
    }
}

} // namespace corvandell
