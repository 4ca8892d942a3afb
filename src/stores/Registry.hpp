// The registry as the store scanners see it: string values and subkey names, read only.
//
// Scanners never touch the Windows API themselves, so native tests hand them a map and the
// Windows build the real registry. Key paths use backslashes; a path that starts with
// "SOFTWARE\WOW6432Node\" means the 32-bit view of the rest, which is where most stores
// write, and every other path means the 64-bit view.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

enum class RegistryHive { LocalMachine, CurrentUser };

class Registry {
public:
    virtual ~Registry() = default;
    // A REG_SZ or REG_EXPAND_SZ value as UTF-8; nothing when the key or value is missing or
    // holds another type.
    virtual std::optional<std::string> readString(RegistryHive hive, std::string_view keyPath,
                                                  std::string_view valueName) const = 0;
    // The names of the key's direct subkeys as UTF-8; empty when the key is missing.
    virtual std::vector<std::string> subkeyNames(RegistryHive hive, std::string_view keyPath) const = 0;
};

// The value, but nothing for an empty one: stores leave empty values behind after uninstalls.
inline std::optional<std::string> readNonEmptyString(const Registry& registry, RegistryHive hive,
                                                     std::string_view keyPath, std::string_view valueName) {
    auto value = registry.readString(hive, keyPath, valueName);
    if (value && value->empty()) {
        return std::nullopt;
    }
    return value;
}

// The subkeys of the first of two keys that has any, and that key's path: stores write to
// the 32-bit view and only some machines carry the 64-bit twin.
struct RegistrySubkeys {
    std::string keyPath;
    std::vector<std::string> names;
};

inline RegistrySubkeys subkeysOfFirstView(const Registry& registry, RegistryHive hive,
                                          std::string_view firstKeyPath, std::string_view secondKeyPath) {
    RegistrySubkeys found{std::string(firstKeyPath), registry.subkeyNames(hive, firstKeyPath)};
    if (found.names.empty()) {
        found = {std::string(secondKeyPath), registry.subkeyNames(hive, secondKeyPath)};
    }
    return found;
}

} // namespace corvandell
