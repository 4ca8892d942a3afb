#include "webgames/win/WebGameLaunch.hpp"

#include "base/win/WideText.hpp"
#include "stores/win/WindowsRegistry.hpp"
#include "webgames/BrowserCommand.hpp"

#include <system_error>

namespace corvandell::win {
namespace {

// MAX_PATH: the install folders the finder tests are never longer.
std::string expandEnvironment(const std::string& text) {
    wchar_t expanded[MAX_PATH] = {};
    const DWORD length = ExpandEnvironmentStringsW(widen(text).c_str(), expanded, MAX_PATH);
    if (length == 0 || length > MAX_PATH) {
        return {};
    }
    return narrow(expanded);
}

bool isFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesW(widen(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

} // namespace

std::vector<BrowserEntry> installedBrowsers() {
    return corvandell::installedBrowsers(WindowsRegistry());
}

std::string findChromiumBrowser() {
    return corvandell::findChromiumBrowser(WindowsRegistry(), &expandEnvironment, &isFile);
}

StartedGame launchWebGame(const std::wstring& browser, const std::wstring& targetUrl,
                          const std::filesystem::path& profileFolder, const std::wstring& workingFolder) {
    if (browser.empty() || !isSafeOnCommandLine(targetUrl)) {
        return {};
    }
    std::error_code error;
    std::filesystem::create_directories(profileFolder, error);
    if (error) {
        return {};
    }
    return startInJob(browserCommandLine(browser, targetUrl, profileFolder.wstring()), workingFolder);
}

} // namespace corvandell::win
