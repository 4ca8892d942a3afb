// Riot Games.
//
// Reads: %ProgramData%\Riot Games\RiotClientInstalls.json, "rc_live" else "rc_default"
// (the Riot client, which starts every product), and every file ending in
// ".product_settings.yaml" under %ProgramData%\Riot Games\Metadata, subfolders included:
// its name gives the product id and patchline ("valorant.live.product_settings.yaml"),
// its keys "product_install_full_path" the folder and "shortcut_name" a title for ids the
// table below does not know.
//
// The YAML is read line by line as top-level "key: value" pairs; these files hold nothing
// else, and a full YAML reader would be most of this scanner.
#include "base/AsciiText.hpp"
#include "stores/FolderWalk.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"

#include "api/JsonText.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace corvandell {

namespace {

constexpr std::string_view kStoreKey = "riot";
constexpr std::string_view kStoreName = "Riot Games";
constexpr std::string_view kSettingsSuffix = ".product_settings.yaml";
constexpr std::string_view kLivePatchline = "live";
// Riot's files carry no display name; two ids per game is deliberate (old and new codenames).
constexpr std::pair<std::string_view, std::string_view> kTitles[] = {
    {"league_of_legends", "League of Legends"}, {"valorant", "VALORANT"}, {"lor", "Legends of Runeterra"},
    {"bacon", "Legends of Runeterra"},          {"2xko", "2XKO"},         {"lion", "2XKO"},
};

std::filesystem::path riotClient(const std::filesystem::path& riotFolder) {
    const auto text = readStoreText(riotFolder / "RiotClientInstalls.json");
    if (!text) {
        return {};
    }
    for (const auto key : {"rc_live", "rc_default"}) {
        const auto client = storePath(readString(*text, key));
        if (isExistingFile(client)) {
            return client;
        }
    }
    return {};
}

// The value of a top-level "key: value" line, without surrounding quotes.
std::string yamlValue(std::string_view text, std::string_view key) {
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.starts_with(key)) {
            continue;
        }
        line.remove_prefix(key.size());
        const size_t colon = line.find_first_not_of(" \t");
        if (colon == std::string_view::npos || line[colon] != ':') {
            continue;
        }
        line.remove_prefix(colon + 1);
        const size_t first = line.find_first_not_of(" \t\r");
        const size_t last = line.find_last_not_of(" \t\r");
        if (first == std::string_view::npos) {
            return {};
        }
        line = line.substr(first, last - first + 1);
        const bool isQuoted =
            line.size() >= 2 && (line.front() == '"' || line.front() == '\'') && line.back() == line.front();
        return std::string(isQuoted ? line.substr(1, line.size() - 2) : line);
    }
    return {};
}

std::string titleOf(std::string_view productId, std::string_view settings) {
    for (const auto& [id, title] : kTitles) {
        if (id == productId) {
            return std::string(title);
        }
    }
    std::string shortcut = yamlValue(settings, "shortcut_name");
    if (endsWithIgnoringAsciiCase(shortcut, ".lnk")) {
        shortcut.resize(shortcut.size() - 4);
    }
    return shortcut.empty() ? std::string(productId) : shortcut;
}

void scanSettingsFile(const std::filesystem::path& file, const std::filesystem::path& client,
                      ScanReport& report) {
    auto skip = [&](std::string reason) {
        report.skip(std::string(kStoreName), utf8Text(file), std::move(reason));
    };
    const std::string name = utf8Text(file.filename());
    const std::string_view product = std::string_view(name).substr(0, name.size() - kSettingsSuffix.size());
    const size_t dot = product.find('.');
    const std::string id(product.substr(0, dot));
    std::string patchline(dot == std::string_view::npos ? "" : product.substr(dot + 1));
    if (patchline.empty()) {
        patchline = kLivePatchline;
    }
    if (id.empty()) {
        return skip("the file name names no product");
    }
    const auto settings = readStoreText(file);
    if (!settings) {
        return skip(storeFileProblem(file));
    }
    const auto folder = storePath(yamlValue(*settings, "product_install_full_path"));
    if (folder.empty()) {
        return skip("no product_install_full_path");
    }
    if (!isExistingFolder(folder)) {
        return skip("the install folder no longer exists");
    }
    const std::string storeId = patchline == kLivePatchline ? id : id + "." + patchline;
    const std::string launch = client.empty() ? ""
                                              : "\"" + utf8Text(client) + "\" --launch-product=" + id +
                                                    " --launch-patchline=" + patchline;
    report.games.push_back(makeStoreRow(kStoreKey, storeId, titleOf(id, *settings), folder, {}, launch));
}

// Every file under the folder, sorted so rows come out the same on every scan.
std::vector<std::filesystem::path> filesUnder(const std::filesystem::path& folder, ScanReport& report) {
    std::vector<std::filesystem::path> files;
    walkFiles(
        folder, [&](const WalkedFile& file) { files.push_back(file.path()); }, skipNote(report, kStoreName));
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

void scanRiotGames(const StoreHost& host, ScanReport& report) {
    const auto programData = host.environment.folderVariable("ProgramData");
    if (!programData) {
        return;
    }
    const auto riotFolder = *programData / "Riot Games";
    const auto client = riotClient(riotFolder);
    for (const auto& file : filesUnder(riotFolder / "Metadata", report)) {
        const std::string name = utf8Text(file.filename());
        if (endsWithIgnoringAsciiCase(name, kSettingsSuffix)) {
            scanSettingsFile(file, client, report);
        } else if (endsWithIgnoringAsciiCase(name, ".yaml")) {
            report.skip(std::string(kStoreName), utf8Text(file), "not a product settings file");
        }
    }
}

} // namespace corvandell
