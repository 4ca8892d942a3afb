// Windows half of the link seam: any reparse point counts as a link, because junctions
// and mount points redirect a folder just as symbolic links do, and the mingw runtime's
// std::filesystem does not report them. GetFileAttributesW describes the reparse point
// itself, never its target.

#include <windows.h>

#include "base/FileLinks.hpp"

namespace corvandell {

bool isLinkOrReparsePoint(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// A folder link is removed with RemoveDirectoryW, which deletes the reparse point and
// leaves the target's contents alone; a file link with DeleteFileW. Trap when testing
// under Wine: it resolves a Linux symbolic link before deleting, so RemoveDirectoryW fails
// on a link to a folder that holds files (ERROR_DIR_NOT_EMPTY) and removes the target of
// one to an empty folder, and Wine shows a link to a file as a plain file.
bool removeLinkItself(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return RemoveDirectoryW(path.c_str()) != 0;
    }
    return DeleteFileW(path.c_str()) != 0;
}

} // namespace corvandell
