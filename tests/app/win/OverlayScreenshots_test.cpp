// By hand only (disabled in ctest): the in-game overlay over a full-screen game in play,
// as the stand-in's demo user sees it, in each built-in skin and once with a voice channel
// attached, saved as BMP files into CORVANDELL_SCREENSHOT_DIR for a person to look at.
// scripts/overlay-screenshot runs it and turns them into PNGs.
//
// Without a compositor (Xvfb has none) the system shows a layered window's pixels without
// blending them, so each picture is composed here as the desktop compositor would: the
// game as the screen shows it, with the overlay's own frame (premultiplied alpha) over it.
#include <windows.h>

#include "api/win/WinHttpApiClient.hpp"
#include "app/Skins.hpp"
#include "app/win/OverlayWindow.hpp"
#include "base/win/UniqueHandle.hpp"
#include "support/win/ChildProcess.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

// The screen's pixels as 0x00RRGGBB, top row first.
std::vector<std::uint32_t> captureScreen(int width, int height) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const ScopedWindowDc screen(nullptr);
    const UniqueMemoryDc memoryDc(CreateCompatibleDC(screen.get()));
    const UniqueBitmap bitmap(CreateCompatibleBitmap(screen.get(), width, height));
    {
        const ScopedSelect select(memoryDc.get(), bitmap.get());
        BitBlt(memoryDc.get(), 0, 0, width, height, screen.get(), 0, 0, SRCCOPY);
    }
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    GetDIBits(memoryDc.get(), bitmap.get(), 0, static_cast<UINT>(height), pixels.data(), &info,
              DIB_RGB_COLORS);
    return pixels;
}

// Source-over of premultiplied pixels onto opaque ones.
std::vector<std::uint32_t> composite(const std::vector<std::uint32_t>& below, const OverlayFrame& above) {
    std::vector<std::uint32_t> out(below.size());
    for (std::size_t i = 0; i < below.size(); ++i) {
        const std::uint32_t top = above.pixels[i];
        const std::uint32_t keep = 255 - (top >> 24);
        std::uint32_t pixel = 0;
        for (int shift = 0; shift <= 16; shift += 8) {
            const std::uint32_t channel =
                ((top >> shift) & 0xFF) + (((below[i] >> shift) & 0xFF) * keep + 127) / 255;
            pixel |= std::min<std::uint32_t>(channel, 255) << shift;
        }
        out[i] = pixel;
    }
    return out;
}

bool saveBmp(const std::vector<std::uint32_t>& pixels, int width, int height,
             const std::filesystem::path& file) {
    BITMAPINFOHEADER info{};
    info.biSize = sizeof(info);
    info.biWidth = width;
    info.biHeight = -height;
    info.biPlanes = 1;
    info.biBitCount = 32;
    info.biCompression = BI_RGB;
    BITMAPFILEHEADER header{};
    header.bfType = 0x4D42; // "BM"
    header.bfOffBits = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
    header.bfSize = header.bfOffBits + static_cast<DWORD>(pixels.size() * 4);
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&header), sizeof(header));
    out.write(reinterpret_cast<const char*>(&info), sizeof(info));
    out.write(reinterpret_cast<const char*>(pixels.data()), static_cast<std::streamsize>(pixels.size() * 4));
    return static_cast<bool>(out);
}

TEST(OverlayScreenshots, DISABLED_TheOverlayOverAFullScreenGameInEachSkin) {
    const wchar_t* folder = _wgetenv(L"CORVANDELL_SCREENSHOT_DIR");
    ASSERT_NE(folder, nullptr) << "set CORVANDELL_SCREENSHOT_DIR";
    Settings demo = signedInSettings("demo");
    const auto api = std::make_shared<WinHttpApiClient>(&demo);

    std::wstring commandLine =
        L"\"" + test::siblingExecutable(L"corvandell-test-scenery.exe").wstring() + L"\" 90";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &process));
    const UniqueKernelHandle gameProcess(process.hProcess);
    const UniqueKernelHandle gameThread(process.hThread);
    HWND game = nullptr;
    ASSERT_TRUE(test::pumpUntil(
        [&] { return (game = FindWindowW(L"CorvandellSceneryGame", nullptr)) != nullptr; }, 20000));
    test::pumpUntil([] { return false; }, 1000); // the game paints
    const int width = GetSystemMetrics(SM_CXSCREEN);
    const int height = GetSystemMetrics(SM_CYSCREEN);
    const std::vector<std::uint32_t> scene = captureScreen(width, height);
    ASSERT_TRUE(saveBmp(scene, width, height, std::filesystem::path(folder) / "overlay-game-alone.bmp"));

    const struct {
        const char* skin;
        bool hasVoice;
        const char* file;
    } shots[] = {
        {"dark", false, "overlay-dark.bmp"},
        {"dark", true, "overlay-dark-voice.bmp"},
        {"light", false, "overlay-light.bmp"},
        {"slate", false, "overlay-slate.bmp"},
    };
    for (const auto& shot : shots) {
        applyTheme(chooseSkin(builtInSkins(), shot.skin));
        OverlaySetup setup;
        setup.gameTitle = "Ember Keep";
        setup.launchTick = GetTickCount64() - 5'025'000; // 1:23:45 into the session
        setup.api = api;
        setup.gameWindow = game;
        OverlayWindow* overlay = OverlayWindow::open(GetModuleHandleW(nullptr), std::move(setup));
        ASSERT_NE(overlay, nullptr);
        ASSERT_TRUE(test::pumpUntil([&] { return overlay->friendRows().size() >= 3; }, 10000));
        if (shot.hasVoice) {
            overlay->attachVoice(OverlayVoice{false, [](bool) {}, [] {}});
            SendMessageW(overlay->hwnd(), WM_KEYDOWN, VK_TAB, 0);
            SendMessageW(overlay->hwnd(), WM_KEYDOWN, VK_TAB, 0);
        } else {
            const RECT quit = overlay->buttonRect(OverlayButton::QuitGame);
            SendMessageW(overlay->hwnd(), WM_MOUSEMOVE, 0, MAKELPARAM(quit.left + 40, quit.top + 10));
        }
        test::pumpUntil([] { return false; }, 300);
        EXPECT_TRUE(saveBmp(composite(scene, overlay->frame()), width, height,
                            std::filesystem::path(folder) / shot.file))
            << shot.file;
        if (!shot.hasVoice && std::string(shot.skin) == "dark") {
            // What the display itself shows, for comparison: unblended without a compositor.
            EXPECT_TRUE(saveBmp(captureScreen(width, height), width, height,
                                std::filesystem::path(folder) / "overlay-screen-unblended.bmp"));
        }
        DestroyWindow(overlay->hwnd());
        test::pumpUntil([] { return false; }, 200);
    }
    PostMessageW(game, WM_CLOSE, 0, 0);
    WaitForSingleObject(gameProcess.get(), 5000);
}

} // namespace
} // namespace corvandell::win
