// String values are read with RegGetValueW because it guarantees a terminating NUL, which
// RegQueryValueExW does not; the size is asked first, since install paths can be longer
// than MAX_PATH.
#include <windows.h>

#include "stores/win/WindowsRegistry.hpp"

#include "base/win/WideText.hpp"

#include <cwchar>

namespace corvandell::win {

namespace {

constexpr std::string_view kWow6432Prefix = "SOFTWARE\\WOW6432Node\\";
constexpr size_t kSoftwarePrefixChars = 9; // "SOFTWARE\"

// Key names are at most 255 characters.
constexpr DWORD kMaxKeyNameChars = 256;

// A value rewritten between the size query and the read grows the buffer once more; a
// value that keeps growing is given up on.
constexpr int kReadAttempts = 4;

bool startsWithIgnoringAsciiCase(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size()) {
        return false;
    }
    for (size_t i = 0; i < prefix.size(); ++i) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        if (lower(text[i]) != lower(prefix[i])) {
            return false;
        }
    }
    return true;
}

HKEY hiveRoot(RegistryHive hive) {
    return hive == RegistryHive::CurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

} // namespace

UniqueRegistryKey openRegistryKey(RegistryHive hive, std::string_view keyPath, REGSAM access) {
    std::wstring path;
    REGSAM view = KEY_WOW64_64KEY;
    if (startsWithIgnoringAsciiCase(keyPath, kWow6432Prefix)) {
        // "SOFTWARE\WOW6432Node\Rest" becomes "SOFTWARE\Rest" in the 32-bit view.
        view = KEY_WOW64_32KEY;
        path = widen(keyPath.substr(0, kSoftwarePrefixChars)) + widen(keyPath.substr(kWow6432Prefix.size()));
    } else {
        path = widen(keyPath);
    }
    HKEY key = nullptr;
    if (RegOpenKeyExW(hiveRoot(hive), path.c_str(), 0, access | view, &key) != ERROR_SUCCESS) {
        return {};
    }
    return UniqueRegistryKey(key);
}

std::optional<std::string> WindowsRegistry::readString(RegistryHive hive, std::string_view keyPath,
                                                       std::string_view valueName) const {
    const UniqueRegistryKey key = openRegistryKey(hive, keyPath, KEY_QUERY_VALUE);
    if (!key) {
        return std::nullopt;
    }
    const std::wstring name = widen(valueName);
    // RRF_RT_REG_SZ alone admits REG_EXPAND_SZ too: RegGetValueW expands it and reports
    // REG_SZ. Naming RRF_RT_REG_EXPAND_SZ without RRF_NOEXPAND is refused outright.
    constexpr DWORD kStringTypes = RRF_RT_REG_SZ;
    DWORD bytes = 0;
    LSTATUS status = RegGetValueW(key.get(), nullptr, name.c_str(), kStringTypes, nullptr, nullptr, &bytes);
    for (int attempt = 0; attempt < kReadAttempts && (status == ERROR_SUCCESS || status == ERROR_MORE_DATA);
         ++attempt) {
        std::wstring text(bytes / sizeof(wchar_t) + 1, L'\0');
        DWORD capacity = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        status =
            RegGetValueW(key.get(), nullptr, name.c_str(), kStringTypes, nullptr, text.data(), &capacity);
        if (status == ERROR_SUCCESS) {
            text.resize(wcsnlen(text.data(), capacity / sizeof(wchar_t)));
            return narrow(text);
        }
        bytes = capacity; // ERROR_MORE_DATA leaves the size now needed here
    }
    return std::nullopt;
}

std::vector<std::string> WindowsRegistry::subkeyNames(RegistryHive hive, std::string_view keyPath) const {
    std::vector<std::string> names;
    const UniqueRegistryKey key = openRegistryKey(hive, keyPath, KEY_ENUMERATE_SUB_KEYS);
    if (!key) {
        return names;
    }
    for (DWORD index = 0;; ++index) {
        wchar_t name[kMaxKeyNameChars];
        DWORD length = kMaxKeyNameChars;
        if (RegEnumKeyExW(key.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return names; // ERROR_NO_MORE_ITEMS, or a key deleted while we read it
        }
        names.push_back(narrow(std::wstring_view(name, length)));
    }
}

} // namespace corvandell::win
