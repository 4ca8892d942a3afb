// A store's files and registry values over a real folder tree, and the checks made on a scan.
#pragma once

#include "base/Environment.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreScanners.hpp"

#include "support/FakeRegistry.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace corvandell::test {

constexpr auto kMachine = RegistryHive::LocalMachine;
constexpr auto kUser = RegistryHive::CurrentUser;
inline const std::string kUninstall32 =
    "SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
inline const std::string kUninstall64 = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

// A folder as Windows stores write it: every separator `separator` (Ubisoft writes '/').
inline std::string winPath(const std::filesystem::path& path, char separator = '\\') {
    std::string text = utf8Text(path);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '/' || c == '\\'; }, separator);
    return text;
}

// The same inside a JSON or KeyValues string, where a backslash is written twice.
inline std::string escapedPath(const std::filesystem::path& path) {
    std::string text;
    for (const char c : winPath(path)) {
        text += c == '\\' ? std::string("\\\\") : std::string(1, c);
    }
    return text;
}

// ASCII text as UTF-16LE with a byte order mark, as some stores write their files.
inline std::string utf16File(std::string_view ascii) {
    std::string bytes = "\xFF\xFE";
    for (const char c : ascii) {
        bytes += {c, '\0'};
    }
    return bytes;
}

// Pairs of texts: a row's key and title, a skipped entry and its reason, a value and its text.
using Rows = std::vector<std::pair<std::string, std::string>>;

struct StoreTree {
    TempFolder temp;
    FakeRegistry registry;
    std::map<std::string, std::filesystem::path, std::less<>> variables;
    std::vector<std::filesystem::path> driveRoots;

    std::filesystem::path folder(const std::string& relative) const {
        // Preferred separators, so texts built from it match the scanners' on Windows too.
        const auto folder = (temp.path() / relative).make_preferred();
        std::filesystem::create_directories(folder);
        return folder;
    }
    void setValues(RegistryHive hive, const std::string& keyPath, const Rows& values) {
        for (const auto& [name, text] : values) {
            registry.set(hive, keyPath, name, text);
        }
    }
    ScanReport scan(void (*scanner)(const StoreHost&, ScanReport&)) const {
        const MapEnvironment environment(variables);
        ScanReport report;
        scanner(StoreHost{registry, environment, driveRoots}, report);
        return report;
    }
};

// What a row holds beyond what makeStoreRow derives (store name and description are pinned
// by the StoreRow tests).
inline void expectRow(const DetectedGame& row, const std::string& key, const std::string& title,
                      const std::filesystem::path& folder, const std::filesystem::path& executable,
                      const std::string& launchAddress) {
    EXPECT_EQ(std::tie(row.key, row.title, row.installFolder, row.executable, row.launchAddress),
              std::tie(key, title, folder, executable, launchAddress));
}

// Key and title of every row, in order.
inline Rows rowTitles(const ScanReport& report) {
    Rows rows;
    for (const auto& game : report.games) {
        rows.emplace_back(game.key, game.title);
    }
    return rows;
}

// The skipped entries in order, each as the end of its entry's name and the reason.
inline void expectSkips(const ScanReport& report, const Rows& expected) {
    ASSERT_EQ(report.skipped.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(report.skipped[i].entry.ends_with(expected[i].first)) << report.skipped[i].entry;
        EXPECT_EQ(report.skipped[i].reason, expected[i].second) << report.skipped[i].entry;
    }
}

} // namespace corvandell::test
