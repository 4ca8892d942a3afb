// End to end: what the real client does with settings.json and library.json that another
// program holds open, or that a crash cut short, from start to the tray menu's Exit.
#include <windows.h>

#include "app/LibraryCache.hpp"
#include "app/SettingsFile.hpp"
#include "auth/win/SignInWindow.hpp"
#include "base/win/UniqueHandle.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ClientUnderTest.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

class ClientFilesTest : public ::testing::Test {
protected:
    fs::path dataFolder() const { return appData() / "Corvandell"; }
    fs::path appData() const { return folder_.path() / "Roaming"; }
    fs::path localAppData() const { return folder_.path() / "Local"; }
    fs::path gamesFolder() const { return localAppData() / "Corvandell" / "Games"; }

    void writeDataFile(const char* name, const std::string& bytes) const {
        folder_.writeFile(fs::path("Roaming") / "Corvandell" / name, bytes);
    }

    std::vector<std::string> dataFileNames() const {
        return folder_.entryNames(fs::path("Roaming") / "Corvandell");
    }

    Settings userSettings() const {
        Settings settings = defaultSettings(gamesFolder());
        settings.bearerToken = "token-of-the-user";
        settings.username = "J\xC3\xB6rg";
        settings.voiceInputVolume = 35;
        settings.skinId = "light";
        return settings;
    }

    static std::vector<LibraryRecord> userLibrary() {
        return {
            {"t-1", "Sky Forge", "C:\\Games\\Sky", "C:\\Games\\Sky\\sky.exe", true, 1700000000, 1700003600},
            {"t-2", "Quote \"Quest\"", "C:\\Games\\Q", "C:\\Games\\Q\\q.exe", false, 1700000100, 0}};
    }

    // Starts the client, lets `whileRunning` look at it, then exits it from the tray menu.
    template <class Check> void runClientToExit(Check whileRunning) {
        test::ClientUnderTest client(appData(), localAppData(), folder_.path());
        ASSERT_TRUE(client.isStarted()) << "error " << GetLastError();
        if (skipsSignIn_) {
            HWND signIn = client.waitForSignInWindow(30000);
            ASSERT_NE(signIn, nullptr) << "no sign-in window";
            SendMessageW(GetDlgItem(signIn, signin::Skip), BM_CLICK, 0, 0);
        }
        HWND window = client.waitForWindow(30000);
        ASSERT_NE(window, nullptr) << "the client's main window never appeared";
        whileRunning(window);
        ASSERT_TRUE(test::chooseExitFromTrayMenu(window, client.processId())) << "no tray menu opened";
        EXPECT_EQ(client.waitForExit(20000), 0u) << "the client did not exit cleanly";
    }

    test::TempFolder folder_;
    // Settings that could not be read hold no session, so the user skips signing in first.
    bool skipsSignIn_ = false;
};

// Share mode 0: while it is held, nobody else can open the file at all.
UniqueKernelHandle holdWithoutSharing(const fs::path& file) {
    return UniqueKernelHandle(
        CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

TEST_F(ClientFilesTest, FilesHeldByAnotherProgramAtStartAreNeverWrittenAndTheStatusLineSaysWhy) {
    const std::string settingsText = formatSettings(userSettings());
    const std::string libraryText = formatLibrary(userLibrary());
    writeDataFile("settings.json", settingsText);
    writeDataFile("library.json", libraryText);
    UniqueKernelHandle settingsLock = holdWithoutSharing(dataFolder() / "settings.json");
    UniqueKernelHandle libraryLock = holdWithoutSharing(dataFolder() / "library.json");
    ASSERT_TRUE(settingsLock && libraryLock) << "error " << GetLastError();
    skipsSignIn_ = true;

    runClientToExit([&](HWND window) {
        EXPECT_TRUE(test::waitForStatusLine(
            window, L"Could not read settings.json and library.json; neither will be saved this session.",
            10000))
            << "status line: " << test::statusLineOf(window).c_str();
        // Let go before Exit: a client that read the files late, or saved blindly, would
        // write them now.
        settingsLock.reset();
        libraryLock.reset();
    });

    EXPECT_EQ(test::readTestFile(dataFolder() / "settings.json"), settingsText);
    EXPECT_EQ(test::readTestFile(dataFolder() / "library.json"), libraryText);
    EXPECT_EQ(dataFileNames(), (std::vector<std::string>{"library.json", "settings.json"}));
}

TEST_F(ClientFilesTest, FilesCutShortByACrashAreReadAndTheirOriginalsKeptBesideTheNewOnes) {
    const std::string settingsWhole = formatSettings(userSettings());
    const std::string settingsCut = settingsWhole.substr(0, settingsWhole.find("\"voiceInputDevice\""));
    const std::string libraryWhole = formatLibrary(userLibrary());
    const std::string libraryCut = libraryWhole.substr(0, libraryWhole.find("\"t-2\"") + 3);
    writeDataFile("settings.json", settingsCut);
    writeDataFile("library.json", libraryCut);
    // What an interrupted save leaves beside its target.
    writeDataFile(".settings.json.tmp-0123456789abcdef", settingsWhole.substr(0, 40));
    writeDataFile(".library.json.tmp-fedcba9876543210", "");

    runClientToExit([](HWND) {});

    // Everything before the cut survives; the rest takes its defaults.
    Settings expectedSettings = userSettings();
    expectedSettings.skinId = "dark";
    EXPECT_EQ(test::readTestFile(dataFolder() / "settings.json"), formatSettings(expectedSettings));
    EXPECT_EQ(test::readTestFile(dataFolder() / "library.json"), formatLibrary({userLibrary().front()}));
    const std::vector<std::string> names = dataFileNames();
    ASSERT_EQ(names.size(), 4u) << ::testing::PrintToString(names);
    const std::regex stamp(R"(\.bad-\d{8}T\d{6}Z)");
    EXPECT_EQ(names[0], "library.json");
    EXPECT_TRUE(names[1].starts_with("library.json") && std::regex_match(names[1].substr(12), stamp))
        << names[1];
    EXPECT_EQ(names[2], "settings.json");
    EXPECT_TRUE(names[3].starts_with("settings.json") && std::regex_match(names[3].substr(13), stamp))
        << names[3];
    EXPECT_EQ(test::readTestFile(dataFolder() / names[1]), libraryCut);
    EXPECT_EQ(test::readTestFile(dataFolder() / names[3]), settingsCut);
}

} // namespace
} // namespace corvandell::win
