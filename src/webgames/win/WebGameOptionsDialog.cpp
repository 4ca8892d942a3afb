#include <windows.h>

#include <commctrl.h>

#include "base/win/Dpi.hpp"
#include "base/win/DpiWindow.hpp"
#include "base/win/WideText.hpp"
#include "webgames/win/WebGameOptionsDialog.hpp"

#include <algorithm>
#include <array>

namespace corvandell::win {
namespace {

constexpr DWORD kStyle = WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
constexpr DWORD kExStyle = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
constexpr int kClientWidth = 420; // at 96 dots per inch
constexpr int kClientHeight = 128;

struct Child {
    int id;
    const wchar_t* className;
    DWORD style;
    int x, y, width, height; // for a drop-down list, the height includes the open list
};

constexpr std::array<Child, 4> kChildren{{
    {WebGameOptionsDialog::kLabel, WC_STATICW, SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, 16, 16, 388, 20},
    {WebGameOptionsDialog::kBrowserList, WC_COMBOBOXW, WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, 16, 40,
     388, 200},
    {IDOK, WC_BUTTONW, WS_TABSTOP | BS_DEFPUSHBUTTON, 236, 88, 80, 26},
    {IDCANCEL, WC_BUTTONW, WS_TABSTOP | BS_PUSHBUTTON, 324, 88, 80, 26},
}};

} // namespace

WebGameOptionsDialog* WebGameOptionsDialog::open(HINSTANCE instance, WebGameOptionsHost host,
                                                 int showCommand) {
    if (host.settings == nullptr || !registerWindowClass(instance, kClassName, &Window::windowProcedure,
                                                         reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1))) {
        return nullptr;
    }
    HWND owner = host.owner;
    const std::wstring title = host.gameName + L" - Game Options";
    auto* dialog = new WebGameOptionsDialog(instance, std::move(host));
    if (!createSelfDeleting(dialog, kExStyle, kClassName, title.c_str(), kClientWidth, kClientHeight, owner,
                            instance, kStyle)) {
        return nullptr;
    }
    ShowWindow(dialog->hwnd_, showCommand);
    UpdateWindow(dialog->hwnd_);
    return dialog;
}

LRESULT WebGameOptionsDialog::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT themed = 0;
    if (host_.look.messageHook != nullptr && host_.look.messageHook(hwnd_, message, wParam, lParam, themed)) {
        return themed;
    }
    return route(message, wParam, lParam);
}

