#include "support/win/WindowPicture.hpp"

#include "base/win/UniqueHandle.hpp"

#include <fstream>
#include <vector>

namespace corvandell::test {

bool saveWindowBmp(HWND window, const std::filesystem::path& file) {
    RECT rect{};
    GetWindowRect(window, &rect);
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    HDC windowDc = GetWindowDC(window);
    const win::UniqueMemoryDc memoryDc(CreateCompatibleDC(windowDc));
    const win::UniqueBitmap bitmap(CreateCompatibleBitmap(windowDc, width, height));
    {
        const win::ScopedSelect select(memoryDc.get(), bitmap.get());
        BitBlt(memoryDc.get(), 0, 0, width, height, windowDc, 0, 0, SRCCOPY);
    }
    BITMAPINFOHEADER info{};
    info.biSize = sizeof(info);
    info.biWidth = width;
    info.biHeight = height;
    info.biPlanes = 1;
    info.biBitCount = 24;
    info.biCompression = BI_RGB;
    const int stride = (width * 3 + 3) & ~3;
    std::vector<char> pixels(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
    const bool copied = GetDIBits(memoryDc.get(), bitmap.get(), 0, static_cast<UINT>(height), pixels.data(),
                                  reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS) == height;
    ReleaseDC(window, windowDc);
    BITMAPFILEHEADER header{};
    header.bfType = 0x4D42; // "BM"
    header.bfOffBits = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
    header.bfSize = header.bfOffBits + static_cast<DWORD>(pixels.size());
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&header), sizeof(header));
    out.write(reinterpret_cast<const char*>(&info), sizeof(info));
    out.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
    return copied && static_cast<bool>(out);
}

} // namespace corvandell::test
