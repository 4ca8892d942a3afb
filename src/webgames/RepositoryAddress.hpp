// Reading what a user types into Add Game, and what the service hands back, as a
// repository on the host or a site on its pages domain, and checking a game's launch file.
//
// These strings end up in a folder name, a clone address and a browser's command line, so
// the readers accept only the shapes they promise and nothing that could step out of them.
#pragma once

#include "webgames/RepositoryHost.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvandell {

struct RepositoryAddress {
    std::string owner;
    std::string repo; // for a pages address: the first path segment, empty for the owner's own site
    friend bool operator==(const RepositoryAddress&, const RepositoryAddress&) = default;
};

// "https://github.com/Owner/Repo.git/" and the like; letter case is kept.
std::optional<RepositoryAddress> readRepositoryAddress(std::string_view text,
                                                       const RepositoryHost& host = {});

// "https://owner.github.io/repo/..." with any query or fragment; the owner is lower-cased.
std::optional<RepositoryAddress> readPagesAddress(std::string_view text, const RepositoryHost& host = {});

// A repository-relative ".html"/".htm" path that stays inside the repository. Quotes and
// control characters are refused too: the path ends up on a browser's command line.
bool isValidLaunchFile(std::string_view text);

} // namespace corvandell
