// The profile half of the options dialog against real peers: a picture file cut by the
// crop dialog into a square PNG (decoded again with WIC, not with the GDI+ that made it),
// that PNG reaching the service stand-in, the nickname saved there, GitHub linking through
// the stand-in's consent page, and the input meter hearing a tone on the PulseAudio
// fixture's devices.
#include <windows.h>

#include <commctrl.h>
#include <wincodec.h>

#include "api/JsonText.hpp"
#include "api/win/WinHttpApiClient.hpp"
#include "app/SettingsFile.hpp"
#include "app/Skins.hpp"
#include "app/win/CropDialog.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/ProfilePicture.hpp"
#include "base/win/WideText.hpp"
#include "support/TempFolder.hpp"
#include "support/TestPictures.hpp"
#include "support/win/MessagePump.hpp"
#include "support/win/ServiceStandIn.hpp"
#include "support/win/SocialUsers.hpp"
#include "support/win/TonePlayer.hpp"
#include "voice/win/WaveDevices.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

using namespace options;

constexpr std::uint32_t kRed = 0xFF0000;
constexpr std::uint32_t kBlue = 0x0000FF;

// 400 x 200, the left half red and the right half blue.
std::filesystem::path writeTwoColourBmp(const std::filesystem::path& file) {
    return test::writeTwoColourBmp(file, 400, 200, kRed, kBlue);
}

struct DecodedPng {
    UINT width = 0;
    UINT height = 0;
    std::vector<std::uint8_t> bgra;
    std::uint32_t rgbAt(UINT x, UINT y) const {
        const std::size_t at = (static_cast<std::size_t>(y) * width + x) * 4;
        return (static_cast<std::uint32_t>(bgra[at + 2]) << 16) |
               (static_cast<std::uint32_t>(bgra[at + 1]) << 8) | bgra[at];
    }
};

template <class Interface> struct ComHolder {
    Interface* pointer = nullptr;
    ~ComHolder() {
        if (pointer != nullptr) {
            pointer->Release();
        }
    }
};

// PNG bytes decoded by WIC; width 0 when they are not a PNG.
DecodedPng decodePng(const std::string& png) {
    DecodedPng decoded;
    ComHolder<IWICImagingFactory> factory;
    ComHolder<IWICStream> stream;
    ComHolder<IWICBitmapDecoder> decoder;
    ComHolder<IWICBitmapFrameDecode> frame;
    ComHolder<IWICFormatConverter> converter;
    GUID container{};
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(&factory.pointer))) ||
        FAILED(factory.pointer->CreateStream(&stream.pointer)) ||
        FAILED(stream.pointer->InitializeFromMemory(reinterpret_cast<BYTE*>(const_cast<char*>(png.data())),
                                                    static_cast<DWORD>(png.size()))) ||
        FAILED(factory.pointer->CreateDecoderFromStream(stream.pointer, nullptr,
                                                        WICDecodeMetadataCacheOnDemand, &decoder.pointer)) ||
        FAILED(decoder.pointer->GetContainerFormat(&container)) || container != GUID_ContainerFormatPng ||
        FAILED(decoder.pointer->GetFrame(0, &frame.pointer)) ||
        FAILED(factory.pointer->CreateFormatConverter(&converter.pointer)) ||
        FAILED(converter.pointer->Initialize(frame.pointer, GUID_WICPixelFormat32bppBGRA,
                                             WICBitmapDitherTypeNone, nullptr, 0.0,
                                             WICBitmapPaletteTypeCustom)) ||
        FAILED(converter.pointer->GetSize(&decoded.width, &decoded.height))) {
        return {};
    }
    decoded.bgra.resize(static_cast<std::size_t>(decoded.width) * decoded.height * 4);
    if (FAILED(converter.pointer->CopyPixels(nullptr, decoded.width * 4,
                                             static_cast<UINT>(decoded.bgra.size()), decoded.bgra.data()))) {
        return {};
    }
    return decoded;
}

LPARAM pointAt(const CropDialog& crop, PictureSize picture, LONG pictureX, LONG pictureY) {
    const PixelRect placement = crop.picturePlacement();
    const int x =
        placement.x + (static_cast<int>(pictureX) * placement.width + picture.width / 2) / picture.width;
    const int y =
        placement.y + (static_cast<int>(pictureY) * placement.height + picture.height / 2) / picture.height;
    return MAKELPARAM(x, y);
}

