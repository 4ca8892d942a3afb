#include "webgames/BrowserChoice.hpp"

#include "support/FakeRegistry.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvandell {
namespace {

constexpr char kClients[] = "SOFTWARE\\Clients\\StartMenuInternet";
constexpr char kAppPaths[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\";

void addBrowser(test::FakeRegistry& registry, RegistryHive hive, const std::string& subkey,
                const std::string& name, const std::string& command) {
    const std::string key = std::string(kClients) + "\\" + subkey;
    if (!name.empty()) {
        registry.set(hive, key, "", name);
    }
    if (!command.empty()) {
        registry.set(hive, key + "\\shell\\open\\command", "", command);
    }
}

TEST(BrowserChoice, ListsMachineThenUserBrowsersOnceEachAndOnlyStartableOnes) {
    test::FakeRegistry registry;
    addBrowser(registry, RegistryHive::LocalMachine, "Firefox-308046B0AF4A39CB", "Mozilla Firefox",
               "\"C:\\Program Files\\Mozilla Firefox\\firefox.exe\"");
    addBrowser(registry, RegistryHive::LocalMachine, "Broken", "Left Behind", "");
    addBrowser(registry, RegistryHive::CurrentUser, "Google Chrome", "", "\"C:\\Users\\a\\chrome.exe\"");
    addBrowser(registry, RegistryHive::CurrentUser, "FIREFOX-308046B0AF4A39CB", "Mozilla Firefox",
               "\"D:\\other\\firefox.exe\"");
    const std::vector<BrowserEntry> expected{
        {"Mozilla Firefox", "\"C:\\Program Files\\Mozilla Firefox\\firefox.exe\""},
        {"Google Chrome", "\"C:\\Users\\a\\chrome.exe\""}, // no display name: the key's name
    };
    EXPECT_EQ(installedBrowsers(registry), expected);
    EXPECT_TRUE(installedBrowsers(test::FakeRegistry()).empty());
}

TEST(BrowserChoice, TakesTheExecutableOutOfAnOpenCommand) {
    const struct {
        const char* command;
        const char* executable;
    } cases[] = {
        {"\"C:\\Program Files\\B\\b.exe\" -osint -url \"%1\"", "C:\\Program Files\\B\\b.exe"},
        {"C:\\Program Files\\B\\B.EXE --single-argument %1", "C:\\Program Files\\B\\B.EXE"},
        {"\"C:\\unclosed\\b.exe", "C:\\unclosed\\b.exe"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(browserExecutable(c.command), c.executable) << c.command;
    }
}

TEST(BrowserChoice, FindsEdgeOrChromeInTheDocumentedOrder) {
    const auto expand = [](const std::string& path) {
        std::string out = path;
        for (const auto& [from, to] : {std::pair<std::string, std::string>{"%ProgramFiles(x86)%", "C:\\PF86"},
                                       {"%ProgramFiles%", "C:\\PF"}}) {
            if (const size_t at = out.find(from); at != std::string::npos) {
                out.replace(at, from.size(), to);
            }
        }
        return out;
    };
    const std::string edge86 = "C:\\PF86\\Microsoft\\Edge\\Application\\msedge.exe";
    const std::string edge = "C:\\PF\\Microsoft\\Edge\\Application\\msedge.exe";
    const std::string chrome = "C:\\PF\\Google\\Chrome\\Application\\chrome.exe";
    const std::string chrome86 = "C:\\PF86\\Google\\Chrome\\Application\\chrome.exe";
    const struct {
        const char* name;
        std::vector<std::pair<RegistryHive, std::string>> appPaths; // file name = path
        std::vector<std::string> files;
        std::string expected;
    } cases[] = {
        {"edge's app path before chrome's",
         {{RegistryHive::LocalMachine, "chrome.exe=C:\\c\\chrome.exe"},
          {RegistryHive::LocalMachine, "msedge.exe=\"C:\\e\\msedge.exe\""}},
         {edge86},
         "C:\\e\\msedge.exe"},
        {"the user's app path before the machine's",
         {{RegistryHive::LocalMachine, "chrome.exe=C:\\m\\chrome.exe"},
          {RegistryHive::CurrentUser, "chrome.exe=C:\\u\\chrome.exe"}},
         {},
         "C:\\u\\chrome.exe"},
        {"install folders in order", {}, {chrome86, chrome, edge}, edge},
        {"chrome in 32-bit program files last", {}, {chrome86}, chrome86},
        {"nothing", {}, {"C:\\PF\\Other\\msedge.exe"}, ""},
    };
    for (const auto& c : cases) {
        test::FakeRegistry registry;
        for (const auto& [hive, entry] : c.appPaths) {
            const size_t equals = entry.find('=');
            registry.set(hive, std::string(kAppPaths) + entry.substr(0, equals), "",
                         entry.substr(equals + 1));
        }
        const auto isFile = [&](const std::string& path) {
            return std::find(c.files.begin(), c.files.end(), path) != c.files.end();
        };
        EXPECT_EQ(findChromiumBrowser(registry, expand, isFile), c.expected) << c.name;
    }
}

TEST(BrowserChoice, SkipsInstallFoldersWhoseVariableIsNotSet) {
    const auto unexpanded = [](const std::string& path) { return path; };
    const auto anything = [](const std::string&) { return true; };
    EXPECT_EQ(findChromiumBrowser(test::FakeRegistry(), unexpanded, anything), "");
}

} // namespace
} // namespace corvandell
