#include <windows.h>

#include "app/win/UniqueHandle.hpp"
#include "support/win/Screenshot.hpp"

#include <fstream>
#include <vector>

namespace corvandell::test {

bool saveWindowScreenshot(HWND window, const std::filesystem::path& file) {
    RECT rect{};
    if (!GetWindowRect(window, &rect)) {
        return false;
    }
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    if (width <= 0 || height <= 0) {
        return false;
    }
    const win::ScopedWindowDc screen(nullptr);
    win::UniqueMemoryDc memory(CreateCompatibleDC(screen.get()));
    win::UniqueBitmap bitmap(CreateCompatibleBitmap(screen.get(), width, height));
    {
        const win::ScopedSelect select(memory.get(), bitmap.get());
        BitBlt(memory.get(), 0, 0, width, height, screen.get(), rect.left, rect.top, SRCCOPY);
    }
    BITMAPINFOHEADER info{};
    info.biSize = sizeof(info);
    info.biWidth = width;
    info.biHeight = height;
    info.biPlanes = 1;
    info.biBitCount = 24;
    info.biCompression = BI_RGB;
    const size_t stride = (static_cast<size_t>(width) * 3 + 3) & ~size_t{3};
    std::vector<char> pixels(stride * static_cast<size_t>(height));
    if (!GetDIBits(memory.get(), bitmap.get(), 0, static_cast<UINT>(height), pixels.data(),
                   reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS)) {
        return false;
    }
    BITMAPFILEHEADER header{};
    header.bfType = 0x4D42;
    header.bfOffBits = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
    header.bfSize = static_cast<DWORD>(header.bfOffBits + pixels.size());
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&header), sizeof(header));
    out.write(reinterpret_cast<const char*>(&info), sizeof(info));
    out.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
    return static_cast<bool>(out);
}

} // namespace corvandell::test
