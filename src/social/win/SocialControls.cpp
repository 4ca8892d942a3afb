#include "social/win/SocialControls.hpp"

#include <algorithm>

namespace corvandell::win {

HWND ControlMaker::make(const wchar_t* className, const wchar_t* text, DWORD style, int id,
                        DWORD exStyle) const {
    HWND control =
        CreateWindowExW(exStyle, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, parent_,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), instance_, nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
    return control;
}

HWND ControlMaker::button(const wchar_t* caption, int id) const {
    const DWORD style = WS_TABSTOP | BS_PUSHBUTTON | (look_.messageHook != nullptr ? BS_OWNERDRAW : 0);
    HWND control = make(L"BUTTON", caption, style, id);
    if (look_.trackButtonHover != nullptr) {
        look_.trackButtonHover(control);
    }
    return control;
}

void setControlText(HWND control, const std::wstring& text) {
    SetWindowTextW(control, text.c_str());
}

void placeControl(HWND control, int x, int y, int width, int height) {
    // A window too small for the fixed parts gives negative sizes; show nothing then.
    MoveWindow(control, x, y, std::max(width, 0), std::max(height, 0), TRUE);
}

int focusedButtonOf(HWND window) {
    HWND focus = GetFocus();
    if (focus == nullptr || GetParent(focus) != window) {
        return 0;
    }
    wchar_t className[16] = {};
    GetClassNameW(focus, className, 16);
    return lstrcmpiW(className, L"BUTTON") == 0 ? GetDlgCtrlID(focus) : 0;
}

void appendToEdit(HWND edit, const std::wstring& text) {
    const int end = GetWindowTextLengthW(edit);
    SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(end), static_cast<LPARAM>(end));
    SendMessageW(edit, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
    SendMessageW(edit, EM_SCROLLCARET, 0, 0);
}

} // namespace corvandell::win
