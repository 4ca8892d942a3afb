// The sign-in window's controls: where each sits, what it says, and the two groups that
// appear only once the user has chosen a way in. Places are at 96 dots per inch and scaled
// to the window's own, again whenever it moves to a monitor with other dots per inch.
#include <windows.h>

#include <commctrl.h>

#include "auth/win/SignInWindow.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/DpiWindow.hpp"

#include <array>

namespace corvandell::win {
namespace {

enum class Kind { Label, CentredLabel, Edit, Button };
enum class Group { Always, Browser, Email };

struct SignInControl {
    int id;
    Kind kind;
    Group group;
    const wchar_t* text;
    RECT place; // left, top, width, height of the 460 x 632 client area
};

constexpr std::array<SignInControl, 16> kControls{{
    {signin::Title, Kind::Label, Group::Always, L"Corvandell", {40, 28, 380, 34}},
    {signin::Subtitle, Kind::Label, Group::Always, L"Sign in to your account", {40, 64, 380, 20}},
    {signin::Google, Kind::Button, Group::Always, L"Continue with Google", {40, 198, 380, 40}},
    {signin::BrowserHint,
     Kind::Label,
     Group::Browser,
     L"Finish signing in in your browser. If it does not return\nhere automatically, paste the address of "
     L"the page the\nbrowser lands on:",
     {40, 244, 380, 48}},
    {signin::AddressEdit, Kind::Edit, Group::Browser, L"", {40, 296, 288, 26}},
    {signin::UseUrl, Kind::Button, Group::Browser, L"Use URL", {336, 296, 84, 26}},
    {signin::Divider,
     Kind::CentredLabel,
     Group::Always,
     L"------------------------  or  ------------------------",
     {40, 338, 380, 18}},
    {signin::DeviceKey, Kind::Button, Group::Always, L"Sign in with this device's key", {40, 364, 380, 40}},
    {signin::KeyPrompt, Kind::Label, Group::Email, L"", {40, 412, 380, 48}},
    {signin::EmailEdit, Kind::Edit, Group::Email, L"", {40, 462, 288, 26}},
    {signin::SendLink, Kind::Button, Group::Email, L"Send link", {336, 462, 84, 26}},
    {signin::LinkLabel,
     Kind::Label,
     Group::Email,
     L"Or paste the verification link from the email:",
     {40, 496, 380, 18}},
    {signin::LinkEdit, Kind::Edit, Group::Email, L"", {40, 516, 288, 26}},
    {signin::Verify, Kind::Button, Group::Email, L"Verify", {336, 516, 84, 26}},
    {signin::Status, Kind::Label, Group::Always, L"", {40, 558, 380, 34}},
    {signin::Skip, Kind::Button, Group::Always, L"Skip for now", {310, 594, 110, 26}},
}};

RECT scaledPlace(const SignInControl& control, UINT dpi) {
    return {scaledForDpi(control.place.left, dpi), scaledForDpi(control.place.top, dpi),
            scaledForDpi(control.place.right, dpi), scaledForDpi(control.place.bottom, dpi)};
}

void showGroup(HWND window, Group group) {
    for (const SignInControl& control : kControls) {
        if (control.group == group) {
            ShowWindow(GetDlgItem(window, control.id), SW_SHOW);
        }
    }
}

} // namespace

void SignInWindow::createFonts() {
    const UINT dpi = windowDpi(hwnd_);
    font_ = createUiFont(dpi, 9, FW_NORMAL);
    titleFont_ = createUiFont(dpi, 18, FW_SEMIBOLD);
}

void SignInWindow::createControls() {
    createFonts();
    const UINT dpi = windowDpi(hwnd_);
    const bool isOwnerDrawn = hooks_.paintHook != nullptr;
    for (const SignInControl& control : kControls) {
        const wchar_t* className = WC_STATICW;
        DWORD style = WS_CHILD;
        DWORD extendedStyle = 0;
        switch (control.kind) {
        case Kind::Label:
            style |= SS_LEFT;
            break;
        case Kind::CentredLabel:
            style |= SS_CENTER;
            break;
        case Kind::Edit:
            className = WC_EDITW;
            style |= WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL;
            break;
        case Kind::Button:
            className = WC_BUTTONW;
            style |= WS_TABSTOP | (isOwnerDrawn ? BS_OWNERDRAW : BS_PUSHBUTTON);
            break;
        }
        if (control.group == Group::Always) {
            style |= WS_VISIBLE;
        }
        const RECT place = scaledPlace(control, dpi);
        HWND child = CreateWindowExW(
            extendedStyle, className, control.text, style, place.left, place.top, place.right, place.bottom,
            hwnd_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)), instance_, nullptr);
        const HFONT font = control.id == signin::Title ? titleFont_.get() : font_.get();
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
        if (control.kind == Kind::Button && hooks_.trackButtonHover != nullptr) {
            hooks_.trackButtonHover(child);
        }
    }
}

void SignInWindow::onDpiChanged(const RECT& suggested) {
    createFonts();
    const UINT dpi = windowDpi(hwnd_);
    for (const SignInControl& control : kControls) {
        HWND child = GetDlgItem(hwnd_, control.id);
        const RECT place = scaledPlace(control, dpi);
        MoveWindow(child, place.left, place.top, place.right, place.bottom, FALSE);
        const HFONT font = control.id == signin::Title ? titleFont_.get() : font_.get();
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    }
    applySuggestedRect(hwnd_, suggested);
    RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

// Enter gives the focused edit's own button ("Use URL", "Send link", "Verify") or presses
// the focused button; elsewhere it does nothing. Without this answer the dialog manager
// would send IDOK, which is the id of "Continue with Google".
int SignInWindow::defaultButton() const noexcept {
    HWND focus = GetFocus();
    if (focus == nullptr || GetParent(focus) != hwnd_) {
        return signin::kNoDefault;
    }
    switch (GetDlgCtrlID(focus)) {
    case signin::AddressEdit:
        return signin::UseUrl;
    case signin::EmailEdit:
        return signin::SendLink;
    case signin::LinkEdit:
        return signin::Verify;
    default:
        break;
    }
    for (const SignInControl& control : kControls) {
        if (control.id == GetDlgCtrlID(focus) && control.kind == Kind::Button) {
            return control.id;
        }
    }
    return signin::kNoDefault;
}

void SignInWindow::showBrowserGroup() {
    showGroup(hwnd_, Group::Browser);
}

void SignInWindow::showEmailGroup() {
    showGroup(hwnd_, Group::Email);
}

} // namespace corvandell::win
