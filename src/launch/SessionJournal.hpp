// The journal of the one open play session, kept in the data folder while a game runs.
//
// The client may die while the game plays on (a crash, a kill, a power cut that spares
// nothing but the disk). The journal names the service's session and the exact process, by
// id and creation time, because ids are reused: at the next start the client re-attaches
// to that same process if it still runs and ends the session when it ends, or ends the
// session at once when the game is gone, so no session stays open for ever and none is
// counted twice. It is written with the crash-safe replace, so it is the old record or the
// new one, never a torn mix.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace corvandell {

struct SessionJournalRecord {
    std::string launchId{};           // the service's session id
    bool isExternal = false;          // opened as an external launch
    std::uint32_t processId = 0;      // the followed process
    std::uint64_t processCreated = 0; // its creation time (FILETIME, 100 ns since 1601)
    std::string rowKey{};
    std::string title{}; // UTF-8
    friend bool operator==(const SessionJournalRecord&, const SessionJournalRecord&) = default;
};

std::string formatSessionJournal(const SessionJournalRecord& record);
// Nothing when the text does not name a session and a process to look for; a damaged
// title or key alone does not lose the session.
std::optional<SessionJournalRecord> parseSessionJournal(const std::string& text);

std::filesystem::path sessionJournalIn(const std::filesystem::path& dataFolder);

// Throws std::runtime_error naming the file when it cannot be written.
void saveSessionJournal(const std::filesystem::path& file, const SessionJournalRecord& record);
// Nothing when there is no journal or it cannot be read or understood.
std::optional<SessionJournalRecord> loadSessionJournal(const std::filesystem::path& file);
// Never throws; a journal that cannot be removed is harmless, since its process is checked.
void clearSessionJournal(const std::filesystem::path& file) noexcept;

} // namespace corvandell
