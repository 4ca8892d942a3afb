// On POSIX systems a link is a symbolic link, and the entry already knows its own type.
#include "base/FolderLinks.hpp"

namespace corvandell {

bool isLinkOrReparsePoint(const std::filesystem::directory_entry& entry) {
    std::error_code error;
    const bool isLink = entry.is_symlink(error);
    return isLink || error;
}

} // namespace corvandell
