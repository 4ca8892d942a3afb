// What the scanners may look at besides the file system: the registry, the folder
// variables, and the drive roots (where the Xbox app leaves its .GamingRoot files).
#pragma once

#include "app/Environment.hpp"
#include "stores/Registry.hpp"

#include <filesystem>
#include <vector>

namespace corvandell {

struct StoreHost {
    const Registry& registry;
    const Environment& environment;
    std::vector<std::filesystem::path> driveRoots; // e.g. C:\ and D:\ on Windows
};

} // namespace corvandell