LRESULT WebGameOptionsDialog::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        onCreate();
        return 0;
    case WM_COMMAND:
        if (LOWORD(wParam) == IDOK) {
            save();
        } else if (LOWORD(wParam) == IDCANCEL) {
            DestroyWindow(hwnd_);
        }
        return 0;
    case DM_GETDEFID:
        return MAKELRESULT(IDOK, DC_HASDEFID);
    case WM_NEXTDLGCTL:
        if (host_.look.nextControl != nullptr) {
            host_.look.nextControl(hwnd_, wParam, lParam);
        }
        return 0;
    case WM_CLOSE:
        DestroyWindow(hwnd_);
        return 0;
    case WM_DESTROY:
        if (host_.look.removeDialogKeys != nullptr) {
            host_.look.removeDialogKeys(hwnd_);
        }
        if (host_.owner != nullptr && GetForegroundWindow() == hwnd_) {
            SetForegroundWindow(host_.owner);
        }
        return 0;
    case WM_DPICHANGED:
        dpi_ = HIWORD(wParam);
        applySuggestedRect(hwnd_, *reinterpret_cast<const RECT*>(lParam));
        layout();
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void WebGameOptionsDialog::onCreate() {
    dpi_ = windowDpi(hwnd_);
    const bool isOwnerDrawn = host_.look.messageHook != nullptr;
    for (const Child& child : kChildren) {
        const bool isButton = child.id == IDOK || child.id == IDCANCEL;
        DWORD style = WS_CHILD | WS_VISIBLE | child.style;
        if (isOwnerDrawn && isButton) {
            style = (style & ~static_cast<DWORD>(BS_TYPEMASK)) | BS_OWNERDRAW;
        }
        const wchar_t* text = child.id == IDOK ? L"Save" : child.id == IDCANCEL ? L"Cancel" : L"";
        HWND control =
            CreateWindowExW(0, child.className, text, style, 0, 0, 0, 0, hwnd_,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(child.id)), instance_, nullptr);
        if (isOwnerDrawn && isButton && host_.look.trackButtonHover != nullptr) {
            host_.look.trackButtonHover(control);
        }
    }
    SetWindowTextW(control(kLabel), (L"Browser used to run " + host_.gameName).c_str());
    fillBrowsers();
    layout();
    // Centred over its owner, the client size taken at this monitor's scale.
    RECT frame{0, 0, scaledForDpi(kClientWidth, dpi_), scaledForDpi(kClientHeight, dpi_)};
    AdjustWindowRectExForDpi(&frame, kStyle, FALSE, kExStyle, dpi_);
    RECT around{};
    if (host_.owner == nullptr || !GetWindowRect(host_.owner, &around) || IsIconic(host_.owner)) {
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &around, 0);
    }
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    SetWindowPos(hwnd_, nullptr, around.left + ((around.right - around.left) - width) / 2,
                 around.top + ((around.bottom - around.top) - height) / 2, width, height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    if (host_.look.addDialogKeys != nullptr) {
        host_.look.addDialogKeys(hwnd_);
    }
    SetFocus(control(kBrowserList));
}

void WebGameOptionsDialog::fillBrowsers() {
    HWND list = control(kBrowserList);
    commands_.clear();
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(kAutomatic));
    commands_.emplace_back();
    for (const BrowserEntry& browser : host_.browsers) {
        SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(widen(browser.name).c_str()));
        commands_.push_back(browser.command);
    }
    const auto chosen = host_.settings->webGameBrowsers.find(host_.gameKey);
    size_t selected = 0;
    if (chosen != host_.settings->webGameBrowsers.end() && !chosen->second.empty()) {
        const auto found = std::find(commands_.begin(), commands_.end(), chosen->second);
        if (found == commands_.end()) {
            // A browser no longer registered: shown as it is kept, so Save does not drop it unseen.
            SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(widen(chosen->second).c_str()));
            commands_.push_back(chosen->second);
            selected = commands_.size() - 1;
        } else {
            selected = static_cast<size_t>(found - commands_.begin());
        }
    }
    SendMessageW(list, CB_SETCURSEL, selected, 0);
}

void WebGameOptionsDialog::layout() {
    font_ = createUiFont(dpi_);
    for (const Child& child : kChildren) {
        MoveWindow(control(child.id), scaledForDpi(child.x, dpi_), scaledForDpi(child.y, dpi_),
                   scaledForDpi(child.width, dpi_), scaledForDpi(child.height, dpi_), TRUE);
    }
    setChildrenFont(hwnd_, font_.get(), true);
}

void WebGameOptionsDialog::save() {
    const auto selected = SendMessageW(control(kBrowserList), CB_GETCURSEL, 0, 0);
    const std::string command = selected > 0 && static_cast<size_t>(selected) < commands_.size()
                                    ? commands_[static_cast<size_t>(selected)]
                                    : std::string();
    if (command.empty()) {
        host_.settings->webGameBrowsers.erase(host_.gameKey);
    } else {
        host_.settings->webGameBrowsers[host_.gameKey] = command;
    }
    const std::string problem = host_.saveSettings ? host_.saveSettings() : std::string();
    if (host_.showStatus) {
        host_.showStatus(problem.empty() ? L"Saved. " + host_.gameName +
                                               L" will use the chosen browser on its next launch."
                                         : widen(problem));
    }
    DestroyWindow(hwnd_);
}

} // namespace corvandell::win
