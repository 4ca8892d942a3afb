// Reads, and nothing else:
// - registry: HKCU Software\Valve\Steam SteamPath, then HKLM SOFTWARE\WOW6432Node\Valve\Steam
//   InstallPath, then HKLM SOFTWARE\Valve\Steam InstallPath (the first existing folder wins);
// - <root>\steamapps\libraryfolders.vdf, then <root>\config\libraryfolders.vdf, where newer
//   clients write the list too: each entry of the top object is an object with "path"
//   (since 2021) or, in the old flat form, a numbered key whose value is the path;
// - <library>\steamapps\appmanifest_*.acf: appid, name (else UserConfig.name), installdir,
//   StateFlags, buildid, LastPlayed;
// - the files under <library>\steamapps\common\<installdir>, to choose the executable.
// Libraries are compared with isSameFolder, because Steam lists the root again as entry "0"
// and writes it in a different form than the registry does.
#include "stores/SteamScanner.hpp"

#include "stores/ExecutableChooser.hpp"
#include "stores/GameName.hpp"
#include "stores/KeyValues.hpp"
#include "stores/StoreFiles.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

namespace corvandell {

namespace {

constexpr std::string_view kStoreName = "Steam";
constexpr std::string_view kDescription = "Detected in your local Steam library. Launches directly, without "
                                          "the Steam overlay; Steam itself must be "
                                          "running for games that require Steamworks.";
constexpr std::uint32_t kFullyInstalled = 4;

struct RootValue {
    RegistryHive hive;
    std::string_view keyPath;
    std::string_view valueName;
};
constexpr std::array<RootValue, 3> kRootValues{{
    {RegistryHive::CurrentUser, "Software\\Valve\\Steam", "SteamPath"},
    {RegistryHive::LocalMachine, "SOFTWARE\\WOW6432Node\\Valve\\Steam", "InstallPath"},
    {RegistryHive::LocalMachine, "SOFTWARE\\Valve\\Steam", "InstallPath"},
}};

constexpr std::array<std::string_view, 8> kRuntimeAppIds{"228980",  "1070560", "1391110", "1628350",
                                                         "1493710", "2180100", "1161040", "1826330"};
constexpr std::array<std::string_view, 3> kRuntimeNameParts{"steamworkscommonredist", "steamlinuxruntime",
                                                            "redistributable"};
constexpr std::array<std::string_view, 4> kProtonBuildWords{"experimental", "hotfix", "battleye",
                                                            "easyanticheat"};

template <typename Number> Number parseDecimal(std::string_view text) {
    Number value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? value : 0;
}

bool isAllDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void skip(ScanReport* report, const std::filesystem::path& entry, std::string reason) {
    if (report) {
        report->skip(std::string(kStoreName), utf8Text(entry), std::move(reason));
    }
}

// The libraries a libraryfolders.vdf names, in file order, as written (not yet checked).
std::vector<std::filesystem::path> listedLibraries(const std::filesystem::path& file, ScanReport* report) {
    const auto text = readStoreText(file);
    if (!text) {
        return {};
    }
    const KeyValuesNode tree = parseKeyValues(*text);
    const KeyValuesNode* list = tree.firstObject();
    if (!list) {
        skip(report, file, "no library list in the file");
        return {};
    }
    std::vector<std::filesystem::path> libraries;
    for (const auto& entry : list->entries) {
        // Beside the libraries sit scalars such as "ContentStatsID"; only numbered keys
        // hold a path in the flat form.
        const std::string_view written = entry.node.isObject      ? entry.node.text("path")
                                         : isAllDigits(entry.key) ? std::string_view(entry.node.value)
                                                                  : std::string_view();
        if (written.empty()) {
            continue;
        }
        auto folder = storePath(written);
        if (!folder.is_absolute()) {
            skip(report, file, "library \"" + std::string(written) + "\" is not an absolute folder");
            continue;
        }
        libraries.push_back(std::move(folder));
    }
    return libraries;
}

std::vector<std::filesystem::path> collectLibraries(const std::filesystem::path& steamRoot,
                                                    ScanReport* report) {
    std::vector<std::filesystem::path> candidates{steamRoot};
    for (const auto* listFile : {"steamapps", "config"}) {
        auto listed = listedLibraries(steamRoot / listFile / "libraryfolders.vdf", report);
        candidates.insert(candidates.end(), listed.begin(), listed.end());
    }
    std::vector<std::filesystem::path> seen;
    std::vector<std::filesystem::path> libraries;
    for (auto& folder : candidates) {
        const bool isKnown = std::any_of(seen.begin(), seen.end(), [&](const std::filesystem::path& s) {
            return isSameFolder(s, folder);
        });
        if (isKnown) {
            continue;
        }
        seen.push_back(folder);
        if (!isExistingFolder(folder / "steamapps")) {
            skip(report, folder, "library folder has no steamapps folder");
            continue;
        }
        libraries.push_back(std::move(folder));
    }
    return libraries;
}

// The manifests directly in steamapps, sorted so that rows come out in the same order on
// every scan whatever order the file system lists them in.
std::vector<std::filesystem::path> manifestFiles(const std::filesystem::path& steamapps, ScanReport& report) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    std::filesystem::directory_iterator it(steamapps, error);
    for (const std::filesystem::directory_iterator end; !error && it != end; it.increment(error)) {
        const std::string name = utf8Text(it->path().filename());
        if (!name.starts_with("appmanifest_") || !name.ends_with(".acf")) {
            continue;
        }
        std::error_code typeError;
        if (!it->is_regular_file(typeError)) {
            skip(&report, it->path(), "not a regular file");
            continue;
        }
        files.push_back(it->path());
    }
    if (error) {
        skip(&report, steamapps, "could not list the whole folder: " + error.message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// installdir as a path below steamapps\common; empty when it would lead anywhere else.
std::filesystem::path installSubfolder(std::string_view installdir) {
    const std::filesystem::path relative = storePath(installdir);
    if (relative.empty() || relative.has_root_path()) {
        return {};
    }
    for (const auto& part : relative) {
        if (part == "." || part == "..") {
            return {};
        }
    }
    return relative;
}

DetectedGame steamRow(const SteamAppManifest& manifest, const std::filesystem::path& installFolder) {
    DetectedGame row;
    row.key = "steam:" + manifest.appid;
    row.title = manifest.name.empty() ? manifest.installdir : manifest.name;
    row.storeKey = "steam";
    row.storeName = std::string(kStoreName);
    row.externalId = manifest.appid;
    row.description = std::string(kDescription);
    row.installFolder = installFolder;
    row.executable = chooseGameExecutable(installFolder, row.title);
    row.steamAppId = manifest.appid;
    row.build = manifest.buildid;
    row.lastPlayedUnix = manifest.LastPlayed;
    return row;
}

void scanManifest(const std::filesystem::path& steamapps, const std::filesystem::path& file,
                  ScanReport& report) {
    const auto text = readStoreText(file);
    if (!text) {
        skip(&report, file, storeFileProblem(file));
        return;
    }
    const SteamAppManifest manifest = readSteamManifest(*text);
    if (manifest.appid.empty()) {
        skip(&report, file, "not a readable app manifest (no appid)");
        return;
    }
    if ((manifest.StateFlags & kFullyInstalled) == 0) {
        skip(&report, file, "not fully installed (StateFlags " + std::to_string(manifest.StateFlags) + ")");
        return;
    }
    if (isExcludedSteamApp(manifest)) {
        skip(&report, file, "Steam runtime or redistributable, not a game");
        return;
    }
    const std::filesystem::path subfolder = installSubfolder(manifest.installdir);
    if (subfolder.empty()) {
        skip(&report, file, "installdir \"" + manifest.installdir + "\" is not a folder name");
        return;
    }
    const std::filesystem::path installFolder = steamapps / "common" / subfolder;
    if (!isExistingFolder(installFolder)) {
        skip(&report, file, "install folder " + utf8Text(installFolder) + " does not exist");
        return;
    }
    report.games.push_back(steamRow(manifest, installFolder));
}

} // namespace

SteamAppManifest readSteamManifest(std::string_view text) {
    const KeyValuesNode tree = parseKeyValues(text);
    const KeyValuesNode* state = tree.firstObject();
    if (!state) {
        return {};
    }
    SteamAppManifest manifest;
    manifest.appid = state->text("appid");
    manifest.name = state->text("name");
    if (const KeyValuesNode* userConfig = state->find("UserConfig"); manifest.name.empty() && userConfig) {
        manifest.name = userConfig->text("name");
    }
    manifest.installdir = state->text("installdir");
    manifest.buildid = state->text("buildid");
    manifest.StateFlags = parseDecimal<std::uint32_t>(state->text("StateFlags"));
    manifest.LastPlayed = parseDecimal<std::uint64_t>(state->text("LastPlayed"));
    return manifest;
}

std::filesystem::path findSteamRoot(const Registry& registry) {
    for (const auto& [hive, keyPath, valueName] : kRootValues) {
        const auto written = readNonEmptyString(registry, hive, keyPath, valueName);
        if (!written) {
            continue;
        }
        auto folder = storePath(*written);
        if (isExistingFolder(folder)) {
            return folder;
        }
    }
    return {};
}

std::vector<std::filesystem::path> findSteamLibraries(const std::filesystem::path& steamRoot) {
    if (steamRoot.empty()) {
        return {};
    }
    return collectLibraries(steamRoot, nullptr);
}

bool isExcludedSteamApp(const SteamAppManifest& manifest) {
    if (std::find(kRuntimeAppIds.begin(), kRuntimeAppIds.end(), manifest.appid) != kRuntimeAppIds.end()) {
        return true;
    }
    const std::string name = normalizeGameName(manifest.name);
    for (const auto part : kRuntimeNameParts) {
        if (name.find(part) != std::string::npos) {
            return true;
        }
    }
    if (!name.starts_with("proton")) {
        return false;
    }
    // Proton builds are "Proton 8.0", "Proton Experimental" and the like; a game that merely
    // starts with the word ("Proton Quest Saga") stays.
    const std::string_view rest = std::string_view(name).substr(6);
    if (!rest.empty() && rest.front() >= '0' && rest.front() <= '9') {
        return true;
    }
    return std::any_of(kProtonBuildWords.begin(), kProtonBuildWords.end(),
                       [&](std::string_view word) { return rest.starts_with(word); });
}

void scanSteamLibrary(const StoreHost& host, ScanReport& report) {
    const std::filesystem::path root = findSteamRoot(host.registry);
    if (root.empty()) {
        report.skip(std::string(kStoreName), "HKCU\\Software\\Valve\\Steam",
                    "no existing Steam folder named in the registry");
        return;
    }
    for (const auto& library : collectLibraries(root, &report)) {
        const std::filesystem::path steamapps = library / "steamapps";
        for (const auto& file : manifestFiles(steamapps, report)) {
            scanManifest(steamapps, file, report);
        }
    }
}

std::vector<DetectedGame> scanSteamLibrary(const StoreHost& host) {
    ScanReport report;
    scanSteamLibrary(host, report);
    return report.games;
}

} // namespace corvandell
