// Process entry: resolve the data folder, load settings and skins, then run the library
// window until the user chooses Exit.

#include <windows.h>

#include "app/DataPaths.hpp"
#include "app/SettingsFile.hpp"
#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "base/win/WindowsEnvironment.hpp"

#include <exception>

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

int runClient(HINSTANCE instance, int showCommand) {
    const corvandell::win::WindowsEnvironment environment;
    const corvandell::DataPaths paths = corvandell::resolveDataPaths(environment);
    corvandell::GuardedFile settingsFile = corvandell::settingsFileIn(paths.dataFolder);
    corvandell::Settings settings = corvandell::loadSettings(settingsFile, paths.defaultLibraryFolder);
    applyChosenSkin(paths, settings);

    auto window = std::make_unique<corvandell::win::MainWindow>(instance, paths, std::move(settings),
                                                                std::move(settingsFile));
    const int exitCode = window->run(showCommand);
    window.reset();
    return exitCode;
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int showCommand) {
    try {
        return runClient(instance, showCommand);
    } catch (const std::exception& error) {
        MessageBoxA(nullptr, error.what(), "Corvandell", MB_OK | MB_ICONERROR);
        return 1;
    }
}
