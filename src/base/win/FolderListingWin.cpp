// Windows half of the folder listing: FindFirstFileExW hands over every entry's attributes
// with its name, so telling files, folders and reparse points apart costs no further call.
// Any reparse point on a folder (symbolic link, junction, mount point) counts as a link:
// the mingw runtime's std::filesystem reports junctions as plain folders, and a junction
// back up the tree would make a walk endless.

#include <windows.h>

#include "base/FolderListing.hpp"

namespace corvandell {

namespace {

struct FindCloser {
    HANDLE handle;
    ~FindCloser() { ::FindClose(handle); }
};

ListedKind kindOf(const WIN32_FIND_DATAW& data) {
    const DWORD attributes = data.dwFileAttributes;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? ListedKind::FolderLink : ListedKind::Folder;
    }
    return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? ListedKind::Other : ListedKind::File;
}

} // namespace

bool FolderListing::read(const NativeText& folder) {
    names_.clear();
    entries_.clear();
    NativeText pattern = folder;
    if (!pattern.empty() && pattern.back() != L'\\' && pattern.back() != L'/') {
        pattern += L'\\';
    }
    pattern += L'*';
    WIN32_FIND_DATAW data{};
    const HANDLE find = ::FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &data, FindExSearchNameMatch,
                                           nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (find == INVALID_HANDLE_VALUE) {
        // Folders list "." and ".." even when empty; a drive root lists nothing at all.
        return ::GetLastError() == ERROR_FILE_NOT_FOUND;
    }
    const FindCloser closer{find};
    do {
        const NativeView name(data.cFileName);
        if (name == L"." || name == L"..") {
            continue;
        }
        add(name, kindOf(data));
    } while (::FindNextFileW(find, &data));
    return true;
}

} // namespace corvandell
