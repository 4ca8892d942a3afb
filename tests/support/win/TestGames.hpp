// The stand-in games of the launch tests, copied into a game folder of the test's own as a
// store or an install would lay them out, and found again among the running processes.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

namespace corvandell::test {

// Copies corvandell-test-game.exe (or corvandell-test-launcher.exe) into `folder` as
// `fileName`, with its options file; returns the copy's path.
std::filesystem::path placeTestGame(const std::filesystem::path& folder, const std::wstring& fileName,
                                    const std::string& options = "");
std::filesystem::path placeTestLauncher(const std::filesystem::path& folder, const std::wstring& fileName,
                                        const std::string& options);

// The ids of the running processes whose executable lies under `folder`.
std::vector<DWORD> processesUnder(const std::filesystem::path& folder);
// Terminates them all, so a failed test leaves no game behind.
void endProcessesUnder(const std::filesystem::path& folder);

// The stand-in game's visible window in that process; nullptr when it has none.
HWND testGameWindowOf(DWORD processId);

} // namespace corvandell::test
