// Registry entries written for one test by the real reg.exe, as a store's installer writes
// them from its own process, and taken out again afterwards.
//
// The Wine prefix is shared by every test of a run, so keys get names no other test uses;
// fixed store keys (Steam's, GOG's) exist only in the test run's own prefix and are removed.
#pragma once

#include <windows.h>

#include "support/win/ChildProcess.hpp"

#include <random>
#include <string>

namespace corvandell::test {

// e.g. L"CorvandellTest1234567".
inline std::wstring uniqueKeyName() {
    return L"CorvandellTest" + std::to_wstring(std::random_device()());
}

// `reg add KEY [/v NAME /t TYPE /d DATA] /f VIEW`; an empty name only creates the key.
// Data must not end in a backslash, which would escape the closing quote.
inline ChildResult regAdd(const std::wstring& key, const std::wstring& name, const std::wstring& data,
                          const wchar_t* view, const wchar_t* type = L"REG_SZ") {
    std::wstring command = L"reg.exe add \"" + key + L"\"";
    if (!name.empty()) {
        command += L" /v \"" + name + L"\" /t " + type + L" /d \"" + data + L"\"";
    }
    return runAndCapture(command + L" /f " + view, 30000);
}

// Removes the key and everything under it from one registry view; a missing key is fine.
inline void deleteKeyTree(HKEY root, const std::wstring& path, REGSAM view) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_ALL_ACCESS | view, &key) == ERROR_SUCCESS) {
        RegDeleteTreeW(key, nullptr);
        RegCloseKey(key);
        RegDeleteKeyExW(root, path.c_str(), view, 0);
    }
}

inline void deleteKeyTreeInBothViews(HKEY root, const std::wstring& path) {
    deleteKeyTree(root, path, KEY_WOW64_32KEY);
    deleteKeyTree(root, path, KEY_WOW64_64KEY);
}

} // namespace corvandell::test
