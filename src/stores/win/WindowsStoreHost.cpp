#include <windows.h>

#include "stores/win/WindowsStoreHost.hpp"

#include <string>

namespace corvandell::win {

std::vector<std::filesystem::path> localDriveRoots() {
    std::vector<std::filesystem::path> roots;
    const DWORD needed = GetLogicalDriveStringsW(0, nullptr);
    if (needed == 0) {
        return roots;
    }
    std::wstring list(needed, L'\0');
    const DWORD written = GetLogicalDriveStringsW(needed, list.data());
    if (written == 0 || written >= needed) {
        return roots;
    }
    // "C:\<NUL>D:\<NUL><NUL>": one root per NUL-terminated piece.
    for (const wchar_t* root = list.c_str(); *root != L'\0'; root += wcslen(root) + 1) {
        const UINT type = GetDriveTypeW(root);
        if (type == DRIVE_FIXED || type == DRIVE_REMOVABLE) {
            roots.emplace_back(root);
        }
    }
    return roots;
}

} // namespace corvandell::win
