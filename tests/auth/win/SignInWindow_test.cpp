// The sign-in window against the service stand-in: each way in, end to end over loopback,
// with the real device key, the real loopback listener driven by curl from Linux, and the
// settings file written by the client's own saving code. A linked key's sign-in is driven
// through the whole client in SignInStartup_test.
#include <windows.h>

#include "app/SettingsFile.hpp"
#include "app/win/ThemeHook.hpp"
#include "auth/SignInAddress.hpp"
#include "auth/win/SignInWindow.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/win/LinkedDeviceKey.hpp"
#include "support/win/LinuxSide.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

namespace corvandell::win {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kNetworkWaitMs = 20000;
// Polling runs every 5 seconds; one round and a margin.
constexpr DWORD kPollWaitMs = 15000;

class SignInWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        settings_.apiBaseUrl = serviceBaseUrl();
        ASSERT_FALSE(settings_.apiBaseUrl.empty()) << "the service fixture is not running";
        settingsFile_.load();
    }

    std::unique_ptr<SignInWindow> open() {
        SignInHooks hooks;
        hooks.saveSettings = [this](const Settings& changed) { saveSettings(settingsFile_, changed); };
        hooks.paintHook = &themeHandleMessage;
        hooks.trackButtonHover = &themeTrackButtonHover;
        hooks.openBrowser = [this](const std::wstring& address) { browserAddresses_.push_back(address); };
        auto window = std::make_unique<SignInWindow>(GetModuleHandleW(nullptr), dataFolder(), settings_,
                                                     std::move(hooks));
        EXPECT_TRUE(window->create(SW_SHOWNORMAL));
        return window;
    }
    fs::path dataFolder() const { return folder_.path() / "Corvandell"; }

    static void click(const SignInWindow& window, int id) {
        SendMessageW(window.control(id), BM_CLICK, 0, 0);
    }
    static void type(const SignInWindow& window, int id, const std::string& text) {
        SetWindowTextW(window.control(id), widen(text).c_str());
    }
    static std::wstring text(const SignInWindow& window, int id) { return hwndText(window.control(id)); }
    static std::wstring status(const SignInWindow& window) { return text(window, signin::Status); }
    static bool isShown(const SignInWindow& window, int id) {
        return (GetWindowLongW(window.control(id), GWL_STYLE) & WS_VISIBLE) != 0;
    }
    static bool waitForStatus(const SignInWindow& window, const std::wstring& startingWith) {
        return test::pumpUntil([&] { return status(window).starts_with(startingWith); }, kNetworkWaitMs);
    }
    static bool waitForEnd(const SignInWindow& window, DWORD timeoutMs = kNetworkWaitMs) {
        return test::pumpUntil([&] { return window.hwnd() == nullptr; }, timeoutMs);
    }

    Settings savedSettings() const {
        GuardedFile file = settingsFileIn(dataFolder());
        return parseSettings(file.load(), {});
    }

    // The window ends signed in as `user`, with a session the service knows as that user's,
    // and settings.json holds it.
    void expectSignedInAs(const SignInWindow& window, const std::string& user,
                          DWORD timeoutMs = kNetworkWaitMs) {
        ASSERT_TRUE(waitForEnd(window, timeoutMs)) << narrow(status(window));
        EXPECT_EQ(window.result(), SignInResult::SignedIn);
        EXPECT_EQ(settings_.username, user);
        Settings probe;
        probe.apiBaseUrl = settings_.apiBaseUrl;
        probe.bearerToken = settings_.bearerToken;
        EXPECT_EQ(ProbeClient(&probe).getMe().username, user);
        const Settings saved = savedSettings();
        EXPECT_EQ(saved.bearerToken, settings_.bearerToken);
        EXPECT_EQ(saved.refreshToken, settings_.refreshToken);
        EXPECT_EQ(saved.username, user);
    }

    test::TempFolder folder_;
    Settings settings_;
    GuardedFile settingsFile_ = settingsFileIn(dataFolder());
    std::vector<std::wstring> browserAddresses_;
};

