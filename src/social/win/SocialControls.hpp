// Child controls of the friends and chat windows: one font, buttons in the window's look,
// and the few control calls both windows make.
#pragma once

#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "social/win/SocialLook.hpp"

#include <string>

namespace corvandell::win {

UniqueFont createSocialFont();

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
// Appends at the end of a multi-line edit and scrolls it there.
void appendToEdit(HWND edit, const std::wstring& text);

} // namespace corvandell::win
