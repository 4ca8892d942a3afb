#include "webgames/BrowserChoice.hpp"

#include "base/AsciiText.hpp"

#include <array>
#include <set>

namespace corvandell {
namespace {

constexpr std::string_view kStartMenuInternet = "SOFTWARE\\Clients\\StartMenuInternet";
constexpr std::string_view kAppPaths = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\";
constexpr std::array<RegistryHive, 2> kRoots{RegistryHive::LocalMachine, RegistryHive::CurrentUser};
constexpr std::array<std::string_view, 2> kChromiumFiles{"msedge.exe", "chrome.exe"};
// Where the installers put them when App Paths says nothing; Edge first, as Windows ships it.
constexpr std::array<std::string_view, 4> kInstallPaths{
    "%ProgramFiles(x86)%\\Microsoft\\Edge\\Application\\msedge.exe",
    "%ProgramFiles%\\Microsoft\\Edge\\Application\\msedge.exe",
    "%ProgramFiles%\\Google\\Chrome\\Application\\chrome.exe",
    "%ProgramFiles(x86)%\\Google\\Chrome\\Application\\chrome.exe",
};

} // namespace

std::vector<BrowserEntry> installedBrowsers(const Registry& registry) {
    std::vector<BrowserEntry> browsers;
    std::set<std::string> seen;
    for (const RegistryHive root : kRoots) {
        for (const std::string& subkey : registry.subkeyNames(root, kStartMenuInternet)) {
            const std::string key = std::string(kStartMenuInternet) + "\\" + subkey;
            const auto command = readNonEmptyString(registry, root, key + "\\shell\\open\\command", "");
            if (!command || !seen.insert(lowerAscii(subkey)).second) {
                continue;
            }
            const auto name = readNonEmptyString(registry, root, key, "");
            browsers.push_back({name ? *name : subkey, *command});
        }
    }
    return browsers;
}

std::string browserExecutable(std::string_view command) {
    command = trimAsciiBlanks(command);
    if (command.starts_with('"')) {
        const size_t close = command.find('"', 1);
        return std::string(
            command.substr(1, close == std::string_view::npos ? std::string_view::npos : close - 1));
    }
    const size_t exe = lowerAscii(std::string(command)).find(".exe");
    if (exe != std::string::npos) {
        return std::string(command.substr(0, exe + 4));
    }
    return std::string(command);
}

std::string findChromiumBrowser(const Registry& registry,
                                const std::function<std::string(const std::string&)>& expand,
                                const std::function<bool(const std::string&)>& isFile) {
    for (const std::string_view file : kChromiumFiles) {
        for (const RegistryHive root : {RegistryHive::CurrentUser, RegistryHive::LocalMachine}) {
            if (auto path =
                    readNonEmptyString(registry, root, std::string(kAppPaths) + std::string(file), "")) {
                return browserExecutable(*path);
            }
        }
    }
    for (const std::string_view path : kInstallPaths) {
        std::string expanded = expand(std::string(path));
        if (!expanded.empty() && expanded.find('%') == std::string::npos && isFile(expanded)) {
            return expanded;
        }
    }
    return {};
}

} // namespace corvandell
