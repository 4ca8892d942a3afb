// The real corvandell.exe takes its repository host and pages domain from the test switches:
// its Add Game dialog, opened from outside as Ctrl+N opens it, names them in its launch-file
// label and in what it says about an address on github.com. Nothing reaches the network.
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "app/win/Messages.hpp"
#include "base/win/WideText.hpp"
#include "support/win/ClientFolders.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "webgames/win/AddGameDialog.hpp"

#include <gtest/gtest.h>

#include <string>

namespace corvandell::win {
namespace {

TEST(ClientRepositoryHostTest, TheSwitchesReplaceTheHostTheAddGameDialogNames) {
    const test::ClientFolders user;
    Settings settings = signedInSettings("demo");
    settings.refreshToken.clear();
    user.writeDataFile("settings.json", formatSettings(settings));
    test::ClientUnderTest client(user.appData(), user.localAppData(), user.temp().path(), -1, {},
                                 L"--repository-host=http://127.0.0.1:9/ --pages-domain=pages.test");
    ASSERT_TRUE(client.isStarted()) << "error " << GetLastError();
    HWND window = client.waitForWindow(30000);
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(test::waitForStatusLine(window, L"Library refreshed.", 30000));

    PostMessageW(window, WM_COMMAND, MAKEWPARAM(command::AddGame, 0), 0);
    HWND dialog = nullptr;
    ASSERT_TRUE(test::waitUntil(
        [&] {
            dialog = FindWindowW(L"CorvandellAddGame", L"Add GitHub Browser Game");
            return dialog != nullptr;
        },
        10000));
    EXPECT_EQ(test::windowTextOf(GetDlgItem(dialog, addgame::LaunchLabel)),
              L"Launch file - repo-relative .html (not needed for hosted *.pages.test games)");
    SendMessageW(GetDlgItem(dialog, addgame::Address), WM_SETTEXT, 0,
                 reinterpret_cast<LPARAM>(L"https://github.com/alice-codes/tiny-tower"));
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(addgame::AddGame, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, addgame::AddGame)));
    const std::wstring expected =
        L"That doesn't look like a 127.0.0.1:9 repository or a *.pages.test Pages URL.";
    HWND status = GetDlgItem(dialog, addgame::Status);
    EXPECT_TRUE(test::waitUntil([&] { return test::windowTextOf(status) == expected; }, 10000))
        << narrow(test::windowTextOf(status));

    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(addgame::Cancel, BN_CLICKED), 0);
    EXPECT_TRUE(test::waitUntil([&] { return !IsWindow(dialog) && IsWindowEnabled(window); }, 10000));
    test::exitFromTrayMenu(client, window);
}

} // namespace
} // namespace corvandell::win
