// A window as it is on screen, frame included, saved as a 24-bit BMP file for a person to
// look at (the screenshot scripts turn them into PNGs).
#pragma once

#include <windows.h>

#include <filesystem>

namespace corvandell::test {

bool saveWindowBmp(HWND window, const std::filesystem::path& file);

} // namespace corvandell::test
