#include "webgames/git/win/GitClient.hpp"

#include "webgames/git/win/WinHttpGitTransport.hpp"

namespace corvandell::win {

void GitClient::shallowClone(const std::string& owner, const std::string& repo,
                             const std::filesystem::path& destination, const git::CloneProgress& progress) {
    shallowClone(kDefaultGitHostUrl, owner, repo, destination, progress);
}

void GitClient::shallowClone(const std::string& hostUrl, const std::string& owner, const std::string& repo,
                             const std::filesystem::path& destination, const git::CloneProgress& progress) {
    WinHttpGitTransport transport(gitHostFromUrl(hostUrl));
    git::shallow_clone(transport, owner, repo, destination, progress);
}

} // namespace corvandell::win
