// GDI+ does the decoding, scaling and PNG encoding. Pictures are decoded from bytes read
// into memory (not from the file), so the file is not held open while the crop dialog
// runs, and the bounded read refuses a huge file before any decoder sees it.
#include <windows.h>

#include <shlwapi.h>

#include "app/win/GdiplusSession.hpp"
#include "app/win/ProfilePicture.hpp"
#include "base/BoundedFileRead.hpp"

#include <vector>

namespace corvandell::win {
namespace {

// Past this the picture would not fit in memory as 32-bit pixels for the crop.
constexpr UINT kMaxPictureSide = 16384;

struct StreamRelease {
    void operator()(IStream* stream) const noexcept { stream->Release(); }
};
using UniqueStream = std::unique_ptr<IStream, StreamRelease>;

UniqueStream memoryStream(const std::string& bytes) {
    return UniqueStream(
        SHCreateMemStream(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<UINT>(bytes.size())));
}

bool findPngEncoder(CLSID& encoder) {
    UINT count = 0;
    UINT bytes = 0;
    if (Gdiplus::GetImageEncodersSize(&count, &bytes) != Gdiplus::Ok || bytes == 0) {
        return false;
    }
    std::vector<std::byte> buffer(bytes);
    auto* codecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    if (Gdiplus::GetImageEncoders(count, bytes, codecs) != Gdiplus::Ok) {
        return false;
    }
    for (UINT i = 0; i < count; ++i) {
        if (lstrcmpiW(codecs[i].MimeType, L"image/png") == 0) {
            encoder = codecs[i].Clsid;
            return true;
        }
    }
    return false;
}

std::string streamBytes(IStream* stream) {
    STATSTG stat{};
    if (FAILED(stream->Stat(&stat, STATFLAG_NONAME)) || stat.cbSize.QuadPart > kMaxPictureFileBytes) {
        return {};
    }
    const LARGE_INTEGER start{};
    if (FAILED(stream->Seek(start, STREAM_SEEK_SET, nullptr))) {
        return {};
    }
    std::string bytes(static_cast<std::size_t>(stat.cbSize.QuadPart), '\0');
    ULONG read = 0;
    if (FAILED(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read)) || read != bytes.size()) {
        return {};
    }
    return bytes;
}

// Draws `source` (or the part of it given) into a new side x side 32-bit bitmap. Edge
// pixels are clamped rather than blended with transparent black, so a crop's border keeps
// the picture's colour.
std::unique_ptr<Gdiplus::Bitmap> drawScaled(Gdiplus::Bitmap& source, const Gdiplus::Rect& from, int width,
                                            int height) {
    auto target = std::make_unique<Gdiplus::Bitmap>(width, height, PixelFormat32bppARGB);
    if (target->GetLastStatus() != Gdiplus::Ok) {
        return nullptr;
    }
    Gdiplus::Graphics graphics(target.get());
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeHighQualityBicubic);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
    graphics.Clear(Gdiplus::Color(0, 0, 0, 0));
    Gdiplus::ImageAttributes clampEdges;
    clampEdges.SetWrapMode(Gdiplus::WrapModeTileFlipXY);
    const Gdiplus::Status status =
        graphics.DrawImage(&source, Gdiplus::Rect(0, 0, width, height), from.X, from.Y, from.Width,
                           from.Height, Gdiplus::UnitPixel, &clampEdges);
    return status == Gdiplus::Ok ? std::move(target) : nullptr;
}

UniqueBitmap toHbitmap(Gdiplus::Bitmap& bitmap) {
    HBITMAP handle = nullptr;
    if (bitmap.GetHBITMAP(Gdiplus::Color(0, 0, 0, 0), &handle) != Gdiplus::Ok) {
        return UniqueBitmap();
    }
    return UniqueBitmap(handle);
}

} // namespace

// Members in this order so the bitmap is gone before its stream, and both before GDI+.
struct ProfilePicture::Parts {
    GdiplusSession gdiplus;
    std::string bytes;
    UniqueStream stream;
    std::unique_ptr<Gdiplus::Bitmap> bitmap;
};