TEST_F(SignInWindowTest, AKeyNotLinkedYetShowsTheEmailGroupAndAPastedLinkSignsIn) {
    const std::string user = test::uniqueName("paster");
    const std::string email = user + "@corvandell.test";
    auto window = open();
    const int emailGroup[] = {signin::KeyPrompt, signin::EmailEdit, signin::SendLink,
                              signin::LinkLabel, signin::LinkEdit,  signin::Verify};
    for (const int id : emailGroup) {
        EXPECT_FALSE(isShown(*window, id)) << id;
    }
    EXPECT_EQ(status(*window), L"") << "nothing is tried without a refresh token";
    click(*window, signin::DeviceKey);
    EXPECT_TRUE(isShown(*window, signin::EmailEdit));
    ASSERT_TRUE(waitForStatus(*window, L"Key sign-in did not succeed: ")) << narrow(status(*window));
    EXPECT_NE(status(*window).find(L"key_not_registered"), std::wstring::npos);
    EXPECT_EQ(text(*window, signin::KeyPrompt),
              L"This key is not linked to an account yet. Enter your\naccount "
              L"email and send yourself a verification link:");
    for (const int id : emailGroup) {
        EXPECT_TRUE(isShown(*window, id)) << id;
    }
    EXPECT_FALSE(isShown(*window, signin::AddressEdit));
    EXPECT_FALSE(window->isSignedIn());
    EXPECT_TRUE(fs::exists(dataFolder() / "device_key.bin"));

    // The two checks made before anything is sent.
    type(*window, signin::EmailEdit, "no-at-sign");
    click(*window, signin::SendLink);
    EXPECT_EQ(status(*window), L"Enter the email address on your account.");
    type(*window, signin::LinkEdit, " \r\n");
    click(*window, signin::Verify);
    EXPECT_EQ(status(*window), L"Paste the link from the verification email first.");

    // A link the service refuses, then the mailed one, pasted with blanks around it.
    type(*window, signin::LinkEdit,
         settings_.apiBaseUrl + "/api/v1/auth/public-key/verify?token=not-a-token");
    click(*window, signin::Verify);
    EXPECT_EQ(status(*window), L"Verifying...");
    ASSERT_TRUE(waitForStatus(*window, L"Verification failed: Corvandell API HTTP 400"))
        << narrow(status(*window));
    type(*window, signin::EmailEdit, email);
    click(*window, signin::SendLink);
    ASSERT_TRUE(waitForStatus(*window, L"Verification email sent to "));
    type(*window, signin::LinkEdit, "\t " + test::mailedLink(email) + "\r\n");
    click(*window, signin::Verify);
    expectSignedInAs(*window, user);
}

TEST_F(SignInWindowTest, OpeningTheMailedLinkFinishesSignInByPollingWithoutFurtherInput) {
    const std::string user = test::uniqueName("mailer");
    const std::string email = user + "@corvandell.test";
    auto window = open();
    click(*window, signin::DeviceKey);
    ASSERT_TRUE(waitForStatus(*window, L"Key sign-in did not succeed: ")) << narrow(status(*window));
    type(*window, signin::EmailEdit, email);
    click(*window, signin::SendLink);
    const std::wstring sent = L"Verification email sent to " + widen(email) +
                              L". Click the link in it - sign-in finishes here automatically.";
    ASSERT_TRUE(waitForStatus(*window, sent)) << narrow(status(*window));
    const std::string link = test::mailedLink(email);
    ASSERT_FALSE(link.empty()) << "no mail in the stand-in's outbox";

    // A polling round before the link is opened fails, quietly.
    ASSERT_TRUE(test::pumpUntil(
        [&] { return lastReceivedRequest().path == "/api/v1/auth/public-key/complete" && !window->isBusy(); },
        kPollWaitMs));
    EXPECT_EQ(status(*window), sent);
    EXPECT_FALSE(window->isSignedIn());

    // The user clicks the link in the mail: its path and query, to the stand-in.
    callStandIn("GET", link.substr(link.find('/', link.find("//") + 2)));
    expectSignedInAs(*window, user, kPollWaitMs);
}

TEST_F(SignInWindowTest, TheSavedSessionIsRenewedWithItsRefreshTokenUnlessItExpired) {
    const std::string user = test::uniqueName("returning");
    const Settings fresh = signedInSettings(user);
    settings_.bearerToken = fresh.bearerToken;
    settings_.refreshToken = fresh.refreshToken;
    {
        auto window = open();
        EXPECT_EQ(status(*window), L"Restoring your session...");
        expectSignedInAs(*window, user);
    }
    EXPECT_NE(settings_.refreshToken, fresh.refreshToken) << "a restore rotates the pair";

    // Thirty-one days later the refresh token has expired too.
    const std::string renewed = settings_.refreshToken;
    advanceServiceClock(31 * 24 * 3600);
    auto window = open();
    ASSERT_TRUE(waitForStatus(*window, L"Could not restore your session - sign in below."))
        << narrow(status(*window));
    EXPECT_FALSE(window->isSignedIn());
    EXPECT_FALSE(window->isBusy());
    EXPECT_EQ(settings_.refreshToken, renewed);
}

