// Image files as 16-pixel icons: .ico through the system's icon loader, everything else
// (PNG above all, which is what most sites serve) decoded and scaled with GDI+.
#include <windows.h>

#include <shlwapi.h>

#include "app/win/GdiplusSession.hpp"
#include "app/win/RowIcons.hpp"
#include "base/BoundedFileRead.hpp"

#include <memory>

namespace corvandell::win {
namespace {

constexpr int kSide = 16;
constexpr std::size_t kMaxImageBytes = 256 * 1024;

struct StreamRelease {
    void operator()(IStream* stream) const noexcept { stream->Release(); }
};

bool isIcoFile(const std::string& bytes) {
    return bytes.size() >= 6 && bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 1 && bytes[3] == 0;
}

UniqueIcon decodedIcon(const std::string& bytes) {
    const GdiplusSession gdiplus;
    if (!gdiplus.isStarted()) {
        return UniqueIcon();
    }
    const std::unique_ptr<IStream, StreamRelease> stream(
        SHCreateMemStream(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<UINT>(bytes.size())));
    if (!stream) {
        return UniqueIcon();
    }
    // Scoped so the bitmaps are gone before GDI+ shuts down.
    HICON icon = nullptr;
    {
        Gdiplus::Bitmap source(stream.get());
        if (source.GetLastStatus() != Gdiplus::Ok || source.GetWidth() == 0 || source.GetHeight() == 0) {
            return UniqueIcon();
        }
        Gdiplus::Bitmap scaled(kSide, kSide, PixelFormat32bppARGB);
        Gdiplus::Graphics graphics(&scaled);
        graphics.SetInterpolationMode(Gdiplus::InterpolationModeHighQualityBicubic);
        graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
        graphics.Clear(Gdiplus::Color(0, 0, 0, 0));
        graphics.DrawImage(&source, 0, 0, kSide, kSide);
        if (scaled.GetHICON(&icon) != Gdiplus::Ok) {
            icon = nullptr;
        }
    }
    return UniqueIcon(icon);
}

} // namespace

UniqueIcon loadSmallIconFromFile(const std::filesystem::path& file) {
    const FileRead read = readFileBounded(file, kMaxImageBytes);
    if (read.status != FileReadStatus::Ok || read.bytes.empty()) {
        return UniqueIcon();
    }
    if (isIcoFile(read.bytes)) {
        return UniqueIcon(
            static_cast<HICON>(LoadImageW(nullptr, file.c_str(), IMAGE_ICON, kSide, kSide, LR_LOADFROMFILE)));
    }
    return decodedIcon(read.bytes);
}

} // namespace corvandell::win
