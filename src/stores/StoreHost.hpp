// What the scanners may look at besides the file system: the registry, the folder
// variables, and the drive roots (where the Xbox app leaves its .GamingRoot files).
//
// A host serves one scan. The uninstall entries are read on first use and kept for the
// rest of it: four stores look titles and ids up there, and a machine lists hundreds of
// programs, so reading them once per store would multiply the scan's registry reads.
#pragma once

#include "base/Environment.hpp"
#include "stores/Registry.hpp"

#include <filesystem>
#include <memory>
#include <vector>

namespace corvandell {

class UninstallEntries;

struct StoreHost {
    const Registry& registry;
    const Environment& environment;
    std::vector<std::filesystem::path> driveRoots; // e.g. C:\ and D:\ on Windows

    const UninstallEntries& uninstallEntries() const;
    mutable std::shared_ptr<const UninstallEntries> uninstallCache{};
};

} // namespace corvandell
