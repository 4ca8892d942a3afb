// corvandell-scan.exe run as support would run it, on an Epic Games library laid out under a
// ProgramData folder of the test's own: what it prints, and what it says was left out.
#include <windows.h>

#include "app/win/WideText.hpp"
#include "app/win/WindowsEnvironment.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

namespace corvandell::win {
namespace {

// The path as JSON text: UTF-8 with each backslash doubled, as the launcher writes it.
std::string jsonPath(const std::filesystem::path& path) {
    std::string text;
    for (const char c : narrow(path.wstring())) {
        text += c == '\\' ? std::string("\\\\") : std::string(1, c);
    }
    return text;
}

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
    }

    test::ChildResult scan(const std::wstring& arguments) const {
        return test::runAndCapture(
            L"\"" + test::siblingExecutable(L"corvandell-scan.exe").wstring() + L"\"" + arguments, 60000);
    }

    const std::optional<std::filesystem::path> savedProgramData_ =
        WindowsEnvironment().folderVariable("ProgramData");
    test::TempFolder folder_;
};

TEST_F(ScanToolTest, PrintsEachGameAndWithWhyWhatWasLeftOutAndWhy) {
    const auto install = folder_.path() / L"Jeux \u00c9piques" / L"LanternHarbor";
    folder_.writeFile(install.lexically_relative(folder_.path()) / L"Binaries" / L"Win64" / L"Lantern.exe",
                      "MZ");
    const std::filesystem::path manifests = L"ProgramData/Epic/EpicGamesLauncher/Data/Manifests";
    folder_.writeFile(manifests / L"0123456789ABCDEF.item",
                      "{\"bIsIncompleteInstall\": false, \"AppName\": \"Finch\", \"DisplayName\": "
                      "\"Lantern Harbor\xe2\x84\xa2\", \"InstallLocation\": \"" +
                          jsonPath(install) + "\", \"LaunchExecutable\": \"Binaries/Win64/Lantern.exe\"}");
    folder_.writeFile(
        manifests / L"FEDCBA9876543210.item",
        "{\"bIsIncompleteInstall\": true, \"AppName\": \"Heron\", \"DisplayName\": \"Heron Bay\", "
        "\"InstallLocation\": \"" +
            jsonPath(install) + "\"}");

    const test::ChildResult plain = scan(L"");
    ASSERT_EQ(plain.exitCode, 0u) << plain.output;
    EXPECT_NE(plain.output.find("Epic Games: Lantern Harbor\xe2\x84\xa2\r\n"), std::string::npos)
        << plain.output;
    EXPECT_NE(plain.output.find("epic:Finch\r\n"), std::string::npos) << plain.output;
    EXPECT_NE(lineContaining(plain.output, "executable:").find(narrow(L"Jeux \u00c9piques")),
              std::string::npos)
        << plain.output;
    EXPECT_NE(plain.output.find("com.epicgames.launcher://apps/Finch?action=launch&silent=true"),
              std::string::npos)
        << plain.output;
    EXPECT_EQ(plain.output.find("FEDCBA9876543210"), std::string::npos) << plain.output;

    const test::ChildResult why = scan(L" --why");
    ASSERT_EQ(why.exitCode, 0u) << why.output;
    const std::string skipped = lineContaining(why.output, "FEDCBA9876543210");
    EXPECT_EQ(skipped.rfind("  Epic Games: ", 0), 0u) << why.output;
    const size_t reason = skipped.find(" - ");
    ASSERT_NE(reason, std::string::npos) << why.output;
    EXPECT_GT(skipped.size(), reason + 4) << "no reason given: " << skipped;
}

TEST_F(ScanToolTest, AnUnknownArgumentPrintsTheUsageAndExitsWithTwo) {
    for (const wchar_t* arguments : {L" --help", L" --whyy", L" extra"}) {
        const test::ChildResult result = scan(arguments);
        EXPECT_EQ(result.exitCode, 2u) << result.output;
        EXPECT_NE(result.output.find("usage: corvandell-scan [--why]"), std::string::npos) << result.output;
    }
}

} // namespace
} // namespace corvandell::win
