// The sign-in window's controls: where each sits, what it says, and the two groups that
// appear only once the user has chosen a way in.
#include <windows.h>

#include <commctrl.h>

#include "auth/win/SignInWindow.hpp"

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

UniqueFont createFont(int points, int weight) {
    const ScopedWindowDc screen(nullptr);
    const int height = -MulDiv(points, GetDeviceCaps(screen.get(), LOGPIXELSY), 72);
    return UniqueFont(CreateFontW(height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                  OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                                  DEFAULT_PITCH | FF_SWISS, L"Segoe UI"));
}

void showGroup(HWND window, Group group) {
    for (const SignInControl& control : kControls) {
        if (control.group == group) {
            ShowWindow(GetDlgItem(window, control.id), SW_SHOW);
        }
    }
}

} // namespace

void SignInWindow::createControls() {
    font_ = createFont(9, FW_NORMAL);
    titleFont_ = createFont(18, FW_SEMIBOLD);
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
        HWND child =
            CreateWindowExW(extendedStyle, className, control.text, style, control.place.left,
                            control.place.top, control.place.right, control.place.bottom, hwnd_,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)), instance_, nullptr);
        const HFONT font = control.id == signin::Title ? titleFont_.get() : font_.get();
        SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
        if (control.kind == Kind::Button && hooks_.trackButtonHover != nullptr) {
            hooks_.trackButtonHover(child);
        }
    }
}

void SignInWindow::showBrowserGroup() {
    showGroup(hwnd_, Group::Browser);
}

void SignInWindow::showEmailGroup() {
    showGroup(hwnd_, Group::Email);
}

} // namespace corvandell::win
