// The programs Windows lists under "Apps & features", as the store scanners need them.
//
// Several stores keep no list of their own worth reading: Amazon Games is found only
// through its uninstall entries, and Ubisoft and Rockstar record titles and ids nowhere
// else. The entries are read once per scan of such a store, in a fixed order: the current
// user's first, then the machine's 32-bit view, then its 64-bit view.
#pragma once

#include "stores/Registry.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

struct UninstallEntry {
    RegistryHive hive = RegistryHive::LocalMachine;
    std::string registryKey; // "HKLM\...\Uninstall\<name>", for skip reports
    std::string keyName;     // the subkey's own name, e.g. "Uplay Install 9001"
    std::string displayName;
    std::string publisher;
    std::filesystem::path installLocation; // normalised; empty when none is recorded
    std::string uninstallString;
};

class UninstallEntries {
public:
    explicit UninstallEntries(const Registry& registry);

    const std::vector<UninstallEntry>& all() const { return entries_; }

    // The first entry of that key name (ASCII case ignored) in the hive; null when none.
    const UninstallEntry* findByKeyName(RegistryHive hive, std::string_view keyName) const;

    // The first entry whose install location is the folder; null when none.
    const UninstallEntry* findByInstallFolder(const std::filesystem::path& folder) const;

private:
    std::vector<UninstallEntry> entries_;
};

// The text after `switchText` in a command line, up to the next blank, without trailing
// quotes; "" when the switch is missing. Uninstall strings carry the store's id this way
// ("... -p amzn1.adg.product.x", "... -uninstall=gta5").
std::string commandLineValue(std::string_view commandLine, std::string_view switchText);

// "HKLM\" or "HKCU\" followed by the key path: how skip reports name a registry key.
std::string registryKeyText(RegistryHive hive, std::string_view keyPath);

} // namespace corvandell
