// Options > Connection: the service address, the session and signing out.
#include <windows.h>

#include <commctrl.h>

#include "app/OptionsInput.hpp"
#include "app/win/Messages.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/OptionsLayout.hpp"
#include "base/win/WideText.hpp"

#include <array>

namespace corvandell::win {
namespace options {
namespace {

constexpr std::array<OptionsControl, 6> kControls{{
    {kServiceAddressLabel, WC_STATICW, L"&Service address", kLabelStyle, kLabelX, 63, kLabelWidth, 18},
    {kServiceAddress, WC_EDITW, L"", kEditStyle, kFieldX, 60, kFieldWidth, 24},
    {kServiceAddressHint, WC_STATICW,
     L"The Corvandell service this client talks to. Changing it signs you out, so your session is never "
     L"sent to another server.",
     kHintStyle, kFieldX, 90, kFieldWidth, 48},
    {kSessionLabel, WC_STATICW, L"Session", kLabelStyle, kLabelX, 150, kLabelWidth, 18},
    {kSessionState, WC_STATICW, L"", kHintStyle | SS_ENDELLIPSIS, kFieldX, 150, kFieldWidth, 18},
    {kSignOut, WC_BUTTONW, L"Sign &out", kButtonStyle, kFieldX, 176, 110, 26},
}};

} // namespace

std::span<const OptionsControl> connectionControls() {
    return kControls;
}

} // namespace options

using namespace options;

void OptionsDialog::fillConnection() {
    SetWindowTextW(control(kServiceAddress), widen(host_.settings->apiBaseUrl).c_str());
    showSessionState();
}

void OptionsDialog::showSessionState() {
    std::wstring state = L"Not signed in. Restart Corvandell to sign in.";
    if (isSignedIn()) {
        state = host_.settings->username.empty() ? L"Signed in."
                                                 : L"Signed in as " + widen(host_.settings->username) + L".";
    }
    SetWindowTextW(control(kSessionState), state.c_str());
    EnableWindow(control(kSignOut), isSignedIn());
}

std::optional<OptionsDialog::FieldProblem> OptionsDialog::readConnection(Settings& changed) {
    const CheckedInput<std::string> address = checkServiceAddress(narrow(hwndText(control(kServiceAddress))));
    if (!address.isValid()) {
        return FieldProblem{kServiceAddress, address.error};
    }
    changed.apiBaseUrl = address.value;
    return std::nullopt;
}

// Takes effect at once, whatever else is being edited: it touches only the session.
void OptionsDialog::signOut() {
    if (!isSignedIn()) {
        return;
    }
    const Settings previous = *host_.settings;
    host_.settings->bearerToken.clear();
    host_.settings->refreshToken.clear();
    host_.settings->username.clear();
    const std::string error = host_.saveSettings ? host_.saveSettings() : std::string();
    if (!error.empty()) {
        *host_.settings = previous;
        setMessage(L"Could not sign out: " + widen(error), true);
        return;
    }
    showSessionState();
    fillProfile();
    PostMessageW(host_.mainWindow, WM_COMMAND, MAKEWPARAM(command::Refresh, BN_CLICKED), 0);
    setMessage(L"Signed out. Restart Corvandell to sign in again.");
    if (GetFocus() == nullptr || !IsWindowEnabled(GetFocus())) {
        SetFocus(control(kServiceAddress));
    }
}

} // namespace corvandell::win