TEST(OptionsProfile, TheCropDialogGivesASquarePngOfTheChosenRegion) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    applyTheme(chooseSkin(builtInSkins(), "dark"));
    const test::TempFolder folder;
    std::string error;
    const auto picture = ProfilePicture::load(writeTwoColourBmp(folder.path() / "two colours.bmp"), error);
    ASSERT_NE(picture, nullptr) << error;
    const PictureSize size = picture->size();
    ASSERT_EQ(size.width, 400);
    ASSERT_EQ(size.height, 200);

    // A drag in picture pixels (from == to: none), the square chosen (give or take the view's
    // rounding), and the colours of the PNG's left and right edges. How drags move and clamp
    // the square is CropGeometry_test's table.
    const struct {
        const char* name;
        POINT from;
        POINT to;
        CropSquare expected;
        std::uint32_t left;
        std::uint32_t right;
    } cases[] = {
        // The middle square straddles the colours.
        {"untouched", {0, 0}, {0, 0}, {100, 0, 200}, kRed, kBlue},
        // Drawn from outside the square, up and to the left, inside the blue half.
        {"drawn", {380, 180}, {220, 20}, {220, 20, 160}, kBlue, kBlue},
    };
    for (const auto& crop : cases) {
        SCOPED_TRACE(crop.name);
        CropDialog dialog(GetModuleHandleW(nullptr), nullptr, *picture);
        ASSERT_TRUE(dialog.create(SW_SHOW));
        if (crop.from.x != crop.to.x || crop.from.y != crop.to.y) {
            const POINT middle{(crop.from.x + crop.to.x) / 2, (crop.from.y + crop.to.y) / 2};
            SendMessageW(dialog.hwnd(), WM_LBUTTONDOWN, MK_LBUTTON,
                         pointAt(dialog, size, crop.from.x, crop.from.y));
            SendMessageW(dialog.hwnd(), WM_MOUSEMOVE, MK_LBUTTON, pointAt(dialog, size, middle.x, middle.y));
            SendMessageW(dialog.hwnd(), WM_LBUTTONUP, 0, pointAt(dialog, size, crop.to.x, crop.to.y));
        }
        PostMessageW(GetDlgItem(dialog.hwnd(), IDOK), WM_KEYDOWN, VK_RETURN, 1); // Enter is OK
        ASSERT_TRUE(test::pumpUntil([&] { return dialog.isDone(); }, 2000));
        const CropSquare square = dialog.result();
        EXPECT_NEAR(square.x, crop.expected.x, 2);
        EXPECT_NEAR(square.y, crop.expected.y, 2);
        EXPECT_NEAR(square.side, crop.expected.side, 3);

        const DecodedPng png = decodePng(picture->squarePng(square));
        ASSERT_EQ(png.width, 256u);
        ASSERT_EQ(png.height, 256u);
        // Up to the edges, and on both sides of the middle where the colours meet.
        for (const auto& [x, y] : {std::pair{0u, 0u}, std::pair{0u, 255u}, std::pair{120u, 128u}}) {
            EXPECT_EQ(png.rgbAt(x, y), crop.left) << "pixel " << x << "," << y;
            EXPECT_EQ(png.rgbAt(255 - x, 255 - y), crop.right) << "pixel " << 255 - x << "," << 255 - y;
        }
    }

    // Cancel chooses nothing.
    CropDialog cancelled(GetModuleHandleW(nullptr), nullptr, *picture);
    ASSERT_TRUE(cancelled.create(SW_SHOW));
    PostMessageW(GetDlgItem(cancelled.hwnd(), IDOK), WM_KEYDOWN, VK_ESCAPE, 1);
    EXPECT_TRUE(test::pumpUntil([&] { return cancelled.isDone(); }, 2000));
    EXPECT_EQ(cancelled.result().side, 0);
}

