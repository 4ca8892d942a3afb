// What Windows reads from corvandell.exe before any of its code runs: the manifest, the
// version block and the icon, read back through the same API calls Explorer and the
// loader use.
#include <windows.h>

#include "base/win/UniqueHandle.hpp"
#include "support/win/ChildProcess.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

using UniqueModule = UniqueHandle<NullEmptyTraits<HMODULE, &FreeLibrary>>;

UniqueModule loadClientImage() {
    const std::wstring path = test::siblingExecutable(L"corvandell.exe").wstring();
    return UniqueModule(
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

std::string resourceBytes(HMODULE module, LPCWSTR name, LPCWSTR type) {
    HRSRC found = FindResourceW(module, name, type);
    if (found == nullptr) {
        return {};
    }
    HGLOBAL loaded = LoadResource(module, found);
    const auto* bytes = static_cast<const char*>(LockResource(loaded));
    return bytes == nullptr ? std::string() : std::string(bytes, SizeofResource(module, found));
}

TEST(ProgramResources, TheManifestAsksForCommonControls6PerMonitorDpiUtf8AndWindows10) {
    const auto module = loadClientImage();
    ASSERT_TRUE(module) << "error " << GetLastError();
    const std::string manifest =
        resourceBytes(module.get(), MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24)); // RT_MANIFEST
    ASSERT_FALSE(manifest.empty()) << "no manifest: the client would get version 5 controls and be "
                                      "stretched by Windows on every high-DPI monitor";
    for (const char* expected :
         {"name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"", ">PerMonitorV2, PerMonitor<",
          ">true/pm</dpiAware>", ">UTF-8</activeCodePage>", "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}",
          "level=\"asInvoker\""}) {
        EXPECT_NE(manifest.find(expected), std::string::npos) << expected;
    }
}

std::wstring versionString(const std::vector<char>& block, const wchar_t* name) {
    wchar_t* value = nullptr;
    UINT length = 0;
    const std::wstring path = std::wstring(L"\\StringFileInfo\\040904B0\\") + name;
    if (!VerQueryValueW(block.data(), path.c_str(), reinterpret_cast<void**>(&value), &length) ||
        value == nullptr) {
        return {};
    }
    return std::wstring(value, length > 0 ? length - 1 : 0);
}

TEST(ProgramResources, TheVersionBlockNamesTheProductAndTheBuildsVersion) {
    const std::wstring path = test::siblingExecutable(L"corvandell.exe").wstring();
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    ASSERT_GT(size, 0u) << "no version resource";
    std::vector<char> block(size);
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, size, block.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &length));
    ASSERT_EQ(fixed->dwSignature, 0xFEEF04BDu);
    const std::string version = std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
                                std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
                                std::to_string(HIWORD(fixed->dwFileVersionLS));
    EXPECT_EQ(version, CORVANDELL_VERSION);
    EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_APP));
    const std::wstring wideVersion(version.begin(), version.end());
    EXPECT_EQ(versionString(block, L"ProductName"), L"Corvandell");
    EXPECT_EQ(versionString(block, L"ProductVersion"), wideVersion);
    EXPECT_EQ(versionString(block, L"FileVersion"), wideVersion);
    EXPECT_EQ(versionString(block, L"OriginalFilename"), L"corvandell.exe");
}

// The icon as the shell draws it at each size: the star's colour in the middle, the
// background untouched in the corners.
TEST(ProgramResources, TheIconHasTheStarAtEverySizeFrom16To256) {
    const auto module = loadClientImage();
    ASSERT_TRUE(module);
    const std::string group = resourceBytes(module.get(), MAKEINTRESOURCEW(1), RT_GROUP_ICON);
    ASSERT_GE(group.size(), 6u) << "no icon group";
    const auto count = static_cast<unsigned char>(group[4]);
    std::vector<int> sides;
    for (unsigned i = 0; i < count && 6 + 14 * i < group.size(); ++i) {
        const auto width = static_cast<unsigned char>(group[6 + 14 * i]);
        sides.push_back(width == 0 ? 256 : width);
    }
    EXPECT_EQ(sides, (std::vector<int>{16, 24, 32, 48, 64, 128, 256}));

    constexpr COLORREF kBackground = RGB(0x20, 0x40, 0x60);
    for (const int side : sides) {
        SCOPED_TRACE(side);
        UniqueIcon icon(static_cast<HICON>(
            LoadImageW(module.get(), MAKEINTRESOURCEW(1), IMAGE_ICON, side, side, LR_DEFAULTCOLOR)));
        ASSERT_TRUE(icon);
        ICONINFO info{};
        ASSERT_TRUE(GetIconInfo(icon.get(), &info));
        UniqueBitmap colour(info.hbmColor);
        UniqueBitmap mask(info.hbmMask);
        BITMAP bitmap{};
        GetObjectW(colour.get(), sizeof(bitmap), &bitmap);
        EXPECT_EQ(bitmap.bmWidth, side) << "the shell would scale another size";

        const ScopedWindowDc screen(nullptr);
        UniqueMemoryDc dc(CreateCompatibleDC(screen.get()));
        UniqueBitmap canvas(CreateCompatibleBitmap(screen.get(), side, side));
        const ScopedSelect select(dc.get(), canvas.get());
        UniqueBrush background(CreateSolidBrush(kBackground));
        const RECT all{0, 0, side, side};
        FillRect(dc.get(), &all, background.get());
        ASSERT_TRUE(DrawIconEx(dc.get(), 0, 0, icon.get(), side, side, 0, nullptr, DI_NORMAL));
        EXPECT_EQ(GetPixel(dc.get(), side / 2, side / 2), RGB(0xFA, 0xCC, 0x15));
        EXPECT_EQ(GetPixel(dc.get(), 0, 0), kBackground);
        EXPECT_EQ(GetPixel(dc.get(), side - 1, side - 1), kBackground);
    }
}

} // namespace
} // namespace corvandell::win
