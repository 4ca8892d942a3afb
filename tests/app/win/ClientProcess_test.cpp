// End to end: the real corvandell.exe started as a user would, with its own data folder:
// the start-up rewrite, Exit, a second start on the same folder, and the end of a session.
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "base/win/UniqueHandle.hpp"
#include "support/win/ClientFolders.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

// A stored session without a refresh token goes straight to the library window.
constexpr const char* kSignedIn = "{\"bearerToken\":\"cva_of_the_user\"}";

class ClientProcessTest : public ::testing::Test {
protected:
    void SetUp() override { user_.writeDataFile("settings.json", kSignedIn); }
    std::string expectedSettings() const {
        Settings settings = defaultSettings(user_.localAppData() / "Corvandell" / "Games");
        settings.bearerToken = "cva_of_the_user";
        return formatSettings(settings);
    }

    // A user name with non-ASCII letters must not lose the data folder.
    test::ClientFolders user_{L"J\u00f6rg"};
};

// Which file is at the path and when it was last written: a save replaces the file by
// rename, so even a rewrite with the same bytes changes the identity.
std::tuple<DWORD, DWORD, ULONGLONG> identityOf(const fs::path& file) {
    UniqueKernelHandle handle(CreateFileW(file.c_str(), FILE_READ_ATTRIBUTES,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION info{};
    if (!handle || !GetFileInformationByHandle(handle.get(), &info)) {
        return {};
    }
    return {info.nFileIndexHigh, info.nFileIndexLow,
            (ULONGLONG{info.ftLastWriteTime.dwHighDateTime} << 32) | info.ftLastWriteTime.dwLowDateTime};
}

TEST_F(ClientProcessTest, ASecondStartBringsForwardOnlyTheClientOfItsOwnFolderAndLeavesItsFilesAlone) {
    const auto first = user_.start();
    HWND window = first->waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the client's main window never appeared";
    // Another user's client runs beside it on a folder of its own.
    const test::ClientFolders otherUser;
    otherUser.writeDataFile("settings.json", kSignedIn);
    const auto other = otherUser.start();
    HWND otherWindow = other->waitForWindow(30000);
    ASSERT_NE(otherWindow, nullptr) << "a client on another data folder was turned away";
    // Both to the tray, as their users left them.
    SendMessageW(window, WM_CLOSE, 0, 0);
    SendMessageW(otherWindow, WM_CLOSE, 0, 0);
    ASSERT_FALSE(IsWindowVisible(window) || IsWindowVisible(otherWindow));
    const fs::path settings = user_.dataFolder() / "settings.json";
    const std::string settingsBytes = test::readTestFile(settings);
    const auto settingsIdentity = identityOf(settings);
    const fs::path dataFolder = user_.dataFolder().lexically_relative(user_.temp().path());
    const std::vector<std::string> names = user_.temp().entryNames(dataFolder);

    EXPECT_EQ(user_.start()->waitForExit(20000), 0u) << "the second client did not step aside";
    test::waitUntil([&] { return IsWindowVisible(window) && GetForegroundWindow() == window; }, 5000);
    EXPECT_TRUE(IsWindowVisible(window)) << "the running client was not shown";
    EXPECT_EQ(GetForegroundWindow(), window) << "the running client was not activated";
    EXPECT_FALSE(IsWindowVisible(otherWindow)) << "the other folder's client answered too";
    EXPECT_EQ(test::readTestFile(settings), settingsBytes);
    EXPECT_EQ(identityOf(settings), settingsIdentity) << "the second client rewrote settings.json";
    EXPECT_EQ(user_.temp().entryNames(dataFolder), names);

    test::exitFromTrayMenu(*first, window);
    test::exitFromTrayMenu(*other, otherWindow);
}

TEST_F(ClientProcessTest, AStartThatFailsSaysWhyInAMessageBoxWithItsUtf8TextIntact) {
    // A file where the data folder's parent should be: the folder cannot be created.
    const fs::path blocker = user_.temp().writeFile(L"J\u00f6rg.txt", "not a folder");
    test::ClientUnderTest client(blocker / L"Roaming", user_.localAppData(), user_.temp().path());
    HWND box = client.waitForMessageBox(30000);
    ASSERT_NE(box, nullptr) << "the client showed no error";
    EXPECT_EQ(test::windowTextOf(box), L"Corvandell");
    EXPECT_NE(test::messageBoxText(box).find(L"J\u00f6rg.txt"), std::wstring::npos)
        << "the path in the error was garbled";
    PostMessageW(box, WM_CLOSE, 0, 0);
    EXPECT_EQ(client.waitForExit(20000), 1u);
}

TEST_F(ClientProcessTest, StartsRewritingSettingsAndTheEndOfTheSessionSavesBeforeTheClientIsEnded) {
    const auto client = user_.start();
    HWND window = client->waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the client's main window never appeared";
    // Settings are rewritten in full at start; library.json only when the client ends.
    EXPECT_EQ(user_.readDataFile("settings.json"), expectedSettings());
    ASSERT_FALSE(fs::exists(user_.dataFolder() / "library.json"));

    DWORD_PTR answer = 0;
    ASSERT_TRUE(SendMessageTimeoutW(window, WM_QUERYENDSESSION, 0, ENDSESSION_LOGOFF, SMTO_ABORTIFHUNG, 10000,
                                    &answer));
    EXPECT_EQ(answer, static_cast<DWORD_PTR>(TRUE)) << "the client refused to let the session end";
    ASSERT_TRUE(SendMessageTimeoutW(window, WM_ENDSESSION, TRUE, ENDSESSION_LOGOFF, SMTO_ABORTIFHUNG, 10000,
                                    &answer));
    // Windows may end the process at any moment from here on; what is on disk now is all
    // the user keeps.
    EXPECT_EQ(user_.readDataFile("library.json"), "[\n\n]\n");
    EXPECT_EQ(user_.readDataFile("settings.json"), expectedSettings());
}

} // namespace
} // namespace corvandell::win
