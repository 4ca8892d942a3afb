// Store installs laid out in the prefix and recorded in the real registry by reg.exe, where
// the stores write them, found by the scanners through WindowsRegistry.
#include <windows.h>

#include "stores/SteamScanner.hpp"
#include "stores/StoreFiles.hpp"
#include "stores/StoreScanners.hpp"

#include "app/win/WideText.hpp"
#include "stores/win/RegistryScratch.hpp"
#include "stores/win/WindowsRegistry.hpp"
#include "support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

namespace corvandell::win {
namespace {

class RegistryStoresTest : public ::testing::Test {
protected:
    void TearDown() override {
        for (const auto& undo : undos_) {
            undo->undo();
        }
    }

    // Writes one string value with reg.exe, to be taken out again after the test.
    void write(HKEY root, const std::wstring& rootName, const std::wstring& keyPath,
               const std::wstring& value, const std::wstring& data, REGSAM view) {
        undos_.push_back(std::make_unique<test::RegistryValueUndo>(root, keyPath, value, view));
        const test::ChildResult result = test::regAdd(rootName + L"\\" + keyPath, value, data,
                                                      view == KEY_WOW64_32KEY ? L"/reg:32" : L"/reg:64");
        ASSERT_EQ(result.exitCode, 0u) << result.output;
    }

    const DetectedGame* findGame(const std::string& key) const {
        const auto found = std::find_if(report_.games.begin(), report_.games.end(),
                                        [&](const DetectedGame& game) { return game.key == key; });
        return found == report_.games.end() ? nullptr : &*found;
    }

    test::TempFolder folder_; // on the prefix's own drive, like a real install
    WindowsRegistry registry_;
    MapEnvironment environment_;
    StoreHost host_{registry_, environment_, {}};
    ScanReport report_;
    std::vector<std::unique_ptr<test::RegistryValueUndo>> undos_;
};

TEST_F(RegistryStoresTest, SteamIsFoundThroughSteamPathWrittenWithForwardSlashes) {
    const auto root = folder_.path() / L"St\u00e9am";
    folder_.writeFile(L"St\u00e9am/steamapps/appmanifest_4000001.acf",
                      "\"AppState\"\n{\n\t\"appid\"\t\t\"4000001\"\n\t\"name\"\t\t\"Lantern Harbor\"\n"
                      "\t\"StateFlags\"\t\t\"4\"\n\t\"installdir\"\t\t\"Lantern Harbor\"\n}\n");
    folder_.writeFile(L"St\u00e9am/steamapps/common/Lantern Harbor/LanternHarbor.exe", "MZ");
    std::wstring steamPath = root.wstring();
    std::replace(steamPath.begin(), steamPath.end(), L'\\', L'/');
    write(HKEY_CURRENT_USER, L"HKCU", L"Software\\Valve\\Steam", L"SteamPath", steamPath, KEY_WOW64_64KEY);

    EXPECT_TRUE(isSameFolder(findSteamRoot(registry_), root));
    scanSteamLibrary(host_, report_);
    const DetectedGame* game = findGame("steam:4000001");
    ASSERT_NE(game, nullptr) << "Steam found " << report_.games.size() << " games";
    EXPECT_EQ(game->title, "Lantern Harbor");
    EXPECT_TRUE(isSameFolder(game->installFolder, root / L"steamapps" / L"common" / L"Lantern Harbor"));
    EXPECT_EQ(game->executable.filename(), L"LanternHarbor.exe");
}

TEST_F(RegistryStoresTest, GogIsFoundInTheThirtyTwoBitView) {
    const std::wstring id = std::to_wstring(1400000000u + std::random_device()() % 90000000u);
    const auto install = folder_.path() / L"GOG Games" / L"Lantern Harbor";
    folder_.writeFile(L"GOG Games/Lantern Harbor/Lantern.exe", "MZ");
    const std::wstring key = L"SOFTWARE\\GOG.com\\Games\\" + id;
    write(HKEY_LOCAL_MACHINE, L"HKLM", key, L"gameName", L"Lantern Harbor \u00c9dition", KEY_WOW64_32KEY);
    write(HKEY_LOCAL_MACHINE, L"HKLM", key, L"path", install.wstring(), KEY_WOW64_32KEY);

    scanGogGames(host_, report_);
    const DetectedGame* game = findGame("gog:" + narrow(id));
    ASSERT_NE(game, nullptr) << "GOG found " << report_.games.size() << " games";
    EXPECT_EQ(game->title, "Lantern Harbor \xc3\x89"
                           "dition");
    EXPECT_TRUE(isSameFolder(game->installFolder, install));
    EXPECT_EQ(game->executable.filename(), L"Lantern.exe");
    EXPECT_EQ(game->launchAddress, "goggalaxy://openGameView/" + narrow(id));
}

} // namespace
} // namespace corvandell::win