TEST(OptionsProfile, PicturesThatCannotBeUsedAreRefusedWithAReason) {
    const test::TempFolder folder;
    struct Case {
        std::string name;
        std::string bytes;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"notes.png", "this is text, not a picture",
         "That file is not a picture Corvandell can read (PNG, JPEG, GIF or BMP)."},
        {"empty.png", "", "Could not read that picture file."},
        {"huge.bmp", std::string(kMaxPictureFileBytes + 1, 'x'),
         "That picture file is larger than 20 MB; choose a smaller one."},
    };
    for (const Case& entry : cases) {
        std::string error;
        EXPECT_EQ(ProfilePicture::load(folder.writeFile(entry.name, entry.bytes), error), nullptr)
            << entry.name;
        EXPECT_EQ(error, entry.message) << entry.name;
    }
}

// The dialog on its own, over a signed-in stand-in user, as the main window would open it.
class OptionsProfileTabTest : public ::testing::Test {
protected:
    void SetUp() override {
        applyTheme(chooseSkin(builtInSkins(), "dark"));
        user_ = test::newStandInUser("opt");
        settings_ = user_.settings;
        settings_.libraryPath = folder_.path() / "games";
    }
    void TearDown() override {
        if (dialog_ != nullptr && IsWindow(dialog_->hwnd())) {
            DestroyWindow(dialog_->hwnd());
        }
    }

    OptionsDialog* open(Tab tab, std::function<void(const std::wstring&)> browser = {}) {
        OptionsHost host;
        host.settings = &settings_;
        host.paths = {folder_.path() / "data", folder_.path() / "games"};
        host.saveSettings = [this] {
            saveSettings(file_, settings_);
            return std::string();
        };
        host.api = std::make_shared<WinHttpApiClient>(&settings_);
        host.openInBrowser = std::move(browser);
        dialog_ = OptionsDialog::open(GetModuleHandleW(nullptr), std::move(host), tab, SW_SHOW);
        return dialog_;
    }

    bool waitForMessage(const std::wstring& text, DWORD timeoutMs = 10000) {
        return test::pumpUntil([&] { return dialog_->messageText() == text; }, timeoutMs);
    }

    test::TempFolder folder_;
    GuardedFile file_{folder_.path() / "settings.json", kMaxSettingsBytes};
    test::StandInUser user_;
    Settings settings_;
    OptionsDialog* dialog_ = nullptr;
};

TEST_F(OptionsProfileTabTest, ThePictureAndTheNicknameReachTheService) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ASSERT_NE(open(Tab::Profile), nullptr);
    HWND nickname = dialog_->control(kNickname);
    ASSERT_TRUE(test::pumpUntil([&] { return IsWindowEnabled(nickname) != FALSE; }, 10000))
        << "the profile loads: " << narrow(dialog_->messageText());

    SetWindowTextW(nickname, L"  Crop Tester  ");
    SendMessageW(dialog_->hwnd(), WM_COMMAND, MAKEWPARAM(kApplyButton, BN_CLICKED), 0);
    ASSERT_TRUE(waitForMessage(L"Settings and nickname saved.")) << narrow(dialog_->messageText());
    EXPECT_EQ(readString(test::callAs(user_, "GET", "/api/v1/me"), "nickname"), "Crop Tester");

    SetWindowTextW(nickname, L"");
    SendMessageW(dialog_->hwnd(), WM_COMMAND, MAKEWPARAM(kApplyButton, BN_CLICKED), 0);
    EXPECT_EQ(dialog_->messageText(), L"Enter a nickname.");
    EXPECT_EQ(readString(test::callAs(user_, "GET", "/api/v1/me"), "nickname"), "Crop Tester");

    std::string error;
    const auto picture = ProfilePicture::load(writeTwoColourBmp(folder_.path() / "me.bmp"), error);
    ASSERT_NE(picture, nullptr) << error;
    const std::string png = picture->squarePng({200, 0, 200});
    ASSERT_FALSE(png.empty());
    dialog_->uploadPicture(png);
    ASSERT_TRUE(waitForMessage(L"Profile picture updated.")) << narrow(dialog_->messageText());
    EXPECT_EQ(WinHttpApiClient(&settings_).getMyAvatar(), png) << "the stand-in holds exactly the PNG sent";
}

