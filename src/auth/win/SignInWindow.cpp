// The sign-in window's behaviour: commands, the background attempts and their results.
//
// `busy_` keeps to one attempt at a time of the kinds that may race each other for a
// challenge (key sign-in, polling, link verification, session restore). `signedIn_` is set
// once, by the first success, and from then on every late result is dropped: the tokens
// already saved are the session.
#include <windows.h>

#include <shellapi.h>

#include "api/win/WinHttpApiClient.hpp"
#include "auth/SignInAddress.hpp"
#include "auth/win/SignInWindow.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"

#include <exception>

namespace corvandell::win {
namespace {

constexpr wchar_t kClassName[] = L"CorvandellSignIn";
constexpr wchar_t kTitle[] = L"Sign in - Corvandell";
constexpr int kClientWidth = 460;
constexpr int kClientHeight = 632;
constexpr DWORD kStyle = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
constexpr std::string_view kGoogleStartPath = "/api/v1/auth/oauth/google/authorize";

void openInDefaultBrowser(const std::wstring& address) {
    ShellExecuteW(nullptr, L"open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

bool isMinimisedShow(int showCommand) {
    return showCommand == SW_MINIMIZE || showCommand == SW_SHOWMINIMIZED ||
           showCommand == SW_SHOWMINNOACTIVE || showCommand == SW_FORCEMINIMIZE;
}

} // namespace

SignInWindow::SignInWindow(HINSTANCE instance, std::filesystem::path dataFolder, Settings& settings,
                           SignInHooks hooks)
    : instance_(instance), dataFolder_(std::move(dataFolder)), settings_(settings), hooks_(std::move(hooks)),
      deviceKey_(std::make_shared<DeviceKey>()) {}

SignInWindow::~SignInWindow() {
    if (hwnd_ != nullptr) {
        DestroyWindow(hwnd_);
    }
    // Jobs still running post into the void and free their own results.
    jobThreads_.waitForAll();
}

bool SignInWindow::create(int showCommand) {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = &Window::windowProcedure;
    windowClass.hInstance = instance_;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hIcon = LoadIconW(instance_, MAKEINTRESOURCEW(1)); // the program's star, if it has one
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    windowClass.lpszClassName = kClassName;
    if (RegisterClassExW(&windowClass) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) {
        return false;
    }
    RECT outer{0, 0, kClientWidth, kClientHeight};
    AdjustWindowRectEx(&outer, kStyle, FALSE, 0);
    const int width = outer.right - outer.left;
    const int height = outer.bottom - outer.top;
    const int x = (GetSystemMetrics(SM_CXSCREEN) - width) / 2;
    const int y = (GetSystemMetrics(SM_CYSCREEN) - height) / 2;
    if (CreateWindowExW(WS_EX_CONTROLPARENT, kClassName, kTitle, kStyle, x, y, width, height, nullptr,
                        nullptr, instance_, this) == nullptr) {
        return false;
    }
    // The monitor the window landed on decides its size; at 96 dots per inch it is the one
    // computed above.
    const UINT dpi = windowDpi(hwnd_);
    RECT scaled{0, 0, scaledForDpi(kClientWidth, dpi), scaledForDpi(kClientHeight, dpi)};
    AdjustWindowRectExForDpi(&scaled, kStyle, FALSE, WS_EX_CONTROLPARENT, dpi);
    const int scaledWidth = scaled.right - scaled.left;
    const int scaledHeight = scaled.bottom - scaled.top;
    SetWindowPos(hwnd_, nullptr, (GetSystemMetrics(SM_CXSCREEN) - scaledWidth) / 2,
                 (GetSystemMetrics(SM_CYSCREEN) - scaledHeight) / 2, scaledWidth, scaledHeight,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    ShowWindow(hwnd_, isMinimisedShow(showCommand) ? SW_SHOWNORMAL : showCommand);
    UpdateWindow(hwnd_);
    return true;
}

SignInResult SignInWindow::run(int showCommand) {
    if (!create(showCommand)) {
        return SignInResult::Closed;
    }
    MSG message{};
    while (!ended_ && GetMessageW(&message, nullptr, 0, 0) > 0) {
        // Escape closes the window as its close box does. The dialog manager would send
        // IDCANCEL instead, which is the id of "Use URL".
        if (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE &&
            (message.hwnd == hwnd_ || IsChild(hwnd_, message.hwnd))) {
            PostMessageW(hwnd_, WM_CLOSE, 0, 0);
            continue;
        }
        if (!IsDialogMessageW(hwnd_, &message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return result_;
}

LRESULT SignInWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    try {
        LRESULT painted = 0;
        if (hooks_.paintHook != nullptr && hooks_.paintHook(hwnd_, message, wParam, lParam, painted)) {
            return painted;
        }
        return route(message, wParam, lParam);
    } catch (const std::exception&) {
        // A failure inside one handler must not take the window down; say so and go on.
        setStatus(L"Something went wrong - try again.");
        return 0;
    } catch (...) {
        return 0;
    }
}

LRESULT SignInWindow::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        createControls();
        if (!settings_.refreshToken.empty()) {
            setStatus(L"Restoring your session...");
            attemptRefresh();
        }
        return 0;
    case DM_GETDEFID:
        return MAKELRESULT(defaultButton(), DC_HASDEFID);
    case WM_DPICHANGED:
        onDpiChanged(*reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_COMMAND:
        if (HIWORD(wParam) == BN_CLICKED && lParam != 0) {
            onCommand(LOWORD(wParam));
        }
        return 0;
    case WM_TIMER:
        if (wParam == signin::kPollTimerId) {
            attemptKeyAuth(true);
        }
        return 0;
    case MsgAuthAttempt:
        onAttempt(takeUiJobResult<AuthAttempt>(lParam));
        return 0;
    case MsgBrowserTokens: {
        const std::unique_ptr<AuthTokens> tokens = takeUiJobResult<AuthTokens>(lParam);
        if (tokens && !signedIn_) {
            finishSignIn(*tokens);
        }
        return 0;
    }
    case MsgRegistration:
        onRegistration(takeUiJobResult<RegistrationResult>(lParam));
        return 0;
    case MsgCurrentUser:
        onCurrentUser(takeUiJobResult<CurrentUserResult>(lParam));
        return 0;
    case WM_DESTROY:
        onDestroy();
        return 0;
    default:
        return DefWindowProcW(hwnd_, message, wParam, lParam);
    }
}

void SignInWindow::onCommand(int id) {
    switch (id) {
    case signin::Google:
        continueWithGoogle();
        break;
    case signin::UseUrl:
        useUrl();
        break;
    case signin::DeviceKey:
        signInWithDeviceKey();
        break;
    case signin::SendLink:
        sendLink();
        break;
    case signin::Verify:
        verifyLink();
        break;
    case signin::Skip:
        result_ = SignInResult::Skipped;
        DestroyWindow(hwnd_);
        break;
    default:
        break;
    }
}

void SignInWindow::continueWithGoogle() {
    listener_.start(hwnd_, MsgBrowserTokens);
    const std::wstring address = widen(settings_.apiBaseUrl + std::string(kGoogleStartPath));
    if (hooks_.openBrowser) {
        hooks_.openBrowser(address);
    } else {
        openInDefaultBrowser(address);
    }
    showBrowserGroup();
    setStatus(listener_.isListening() ? L"Waiting for the browser sign-in to finish..."
                                      : L"Browser opened. Paste the address you land on below.");
}

void SignInWindow::useUrl() {
    const AddressTokens found = tokensFromAddress(narrow(hwndText(control(signin::AddressEdit))));
    if (found.accessToken.empty()) {
        setStatus(L"No sign-in tokens found in that address.");
        return;
    }
    AuthTokens tokens;
    tokens.accessToken = found.accessToken;
    tokens.refreshToken = found.refreshToken;
    finishSignIn(tokens);
}

void SignInWindow::signInWithDeviceKey() {
    if (!ensureDeviceKey()) {
        setStatus(L"Could not create this device's key.");
        return;
    }
    setKeyPrompt(
        L"A key stored on this device signs you in without a\npassword. Checking whether it is linked "
        L"to an account...");
    showEmailGroup();
    attemptKeyAuth(false);
}

void SignInWindow::sendLink() {
    const std::string email = narrow(hwndText(control(signin::EmailEdit)));
    if (email.find('@') == std::string::npos) {
        setStatus(L"Enter the email address on your account.");
        return;
    }
    if (!ensureDeviceKey()) {
        setStatus(L"Could not create this device's key.");
        return;
    }
    setStatus(L"Requesting a verification email...");
    sendVerificationEmail(email);
}

void SignInWindow::verifyLink() {
    const std::string token = verificationTokenFromLink(narrow(hwndText(control(signin::LinkEdit))));
    if (token.empty()) {
        setStatus(L"Paste the link from the verification email first.");
        return;
    }
    busy_ = true;
    setStatus(L"Verifying...");
    verifyPastedLink(token);
}

bool SignInWindow::ensureDeviceKey() {
    try {
        return deviceKey_->ensure(dataFolder_);
    } catch (const std::exception&) {
        return false; // the data folder could not be created
    }
}

Settings SignInWindow::serviceSettings(bool withToken) const {
    Settings copy;
    copy.apiBaseUrl = settings_.apiBaseUrl;
    if (withToken) {
        copy.bearerToken = settings_.bearerToken;
    }
    return copy;
}

void SignInWindow::attemptRefresh() {
    if (busy_ || signedIn_) {
        return;
    }
    busy_ = true;
    jobThreads_.start<AuthAttempt>(hwnd_, MsgAuthAttempt,
                                   [service = serviceSettings(false), refreshToken = settings_.refreshToken] {
                                       WinHttpApiClient client(&service);
                                       return restoreSession(client, refreshToken);
                                   });
}

void SignInWindow::attemptKeyAuth(bool isPolling) {
    if (busy_ || signedIn_ || !deviceKey_->isLoaded()) {
        return;
    }
    busy_ = true;
    if (!isPolling) {
        setStatus(L"Signing in with this device's key...");
    }
    const AttemptKind kind = isPolling ? AttemptKind::KeyByPolling : AttemptKind::KeyByUser;
    jobThreads_.start<AuthAttempt>(
        hwnd_, MsgAuthAttempt, [service = serviceSettings(false), key = deviceKey_, kind] {
            WinHttpApiClient client(&service);
            return signInWithKey(
                client, [&key](const std::string& message) { return key->sign(message); },
                key->publicKeyText(), kind);
        });
}

void SignInWindow::sendVerificationEmail(const std::string& email) {
    jobThreads_.start<RegistrationResult>(
        hwnd_, MsgRegistration,
        [service = serviceSettings(false), email, keyText = deviceKey_->publicKeyText()] {
            WinHttpApiClient client(&service);
            return registerKeyByEmail(client, email, keyText);
        });
}

void SignInWindow::verifyPastedLink(const std::string& token) {
    jobThreads_.start<AuthAttempt>(hwnd_, MsgAuthAttempt, [service = serviceSettings(false), token] {
        WinHttpApiClient client(&service);
        return verifyLinkToken(client, token);
    });
}

void SignInWindow::finishSignIn(const AuthTokens& tokens) {
    if (signedIn_) {
        return;
    }
    signedIn_ = true;
    KillTimer(hwnd_, signin::kPollTimerId);
    settings_.bearerToken = tokens.accessToken;
    settings_.refreshToken = tokens.refreshToken;
    settings_.username.clear();
    save();
    setStatus(L"Signed in.");
    jobThreads_.start<CurrentUserResult>(hwnd_, MsgCurrentUser, [service = serviceSettings(true)] {
        WinHttpApiClient client(&service);
        return fetchCurrentUser(client);
    });
}

void SignInWindow::onAttempt(std::unique_ptr<AuthAttempt> attempt) {
    busy_ = false;
    if (!attempt || signedIn_) {
        return;
    }
    if (attempt->succeeded) {
        finishSignIn(attempt->tokens);
        return;
    }
    switch (attempt->kind) {
    case AttemptKind::SessionRestore:
        setStatus(L"Could not restore your session - sign in below.");
        break;
    case AttemptKind::KeyByUser:
        setKeyPrompt(
            L"This key is not linked to an account yet. Enter your\naccount email and send yourself a "
            L"verification link:");
        setStatus(L"Key sign-in did not succeed: " + widen(attempt->errorText));
        break;
    case AttemptKind::KeyByPolling:
        break; // polling stays quiet until the link has been opened
    case AttemptKind::PastedLink:
        setStatus(L"Verification failed: " + widen(attempt->errorText));
        break;
    }
}

void SignInWindow::onRegistration(std::unique_ptr<RegistrationResult> registration) {
    if (!registration || signedIn_) {
        return;
    }
    if (!registration->succeeded) {
        setStatus(L"Could not start registration: " + widen(registration->errorText));
        return;
    }
    const RegStart& started = registration->registration;
    if (started.emailSent) {
        setStatus(L"Verification email sent to " + widen(started.email) +
                  L". Click the link in it - sign-in finishes here automatically.");
    } else {
        setStatus(L"The server could not send the email. " + widen(started.message));
    }
    SetTimer(hwnd_, signin::kPollTimerId, signin::kPollIntervalMs, nullptr);
}

void SignInWindow::onCurrentUser(std::unique_ptr<CurrentUserResult> user) {
    if (user && !user->me.username.empty()) {
        settings_.username = user->me.username;
        save();
    }
    result_ = SignInResult::SignedIn;
    DestroyWindow(hwnd_);
}

void SignInWindow::save() noexcept {
    if (!hooks_.saveSettings) {
        return;
    }
    try {
        hooks_.saveSettings(settings_);
    } catch (...) {
        // The settings stay in memory and the library window saves them again on exit.
    }
}

void SignInWindow::onDestroy() noexcept {
    KillTimer(hwnd_, signin::kPollTimerId);
    listener_.stop();
    ended_ = true;
    // A message sent from another thread or process (a click, WM_CLOSE) is handled inside
    // GetMessageW, which then keeps waiting for a posted one; this wakes the loop to see
    // that the window has gone. Not WM_QUIT: that would end the library window's loop too.
    PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
}

void SignInWindow::setStatus(const std::wstring& text) {
    SetWindowTextW(control(signin::Status), text.c_str());
}

void SignInWindow::setKeyPrompt(const std::wstring& text) {
    SetWindowTextW(control(signin::KeyPrompt), text.c_str());
}

} // namespace corvandell::win
