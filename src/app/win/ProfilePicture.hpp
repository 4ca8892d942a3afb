// The profile picture on its way to the service: a picture file decoded with GDI+, the
// square the user chose cut out of it and scaled to the avatar's size, encoded as PNG. And
// the way back: the service's avatar bytes as a bitmap to show.
#pragma once

#include <windows.h>

#include "app/CropGeometry.hpp"
#include "base/win/UniqueHandle.hpp"

#include <filesystem>
#include <memory>
#include <string>

namespace corvandell::win {

// Every avatar is this many pixels square, whatever part of whatever picture it came from.
inline constexpr int kAvatarSide = 256;
// Larger files are refused before they are decoded.
inline constexpr std::size_t kMaxPictureFileBytes = 20 * 1024 * 1024;

class ProfilePicture {
public:
    // The decoded file; null with `error` set to the message to show when it cannot be used.
    static std::unique_ptr<ProfilePicture> load(const std::filesystem::path& file, std::string& error);
    ~ProfilePicture();
    ProfilePicture(const ProfilePicture&) = delete;
    ProfilePicture& operator=(const ProfilePicture&) = delete;

    PictureSize size() const noexcept;
    // The whole picture scaled to width x height, for the crop dialog to draw.
    UniqueBitmap scaledBitmap(int width, int height) const;
    // The square scaled to side x side and encoded as PNG; "" when encoding failed.
    std::string squarePng(CropSquare square, int side = kAvatarSide) const;

private:
    struct Parts;
    explicit ProfilePicture(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

// Image bytes (PNG, JPEG, GIF, BMP) as a side x side bitmap; empty when they do not decode.
UniqueBitmap bitmapFromImageBytes(const std::string& bytes, int side);

} // namespace corvandell::win
