// A stand-in game launcher for the launch tests: it starts the real game and exits at once,
// as many launchers do. With --breakaway it starts the game outside its job
// (CREATE_BREAKAWAY_FROM_JOB), which a job that allows breakaway lets through. A relative
// game path is taken from the launcher's own folder.
//
//   options: [--breakaway] GAME [GAME ARGUMENTS...]
#include <windows.h>

#include "ProgramOptions.hpp"

#include <filesystem>
#include <string>
#include <vector>

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    std::vector<std::wstring> options = corvandell::test::programOptions();
    DWORD flags = 0;
    size_t first = 0;
    if (!options.empty() && options[0] == L"--breakaway") {
        flags |= CREATE_BREAKAWAY_FROM_JOB;
        first = 1;
    }
    if (first >= options.size()) {
        return 2;
    }
    const std::filesystem::path game =
        std::filesystem::path(corvandell::test::ownPath()).parent_path() / options[first];
    std::wstring commandLine = L"\"" + game.wstring() + L"\"";
    for (size_t i = first + 1; i < options.size(); ++i) {
        commandLine += L" \"" + options[i] + L"\"";
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION created{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, flags, nullptr, nullptr,
                        &startup, &created)) {
        return 1;
    }
    CloseHandle(created.hThread);
    CloseHandle(created.hProcess);
    return 0;
}
