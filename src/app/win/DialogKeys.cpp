#include <windows.h>

#include <commctrl.h>

#include "app/win/DialogKeys.hpp"

#include <algorithm>
#include <vector>

namespace corvandell::win {
namespace {

struct KeyHook {
    HHOOK hook = nullptr;
    std::vector<HWND> dialogs;
};

KeyHook& keyHook() {
    static KeyHook state; // the UI thread's: dialogs are only made there
    return state;
}

bool isOwnerDrawnPushButton(HWND control) {
    wchar_t className[16] = {};
    GetClassNameW(control, className, 16);
    return lstrcmpiW(className, WC_BUTTONW) == 0 &&
           (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) == BS_OWNERDRAW;
}

// True when the key was the dialog's: then nobody else may see it.
bool handleDialogKey(HWND dialog, MSG& message) {
    if (message.message == WM_KEYDOWN) {
        const bool isControlDown = GetKeyState(VK_CONTROL) < 0;
        if (isControlDown &&
            (message.wParam == VK_TAB || message.wParam == VK_NEXT || message.wParam == VK_PRIOR)) {
            const bool isBackward =
                message.wParam == VK_PRIOR || (message.wParam == VK_TAB && GetKeyState(VK_SHIFT) < 0);
            SendMessageW(dialog, kMsgDialogNextPage, isBackward ? 0 : 1, 0);
            return true;
        }
        // Owner-drawn buttons are never "default" buttons, so the dialog manager would turn
        // Enter on one into OK; the user means the button they are on.
        HWND focus = GetFocus();
        if (message.wParam == VK_RETURN && focus != nullptr && IsChild(dialog, focus) &&
            isOwnerDrawnPushButton(focus)) {
            SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(focus), BN_CLICKED),
                         reinterpret_cast<LPARAM>(focus));
            return true;
        }
    }
    return IsDialogMessageW(dialog, &message) != FALSE;
}

LRESULT CALLBACK dialogKeysHook(int code, WPARAM wParam, LPARAM lParam) noexcept {
    if (code == HC_ACTION && wParam == PM_REMOVE) {
        auto* message = reinterpret_cast<MSG*>(lParam);
        if (message->message >= WM_KEYFIRST && message->message <= WM_KEYLAST && message->hwnd != nullptr) {
            // A copy: handling the key may open or close dialogs and so change the list.
            const std::vector<HWND> dialogs = keyHook().dialogs;
            for (HWND dialog : dialogs) {
                if (message->hwnd == dialog || IsChild(dialog, message->hwnd)) {
                    if (handleDialogKey(dialog, *message)) {
                        message->message = WM_NULL;
                        message->wParam = 0;
                        message->lParam = 0;
                    }
                    break;
                }
            }
        }
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

} // namespace

void addDialogKeys(HWND dialog) {
    KeyHook& state = keyHook();
    if (state.hook == nullptr) {
        state.hook = SetWindowsHookExW(WH_GETMESSAGE, &dialogKeysHook, nullptr, GetCurrentThreadId());
    }
    state.dialogs.push_back(dialog);
}

void removeDialogKeys(HWND dialog) noexcept {
    KeyHook& state = keyHook();
    std::erase(state.dialogs, dialog);
    if (state.dialogs.empty() && state.hook != nullptr) {
        UnhookWindowsHookEx(state.hook);
        state.hook = nullptr;
    }
}

void dialogNextControl(HWND dialog, WPARAM wParam, LPARAM lParam) noexcept {
    HWND next = LOWORD(lParam) != 0 ? reinterpret_cast<HWND>(wParam)
                                    : GetNextDlgTabItem(dialog, GetFocus(), wParam != 0 ? TRUE : FALSE);
    if (next == nullptr) {
        return;
    }
    SetFocus(next);
    if ((SendMessageW(next, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0) {
        SendMessageW(next, EM_SETSEL, 0, -1);
    }
}

} // namespace corvandell::win
