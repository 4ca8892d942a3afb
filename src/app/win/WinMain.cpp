// Process entry: resolve the data folder, make sure no other client runs on it, load
// settings and skins, sign in if there is no usable session, then run the library window
// until the user chooses Exit.

#include <windows.h>

#include <shellapi.h>

#include "app/DataPaths.hpp"
#include "app/SettingsFile.hpp"
#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/SingleInstance.hpp"
#include "app/win/StartupSignIn.hpp"
#include "base/win/WideText.hpp"
#include "base/win/WindowsEnvironment.hpp"

#include <exception>
#include <string>
#include <vector>

namespace {

void applyChosenSkin(const corvandell::DataPaths& paths, const corvandell::Settings& settings) {
    try {
        corvandell::applyTheme(
            corvandell::chooseSkin(corvandell::loadSkins(paths.dataFolder), settings.skinId));
    } catch (const std::exception&) {
        // An unreadable skins folder must not keep the client from starting.
        corvandell::applyTheme(corvandell::chooseSkin(corvandell::builtInSkins(), settings.skinId));
    }
}

// The switches are for tests and scripts/run, which serve browser games from loopback.
corvandell::RepositoryHost repositoryHostOfCommandLine() {
    int count = 0;
    LPWSTR* words = CommandLineToArgvW(GetCommandLineW(), &count);
    if (words == nullptr) {
        return {};
    }
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(corvandell::win::narrow(words[i]));
    }
    LocalFree(words);
    return corvandell::repositoryHostFromSwitches(arguments);
}

int runClient(HINSTANCE instance, int showCommand) {
    const corvandell::win::WindowsEnvironment environment;
    const corvandell::DataPaths paths = corvandell::resolveDataPaths(environment);
    // Before anything is read: the load-time rewrite of settings.json is already a write.
    corvandell::win::SingleInstance onlyClient(paths.dataFolder);
    if (!onlyClient.isFirst() && onlyClient.handOverToRunningClient()) {
        return 0;
    }
    corvandell::GuardedFile settingsFile = corvandell::settingsFileIn(paths.dataFolder);
    corvandell::Settings settings = corvandell::loadSettings(settingsFile, paths.defaultLibraryFolder);
    applyChosenSkin(paths, settings);
    if (!corvandell::win::passSignIn(instance, showCommand, paths, settings, settingsFile)) {
        return 0;
    }

    corvandell::win::MainWindowJobs jobs;
    jobs.repositoryHost = repositoryHostOfCommandLine();
    auto window = std::make_unique<corvandell::win::MainWindow>(instance, paths, std::move(settings),
                                                                std::move(settingsFile), std::move(jobs));
    const int exitCode = window->run(showCommand);
    window.reset();
    return exitCode;
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int showCommand) {
    try {
        return runClient(instance, showCommand);
    } catch (const std::exception& error) {
        // Our error texts are UTF-8 (they may quote a server's reply or a path); the A
        // function would read them in the ANSI code page.
        MessageBoxW(nullptr, corvandell::win::widen(error.what()).c_str(), L"Corvandell",
                    MB_OK | MB_ICONERROR);
        return 1;
    }
}
