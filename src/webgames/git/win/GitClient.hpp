// Depth-1 clones of a repository host's public repositories into a local folder.
#pragma once

#include <filesystem>
#include <string>

#include "webgames/git/GitClone.hpp"

namespace corvandell::win {

// The repository host every clone goes to unless told otherwise.
constexpr char kDefaultGitHostUrl[] = CORVANDELL_GIT_HOST_URL;

class GitClient {
public:
    // Throws std::runtime_error with a text fit to show the user.
    static void shallowClone(const std::string& owner, const std::string& repo,
                             const std::filesystem::path& destination, const git::CloneProgress& progress);
    // The same against another host address, such as a loopback test server.
    static void shallowClone(const std::string& hostUrl, const std::string& owner, const std::string& repo,
                             const std::filesystem::path& destination, const git::CloneProgress& progress);
};

} // namespace corvandell::win
