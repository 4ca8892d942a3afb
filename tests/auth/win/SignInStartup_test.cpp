// End to end: the real corvandell.exe with no session opens the library window only once
// the user has signed in (its sign-in window coming first is checked in NativeClient_test).
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "auth/win/SignInWindow.hpp"
#include "support/win/ClientFolders.hpp"
#include "support/win/LinkedDeviceKey.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

namespace corvandell::win {
namespace {

TEST(SignInStartup, AfterADeviceKeySignInTheLibraryWindowOpens) {
    const test::ClientFolders folders;
    Settings settings = defaultSettings(folders.localAppData() / "Corvandell" / "Games");
    settings.apiBaseUrl = serviceBaseUrl();
    ASSERT_FALSE(settings.apiBaseUrl.empty()) << "the service fixture is not running";
    folders.writeDataFile("settings.json", formatSettings(settings));
    const std::string user = test::uniqueName("starter");
    ASSERT_TRUE(test::linkDeviceKey(folders.dataFolder(), user + "@corvandell.test"));

    const auto client = folders.start();
    HWND signIn = client->waitForSignInWindow(30000);
    ASSERT_NE(signIn, nullptr) << "no sign-in window";
    EXPECT_EQ(client->waitForWindow(500), nullptr) << "the library opened before sign-in";
    SendMessageW(GetDlgItem(signIn, signin::DeviceKey), BM_CLICK, 0, 0);
    HWND library = client->waitForWindow(30000);
    ASSERT_NE(library, nullptr) << "the library window did not open after sign-in";
    EXPECT_FALSE(IsWindow(signIn));
    const Settings saved = parseSettings(folders.readDataFile("settings.json"), {});
    EXPECT_FALSE(saved.bearerToken.empty());
    EXPECT_FALSE(saved.refreshToken.empty());
    EXPECT_EQ(saved.username, user);
    test::exitFromTrayMenu(*client, library);
}

} // namespace
} // namespace corvandell::win