ProfilePicture::ProfilePicture(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

ProfilePicture::~ProfilePicture() = default;

std::unique_ptr<ProfilePicture> ProfilePicture::load(const std::filesystem::path& file, std::string& error) {
    const FileRead read = readFileBounded(file, kMaxPictureFileBytes);
    if (read.status == FileReadStatus::TooLarge) {
        error = "That picture file is larger than 20 MB; choose a smaller one.";
        return nullptr;
    }
    if (read.status != FileReadStatus::Ok || read.bytes.empty()) {
        error = "Could not read that picture file.";
        return nullptr;
    }
    auto parts = std::make_unique<Parts>();
    if (!parts->gdiplus.isStarted()) {
        error = "Pictures cannot be decoded on this system (GDI+ did not start).";
        return nullptr;
    }
    parts->bytes = read.bytes;
    parts->stream = memoryStream(parts->bytes);
    if (parts->stream) {
        parts->bitmap = std::make_unique<Gdiplus::Bitmap>(parts->stream.get());
    }
    if (!parts->bitmap || parts->bitmap->GetLastStatus() != Gdiplus::Ok || parts->bitmap->GetWidth() == 0 ||
        parts->bitmap->GetHeight() == 0) {
        error = "That file is not a picture Corvandell can read (PNG, JPEG, GIF or BMP).";
        return nullptr;
    }
    if (parts->bitmap->GetWidth() > kMaxPictureSide || parts->bitmap->GetHeight() > kMaxPictureSide) {
        error = "That picture is more than 16384 pixels wide or high; choose a smaller one.";
        return nullptr;
    }
    return std::unique_ptr<ProfilePicture>(new ProfilePicture(std::move(parts)));
}

PictureSize ProfilePicture::size() const noexcept {
    return {static_cast<int>(parts_->bitmap->GetWidth()), static_cast<int>(parts_->bitmap->GetHeight())};
}

UniqueBitmap ProfilePicture::scaledBitmap(int width, int height) const {
    if (width <= 0 || height <= 0) {
        return UniqueBitmap();
    }
    const PictureSize whole = size();
    const auto scaled =
        drawScaled(*parts_->bitmap, Gdiplus::Rect(0, 0, whole.width, whole.height), width, height);
    return scaled ? toHbitmap(*scaled) : UniqueBitmap();
}

std::string ProfilePicture::squarePng(CropSquare square, int side) const {
    if (square.side <= 0 || side <= 0) {
        return {};
    }
    const auto cropped =
        drawScaled(*parts_->bitmap, Gdiplus::Rect(square.x, square.y, square.side, square.side), side, side);
    CLSID png{};
    if (!cropped || !findPngEncoder(png)) {
        return {};
    }
    const UniqueStream out(SHCreateMemStream(nullptr, 0));
    if (!out || cropped->Save(out.get(), &png, nullptr) != Gdiplus::Ok) {
        return {};
    }
    return streamBytes(out.get());
}

UniqueBitmap bitmapFromImageBytes(const std::string& bytes, int side) {
    const GdiplusSession gdiplus;
    if (!gdiplus.isStarted() || bytes.empty() || side <= 0) {
        return UniqueBitmap();
    }
    const UniqueStream stream = memoryStream(bytes);
    if (!stream) {
        return UniqueBitmap();
    }
    Gdiplus::Bitmap source(stream.get());
    if (source.GetLastStatus() != Gdiplus::Ok || source.GetWidth() == 0 || source.GetHeight() == 0) {
        return UniqueBitmap();
    }
    const auto scaled = drawScaled(
        source,
        Gdiplus::Rect(0, 0, static_cast<INT>(source.GetWidth()), static_cast<INT>(source.GetHeight())), side,
        side);
    return scaled ? toHbitmap(*scaled) : UniqueBitmap();
}

} // namespace corvandell::win
