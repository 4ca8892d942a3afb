// End to end: the real corvandell.exe started as a user would, with its own data folder:
// the start-up rewrite, Exit, a second start on the same folder, and the end of a session.
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "app/win/Messages.hpp"
#include "base/win/UniqueHandle.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ClientUnderTest.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

// A stored session without a refresh token goes straight to the library window.
constexpr const char* kSignedIn = "{\"bearerToken\":\"cva_of_the_user\"}";

class ClientProcessTest : public ::testing::Test {
protected:
    void SetUp() override { writeSettings(kSignedIn); }
    // A user name with non-ASCII letters must not lose the data folder.
    fs::path appData() const { return folder_.path() / L"J\u00f6rg" / L"Roaming"; }
    fs::path localAppData() const { return folder_.path() / L"J\u00f6rg" / L"Local"; }
    fs::path dataFolder() const { return appData() / "Corvandell"; }

    void writeSettings(const std::string& bytes) const {
        folder_.writeFile((dataFolder() / "settings.json").lexically_relative(folder_.path()), bytes);
    }
    std::string expectedSettings() const {
        Settings settings = defaultSettings(localAppData() / "Corvandell" / "Games");
        settings.bearerToken = "cva_of_the_user";
        return formatSettings(settings);
    }

    test::TempFolder folder_;
};

// Which file is at the path and when it was last written: a save replaces the file by
// rename, so even a rewrite with the same bytes changes the identity.
struct FileIdentity {
    DWORD indexHigh = 0;
    DWORD indexLow = 0;
    FILETIME lastWrite{};
    bool operator==(const FileIdentity& other) const {
        return indexHigh == other.indexHigh && indexLow == other.indexLow &&
               CompareFileTime(&lastWrite, &other.lastWrite) == 0;
    }
};

