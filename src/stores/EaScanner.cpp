// EA app (and Origin) games.
//
// Reads: HKLM SOFTWARE\WOW6432Node\<publisher>\<game> and SOFTWARE\<publisher>\<game>,
// value "Install Dir", for the publishers "Electronic Arts", "EA Games" and "EA Sports";
// library folders, whose subfolders are candidate installs too: the line
// "machine.downloadinplacedir=" of %ProgramData%\EA Desktop\machine.ini, the line
// "user.downloadinplacedir=" of every %LOCALAPPDATA%\Electronic Arts\EA Desktop\user_<id>.ini
// (where today's client keeps it), Origin's <Setting key="DownloadInPlaceDir" value="..."/>
// in %APPDATA%\Origin\local.xml, and the folders both clients install to by default,
// %ProgramFiles%\EA Games and %ProgramFiles(x86)%\Origin Games; and in every candidate folder
// __Installer\installerdata.xml, in either the EA app's DiPManifest shape or Origin's
// <game> shape: contentIDs/contentID (the store id), gameTitles/gameTitle or
// metadata/localeInfo/title (the title) and runtime/launcher/filePath (the executable).
//
// installerdata.xml, not the registry, decides what is a game: the registry keys also
// hold the client and shared components, and the library folder holds whatever users put
// there.
#include "base/AsciiText.hpp"
#include "stores/FolderWalk.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/XmlText.hpp"

#include <algorithm>
#include <optional>
#include <string>

namespace corvandell {

namespace {

constexpr std::string_view kStoreKey = "ea";
constexpr std::string_view kStoreName = "EA App";
constexpr std::string_view kLaunchPrefix = "origin2://game/launch?offerIds=";
constexpr std::string_view kRegistryViews[] = {"SOFTWARE\\WOW6432Node\\", "SOFTWARE\\"};
constexpr std::string_view kPublishers[] = {"Electronic Arts", "EA Games", "EA Sports"};
constexpr std::string_view kMachineLibraryLine = "machine.downloadinplacedir=";
constexpr std::string_view kUserLibraryLine = "user.downloadinplacedir=";

struct Candidate {
    std::filesystem::path folder;
    std::string entry; // where the folder was named, for the skip report
};

void addCandidate(std::vector<Candidate>& candidates, Candidate candidate) {
    for (const auto& known : candidates) {
        if (isSameFolder(known.folder, candidate.folder)) {
            return;
        }
    }
    candidates.push_back(std::move(candidate));
}

void addRegistryCandidates(const Registry& registry, std::vector<Candidate>& candidates, ScanReport& report) {
    for (const auto view : kRegistryViews) {
        for (const auto publisher : kPublishers) {
            const std::string parent = std::string(view) + std::string(publisher);
            for (const auto& game : registry.subkeyNames(RegistryHive::LocalMachine, parent)) {
                const std::string key = parent + "\\" + game;
                const auto folder =
                    readNonEmptyString(registry, RegistryHive::LocalMachine, key, "Install Dir");
                if (!folder) {
                    report.skip(std::string(kStoreName), key, "no Install Dir value");
                    continue;
                }
                addCandidate(candidates, {storePath(*folder), key});
            }
        }
    }
}

// The folder an ini file's "<prefix>downloadinplacedir=" line names; empty without one.
std::filesystem::path iniLibrary(const std::filesystem::path& file, std::string_view linePrefix) {
    const auto text = readStoreText(file);
    if (!text) {
        return {};
    }
    std::string_view rest = *text;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) {
            line.remove_prefix(1);
        }
        if (startsWithIgnoringAsciiCase(line, linePrefix)) {
            return storePath(line.substr(linePrefix.size()));
        }
    }
    return {};
}

// Origin's download folder: <Setting key="DownloadInPlaceDir" value="..."/>.
std::filesystem::path originLibrary(const std::filesystem::path& file) {
    const auto text = readStoreText(file);
    if (!text) {
        return {};
    }
    for (const auto& setting : findXmlElements(*text, "Setting")) {
        if (xmlAttribute(setting, "key").value_or("") == "DownloadInPlaceDir") {
            return storePath(xmlAttribute(setting, "value").value_or(""));
        }
    }
    return {};
}

