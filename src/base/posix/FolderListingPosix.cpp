// POSIX half of the folder listing: readdir(3) with d_type, and a stat only for links
// (to learn whether they lead to a folder) and for file systems that leave d_type unknown.
#include "base/FolderListing.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>

namespace corvandell {

namespace {

struct DirCloser {
    void operator()(DIR* dir) const { ::closedir(dir); }
};

ListedKind kindOfTarget(int folderFd, const char* name) {
    struct stat status {};
    if (::fstatat(folderFd, name, &status, 0) != 0) {
        return ListedKind::Other;
    }
    if (S_ISDIR(status.st_mode)) {
        return ListedKind::FolderLink;
    }
    return S_ISREG(status.st_mode) ? ListedKind::File : ListedKind::Other;
}

ListedKind kindOfUnknown(int folderFd, const char* name) {
    struct stat status {};
    if (::fstatat(folderFd, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return ListedKind::Other;
    }
    if (S_ISLNK(status.st_mode)) {
        return kindOfTarget(folderFd, name);
    }
    if (S_ISDIR(status.st_mode)) {
        return ListedKind::Folder;
    }
    return S_ISREG(status.st_mode) ? ListedKind::File : ListedKind::Other;
}

} // namespace

bool FolderListing::read(const NativeText& folder) {
    names_.clear();
    entries_.clear();
    const std::unique_ptr<DIR, DirCloser> dir(::opendir(folder.c_str()));
    if (!dir) {
        return false;
    }
    const int folderFd = ::dirfd(dir.get());
    while (const dirent* entry = ::readdir(dir.get())) {
        const NativeView name(entry->d_name);
        if (name == "." || name == "..") {
            continue;
        }
        ListedKind kind = ListedKind::Other;
        switch (entry->d_type) {
        case DT_REG:
            kind = ListedKind::File;
            break;
        case DT_DIR:
            kind = ListedKind::Folder;
            break;
        case DT_LNK:
            kind = kindOfTarget(folderFd, entry->d_name);
            break;
        case DT_UNKNOWN:
            kind = kindOfUnknown(folderFd, entry->d_name);
            break;
        default:
            break;
        }
        add(name, kind);
    }
    return true;
}

} // namespace corvandell
