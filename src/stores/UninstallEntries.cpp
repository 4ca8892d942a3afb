// Reading the three uninstall keys. An entry is kept even without a display name or an
// install location: Amazon's and Rockstar's lookups decide for themselves what they need.
#include "stores/UninstallEntries.hpp"

#include "base/AsciiText.hpp"

#include "stores/StoreFiles.hpp"
#include "stores/StoreHost.hpp"

#include <array>

namespace corvandell {

namespace {

struct UninstallRoot {
    RegistryHive hive;
    std::string_view keyPath;
};

constexpr std::array<UninstallRoot, 3> kUninstallRoots{{
    {RegistryHive::CurrentUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall"},
    {RegistryHive::LocalMachine, "SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall"},
    {RegistryHive::LocalMachine, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall"},
}};

UninstallEntry readEntry(const Registry& registry, const UninstallRoot& root, const std::string& name) {
    const std::string keyPath = std::string(root.keyPath) + "\\" + name;
    auto value = [&](std::string_view valueName) {
        return registry.readString(root.hive, keyPath, valueName).value_or("");
    };
    UninstallEntry entry;
    entry.hive = root.hive;
    entry.registryKey = registryKeyText(root.hive, keyPath);
    entry.keyName = name;
    entry.displayName = value("DisplayName");
    entry.publisher = value("Publisher");
    entry.installLocation = storePath(value("InstallLocation"));
    entry.uninstallString = value("UninstallString");
    return entry;
}

} // namespace

UninstallEntries::UninstallEntries(const Registry& registry) {
    for (const auto& root : kUninstallRoots) {
        for (const auto& name : registry.subkeyNames(root.hive, root.keyPath)) {
            entries_.push_back(readEntry(registry, root, name));
        }
    }
}

const UninstallEntry* UninstallEntries::findByKeyName(RegistryHive hive, std::string_view keyName) const {
    for (const auto& entry : entries_) {
        if (entry.hive == hive && equalsIgnoringAsciiCase(entry.keyName, keyName)) {
            return &entry;
        }
    }
    return nullptr;
}

const UninstallEntry* UninstallEntries::findByInstallFolder(const std::filesystem::path& folder) const {
    for (const auto& entry : entries_) {
        if (!entry.installLocation.empty() && isSameFolder(entry.installLocation, folder)) {
            return &entry;
        }
    }
    return nullptr;
}

std::string commandLineValue(std::string_view commandLine, std::string_view switchText) {
    const size_t start = commandLine.find(switchText);
    if (start == std::string_view::npos) {
        return {};
    }
    std::string_view value = commandLine.substr(start + switchText.size());
    value = value.substr(0, value.find_first_of(" \t"));
    while (!value.empty() && value.back() == '"') {
        value.remove_suffix(1);
    }
    return std::string(value);
}

const UninstallEntries& StoreHost::uninstallEntries() const {
    if (!uninstallCache) {
        uninstallCache = std::make_shared<const UninstallEntries>(registry);
    }
    return *uninstallCache;
}

std::string registryKeyText(RegistryHive hive, std::string_view keyPath) {
    return (hive == RegistryHive::LocalMachine ? "HKLM\\" : "HKCU\\") + std::string(keyPath);
}

} // namespace corvandell
