// POSIX half of replaceFileAtomically: make the temporary durable, then rename it over
// the target.
//
// The order matters: without the fsync before rename(2) a crash can leave the new name
// pointing at an empty file on ext4 and friends, which is exactly the truncated
// settings.json the whole exercise avoids. The folder is synced afterwards so the rename
// itself survives a power cut.
#include "base/FileCommit.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace corvandell {

namespace {

bool syncAndClose(int fd) {
    const bool isSynced = ::fsync(fd) == 0;
    const bool isClosed = ::close(fd) == 0;
    return isSynced && isClosed;
}

// Some file systems cannot sync a folder and say so with EINVAL; the rename has happened
// by then, so that alone is no reason to report the save as failed.
bool syncFolder(const std::filesystem::path& folder) {
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    const bool isSynced = ::fsync(fd) == 0 || errno == EINVAL;
    ::close(fd);
    return isSynced;
}

} // namespace

bool commitTemporaryFile(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0 || !syncAndClose(fd)) {
        return false;
    }
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        return false;
    }
    const std::filesystem::path folder = target.parent_path();
    return syncFolder(folder.empty() ? std::filesystem::path(".") : folder);
}

} // namespace corvandell
