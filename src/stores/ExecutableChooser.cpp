// Neither walk enters a link or reparse point (see FolderWalk.hpp), so a junction that
// points back up the tree or at a drive root cannot make it endless.
#include "stores/ExecutableChooser.hpp"

#include "base/AsciiText.hpp"
#include "stores/FolderWalk.hpp"
#include "stores/GameName.hpp"
#include "stores/StoreFiles.hpp"

#include <cstdint>
#include <limits>
#include <string>

namespace corvandell {

namespace {

// ".exe" in any case after a name of at least one character, read off the native text:
// this runs for every file of every install folder, where building extension() and its
// UTF-8 form was a measurable share of the scan.
bool hasExeExtension(NativeView name) {
    if (name.size() < 5) {
        return false;
    }
    const auto* tail = name.data() + name.size() - 4;
    return tail[0] == '.' && (tail[1] | 0x20) == 'e' && (tail[2] | 0x20) == 'x' && (tail[3] | 0x20) == 'e';
}

bool hasExeExtension(const std::filesystem::path& file) {
    return hasExeExtension(NativeView(file.filename().native()));
}

bool containsSkipWord(const std::string& lowerStem) {
    for (const auto word : exeSkipWords) {
        if (lowerStem.find(word) != std::string::npos) {
            return true;
        }
    }
    return false;
}

int scoreOf(const std::string& stem, const std::string& game, const std::string& folder) {
    if (!stem.empty() && (stem == game || stem == folder)) {
        return 3;
    }
    const bool containsGame = !game.empty() && stem.find(game) != std::string::npos;
    const bool containsFolder = !folder.empty() && stem.find(folder) != std::string::npos;
    return containsGame || containsFolder ? 2 : 0;
}

struct Candidate {
    std::filesystem::path path;
    int score = -1;
    std::uintmax_t sizeBytes = 0;
    int depth = 0;

    bool isBetterThan(const Candidate& best) const {
        if (score != best.score) {
            return score > best.score;
        }
        if (sizeBytes != best.sizeBytes) {
            return sizeBytes > best.sizeBytes;
        }
        return depth < best.depth;
    }
};

} // namespace

std::filesystem::path chooseGameExecutable(const std::filesystem::path& installFolder,
                                           std::string_view gameName) {
    if (!isExistingFolder(installFolder)) {
        return {};
    }
    const std::string game = normalizeGameName(gameName);
    const std::string folder = normalizeGameName(utf8Text(installFolder.filename()));
    Candidate best;
    walkFiles(installFolder, [&](const WalkedFile& file) {
        const NativeView name = file.name();
        if (!hasExeExtension(name)) {
            return;
        }
        const std::string stem = lowerAscii(utf8Text(NativeText(name.substr(0, name.size() - 4))));
        if (containsSkipWord(stem)) {
            return;
        }
        Candidate candidate{file.path(), scoreOf(normalizeGameName(stem), game, folder), 0, file.depth};
        std::error_code sizeError;
        candidate.sizeBytes = std::filesystem::file_size(candidate.path, sizeError);
        if (sizeError) {
            candidate.sizeBytes = std::numeric_limits<std::uintmax_t>::max();
        }
        if (candidate.isBetterThan(best)) {
            best = std::move(candidate);
        }
    });
    return best.path;
}

std::filesystem::path findFirstExecutable(const std::filesystem::path& folder) {
    for (std::filesystem::recursive_directory_iterator it(folder), end; it != end; ++it) {
        const auto& entry = *it;
        if (entry.is_directory() && (isLinkOrReparsePoint(entry) || !hasUnicodeName(entry.path()))) {
            it.disable_recursion_pending();
            continue;
        }
        if (!entry.is_regular_file() || !hasExeExtension(entry.path()) || !hasUnicodeName(entry.path())) {
            continue;
        }
        if (!lowerAscii(utf8Text(entry.path().filename())).starts_with("unins")) {
            return entry.path();
        }
    }
    return {};
}

} // namespace corvandell
