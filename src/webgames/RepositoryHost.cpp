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

} // namespace corvandell
