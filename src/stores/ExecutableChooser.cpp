// Both walks use the directory iterator without following directory links, so a link that
// points back up the tree cannot make the walk endless.
#include "stores/ExecutableChooser.hpp"

#include "base/AsciiText.hpp"
#include "stores/GameName.hpp"
#include "stores/StoreFiles.hpp"

#include <cstdint>
#include <limits>
#include <string>

namespace corvandell {

namespace {

bool hasExeExtension(const std::filesystem::path& file) {
    return lowerAscii(utf8Text(file.extension())) == ".exe";
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
    std::error_code error;
    std::filesystem::recursive_directory_iterator it(
        installFolder, std::filesystem::directory_options::skip_permission_denied, error);
    for (const std::filesystem::recursive_directory_iterator end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (!it->is_regular_file(typeError) || !hasExeExtension(it->path())) {
            continue;
        }
        const std::string stem = lowerAscii(utf8Text(it->path().stem()));
        if (containsSkipWord(stem)) {
            continue;
        }
        Candidate candidate{it->path(), scoreOf(normalizeGameName(stem), game, folder), 0, it.depth()};
        std::error_code sizeError;
        candidate.sizeBytes = it->file_size(sizeError);
        if (sizeError) {
            candidate.sizeBytes = std::numeric_limits<std::uintmax_t>::max();
        }
        if (candidate.isBetterThan(best)) {
            best = std::move(candidate);
        }
    }
    return best.path;
}

std::filesystem::path findFirstExecutable(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file() || !hasExeExtension(entry.path())) {
            continue;
        }
        if (!lowerAscii(utf8Text(entry.path().filename())).starts_with("unins")) {
            return entry.path();
        }
    }
    return {};
}

} // namespace corvandell
