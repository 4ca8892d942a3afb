#include "launch/SessionJournal.hpp"

#include "api/JsonText.hpp"
#include "base/BoundedFileRead.hpp"
#include "base/FileCommit.hpp"

#include <system_error>

namespace corvandell {
namespace {

constexpr std::size_t kMaxJournalBytes = 64 * 1024;

} // namespace

std::string formatSessionJournal(const SessionJournalRecord& record) {
    std::string text = "{\"launchId\":\"" + escapeBodyString(record.launchId) + "\",";
    text += "\"external\":" + std::string(record.isExternal ? "true" : "false") + ",";
    text += "\"processId\":" + std::to_string(record.processId) + ",";
    text += "\"processCreated\":" + std::to_string(record.processCreated) + ",";
    text += "\"rowKey\":\"" + escapeBodyString(record.rowKey) + "\",";
    text += "\"title\":\"" + escapeBodyString(record.title) + "\"}\n";
    return text;
}

std::optional<SessionJournalRecord> parseSessionJournal(const std::string& text) {
    SessionJournalRecord record;
    record.launchId = readString(text, "launchId");
    record.isExternal = readBool(text, "external", false);
    const std::int64_t processId = readInt64(text, "processId", 0);
    const std::int64_t created = readInt64(text, "processCreated", 0);
    record.rowKey = readString(text, "rowKey");
    record.title = readString(text, "title");
    if (record.launchId.empty() || processId <= 0 || processId > 0xFFFFFFFFLL || created <= 0) {
        return std::nullopt;
    }
    record.processId = static_cast<std::uint32_t>(processId);
    record.processCreated = static_cast<std::uint64_t>(created);
    return record;
}

std::filesystem::path sessionJournalIn(const std::filesystem::path& dataFolder) {
    return dataFolder / "session.json";
}

void saveSessionJournal(const std::filesystem::path& file, const SessionJournalRecord& record) {
    replaceFileAtomically(file, formatSessionJournal(record));
}

std::optional<SessionJournalRecord> loadSessionJournal(const std::filesystem::path& file) {
    const FileRead read = readFileBounded(file, kMaxJournalBytes);
    if (read.status != FileReadStatus::Ok) {
        return std::nullopt;
    }
    return parseSessionJournal(read.bytes);
}

void clearSessionJournal(const std::filesystem::path& file) noexcept {
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
}

} // namespace corvandell
