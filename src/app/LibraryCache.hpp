// library.json: the games installed through the client, one record per line.
#pragma once

#include "app/GuardedFile.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace corvandell {

struct LibraryRecord {
    std::string titleId;
    std::string name;
    std::string installPath;
    std::string executablePath;
    bool favorite = false;
    std::int64_t installedAtUnix = 0;
    std::int64_t lastPlayedAtUnix = 0; // 0: never played
    friend bool operator==(const LibraryRecord&, const LibraryRecord&) = default;
};

std::string formatLibrary(const std::vector<LibraryRecord>& records);
std::vector<LibraryRecord> parseLibrary(const std::string& text);

// A record is a few hundred bytes, so this holds well over a hundred thousand games.
inline constexpr std::size_t kMaxLibraryBytes = 64 * 1024 * 1024;

// library.json in the data folder, not yet read.
GuardedFile libraryFileIn(const std::filesystem::path& dataFolder);

// A missing or unreadable file gives an empty library; a damaged one what splitObjects
// still finds.
std::vector<LibraryRecord> loadLibrary(GuardedFile& file);

// Through the file's guard: false when the guard withheld the write; throws when writing
// fails.
bool saveLibrary(GuardedFile& file, const std::vector<LibraryRecord>& records);

} // namespace corvandell
