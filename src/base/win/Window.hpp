// Base of every top-level window: one static window procedure routes to the object.
//
// CreateWindowExW gets `this` as its creation parameter; WM_NCCREATE stores it in the
// window's user data and records the handle, and from then on every message reaches the
// virtual handleMessage. Messages before WM_NCCREATE go to the default procedure. The
// derived class destroys its window while it is still whole, never from this destructor.
// A window that nobody else owns (a chat window) deletes itself in onFinalMessage, which
// runs after the last message, once the base no longer touches the object.
#pragma once

#include <windows.h>

#include <string>

namespace corvandell::win {

class Window {
public:
    Window() = default;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window() = default;

    HWND hwnd() const noexcept { return hwnd_; }

protected:
    static LRESULT CALLBACK windowProcedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    // May throw: windowProcedure catches everything and hands the message to the default
    // procedure, since a window procedure is a C callback.
    virtual LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;
    virtual void onFinalMessage() noexcept {}

    // Creates the window of an object that deletes itself in onFinalMessage, at the default
    // position. False when creation fails, and the object is then gone either way: deleted
    // by WM_NCDESTROY when creation got as far as WM_NCCREATE, deleted here otherwise.
    static bool createSelfDeleting(Window* window, DWORD extendedStyle, const wchar_t* className,
                                   const wchar_t* title, int width, int height, HWND owner,
                                   HINSTANCE instance, DWORD style = WS_OVERLAPPEDWINDOW);

    HWND hwnd_ = nullptr;

private:
    bool* attachNotice_ = nullptr; // set while createSelfDeleting waits for WM_NCCREATE
};

// A window's whole text (a control's caption or contents).
std::wstring hwndText(HWND hwnd);

// Registers a window class of the process once, whichever window asks first; `background`
// may be null for windows that paint all of themselves. False when registering fails.
bool registerWindowClass(HINSTANCE instance, const wchar_t* className, WNDPROC procedure, HBRUSH background);

} // namespace corvandell::win
