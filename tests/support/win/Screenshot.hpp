// Saves what a window shows as a 24-bit BMP, so a run leaves a picture to look at.
#pragma once

#include <windows.h>

#include <filesystem>

namespace corvandell::test {

bool saveWindowScreenshot(HWND window, const std::filesystem::path& file);

} // namespace corvandell::test
