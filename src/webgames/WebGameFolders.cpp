#include "webgames/WebGameFolders.hpp"

#include "base/Utf8Path.hpp"

#include <string>

namespace corvandell {

std::filesystem::path webGameCloneFolder(const std::filesystem::path& dataFolder,
                                         const RepositoryAddress& address) {
    return dataFolder / "github" / pathFromUtf8(address.owner + "-" + address.repo);
}

std::filesystem::path webGameProfileFolder(const std::filesystem::path& dataFolder,
                                           std::string_view gameKey) {
    std::string name;
    for (const char c : gameKey) {
        const bool isKept = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                            c == '-' || c == '.' || c == '_';
        name += isKept ? c : '_';
    }
    if (name.empty() || name.find_first_not_of('.') == std::string::npos) {
        name = "_" + name;
    }
    return dataFolder / "webgames" / name;
}

} // namespace corvandell
