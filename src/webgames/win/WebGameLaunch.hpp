// Starting a browser game: the browsers of this machine as the registry lists them, the
// Chromium browser found when the player chose none, and the start itself.
//
// The browser runs in a job that kills what is left of it when the job closes, so every
// process a browser spawns is followed and ended with the game.
#pragma once

#include <windows.h>

#include "launch/win/GameStart.hpp"
#include "webgames/BrowserChoice.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace corvandell::win {

std::vector<BrowserEntry> installedBrowsers();

// The path of Microsoft Edge or Google Chrome on this machine, or empty.
std::string findChromiumBrowser();

// Creates the profile folder (with its parents), then starts the browser's command line for
// the target in a job, in `workingFolder` (none when empty). Empty when the folder cannot
// be made, the target is not safe on a command line, or the browser does not start.
StartedGame launchWebGame(const std::wstring& browser, const std::wstring& targetUrl,
                          const std::filesystem::path& profileFolder, const std::wstring& workingFolder);

} // namespace corvandell::win