// Every per-user settings file of the EA app: one user_<id>.ini per account signed in.
std::vector<std::filesystem::path> userSettingsFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    std::filesystem::directory_iterator it(folder, error);
    for (const std::filesystem::directory_iterator end; !error && it != end; it.increment(error)) {
        const std::string name = utf8Text(it->path().filename());
        std::error_code typeError;
        if (startsWithIgnoringAsciiCase(name, "user_") && endsWithIgnoringAsciiCase(name, ".ini") &&
            it->is_regular_file(typeError)) {
            files.push_back(it->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

// The library folders the clients' settings name, then the default install folders.
std::vector<std::filesystem::path> libraryRoots(const Environment& environment) {
    std::vector<std::filesystem::path> roots;
    auto add = [&](std::filesystem::path root) {
        if (!root.empty()) {
            roots.push_back(std::move(root));
        }
    };
    if (const auto programData = environment.folderVariable("ProgramData")) {
        add(iniLibrary(*programData / "EA Desktop" / "machine.ini", kMachineLibraryLine));
    }
    if (const auto localAppData = environment.folderVariable("LOCALAPPDATA")) {
        for (const auto& file : userSettingsFiles(*localAppData / "Electronic Arts" / "EA Desktop")) {
            add(iniLibrary(file, kUserLibraryLine));
        }
    }
    if (const auto appData = environment.folderVariable("APPDATA")) {
        add(originLibrary(*appData / "Origin" / "local.xml"));
    }
    if (const auto programFiles = environment.folderVariable("ProgramFiles")) {
        add(*programFiles / "EA Games");
    }
    if (const auto programFiles32 = environment.folderVariable("ProgramFiles(x86)")) {
        add(*programFiles32 / "Origin Games");
    }
    return roots;
}

// The text of the element preferred for en_US, else of the first one with any text.
std::string localizedText(const std::vector<XmlElement>& elements,
                          std::string (*textOf)(const XmlElement& element)) {
    std::string first;
    for (const auto& element : elements) {
        std::string text = textOf(element);
        if (text.empty()) {
            continue;
        }
        if (equalsIgnoringAsciiCase(xmlAttribute(element, "locale").value_or(""), "en_US")) {
            return text;
        }
        if (first.empty()) {
            first = std::move(text);
        }
    }
    return first;
}

std::string titleOf(std::string_view xml) {
    if (auto title = localizedText(findXmlElements(xml, "gameTitle"), xmlText); !title.empty()) {
        return title;
    }
    for (const auto& locale : findXmlElements(xml, "localeInfo")) {
        const auto title = firstXmlElement(locale.content, "title");
        if (title && equalsIgnoringAsciiCase(xmlAttribute(locale, "locale").value_or(""), "en_US")) {
            if (auto text = xmlText(*title); !text.empty()) {
                return text;
            }
        }
    }
    const auto title = firstXmlElement(xml, "title");
    return title ? xmlText(*title) : "";
}

std::string contentIdOf(std::string_view xml) {
    const auto ids = firstXmlElement(xml, "contentIDs");
    const auto id = ids ? firstXmlElement(ids->content, "contentID") : std::nullopt;
    return id ? xmlText(*id) : "";
}

// The launcher's filePath starts with the registry value it is relative to, in brackets
// ("[HKEY_LOCAL_MACHINE\SOFTWARE\...\Install Dir]Game.exe"); that value is the folder.
std::filesystem::path executableOf(std::string_view xml, const std::filesystem::path& folder) {
    const auto runtime = firstXmlElement(xml, "runtime");
    if (!runtime) {
        return {};
    }
    for (const auto& launcher : findXmlElements(runtime->content, "launcher")) {
        const auto filePath = firstXmlElement(launcher.content, "filePath");
        std::string text = filePath ? xmlText(*filePath) : "";
        if (text.empty()) {
            continue;
        }
        if (text.front() == '[') {
            const size_t close = text.find(']');
            text = close == std::string::npos ? "" : text.substr(close + 1);
        }
        return existingFileUnder(folder, text);
    }
    return {};
}

void scanCandidate(const Candidate& candidate, ScanReport& report) {
    const auto& folder = candidate.folder;
    if (!isExistingFolder(folder)) {
        return report.skip(std::string(kStoreName), candidate.entry, "the install folder no longer exists");
    }
    const auto manifestFile = folder / "__Installer" / "installerdata.xml";
    if (!isExistingFile(manifestFile)) {
        return report.skip(std::string(kStoreName), utf8Text(folder), "no __Installer\\installerdata.xml");
    }
    const auto manifest = readStoreText(manifestFile);
    if (!manifest) {
        return report.skip(std::string(kStoreName), utf8Text(folder), storeFileProblem(manifestFile));
    }
    const std::string folderName = utf8Text(folder.filename());
    const std::string contentId = contentIdOf(*manifest);
    std::string title = titleOf(*manifest);
    if (title.empty()) {
        title = folderName;
    }
    // Without a content id the store cannot be asked to start the game; it still runs directly.
    const std::string launch = contentId.empty() ? "" : std::string(kLaunchPrefix) + contentId;
    report.games.push_back(makeStoreRow(kStoreKey, contentId.empty() ? folderName : contentId, title, folder,
                                        executableOf(*manifest, folder), launch));
}

} // namespace

void scanEaGames(const StoreHost& host, ScanReport& report) {
    std::vector<Candidate> candidates;
    addRegistryCandidates(host.registry, candidates, report);
    for (const auto& root : libraryRoots(host.environment)) {
        for (const auto& folder : listSubfolders(root, skipNote(report, kStoreName))) {
            addCandidate(candidates, {folder, utf8Text(folder)});
        }
    }
    for (const auto& candidate : candidates) {
        scanCandidate(candidate, report);
    }
}

} // namespace corvandell
