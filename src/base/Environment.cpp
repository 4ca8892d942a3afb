// Folder variables from the process environment or from a fixed map.
//
// An empty variable counts as unset in both readers: "HOME=" would otherwise put the data
// folder at "/.config/corvandell", beside the system's files rather than the user's.
#include "base/Environment.hpp"

#include "base/Utf8Path.hpp"

#include <cstdlib>
#include <string>

namespace corvandell {

std::optional<std::filesystem::path> StdEnvironment::folderVariable(std::string_view name) const {
    const char* value = std::getenv(std::string(name).c_str());
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return pathFromUtf8(value);
}

std::optional<std::filesystem::path> MapEnvironment::folderVariable(std::string_view name) const {
    const auto found = variables_.find(name);
    if (found == variables_.end() || found->second.empty()) {
        return std::nullopt;
    }
    return found->second;
}

} // namespace corvandell
