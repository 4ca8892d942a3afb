// Reading a whole file with a size cap, and telling apart why a read gave nothing.
//
// The client decides what it may later write from how a read went: a missing settings.json
// means a new user whose file can be created, but one that exists and cannot be read (held
// open by another program, access denied, a read error, a folder in its place, far larger
// than the client ever writes) must be left alone, because its contents are unknown.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace corvandell {

enum class FileReadStatus {
    Ok,
    Missing,    // nothing at the path, not even a dangling link
    Unreadable, // something is there, but it could not be opened or read as a file
    TooLarge,   // more than the cap; nothing of it is returned
};

struct FileRead {
    FileReadStatus status = FileReadStatus::Missing;
    std::string bytes; // the whole file when Ok, else empty
};

// At most `maxBytes` are ever held in memory, even for a file that grows while it is read.
FileRead readFileBounded(const std::filesystem::path& file, std::size_t maxBytes);

} // namespace corvandell
