// library.json: one fixed-template line per installed game, read back with splitObjects.
//
// Times are 64-bit on both sides: the writer prints them in full and the reader uses
// readInt64, so an install dated after 2038 does not fall back to 0 on the next start.
#include "app/LibraryCache.hpp"

#include "api/JsonText.hpp"

namespace corvandell {

namespace {

constexpr std::string_view kLibraryFileName = "library.json";

std::string formatRecord(const LibraryRecord& record) {
    std::string line = "{\"titleId\":\"" + escapeBodyString(record.titleId);
    line += "\",\"name\":\"" + escapeBodyString(record.name);
    line += "\",\"installPath\":\"" + escapeBodyString(record.installPath);
    line += "\",\"executablePath\":\"" + escapeBodyString(record.executablePath);
    line += "\",\"favorite\":";
    line += record.favorite ? "true" : "false";
    line += ",\"installedAtUnix\":" + std::to_string(record.installedAtUnix);
    line += ",\"lastPlayedAtUnix\":" + std::to_string(record.lastPlayedAtUnix);
    line += "}";
    return line;
}

LibraryRecord parseRecord(const std::string& object) {
    LibraryRecord record;
    record.titleId = readString(object, "titleId");
    record.name = readString(object, "name");
    record.installPath = readString(object, "installPath");
    record.executablePath = readString(object, "executablePath");
    record.favorite = readBool(object, "favorite", false);
    record.installedAtUnix = readInt64(object, "installedAtUnix", 0);
    record.lastPlayedAtUnix = readInt64(object, "lastPlayedAtUnix", 0);
    return record;
}

} // namespace

std::string formatLibrary(const std::vector<LibraryRecord>& records) {
    std::string out = "[\n";
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (i > 0) {
            out += ",\n";
        }
        out += formatRecord(records[i]);
    }
    out += "\n]\n";
    return out;
}

std::vector<LibraryRecord> parseLibrary(const std::string& text) {
    std::vector<LibraryRecord> records;
    for (const std::string& object : splitObjects(text)) {
        records.push_back(parseRecord(object));
    }
    return records;
}

GuardedFile libraryFileIn(const std::filesystem::path& dataFolder) {
    return GuardedFile(dataFolder / kLibraryFileName, kMaxLibraryBytes);
}

std::vector<LibraryRecord> loadLibrary(GuardedFile& file) {
    return parseLibrary(file.load());
}

bool saveLibrary(GuardedFile& file, const std::vector<LibraryRecord>& records) {
    return file.save(formatLibrary(records));
}

} // namespace corvandell
