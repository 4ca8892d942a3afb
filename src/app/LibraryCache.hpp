// library.json: the games installed through the client, one record per line.
#pragma once

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

// A missing or unreadable file gives an empty library.
std::vector<LibraryRecord> loadLibrary(const std::filesystem::path& dataFolder);
void saveLibrary(const std::filesystem::path& dataFolder, const std::vector<LibraryRecord>& records);

} // namespace corvandell
