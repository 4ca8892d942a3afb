// corvandell-scan.exe run as support would run it, on installs laid out in the prefix the
// way the stores lay them out: Steam named by SteamPath in HKCU with forward slashes, a GOG
// game written by reg.exe into the 32-bit view, and an Epic library under a ProgramData
// folder of the test's own. The tool scans through the real registry and environment.
#include <windows.h>

#include "base/win/WideText.hpp"
#include "base/win/WindowsEnvironment.hpp"
#include "stores/StoreTree.hpp"
#include "stores/win/RegistryScratch.hpp"
#include "support/win/ChildProcess.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

std::string lineContaining(const std::string& output, const std::string& needle) {
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (line.find(needle) != std::string::npos) {
            return line;
        }
    }
    return {};
}

class ScanToolTest : public ::testing::Test {
protected:
    // The child inherits this process's environment, so the store folders are set here.
    void SetUp() override {
        SetEnvironmentVariableW(L"ProgramData", (folder_.path() / L"ProgramData").c_str());
    }
    void TearDown() override {
        SetEnvironmentVariableW(L"ProgramData", savedProgramData_ ? savedProgramData_->c_str() : nullptr);
        test::deleteKeyTree(HKEY_CURRENT_USER, L"Software\\Valve\\Steam", KEY_WOW64_64KEY);
        test::deleteKeyTree(HKEY_LOCAL_MACHINE, L"SOFTWARE\\GOG.com\\Games\\" + gogId_, KEY_WOW64_32KEY);
    }

    void regAdd(const std::wstring& key, const std::wstring& value, const std::wstring& data,
                const wchar_t* view) {
        const test::ChildResult result = test::regAdd(key, value, data, view);
        ASSERT_EQ(result.exitCode, 0u) << result.output;
    }

    test::ChildResult scan(const std::wstring& arguments) const {
        return test::runAndCapture(
            L"\"" + test::siblingExecutable(L"corvandell-scan.exe").wstring() + L"\"" + arguments, 60000);
    }

    const std::optional<std::filesystem::path> savedProgramData_ =
        WindowsEnvironment().folderVariable("ProgramData");
    const std::wstring gogId_ = std::to_wstring(1400000000u + std::random_device()() % 90000000u);
    test::TempFolder folder_; // on the prefix's own drive, like a real install
};

TEST_F(ScanToolTest, PrintsTheGamesOfEachStoreAndWithWhyWhatWasLeftOutAndWhy) {
    folder_.writeFile(L"St\u00e9am/steamapps/appmanifest_4000001.acf",
                      "\"AppState\"\n{\n\t\"appid\"\t\t\"4000001\"\n\t\"name\"\t\t\"Steam Harbor\"\n"
                      "\t\"StateFlags\"\t\t\"4\"\n\t\"installdir\"\t\t\"Steam Harbor\"\n}\n");
    folder_.writeFile(L"St\u00e9am/steamapps/common/Steam Harbor/SteamHarbor.exe", "MZ");
    regAdd(L"HKCU\\Software\\Valve\\Steam", L"SteamPath",
           widen(test::winPath(folder_.path() / L"St\u00e9am", '/')), L"/reg:64");

    const auto gogFolder = folder_.writeFile(L"GOG Games/Lantern/Lantern.exe", "MZ").parent_path();
    const std::wstring gogKey = L"HKLM\\SOFTWARE\\GOG.com\\Games\\" + gogId_;
    regAdd(gogKey, L"gameName", L"Lantern \u00c9dition", L"/reg:32");
    regAdd(gogKey, L"path", gogFolder.wstring(), L"/reg:32");

    const auto epicFolder = folder_.path() / L"Jeux \u00c9piques" / L"LanternHarbor";
    folder_.writeFile(epicFolder.lexically_relative(folder_.path()) / L"Binaries" / L"Win64" / L"Lantern.exe",
                      "MZ");
    const std::filesystem::path manifests = L"ProgramData/Epic/EpicGamesLauncher/Data/Manifests";
    folder_.writeFile(manifests / L"0123456789ABCDEF.item",
                      "{\"bIsIncompleteInstall\": false, \"AppName\": \"Finch\", \"DisplayName\": "
                      "\"Lantern Harbor\xe2\x84\xa2\", \"InstallLocation\": \"" +
                          test::escapedPath(epicFolder) +
                          "\", \"LaunchExecutable\": \"Binaries/Win64/Lantern.exe\"}");
    folder_.writeFile(manifests / L"FEDCBA9876543210.item",
                      "{\"bIsIncompleteInstall\": true, \"AppName\": \"Heron\", \"InstallLocation\": \"" +
                          test::escapedPath(epicFolder) + "\"}");

    const test::ChildResult plain = scan(L"");
    ASSERT_EQ(plain.exitCode, 0u) << plain.output;
    const std::string gogId = narrow(gogId_);
    for (const std::string& expected :
         std::vector<std::string>{"Steam: Steam Harbor\r\n", "steam:4000001\r\n",
                                  "GOG Galaxy: Lantern \xc3\x89"
                                  "dition\r\n",
                                  "gog:" + gogId + "\r\n", "goggalaxy://openGameView/" + gogId + "\r\n",
                                  "Epic Games: Lantern Harbor\xe2\x84\xa2\r\n", "epic:Finch\r\n",
                                  "com.epicgames.launcher://apps/Finch?action=launch&silent=true\r\n"}) {
        EXPECT_NE(plain.output.find(expected), std::string::npos) << expected << " in\n" << plain.output;
    }
    const std::string epicExe = narrow(L"Jeux \u00c9piques\\LanternHarbor\\Binaries\\Win64\\Lantern.exe\r\n");
    EXPECT_NE(plain.output.find(epicExe), std::string::npos) << plain.output;
    EXPECT_EQ(plain.output.find("Heron"), std::string::npos) << plain.output;

    const test::ChildResult why = scan(L" --why");
    ASSERT_EQ(why.exitCode, 0u) << why.output;
    const std::string skipped = lineContaining(why.output, "FEDCBA9876543210");
    EXPECT_EQ(skipped.rfind("  Epic Games: ", 0), 0u) << why.output;
    EXPECT_NE(skipped.find(".item - the install is not complete"), std::string::npos) << why.output;
}

TEST_F(ScanToolTest, AnUnknownArgumentPrintsTheUsageAndExitsWithTwo) {
    const test::ChildResult result = scan(L" --whyy");
    EXPECT_EQ(result.exitCode, 2u) << result.output;
    EXPECT_NE(result.output.find("usage: corvandell-scan [--why]"), std::string::npos) << result.output;
}

} // namespace
} // namespace corvandell::win
