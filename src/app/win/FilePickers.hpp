// The system's folder and file pickers (IFileOpenDialog), as blocking calls on the UI thread.
#pragma once

#include <windows.h>

#include <string>

namespace corvandell::win {

// The folder the user picked, starting in `startFolder` when it exists; "" when cancelled.
std::wstring pickFolder(HWND owner, const std::wstring& startFolder, const wchar_t* title);

// A picture file (PNG, JPEG, GIF, BMP) the user picked; "" when cancelled.
std::wstring pickPictureFile(HWND owner, const wchar_t* title);

} // namespace corvandell::win
