// The fake browser of the browser-game tests, copied where a test wants a browser and
// registered as Windows lists browsers: under StartMenuInternet with an open command, and
// under App Paths by its file name. Every key a test adds is removed when it ends.
#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvandell::test {

// Copies corvandell-fake-browser.exe into `folder` as `fileName` with its options file;
// returns the copy's path.
std::filesystem::path placeFakeBrowser(const std::filesystem::path& folder, const std::wstring& fileName,
                                       const std::string& options = "");

// What the copy at `browser` was last started with, once it has written it down.
struct BrowserStart {
    std::wstring commandLine;
    std::wstring workingFolder;
};
std::optional<BrowserStart> recordedStart(const std::filesystem::path& browser);

inline constexpr wchar_t kStartMenuInternet[] = L"SOFTWARE\\Clients\\StartMenuInternet";
inline constexpr wchar_t kAppPaths[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths";

class BrowserRegistrations {
public:
    // Takes away whatever an earlier test left of Edge's and Chrome's App Paths, so that
    // only what this test registers is found.
    BrowserRegistrations();
    ~BrowserRegistrations();
    BrowserRegistrations(const BrowserRegistrations&) = delete;
    BrowserRegistrations& operator=(const BrowserRegistrations&) = delete;

    // StartMenuInternet\subkey with `name` as its default value and the open command.
    void addBrowser(HKEY root, const std::wstring& subkey, const std::wstring& name,
                    const std::wstring& command);
    // App Paths\fileName ("msedge.exe") whose default value is the path.
    void addAppPath(HKEY root, const std::wstring& fileName, const std::filesystem::path& path);

private:
    void setDefault(HKEY root, const std::wstring& key, const std::wstring& value);
    std::vector<std::pair<HKEY, std::wstring>> added_; // removed with everything under them
};

} // namespace corvandell::test
