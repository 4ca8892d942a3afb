// Junctions, directory symbolic links, mount points and cloud placeholders all carry
// FILE_ATTRIBUTE_REPARSE_POINT, while the mingw runtime's std::filesystem reports only
// symbolic links as links; so the attribute, read fresh, is what decides.
#include <windows.h>

#include "base/FolderLinks.hpp"

namespace corvandell {

bool isLinkOrReparsePoint(const std::filesystem::directory_entry& entry) {
    const DWORD attributes = GetFileAttributesW(entry.path().c_str());
    return attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

} // namespace corvandell