TEST_F(SignInWindowTest, TheBrowserSignInArrivesThroughTheLoopbackListener) {
    auto window = open();
    click(*window, signin::Google);
    ASSERT_EQ(browserAddresses_.size(), 1u);
    EXPECT_EQ(narrow(browserAddresses_[0]), settings_.apiBaseUrl + "/api/v1/auth/oauth/google/authorize");
    ASSERT_TRUE(window->isListening());
    EXPECT_EQ(status(*window), L"Waiting for the browser sign-in to finish...");
    EXPECT_TRUE(isShown(*window, signin::BrowserHint));
    EXPECT_TRUE(isShown(*window, signin::AddressEdit));
    EXPECT_TRUE(isShown(*window, signin::UseUrl));

    // What a browser does: follow the service's redirect to the listener, whose page sends
    // the fragment back as a query.
    const std::string dir = test::linuxPathOf(folder_.path());
    ASSERT_FALSE(dir.empty());
    const std::string browser =
        "cd '" + dir + "' && loc=$(curl -s -o /dev/null -w '%{redirect_url}' '" + settings_.apiBaseUrl +
        "/api/v1/auth/oauth/google/authorize?login_hint=alice') && echo \"$loc\" > redirect.txt && "
        "curl -s --max-time 10 \"${loc%%#*}\" > first.html && "
        "curl -s --max-time 10 \"http://127.0.0.1:38517/deliver?${loc#*#}\" > second.html";
    ASSERT_TRUE(test::runLinuxShell(browser));
    const std::string redirect = test::readTestFile(folder_.path() / "redirect.txt");
    EXPECT_TRUE(redirect.starts_with("http://127.0.0.1:38517/#access_token=")) << redirect;
    const std::string first = test::readTestFile(folder_.path() / "first.html");
    EXPECT_NE(first.find("Completing Corvandell sign-in..."), std::string::npos) << first;
    const std::string second = test::readTestFile(folder_.path() / "second.html");
    EXPECT_NE(second.find("You are signed in."), std::string::npos) << second;

    expectSignedInAs(*window, "alice");
    EXPECT_EQ(settings_.bearerToken, tokensFromAddress(redirect).accessToken);
    EXPECT_FALSE(window->isListening());
    EXPECT_FALSE(test::runLinuxShell("curl -s --max-time 5 http://127.0.0.1:38517/ >/dev/null"))
        << "the listener outlived its window";
}

TEST_F(SignInWindowTest, ResultsArrivingAfterSignInAreIgnored) {
    const Settings session = signedInSettings(test::uniqueName("first"));
    auto window = open();
    type(*window, signin::AddressEdit, "http://127.0.0.1:38517/?state=1");
    click(*window, signin::UseUrl);
    EXPECT_EQ(status(*window), L"No sign-in tokens found in that address.");

    type(*window, signin::AddressEdit,
         "http://127.0.0.1:38517/?x=1#access_token=" + session.bearerToken +
             "&refresh_token=" + session.refreshToken);
    click(*window, signin::UseUrl);
    EXPECT_EQ(status(*window), L"Signed in.");
    EXPECT_EQ(savedSettings().bearerToken, session.bearerToken) << "saved at once";
    // Everything else that might still be on its way, queued before the user's name.
    const auto post = [&](UINT message, auto result) {
        using Result = decltype(result);
        ASSERT_TRUE(PostMessageW(window->hwnd(), message, 0, reinterpret_cast<LPARAM>(new Result(result))));
    };
    for (const auto& [kind, succeeded] :
         {std::pair{AttemptKind::KeyByUser, true}, std::pair{AttemptKind::KeyByUser, false},
          std::pair{AttemptKind::SessionRestore, false}}) {
        AuthAttempt attempt;
        attempt.kind = kind;
        attempt.succeeded = succeeded;
        attempt.tokens.accessToken = "cva_late";
        attempt.errorText = "late";
        post(MsgAuthAttempt, attempt);
    }
    AuthTokens browserTokens;
    browserTokens.accessToken = "cva_browser";
    post(MsgBrowserTokens, browserTokens);
    RegistrationResult registration;
    registration.succeeded = true;
    registration.registration.emailSent = true;
    post(MsgRegistration, registration);

    expectSignedInAs(*window, session.username);
    EXPECT_EQ(settings_.bearerToken, session.bearerToken);
    EXPECT_EQ(settings_.refreshToken, session.refreshToken);
}

TEST_F(SignInWindowTest, AKeyThatCannotBeSavedLeavesTheOtherWaysOpen) {
    // A file where the data folder should be: the key can be made but never kept.
    folder_.writeFile("Corvandell", "not a folder");
    auto window = open();
    click(*window, signin::DeviceKey);
    EXPECT_EQ(status(*window), L"Could not create this device's key.");
    EXPECT_FALSE(isShown(*window, signin::EmailEdit));
    EXPECT_EQ(test::readTestFile(dataFolder()), "not a folder");
    click(*window, signin::Google);
    EXPECT_TRUE(window->isListening());
    EXPECT_EQ(status(*window), L"Waiting for the browser sign-in to finish...");
}

TEST_F(SignInWindowTest, SkippingAndClosingEndTheWindowWithTheirOwnResults) {
    {
        auto window = open();
        click(*window, signin::Skip);
        EXPECT_EQ(window->hwnd(), nullptr);
        EXPECT_EQ(window->result(), SignInResult::Skipped);
    }
    auto window = open();
    click(*window, signin::Google);
    EXPECT_TRUE(window->isListening());
    SendMessageW(window->hwnd(), WM_CLOSE, 0, 0);
    EXPECT_EQ(window->hwnd(), nullptr);
    EXPECT_EQ(window->result(), SignInResult::Closed);
    EXPECT_FALSE(window->isListening());
    EXPECT_FALSE(fs::exists(dataFolder() / "settings.json")) << "nothing changed, nothing saved";
}

} // namespace
} // namespace corvandell::win
