// The real registry behind the scanners' registry seam.
//
// Stores write into both registry views, and a 64-bit process sees the 32-bit view only
// when it asks: a key path beginning "SOFTWARE\WOW6432Node\" is therefore opened as the
// rest of the path in the 32-bit view, never through the literal WOW6432Node key, and
// every other path in the 64-bit view, so the answer does not depend on redirection.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "stores/Registry.hpp"

namespace corvandell::win {

// Opens the key with `access` in the view its path names; empty when it cannot be opened.
UniqueRegistryKey openRegistryKey(RegistryHive hive, std::string_view keyPath, REGSAM access);

class WindowsRegistry final : public Registry {
public:
    std::optional<std::string> readString(RegistryHive hive, std::string_view keyPath,
                                          std::string_view valueName) const override;
    std::vector<std::string> subkeyNames(RegistryHive hive, std::string_view keyPath) const override;
};

} // namespace corvandell::win
