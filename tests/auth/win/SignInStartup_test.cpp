// End to end: the real corvandell.exe with no session starts at the sign-in window, and
// the library window opens only once the user has signed in.
#include <windows.h>

#include "api/JsonText.hpp"
#include "app/SettingsFile.hpp"
#include "auth/SignInAddress.hpp"
#include "auth/win/DeviceKey.hpp"
#include "auth/win/SignInWindow.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ClientUnderTest.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <random>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

class SignInStartupTest : public ::testing::Test {
protected:
    void SetUp() override {
        Settings settings = defaultSettings(folder_.path() / "Local" / "Corvandell" / "Games");
        settings.apiBaseUrl = serviceBaseUrl();
        ASSERT_FALSE(settings.apiBaseUrl.empty()) << "the service fixture is not running";
        folder_.writeFile(fs::path("Roaming") / "Corvandell" / "settings.json", formatSettings(settings));
    }
    fs::path appData() const { return folder_.path() / "Roaming"; }
    fs::path localAppData() const { return folder_.path() / "Local"; }
    fs::path dataFolder() const { return appData() / "Corvandell"; }
    Settings savedSettings() const {
        return parseSettings(test::readTestFile(dataFolder() / "settings.json"), {});
    }

    test::TempFolder folder_;
};

TEST_F(SignInStartupTest, WithoutASessionTheSignInWindowComesFirstAndClosingItEndsTheClient) {
    test::ClientUnderTest client(appData(), localAppData(), folder_.path());
    ASSERT_TRUE(client.isStarted());
    HWND signIn = client.waitForSignInWindow(30000);
    ASSERT_NE(signIn, nullptr) << "no sign-in window";
    RECT client_area{};
    GetClientRect(signIn, &client_area);
    EXPECT_EQ(client_area.right, 460);
    EXPECT_EQ(client_area.bottom, 632);
    EXPECT_EQ(test::windowTextOf(GetDlgItem(signIn, signin::DeviceKey)), L"Sign in with this device's key");
    PostMessageW(signIn, WM_CLOSE, 0, 0);
    EXPECT_EQ(client.waitForExit(20000), 0u);
    EXPECT_EQ(savedSettings().bearerToken, "");
}

TEST_F(SignInStartupTest, AfterADeviceKeySignInTheLibraryWindowOpens) {
    // This folder's key, linked to an account beforehand as a user would by the mailed link.
    const std::string user = "starter" + std::to_string(std::random_device()() % 100000000);
    {
        DeviceKey key;
        ASSERT_TRUE(key.ensure(dataFolder()));
        Settings service;
        service.apiBaseUrl = serviceBaseUrl();
        ProbeClient client(&service);
        const std::string email = user + "@corvandell.test";
        client.registerKey(email, "ECDSA-P256", key.publicKeyText());
        std::string link;
        for (const std::string& item : readObjectList(callStandIn("GET", "/__test/outbox"), "items")) {
            if (readString(item, "to") == email) {
                link = readString(item, "link");
            }
        }
        ASSERT_FALSE(client.verifyKeyRegistration(verificationTokenFromLink(link)).accessToken.empty());
    }

    test::ClientUnderTest client(appData(), localAppData(), folder_.path());
    HWND signIn = client.waitForSignInWindow(30000);
    ASSERT_NE(signIn, nullptr) << "no sign-in window";
    EXPECT_EQ(client.waitForWindow(500), nullptr) << "the library opened before sign-in";
    SendMessageW(GetDlgItem(signIn, signin::DeviceKey), BM_CLICK, 0, 0);
    HWND library = client.waitForWindow(30000);
    ASSERT_NE(library, nullptr) << "the library window did not open after sign-in";
    EXPECT_FALSE(IsWindow(signIn));
    const Settings saved = savedSettings();
    EXPECT_FALSE(saved.bearerToken.empty());
    EXPECT_FALSE(saved.refreshToken.empty());
    EXPECT_EQ(saved.username, user);
    ASSERT_TRUE(test::chooseExitFromTrayMenu(library, client.processId())) << "no tray menu opened";
    EXPECT_EQ(client.waitForExit(20000), 0u);
}

} // namespace
} // namespace corvandell::win
