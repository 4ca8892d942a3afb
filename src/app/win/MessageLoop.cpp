#include <windows.h>

#include "app/win/MessageLoop.hpp"

namespace corvandell::win {
namespace {

// Our own windows take part; the tray menu, tooltips and message boxes keep their own
// handling (a message box runs its own loop anyway).
bool isClientTopLevel(HWND root) noexcept {
    wchar_t name[32] = {};
    GetClassNameW(root, name, 32);
    return wcsncmp(name, L"Corvandell", 10) == 0;
}

} // namespace

bool preTranslateClientMessage(HWND mainWindow, HACCEL keys, MSG& message) noexcept {
    if (message.hwnd == nullptr || message.message < WM_KEYFIRST || message.message > WM_KEYLAST) {
        return false;
    }
    HWND root = GetAncestor(message.hwnd, GA_ROOT);
    if (root == nullptr) {
        return false;
    }
    if (root == mainWindow && keys != nullptr && TranslateAcceleratorW(mainWindow, keys, &message)) {
        return true;
    }
    return isClientTopLevel(root) && IsDialogMessageW(root, &message);
}

int runClientMessageLoop(HWND mainWindow, HACCEL keys) noexcept {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (!preTranslateClientMessage(mainWindow, keys, message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return static_cast<int>(message.wParam);
}

} // namespace corvandell::win
