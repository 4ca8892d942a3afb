#include <windows.h>

#include "base/win/Window.hpp"

namespace corvandell::win {

LRESULT CALLBACK Window::windowProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        auto* window = static_cast<Window*>(create->lpCreateParams);
        if (window != nullptr) {
            window->hwnd_ = hwnd;
            if (window->attachNotice_ != nullptr) {
                *window->attachNotice_ = true;
                window->attachNotice_ = nullptr;
            }
            SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window));
        }
    }
    auto* window = reinterpret_cast<Window*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (window == nullptr) {
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }
    LRESULT result = 0;
    try {
        result = window->handleMessage(message, wParam, lParam);
    } catch (...) {
        // Nothing may unwind into the system's message dispatch: a handler that fails leaves
        // the message to the default procedure and the window goes on.
        result = DefWindowProcW(hwnd, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
        window->hwnd_ = nullptr;
        window->onFinalMessage();
    }
    return result;
}

bool Window::createSelfDeleting(Window* window, DWORD extendedStyle, const wchar_t* className,
                                const wchar_t* title, int width, int height, HWND owner, HINSTANCE instance,
                                DWORD style) {
    bool isAttached = false;
    window->attachNotice_ = &isAttached;
    if (CreateWindowExW(extendedStyle, className, title, style, CW_USEDEFAULT, CW_USEDEFAULT, width, height,
                        owner, nullptr, instance, window) == nullptr) {
        if (!isAttached) {
            delete window;
        }
        return false;
    }
    window->attachNotice_ = nullptr;
    return true;
}

std::wstring hwndText(HWND hwnd) {
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(hwnd)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(hwnd, text.data(), static_cast<int>(text.size()))));
    return text;
}

bool registerWindowClass(HINSTANCE instance, const wchar_t* className, WNDPROC procedure, HBRUSH background) {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    if (GetClassInfoExW(instance, className, &windowClass)) {
        return true;
    }
    windowClass = WNDCLASSEXW{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    // The program's icon (resource 1 of corvandell.exe) in the title bar and on the taskbar;
    // a program without one, such as a test, gets the system's.
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(1));
    windowClass.hbrBackground = background;
    windowClass.lpszClassName = className;
    return RegisterClassExW(&windowClass) != 0;
}

} // namespace corvandell::win
