// Where shared browser games come from: the repository host clones are made from, and the
// domain its hosted pages sites live under. Both are fixed when the client is built; tests
// put a loopback server in their place.
#pragma once

#include <string>
#include <vector>

namespace corvandell {

struct RepositoryHost {
    std::string url = CORVANDELL_GIT_HOST_URL;         // scheme and domain, no trailing "/"
    std::string pagesDomain = CORVANDELL_PAGES_DOMAIN; // "github.io": sites are owner.github.io

    // The url without its scheme, as addresses are compared against it: "github.com".
    std::string domain() const;
};

// The defaults with the test switches "--repository-host=<url>" and "--pages-domain=<domain>"
// applied, from a program's arguments; anything else is left alone, an empty value too.
RepositoryHost repositoryHostFromSwitches(const std::vector<std::string>& arguments);

} // namespace corvandell