TEST_F(OptionsProfileTabTest, GitHubIsLinkedInTheBrowserAndTheLinkedLoginIsShown) {
    callStandIn("POST", "/__test/github-account",
                "{\"username\":\"" + user_.username + "\",\"login\":\"octo-" + user_.username + "\"}");
    std::vector<std::wstring> opened;
    // Stands in for the user's browser: visiting the consent page is what links the account.
    const auto browser = [&](const std::wstring& address) {
        opened.push_back(address);
        const std::string text = narrow(address);
        const std::string base = serviceBaseUrl();
        ASSERT_EQ(text.substr(0, base.size()), base);
        callStandIn("GET", text.substr(base.size()));
    };
    ASSERT_NE(open(Tab::Profile, browser), nullptr);
    HWND state = dialog_->control(kGitHubState);
    ASSERT_TRUE(test::pumpUntil([&] { return hwndText(state) == L"Not linked."; }, 10000))
        << narrow(hwndText(state));

    SendMessageW(dialog_->hwnd(), WM_COMMAND, MAKEWPARAM(kLinkGitHub, BN_CLICKED), 0);
    ASSERT_TRUE(
        waitForMessage(L"Finish linking in your browser; the linked account shows here when you come back."));
    ASSERT_EQ(opened.size(), 1u);
    // Coming back to the dialog asks for the linked account again.
    SendMessageW(dialog_->hwnd(), WM_ACTIVATE, WA_ACTIVE, 0);
    const std::wstring linked = L"Linked as octo-" + widen(user_.username) + L".";
    EXPECT_TRUE(test::pumpUntil([&] { return hwndText(state) == linked; }, 10000)) << narrow(hwndText(state));
}

TEST_F(OptionsProfileTabTest, TheInputMeterHearsTheChosenMicrophoneOnly) {
    const std::string speaking = test::deviceContaining(waveInDeviceNames(), "CorvA");
    const std::string silent = test::deviceContaining(waveInDeviceNames(), "CorvB");
    if (speaking.empty() || silent.empty()) {
        GTEST_SKIP() << "no PulseAudio fixture devices; the meter is not tested";
    }
    settings_.voiceInputDevice = speaking;
    ASSERT_NE(open(Tab::Voice), nullptr);
    ASSERT_TRUE(dialog_->isMeterOpen());

    // A tone played into CorvA's sink is what its monitor, the chosen microphone, hears.
    const test::TonePlayer speaker(waveOutDeviceNamed(test::deviceContaining(waveOutDeviceNames(), "CorvA")),
                                   440.0, 8.0);
    ASSERT_TRUE(speaker.isOpen());

    // 12000 of 32768 is 36 %; at 50 % input volume the meter shows half of that.
    EXPECT_TRUE(test::pumpUntil([&] { return dialog_->inputLevel() >= 30; }, 6000)) << dialog_->inputLevel();
    SetWindowTextW(dialog_->control(kInputVolume), L"50");
    test::pumpUntil([] { return false; }, 600);
    EXPECT_NEAR(dialog_->inputLevel(), 18, 3);

    // Another microphone hears nothing of it.
    const auto silentIndex =
        SendMessageW(dialog_->control(kInputDevice), CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                     reinterpret_cast<LPARAM>(widen(silent).c_str()));
    ASSERT_GE(silentIndex, 0);
    SendMessageW(dialog_->control(kInputDevice), CB_SETCURSEL, static_cast<WPARAM>(silentIndex), 0);
    SendMessageW(dialog_->hwnd(), WM_COMMAND, MAKEWPARAM(kInputDevice, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(dialog_->control(kInputDevice)));
    test::pumpUntil([] { return false; }, 2500);
    EXPECT_LE(dialog_->inputLevel(), 2);

    // Leaving the tab closes the device.
    HWND strip = dialog_->control(kTabStrip);
    TabCtrl_SetCurSel(strip, static_cast<int>(Tab::Profile));
    NMHDR change{strip, static_cast<UINT_PTR>(kTabStrip), static_cast<UINT>(TCN_SELCHANGE)};
    SendMessageW(dialog_->hwnd(), WM_NOTIFY, kTabStrip, reinterpret_cast<LPARAM>(&change));
    EXPECT_FALSE(dialog_->isMeterOpen());
}

} // namespace
} // namespace corvandell::win
