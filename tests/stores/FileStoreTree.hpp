// A store's files and registry values over a real temporary folder tree, for the tests of
// the scanners that read store files (Xbox, EA, Battle.net, Riot, itch.io).
#pragma once

#include "app/Environment.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreScanners.hpp"

#include "support/FakeRegistry.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace corvandell::test {

// A folder as Windows stores write it: backslashes throughout.
inline std::string windowsPath(const std::filesystem::path& path) {
    std::string text = utf8Text(path);
    for (char& c : text) {
        c = c == '/' ? '\\' : c;
    }
    return text;
}

// ASCII text as UTF-16LE with a byte order mark, as some stores write their files.
inline std::string utf16File(std::string_view ascii) {
    std::string bytes = "\xFF\xFE";
    for (const char c : ascii) {
        bytes += c;
        bytes += '\0';
    }
    return bytes;
}

struct FileStoreTree {
    TempFolder temp;
    FakeRegistry registry;
    std::map<std::string, std::filesystem::path, std::less<>> variables;
    std::vector<std::filesystem::path> driveRoots;

    std::filesystem::path folder(const std::string& relative) const {
        std::filesystem::create_directories(temp.path() / relative);
        return temp.path() / relative;
    }
    ScanReport scan(void (*scanner)(const StoreHost&, ScanReport&)) const {
        const MapEnvironment environment(variables);
        ScanReport report;
        scanner(StoreHost{registry, environment, driveRoots}, report);
        return report;
    }
};

struct ExpectedRow {
    std::string key, title, storeName, externalId;
    std::filesystem::path folder, executable;
    std::string launchAddress;
};

inline void expectRow(const DetectedGame& row, const ExpectedRow& expected) {
    EXPECT_EQ(row.key, expected.key);
    EXPECT_EQ(row.title, expected.title);
    EXPECT_EQ(row.storeKey + ":" + row.externalId, expected.key);
    EXPECT_EQ(row.storeName, expected.storeName);
    EXPECT_EQ(row.externalId, expected.externalId);
    EXPECT_EQ(row.platform, "windows");
    EXPECT_EQ(row.installFolder, expected.folder);
    EXPECT_EQ(row.executable, expected.executable);
    EXPECT_EQ(row.launchAddress, expected.launchAddress);
    EXPECT_EQ(row.description, "Detected in your local " + expected.storeName +
                                   " library. Installs and updates are managed by " + expected.storeName +
                                   ".");
}

// Key and title of every row, in order.
inline std::vector<std::pair<std::string, std::string>> rowTitles(const ScanReport& report) {
    std::vector<std::pair<std::string, std::string>> rows;
    for (const auto& game : report.games) {
        rows.emplace_back(game.key, game.title);
    }
    return rows;
}

// The skipped entries in order, each as the end of its entry's name and the reason.
inline void expectSkips(const ScanReport& report,
                        const std::vector<std::pair<std::string, std::string>>& expected) {
    ASSERT_EQ(report.skipped.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(report.skipped[i].entry.ends_with(expected[i].first)) << report.skipped[i].entry;
        EXPECT_EQ(report.skipped[i].reason, expected[i].second) << report.skipped[i].entry;
    }
}

} // namespace corvandell::test