FileIdentity identityOf(const fs::path& file) {
    UniqueKernelHandle handle(CreateFileW(file.c_str(), FILE_READ_ATTRIBUTES,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!handle || !GetFileInformationByHandle(handle.get(), &information)) {
        return {};
    }
    return {information.nFileIndexHigh, information.nFileIndexLow, information.ftLastWriteTime};
}

std::string classOf(HWND window) {
    wchar_t name[128] = {};
    GetClassNameW(window, name, 128);
    return std::string(name, name + wcslen(name));
}

TEST_F(ClientProcessTest, StartsRewritesSettingsAndExitsCleanlyFromTheTrayMenu) {
    test::ClientUnderTest client(appData(), localAppData(), folder_.path());
    ASSERT_TRUE(client.isStarted()) << "error " << GetLastError();
    HWND window = client.waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the client's main window never appeared";

    EXPECT_EQ(test::readTestFile(dataFolder() / "settings.json"), expectedSettings());
    ASSERT_TRUE(test::chooseExitFromTrayMenu(window, client.processId())) << "no tray menu opened";
    EXPECT_EQ(client.waitForExit(20000), 0u);
    EXPECT_EQ(test::readTestFile(dataFolder() / "settings.json"), expectedSettings());
    EXPECT_EQ(test::readTestFile(dataFolder() / "library.json"), "[\n\n]\n");
}

TEST_F(ClientProcessTest, ASecondStartBringsForwardOnlyTheClientOfItsOwnFolderAndLeavesItsFilesAlone) {
    test::ClientUnderTest first(appData(), localAppData(), folder_.path());
    HWND window = first.waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the client's main window never appeared";
    // Another user's client runs beside it on a folder of its own.
    const fs::path otherUser = folder_.path() / "Other";
    folder_.writeFile(fs::path("Other") / "Roaming" / "Corvandell" / "settings.json", kSignedIn);
    test::ClientUnderTest other(otherUser / "Roaming", otherUser / "Local", folder_.path());
    HWND otherWindow = other.waitForWindow(30000);
    ASSERT_NE(otherWindow, nullptr) << "a client on another data folder was turned away";
    // Both to the tray, as their users left them.
    SendMessageW(window, WM_CLOSE, 0, 0);
    SendMessageW(otherWindow, WM_CLOSE, 0, 0);
    ASSERT_FALSE(IsWindowVisible(window) || IsWindowVisible(otherWindow));
    const fs::path settings = dataFolder() / "settings.json";
    const std::string settingsBytes = test::readTestFile(settings);
    const FileIdentity settingsIdentity = identityOf(settings);
    const std::vector<std::string> names =
        folder_.entryNames(dataFolder().lexically_relative(folder_.path()));

    test::ClientUnderTest second(appData(), localAppData(), folder_.path());
    ASSERT_TRUE(second.isStarted());
    EXPECT_EQ(second.waitForExit(20000), 0u) << "the second client did not step aside";

    const ULONGLONG deadline = GetTickCount64() + 5000;
    while ((!IsWindowVisible(window) || GetForegroundWindow() != window) && GetTickCount64() < deadline) {
        Sleep(20);
    }
    EXPECT_TRUE(IsWindowVisible(window)) << "the running client was not shown";
    EXPECT_EQ(GetForegroundWindow(), window)
        << "the running client was not activated; the foreground is a " << classOf(GetForegroundWindow());
    EXPECT_FALSE(IsWindowVisible(otherWindow)) << "the other folder's client answered too";
    EXPECT_EQ(test::readTestFile(settings), settingsBytes);
    EXPECT_TRUE(identityOf(settings) == settingsIdentity) << "the second client rewrote settings.json";
    EXPECT_EQ(folder_.entryNames(dataFolder().lexically_relative(folder_.path())), names);

    ASSERT_TRUE(test::chooseExitFromTrayMenu(window, first.processId())) << "no tray menu opened";
    EXPECT_EQ(first.waitForExit(20000), 0u);
    ASSERT_TRUE(test::chooseExitFromTrayMenu(otherWindow, other.processId())) << "no tray menu opened";
    EXPECT_EQ(other.waitForExit(20000), 0u);
}

TEST_F(ClientProcessTest, AStartThatFailsSaysWhyInAMessageBoxWithItsUtf8TextIntact) {
    // A file where the data folder's parent should be: the folder cannot be created.
    folder_.writeFile(L"J\u00f6rg.txt", "not a folder");
    test::ClientUnderTest client(folder_.path() / L"J\u00f6rg.txt" / L"Roaming", localAppData(),
                                 folder_.path());
    HWND box = client.waitForMessageBox(30000);
    ASSERT_NE(box, nullptr) << "the client showed no error";
    EXPECT_EQ(test::windowTextOf(box), L"Corvandell");
    const std::wstring text = test::messageBoxText(box);
    EXPECT_NE(text.find(L"J\u00f6rg.txt"), std::wstring::npos) << "the path in the error was garbled";
    PostMessageW(box, WM_CLOSE, 0, 0);
    EXPECT_EQ(client.waitForExit(20000), 1u);
}

TEST_F(ClientProcessTest, TheEndOfTheSessionSavesBeforeTheClientIsEnded) {
    test::ClientUnderTest client(appData(), localAppData(), folder_.path());
    HWND window = client.waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the client's main window never appeared";
    // library.json is written only when the client ends, never at start.
    ASSERT_FALSE(fs::exists(dataFolder() / "library.json"));

    DWORD_PTR answer = 0;
    ASSERT_TRUE(SendMessageTimeoutW(window, WM_QUERYENDSESSION, 0, ENDSESSION_LOGOFF, SMTO_ABORTIFHUNG, 10000,
                                    &answer));
    EXPECT_EQ(answer, static_cast<DWORD_PTR>(TRUE)) << "the client refused to let the session end";
    ASSERT_TRUE(SendMessageTimeoutW(window, WM_ENDSESSION, TRUE, ENDSESSION_LOGOFF, SMTO_ABORTIFHUNG, 10000,
                                    &answer));
    // Windows may end the process at any moment from here on; what is on disk now is all
    // the user keeps.
    EXPECT_EQ(test::readTestFile(dataFolder() / "library.json"), "[\n\n]\n");
    EXPECT_EQ(test::readTestFile(dataFolder() / "settings.json"), expectedSettings());
}

} // namespace
} // namespace corvandell::win
