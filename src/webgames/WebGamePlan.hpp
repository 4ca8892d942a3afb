// What starting a browser game takes, decided before anything is started: which browser,
// which address, which private profile and which working folder, or the one sentence the
// status line shows instead.
//
// Both the hosted address and the launch file come from whoever shared the game, so each
// is read back under its own rule and must be safe to put on a command line as it is.
#pragma once

#include "webgames/RepositoryHost.hpp"

#include <filesystem>
#include <functional>
#include <string>

namespace corvandell {

inline constexpr char kNoBrowserText[] = "No Chromium browser (Edge or Chrome) was found to run this browser "
                                         "game. Right-click the game to pick another browser.";
inline constexpr char kBadHostedUrlText[] = "This game's hosted URL is not a valid GitHub Pages address.";
inline constexpr char kBadLaunchFileText[] = "The launch file must be a repo-relative .html file.";
inline constexpr char kLaunchFailedText[] = "Could not launch the game (missing entry file or browser).";

// What the launcher needs of a browser game's row.
struct WebGameSubject {
    std::string key;
    std::string launchTarget;  // "https://..." for a hosted game, else a file in the repository
    std::wstring cloneFolder;  // empty: not cloned
    std::string chosenBrowser; // the player's choice (an open command); empty: automatic
};

enum class WebGameStep {
    Ignore, // neither hosted nor cloned: there is nothing to start
    Refuse, // `statusText` says why
    Start,
};

struct WebGamePlan {
    WebGameStep step = WebGameStep::Ignore;
    std::string statusText;
    std::wstring browser; // the executable
    std::wstring targetUrl;
    std::filesystem::path profileFolder;
    std::wstring workingFolder; // the clone for a cloned game; empty for a hosted one
};

// `findChromium` is asked only when no browser was chosen.
WebGamePlan planWebGameLaunch(const WebGameSubject& game, const std::filesystem::path& dataFolder,
                              const RepositoryHost& host, const std::function<std::string()>& findChromium);

} // namespace corvandell
