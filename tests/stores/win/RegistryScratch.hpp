// Registry entries written for one test by the real reg.exe, as a store's installer writes
// them from its own process, and taken out again afterwards.
//
// The Wine prefix is shared by every test of a run, so keys get names no other run uses,
// and a value written under a fixed store key (Steam's SteamPath) puts back what was there.
#pragma once

#include <windows.h>

#include "support/win/ChildProcess.hpp"

#include <random>
#include <string>
#include <vector>

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

// Remembers, for one value about to be written under `keyPath` in `view`, what has to be
// undone: the keys the write will create, or else the value it will replace.
class RegistryValueUndo {
public:
    RegistryValueUndo(HKEY root, std::wstring keyPath, std::wstring valueName, REGSAM view)
        : root_(root), keyPath_(std::move(keyPath)), valueName_(std::move(valueName)), view_(view) {
        for (size_t end = keyPath_.find(L'\\');; end = keyPath_.find(L'\\', end + 1)) {
            const std::wstring prefix = keyPath_.substr(0, end);
            HKEY key = nullptr;
            if (RegOpenKeyExW(root_, prefix.c_str(), 0, KEY_READ | view_, &key) != ERROR_SUCCESS) {
                createdTop_ = prefix;
                return;
            }
            RegCloseKey(key);
            if (end == std::wstring::npos) {
                break;
            }
        }
        DWORD type = 0;
        DWORD bytes = 0;
        if (RegGetValueW(root_, keyPath_.c_str(), valueName_.c_str(), RRF_RT_ANY | RRF_NOEXPAND | flags(),
                         &type, nullptr, &bytes) == ERROR_SUCCESS) {
            old_.resize(bytes);
            RegGetValueW(root_, keyPath_.c_str(), valueName_.c_str(), RRF_RT_ANY | RRF_NOEXPAND | flags(),
                         &type, old_.data(), &bytes);
            oldType_ = type;
            hadValue_ = true;
        }
    }
    RegistryValueUndo(const RegistryValueUndo&) = delete;
    RegistryValueUndo& operator=(const RegistryValueUndo&) = delete;

    void undo() const {
        if (!createdTop_.empty()) {
            deleteKeyTree(root_, createdTop_, view_);
            return;
        }
        HKEY key = nullptr;
        if (RegOpenKeyExW(root_, keyPath_.c_str(), 0, KEY_SET_VALUE | view_, &key) != ERROR_SUCCESS) {
            return;
        }
        if (hadValue_) {
            RegSetValueExW(key, valueName_.c_str(), 0, oldType_, old_.data(),
                           static_cast<DWORD>(old_.size()));
        } else {
            RegDeleteValueW(key, valueName_.c_str());
        }
        RegCloseKey(key);
    }

private:
    DWORD flags() const { return view_ == KEY_WOW64_32KEY ? RRF_SUBKEY_WOW6432KEY : RRF_SUBKEY_WOW6464KEY; }

    HKEY root_;
    std::wstring keyPath_;
    std::wstring valueName_;
    REGSAM view_;
    std::wstring createdTop_;
    bool hadValue_ = false;
    DWORD oldType_ = REG_NONE;
    std::vector<BYTE> old_;
};

} // namespace corvandell::test
