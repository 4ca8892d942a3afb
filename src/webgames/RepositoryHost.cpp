#include "webgames/RepositoryHost.hpp"

#include <string_view>

namespace corvandell {

std::string RepositoryHost::domain() const {
    std::string_view text = url;
    if (const auto scheme = text.find("://"); scheme != std::string_view::npos) {
        text.remove_prefix(scheme + 3);
    }
    while (text.ends_with('/')) {
        text.remove_suffix(1);
    }
    return std::string(text);
}

RepositoryHost repositoryHostFromSwitches(const std::vector<std::string>& arguments) {
    constexpr std::string_view kHostSwitch = "--repository-host=";
    constexpr std::string_view kPagesSwitch = "--pages-domain=";
    RepositoryHost host;
    for (const std::string& argument : arguments) {
        if (argument.starts_with(kHostSwitch) && argument.size() > kHostSwitch.size()) {
            host.url = argument.substr(kHostSwitch.size());
            while (host.url.ends_with('/')) {
                host.url.pop_back();
            }
        } else if (argument.starts_with(kPagesSwitch) && argument.size() > kPagesSwitch.size()) {
            host.pagesDomain = argument.substr(kPagesSwitch.size());
        }
    }
    return host;
}

} // namespace corvandell
