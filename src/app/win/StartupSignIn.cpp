#include <windows.h>

#include "app/SettingsFile.hpp"
#include "app/StartupDecision.hpp"
#include "app/win/StartupSignIn.hpp"
#include "app/win/ThemeHook.hpp"
#include "auth/win/SignInWindow.hpp"

namespace corvandell::win {

bool passSignIn(HINSTANCE instance, int showCommand, const DataPaths& paths, Settings& settings,
                GuardedFile& settingsFile) {
    if (!needsSignIn(settings)) {
        return true;
    }
    SignInHooks hooks;
    hooks.saveSettings = [&settingsFile](const Settings& changed) { saveSettings(settingsFile, changed); };
    hooks.paintHook = &themeHandleMessage;
    hooks.trackButtonHover = &themeTrackButtonHover;
    SignInWindow window(instance, paths.dataFolder, settings, std::move(hooks));
    // Skipping goes on to the library without a session: local games still work.
    return window.run(showCommand) != SignInResult::Closed;
}

} // namespace corvandell::win
