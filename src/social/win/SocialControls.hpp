// Child controls of the friends and chat windows: buttons in the window's look and the few
// control calls both windows make. Both use the client's font (base/win/Dpi.hpp).
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "social/win/SocialLook.hpp"

#include <string>

namespace corvandell::win {

class ControlMaker {
public:
    ControlMaker(HWND parent, HINSTANCE instance, HFONT font, const SocialLook& look)
        : parent_(parent), instance_(instance), font_(font), look_(look) {}

    HWND make(const wchar_t* className, const wchar_t* text, DWORD style, int id, DWORD exStyle = 0) const;
    HWND button(const wchar_t* caption, int id) const;

private:
    HWND parent_;
    HINSTANCE instance_;
    HFONT font_;
    const SocialLook& look_;
};

void setControlText(HWND control, const std::wstring& text);
void placeControl(HWND control, int x, int y, int width, int height);
// The focused control's id when it is a push button of `window`, else 0.
int focusedButtonOf(HWND window);
// Appends at the end of a multi-line edit and scrolls it there.
void appendToEdit(HWND edit, const std::wstring& text);

} // namespace corvandell::win
