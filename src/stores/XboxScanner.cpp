// Xbox app (PC Game Pass, Microsoft Store) games.
//
// Reads: the ".GamingRoot" file at each drive root, which names that drive's library
// folders, and in every subfolder of a library the file Content\MicrosoftGame.config:
// Identity@Name (the store id), ShellVisuals@DefaultDisplayName (the title) and
// ExecutableList/Executable@Name (relative to Content). Rows carry no launch address.
//
// The executable is taken as the config names it, without looking at the file: Windows
// locks the Content folder against reading, yet the game inside starts fine.
#include "base/AsciiText.hpp"
#include "stores/FolderWalk.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreRow.hpp"
#include "stores/StoreScanners.hpp"
#include "stores/XmlText.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace corvandell {

namespace {

constexpr std::string_view kStoreKey = "xbox";
constexpr std::string_view kStoreName = "Xbox";
constexpr std::size_t kHeaderBytes = 8;
constexpr std::uint32_t kMaxFolderCount = 255; // more is a damaged file, not a real library list

struct GamingRoot {
    std::vector<std::string> folders; // UTF-8, as written: relative to the drive root
    std::string refusal;              // why the file was not used; empty when it was
};

std::uint32_t readUint32Le(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) {
        value = (value << 8) | static_cast<std::uint8_t>(bytes[at + i]);
    }
    return value;
}

// "RGBX", a little-endian count, then that many NUL-terminated UTF-16LE folder names.
GamingRoot parseGamingRoot(std::string_view bytes) {
    if (bytes.size() < kHeaderBytes) {
        return {{}, "the file is too short"};
    }
    if (!bytes.starts_with("RGBX")) {
        return {{}, "the file does not start with RGBX"};
    }
    const std::uint32_t count = readUint32Le(bytes, 4);
    if (count >= kMaxFolderCount) {
        return {{}, "the file claims " + std::to_string(count) + " library folders"};
    }
    if (bytes.size() % 2 != 0) {
        return {{}, "the file has an odd length"};
    }
    GamingRoot root;
    std::size_t pos = kHeaderBytes;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::size_t end = pos;
        while (end + 1 < bytes.size() && (bytes[end] != '\0' || bytes[end + 1] != '\0')) {
            end += 2;
        }
        if (end + 1 >= bytes.size()) {
            return {{}, "the file ends inside a folder name"};
        }
        root.folders.push_back(decodeStoreText("\xFF\xFE" + std::string(bytes.substr(pos, end - pos))));
        pos = end + 2;
    }
    return root;
}

// Folders are written relative to the drive root; a full path with a drive letter is
// accepted as it stands.
std::filesystem::path libraryFolder(const std::filesystem::path& driveRoot, std::string_view text) {
    if (text.starts_with("\\\\?\\")) {
        text.remove_prefix(4);
    }
    const bool hasDriveLetter = text.size() >= 2 && text[1] == ':' &&
                                ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
    if (hasDriveLetter) {
        return storePath(text);
    }
    while (!text.empty() && (text.front() == '\\' || text.front() == '/')) {
        text.remove_prefix(1);
    }
    return text.empty() ? std::filesystem::path() : driveRoot / storePath(text);
}

void addLibrariesOfDrive(const std::filesystem::path& driveRoot,
                         std::vector<std::filesystem::path>& libraries, ScanReport* report) {
    auto note = [&](const std::filesystem::path& entry, std::string reason) {
        if (report != nullptr) {
            report->skip(std::string(kStoreName), utf8Text(entry), std::move(reason));
        }
    };
    const auto file = driveRoot / ".GamingRoot";
    if (!isExistingFile(file)) {
        return;
    }
    const auto bytes = readStoreFile(file);
    if (!bytes) {
        return note(file, storeFileProblem(file, kMaxStoreFileBytes, false));
    }
    const GamingRoot root = parseGamingRoot(*bytes);
    if (!root.refusal.empty()) {
        return note(file, root.refusal);
    }
    for (const auto& text : root.folders) {
        const auto library = libraryFolder(driveRoot, text);
        if (!isExistingFolder(library)) {
            note(file, "the library folder \"" + text + "\" does not exist");
            continue;
        }
        bool isKnown = false;
        for (const auto& known : libraries) {
            isKnown = isKnown || isSameFolder(known, library);
        }
        if (!isKnown) {
            libraries.push_back(library);
        }
    }
}

std::vector<std::filesystem::path> collectLibraries(const std::vector<std::filesystem::path>& driveRoots,
                                                    ScanReport* report) {
    std::vector<std::filesystem::path> libraries;
    for (const auto& driveRoot : driveRoots) {
        addLibrariesOfDrive(driveRoot, libraries, report);
    }
    return libraries;
}

// The first executable meant for PCs; one without a device family runs everywhere.
std::string pcExecutableName(std::string_view config) {
    const auto list = firstXmlElement(config, "ExecutableList");
    if (!list) {
        return {};
    }
    for (const auto& executable : findXmlElements(list->content, "Executable")) {
        const auto family = xmlAttribute(executable, "TargetDeviceFamily");
        const auto name = xmlAttribute(executable, "Name");
        if (name && !name->empty() && (!family || equalsIgnoringAsciiCase(*family, "PC"))) {
            return *name;
        }
    }
    return {};
}

void scanGameFolder(const std::filesystem::path& folder, ScanReport& report) {
    auto skip = [&](std::string reason) {
        report.skip(std::string(kStoreName), utf8Text(folder), std::move(reason));
    };
    const auto content = folder / "Content";
    const auto configFile = content / "MicrosoftGame.config";
    if (!isExistingFile(configFile)) {
        return skip("no Content\\MicrosoftGame.config");
    }
    const auto config = readStoreText(configFile);
    if (!config) {
        return skip(storeFileProblem(configFile));
    }
    const auto identity = firstXmlElement(*config, "Identity");
    const std::string id = identity ? xmlAttribute(*identity, "Name").value_or("") : "";
    if (id.empty()) {
        return skip("MicrosoftGame.config names no Identity");
    }
    // "ms-resource:" names a string in the package's resource file, which only Windows can
    // resolve; the identity name is a better title than the reference.
    const auto visuals = firstXmlElement(*config, "ShellVisuals");
    std::string title = visuals ? xmlAttribute(*visuals, "DefaultDisplayName").value_or("") : "";
    if (title.empty() || startsWithIgnoringAsciiCase(title, "ms-resource:")) {
        title = id;
    }
    const std::string executableName = pcExecutableName(*config);
    const auto executable =
        executableName.empty() ? std::filesystem::path() : content / storePath(executableName);
    report.games.push_back(makeStoreRow(kStoreKey, id, title, folder, executable, ""));
}

} // namespace

std::vector<std::filesystem::path> xboxLibraryRoots(const std::vector<std::filesystem::path>& driveRoots) {
    return collectLibraries(driveRoots, nullptr);
}

void scanXboxGames(const StoreHost& host, ScanReport& report) {
    for (const auto& library : collectLibraries(host.driveRoots, &report)) {
        for (const auto& folder : listSubfolders(library, skipNote(report, kStoreName))) {
            scanGameFolder(folder, report);
        }
    }
}

} // namespace corvandell
