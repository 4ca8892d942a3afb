// POSIX half of the link seam: lstat(2) looks at the link itself, unlink(2) removes it.
#include "base/FileLinks.hpp"

#include <sys/stat.h>
#include <unistd.h>

namespace corvandell {

bool isLinkOrReparsePoint(const std::filesystem::path& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool removeLinkItself(const std::filesystem::path& path) {
    return ::unlink(path.c_str()) == 0;
}

} // namespace corvandell
