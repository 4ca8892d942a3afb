// One of the client's own files (settings.json, library.json) across a run: how it was
// found at start decides what the run may later write over it.
//
// Only a missing file means a new user. A file that is there but could not be read (held
// open by another program, access denied, a read error, over the size cap) holds something
// we never saw, so the run never writes it; the client works on defaults instead. A file
// whose text is damaged (cut short by a crash or a full disk) is still read field by field,
// and before the first write replaces it, its original is kept beside it as
// "<name>.bad-<UTC time>", so nothing the user had is lost.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace corvandell {

enum class FileCondition {
    Missing,    // a new user: written freely
    Whole,      // well-formed JSON (or nothing but white space): written freely
    Damaged,    // not well-formed: the original is kept before the first write
    Unreadable, // exists but could not be read: never written in this run
};

class GuardedFile {
public:
    GuardedFile(std::filesystem::path file, std::size_t maxBytes)
        : file_(std::move(file)), maxBytes_(maxBytes) {}

    // Removes what an interrupted earlier save left beside the file, reads it and sorts it.
    // Returns the text for the readers to scan: "" unless the file was read.
    std::string load();

    // Writes the bytes over the file unless it was unreadable at load, in which case
    // nothing is written and the answer is false. A damaged original is first copied to
    // its .bad- name; if that fails the file is left as it is and the error is thrown, as
    // are failures of the write itself (std::runtime_error, filesystem_error).
    bool save(std::string_view bytes,
              std::chrono::system_clock::time_point now = std::chrono::system_clock::now());

    FileCondition condition() const noexcept { return condition_; }
    const std::filesystem::path& path() const noexcept { return file_; }
    // Where the damaged original was kept; empty until then.
    const std::filesystem::path& keptOriginal() const noexcept { return keptOriginal_; }

private:
    void keepDamagedOriginal(std::chrono::system_clock::time_point now);

    std::filesystem::path file_;
    std::size_t maxBytes_;
    FileCondition condition_ = FileCondition::Missing;
    std::string damagedOriginal_; // held from load until it is safely kept
    std::filesystem::path keptOriginal_;
};

// "settings.json.bad-20261125T031500Z" for the first copy made in a second, then "-2",
// "-3", ... appended for more in the same second.
std::string damagedCopyName(std::string_view fileName, std::chrono::system_clock::time_point when,
                            int sequence);

} // namespace corvandell
