// A post-order walk with its own stack, so a folder nested thousands deep (a previous
// checkout may have made one) costs no call stack. Each entry is asked whether it is a
// link before anything else is asked of it: std::filesystem's own remove_all and
// is_directory would follow a junction on Windows and delete what it points to.
#include "base/FolderRemoval.hpp"

#include "base/FileLinks.hpp"

#include <system_error>
#include <vector>

namespace corvandell {

namespace {

namespace fs = std::filesystem;

struct PendingFolder {
    fs::path path;
    bool isListed = false; // its entries are removed or waiting above it on the stack
};

// Removes what `folder` holds directly and queues its subfolders.
bool removeFilesAndQueueFolders(const fs::path& folder, std::vector<PendingFolder>& pending) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path& path = entry->path();
        if (isLinkOrReparsePoint(path)) {
            if (!removeLinkItself(path)) {
                return false;
            }
            continue;
        }
        if (entry->symlink_status(error).type() == fs::file_type::directory) {
            pending.push_back({path, false});
            continue;
        }
        if (error || !fs::remove(path, error)) {
            return false;
        }
    }
    return !error;
}

} // namespace

bool removeTreeWithoutFollowingLinks(const fs::path& path) {
    if (isLinkOrReparsePoint(path)) {
        return removeLinkItself(path);
    }
    std::error_code error;
    const fs::file_status status = fs::symlink_status(path, error);
    if (status.type() == fs::file_type::not_found) {
        return true;
    }
    if (error) {
        return false;
    }
    if (status.type() != fs::file_type::directory) {
        return fs::remove(path, error);
    }
    std::vector<PendingFolder> pending{{path, false}};
    while (!pending.empty()) {
        if (pending.back().isListed) {
            if (!fs::remove(pending.back().path, error)) {
                return false;
            }
            pending.pop_back();
            continue;
        }
        pending.back().isListed = true;
        const fs::path folder = pending.back().path; // a copy: the stack may grow below
        if (!removeFilesAndQueueFolders(folder, pending)) {
            return false;
        }
    }
    return true;
}

} // namespace corvandell
