// End to end: what the real client does with settings.json and library.json that another
// program holds open, or that a crash cut short, from start to the tray menu's Exit.
#include <windows.h>

#include "app/LibraryCache.hpp"
#include "app/SettingsFile.hpp"
#include "auth/win/SignInWindow.hpp"
#include "base/win/UniqueHandle.hpp"
#include "support/win/ClientFolders.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

class ClientFilesTest : public ::testing::Test {
protected:
    Settings userSettings() const {
        Settings settings = defaultSettings(user_.localAppData() / "Corvandell" / "Games");
        settings.bearerToken = "token-of-the-user";
        settings.username = "J\xC3\xB6rg";
        settings.voiceInputVolume = 35;
        settings.skinId = "light";
        return settings;
    }
    const std::vector<LibraryRecord> library_ = {
        {"t-1", "Sky Forge", "C:\\Games\\Sky", "C:\\Games\\Sky\\sky.exe", true, 1700000000, 1700003600},
        {"t-2", "Quote \"Quest\"", "C:\\Games\\Q", "C:\\Games\\Q\\q.exe", false, 1700000100, 0}};

    // Starts the client, lets `whileRunning` look at it, then exits it from the tray menu.
    // Settings that could not be read hold no session, so then the user skips signing in.
    template <class Check> void runClientToExit(bool skipsSignIn, Check whileRunning) {
        const auto client = user_.start();
        ASSERT_TRUE(client->isStarted()) << "error " << GetLastError();
        if (skipsSignIn) {
            HWND signIn = client->waitForSignInWindow(30000);
            ASSERT_NE(signIn, nullptr) << "no sign-in window";
            SendMessageW(GetDlgItem(signIn, signin::Skip), BM_CLICK, 0, 0);
        }
        HWND window = client->waitForWindow(30000);
        ASSERT_NE(window, nullptr) << "the client's main window never appeared";
        whileRunning(window);
        test::exitFromTrayMenu(*client, window);
    }
    std::vector<std::string> dataFileNames() const { return user_.temp().entryNames("Roaming/Corvandell"); }

    test::ClientFolders user_;
};

TEST_F(ClientFilesTest, FilesHeldByAnotherProgramAtStartAreNeverWrittenAndTheStatusLineSaysWhy) {
    const std::string settingsText = formatSettings(userSettings());
    const std::string libraryText = formatLibrary(library_);
    user_.writeDataFile("settings.json", settingsText);
    user_.writeDataFile("library.json", libraryText);
    // Share mode 0: while they are held, nobody else can open the files at all.
    const auto hold = [&](const char* name) {
        return UniqueKernelHandle(CreateFileW((user_.dataFolder() / name).c_str(), GENERIC_READ, 0, nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    };
    UniqueKernelHandle settingsLock = hold("settings.json");
    UniqueKernelHandle libraryLock = hold("library.json");
    ASSERT_TRUE(settingsLock && libraryLock) << "error " << GetLastError();

    runClientToExit(true, [&](HWND window) {
        EXPECT_TRUE(test::waitForStatusLine(
            window, L"Could not read settings.json and library.json; neither will be saved this session.",
            10000))
            << "status line: " << test::statusLineOf(window).c_str();
        // Let go before Exit: a client that read the files late, or saved blindly, would
        // write them now.
        settingsLock.reset();
        libraryLock.reset();
    });

    EXPECT_EQ(user_.readDataFile("settings.json"), settingsText);
    EXPECT_EQ(user_.readDataFile("library.json"), libraryText);
    EXPECT_EQ(dataFileNames(), (std::vector<std::string>{"library.json", "settings.json"}));
}

TEST_F(ClientFilesTest, FilesCutShortByACrashAreReadAndTheirOriginalsKeptBesideTheNewOnes) {
    const std::string settingsWhole = formatSettings(userSettings());
    const std::string settingsCut = settingsWhole.substr(0, settingsWhole.find("\"voiceInputDevice\""));
    const std::string libraryWhole = formatLibrary(library_);
    const std::string libraryCut = libraryWhole.substr(0, libraryWhole.find("\"t-2\"") + 3);
    user_.writeDataFile("settings.json", settingsCut);
    user_.writeDataFile("library.json", libraryCut);
    // What an interrupted save leaves beside its target.
    user_.writeDataFile(".settings.json.tmp-0123456789abcdef", settingsWhole.substr(0, 40));
    user_.writeDataFile(".library.json.tmp-fedcba9876543210", "");

    runClientToExit(false, [](HWND) {});

    // Everything before the cut survives; the rest takes its defaults.
    Settings expectedSettings = userSettings();
    expectedSettings.skinId = "dark";
    EXPECT_EQ(user_.readDataFile("settings.json"), formatSettings(expectedSettings));
    EXPECT_EQ(user_.readDataFile("library.json"), formatLibrary({library_.front()}));
    const std::vector<std::string> names = dataFileNames();
    ASSERT_EQ(names.size(), 4u) << ::testing::PrintToString(names);
    const std::regex stamp(R"(\.bad-\d{8}T\d{6}Z)");
    const std::pair<std::string, std::string> originals[] = {{"library.json", libraryCut},
                                                             {"settings.json", settingsCut}};
    for (std::size_t i = 0; i < 2; ++i) {
        const auto& [original, cut] = originals[i];
        EXPECT_EQ(names[2 * i], original);
        const std::string& kept = names[2 * i + 1];
        EXPECT_TRUE(kept.starts_with(original) && std::regex_match(kept.substr(original.size()), stamp))
            << kept;
        EXPECT_EQ(user_.readDataFile(kept), cut);
    }
}

} // namespace
} // namespace corvandell::win
