// The sign-in window start-up shows before the library when there is no usable session.
//
// Four ways in: the saved session renewed with its refresh token (tried by itself), Google
// in the system browser with the loopback listener catching the way back, the device key,
// and linking the device key by a mailed link (pasted, or noticed by polling). Every
// network step is a background job whose result comes back as a posted message; the first
// success wins, writes the tokens into the settings and saves them, and everything that
// arrives after it is ignored.
#pragma once

#include <windows.h>

#include "api/ServiceRecords.hpp"
#include "auth/SignInSteps.hpp"
#include "auth/win/DeviceKey.hpp"
#include "auth/win/LoopbackListener.hpp"
#include "base/Settings.hpp"
#include "base/win/UiJob.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace corvandell::win {

// Private messages of the sign-in window.
inline constexpr UINT MsgAuthAttempt = WM_APP + 16;
inline constexpr UINT MsgBrowserTokens = WM_APP + 17;
inline constexpr UINT MsgRegistration = WM_APP + 18;
inline constexpr UINT MsgCurrentUser = WM_APP + 19;

namespace signin {
// Buttons, by their command ids.
inline constexpr int Google = 1;
inline constexpr int UseUrl = 2;
inline constexpr int DeviceKey = 3;
inline constexpr int SendLink = 4;
inline constexpr int Verify = 5;
inline constexpr int Skip = 6;
// The other controls, so tests can find them.
inline constexpr int Title = 20;
inline constexpr int Subtitle = 21;
inline constexpr int BrowserHint = 22;
inline constexpr int AddressEdit = 23;
inline constexpr int Divider = 24;
inline constexpr int KeyPrompt = 25;
inline constexpr int EmailEdit = 26;
inline constexpr int LinkLabel = 27;
inline constexpr int LinkEdit = 28;
inline constexpr int Status = 29;

// What Enter presses where no button is the default: an id no control has.
inline constexpr int kNoDefault = 0x7FFE;

inline constexpr UINT_PTR kPollTimerId = 1;
inline constexpr UINT kPollIntervalMs = 5000;
} // namespace signin

enum class SignInResult { Closed = 0, SignedIn = 1, Skipped = 2 };

// What the window needs from the client around it, which lives above the sign-in code.
struct SignInHooks {
    // Saves the settings (tokens and user name changed); may throw, which is tolerated.
    std::function<void(const Settings&)> saveSettings;
    // Offered every message first, for the skin's painting of owner-drawn buttons and
    // colours; without it the buttons are plain system buttons.
    bool (*paintHook)(HWND, UINT, WPARAM, LPARAM, LRESULT&) noexcept = nullptr;
    void (*trackButtonHover)(HWND) noexcept = nullptr;
    // Opens an address in the default browser; the shell's "open" when not set.
    std::function<void(const std::wstring& address)> openBrowser;
};

class SignInWindow final : public Window {
public:
    SignInWindow(HINSTANCE instance, std::filesystem::path dataFolder, Settings& settings, SignInHooks hooks);
    ~SignInWindow() override;

    // Shows the window and runs its message loop until it is destroyed.
    SignInResult run(int showCommand);
    // The first half of run: the window exists and is shown, a session restore may be
    // under way. Tests pump messages themselves.
    bool create(int showCommand);

    SignInResult result() const noexcept { return result_; }
    bool isSignedIn() const noexcept { return signedIn_; }
    bool isBusy() const noexcept { return busy_; }
    bool isListening() const noexcept { return listener_.isListening(); }
    HWND control(int id) const noexcept { return GetDlgItem(hwnd_, id); }

private:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);

    void createControls();
    void createFonts();
    void onDpiChanged(const RECT& suggested);
    int defaultButton() const noexcept;
    void showBrowserGroup();
    void showEmailGroup();
    void setStatus(const std::wstring& text);
    void setKeyPrompt(const std::wstring& text);

    void onCommand(int id);
    void continueWithGoogle();
    void useUrl();
    void signInWithDeviceKey();
    void sendLink();
    void verifyLink();
    void onDestroy() noexcept;

    void attemptRefresh();
    void attemptKeyAuth(bool isPolling);
    void sendVerificationEmail(const std::string& email);
    void verifyPastedLink(const std::string& token);
    void finishSignIn(const AuthTokens& tokens);

    void onAttempt(std::unique_ptr<AuthAttempt> attempt);
    void onRegistration(std::unique_ptr<RegistrationResult> registration);
    void onCurrentUser(std::unique_ptr<CurrentUserResult> user);
    void save() noexcept;

    // The settings a job's service client reads: the service address, and a bearer token
    // only for calls made once signed in. Copied, so jobs never read what the window writes.
    Settings serviceSettings(bool withToken) const;
    bool ensureDeviceKey();

    HINSTANCE instance_;
    std::filesystem::path dataFolder_;
    Settings& settings_;
    SignInHooks hooks_;
    std::shared_ptr<DeviceKey> deviceKey_;
    LoopbackListener listener_;
    bool busy_ = false;
    bool signedIn_ = false;
    bool ended_ = false;
    SignInResult result_ = SignInResult::Closed;
    UniqueFont font_;
    UniqueFont titleFont_;
    // Last, so that its jobs end before anything they use is destroyed.
    UiJobThreads jobThreads_;
};

} // namespace corvandell::win
