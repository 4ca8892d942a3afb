// Which browser runs a browser game: the browsers the system lists as installed, and the
// Chromium browser found when the player has chosen none.
//
// Reading goes through the registry seam, so the search order is tested natively; the
// Windows side hands in the real registry, environment expansion and file test.
#pragma once

#include "stores/Registry.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell {

struct BrowserEntry {
    std::string name;    // as the system shows it: "Google Chrome"
    std::string command; // its open command, as registered: "\"C:\...\chrome.exe\"" and perhaps arguments
    friend bool operator==(const BrowserEntry&, const BrowserEntry&) = default;
};

// The subkeys of SOFTWARE\Clients\StartMenuInternet, machine-wide ones first and then the
// user's own (a per-user install registers there); a name seen twice is listed once.
// Entries without an open command cannot be started and are left out.
std::vector<BrowserEntry> installedBrowsers(const Registry& registry);

// The executable of an open command: the quoted first word, else everything up to and
// including the first ".exe", else the command itself.
std::string browserExecutable(std::string_view command);

// Microsoft Edge or Google Chrome: App Paths under each root, then the usual install
// folders. `expand` expands %VARIABLES%; `isFile` tests a path. Empty when none is found.
std::string findChromiumBrowser(const Registry& registry,
                                const std::function<std::string(const std::string&)>& expand,
                                const std::function<bool(const std::string&)>& isFile);

} // namespace corvandell
