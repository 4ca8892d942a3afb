// End to end: the real corvandell.exe signed in to the service stand-in shows the seeded
// library, read from outside as a user sees it: the status line, the list and the details.
#include <windows.h>

#include <commctrl.h>

#include "app/SettingsFile.hpp"
#include "app/win/Messages.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ClientUnderTest.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <string>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

TEST(ClientLibraryTest, TheSeededLibraryOfTheDemoUserFillsTheList) {
    test::TempFolder folder;
    const fs::path appData = folder.path() / "Roaming";
    const fs::path localAppData = folder.path() / "Local";
    Settings settings = signedInSettings("demo");
    settings.refreshToken.clear(); // a stored session goes straight to the library
    folder.writeFile("Roaming/Corvandell/settings.json", formatSettings(settings));

    test::ClientUnderTest client(appData, localAppData, folder.path());
    ASSERT_TRUE(client.isStarted()) << "error " << GetLastError();
    HWND window = client.waitForWindow(30000);
    ASSERT_NE(window, nullptr) << "the client's main window never appeared";
    ASSERT_TRUE(test::waitForStatusLine(window, L"Library refreshed.", 30000))
        << "status: " << narrow(test::statusLineOf(window));
    EXPECT_EQ(test::statusLineOf(window), L"Library refreshed. 3 GitHub browser games available.");

    // 30 Windows titles of the catalogue and the three shared browser games.
    HWND list = GetDlgItem(window, command::List);
    EXPECT_EQ(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0), 33);
    // The first row by name, chosen with the keyboard as a user would.
    PostMessageW(list, WM_KEYDOWN, VK_HOME, 0);
    PostMessageW(list, WM_KEYUP, VK_HOME, 0xC0000001);
    HWND details = GetDlgItem(window, control::Details);
    const ULONGLONG deadline = GetTickCount64() + 10000;
    while (!test::windowTextOf(details).starts_with(L"Cinder Run") && GetTickCount64() < deadline) {
        Sleep(20);
    }
    EXPECT_TRUE(test::windowTextOf(details).starts_with(
        L"Cinder Run\r\n\r\nSprint through a burning city in short roguelite runs"))
        << narrow(test::windowTextOf(details));
    EXPECT_EQ(test::windowTextOf(GetDlgItem(window, command::Launch)), L"Install");

    ASSERT_TRUE(test::chooseExitFromTrayMenu(window, client.processId())) << "no tray menu opened";
    EXPECT_EQ(client.waitForExit(20000), 0u);
}

} // namespace
} // namespace corvandell::win
