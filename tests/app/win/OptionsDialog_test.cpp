// The options dialog as the main window opens it, driven through its real controls and
// read back from settings.json.
#include <windows.h>

#include <commctrl.h>

#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/OptionsIds.hpp"
#include "base/win/WideText.hpp"
#include "base/win/Window.hpp"
#include "support/TempFolder.hpp"
#include "support/win/MessagePump.hpp"
#include "voice/win/WaveDevices.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace corvandell::win {
namespace {

using namespace options;

class OptionsDialogTest : public ::testing::Test {
protected:
    void SetUp() override { applyTheme(chooseSkin(builtInSkins(), "dark")); }
    void TearDown() override {
        if (window_ && window_->hwnd() != nullptr) {
            DestroyWindow(window_->hwnd());
        }
        window_.reset();
        applyTheme(chooseSkin(builtInSkins(), "dark"));
    }

    // The main window over `settings`, its settings.json written once so there is a file.
    void openMainWindow(Settings settings) {
        MainWindowJobs jobs;
        jobs.makeRefresh = [](const std::string&) { return [] { return LibraryResult{true, {}, {}}; }; };
        window_ = std::make_unique<MainWindow>(GetModuleHandleW(nullptr), paths_, std::move(settings),
                                               settingsFileIn(paths_.dataFolder), std::move(jobs));
        ASSERT_TRUE(window_->create(SW_HIDE));
        ASSERT_EQ(window_->saveSettingsFile(), "");
    }

    HWND pressOptions() {
        SendMessageW(window_->hwnd(), WM_COMMAND, MAKEWPARAM(command::Options, BN_CLICKED), 0);
        return window_->childWindow(ChildKind::Options);
    }

    std::string settingsFileBytes() const { return test::readTestFile(paths_.dataFolder / "settings.json"); }

    Settings savedSettings() const { return parseSettings(settingsFileBytes(), paths_.defaultLibraryFolder); }

    bool waitUntilClosed(HWND dialog) {
        return test::pumpUntil(
            [&] { return !IsWindow(dialog) && window_->childWindow(ChildKind::Options) == nullptr; }, 3000);
    }

    test::TempFolder folder_;
    DataPaths paths_{folder_.path() / "data", folder_.path() / "games"};
    std::unique_ptr<MainWindow> window_;
};

void setText(HWND dialog, int id, const std::wstring& text) {
    SetWindowTextW(GetDlgItem(dialog, id), text.c_str());
}

std::wstring textOf(HWND dialog, int id) {
    return hwndText(GetDlgItem(dialog, id));
}

void press(HWND dialog, int id) {
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

void choose(HWND dialog, int id, int index, UINT selectMessage, int changeNotification) {
    HWND list = GetDlgItem(dialog, id);
    SendMessageW(list, selectMessage, static_cast<WPARAM>(index), 0);
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, changeNotification), reinterpret_cast<LPARAM>(list));
}

// As a click on the tab strip does it.
void showTabOf(HWND dialog, Tab tab) {
    HWND strip = GetDlgItem(dialog, kTabStrip);
    TabCtrl_SetCurSel(strip, static_cast<int>(tab));
    NMHDR header{strip, static_cast<UINT_PTR>(kTabStrip), static_cast<UINT>(TCN_SELCHANGE)};
    SendMessageW(dialog, WM_NOTIFY, kTabStrip, reinterpret_cast<LPARAM>(&header));
}

int skinIndex(const std::string& id) {
    const std::vector<Skin> skins = builtInSkins();
    for (size_t i = 0; i < skins.size(); ++i) {
        if (skins[i].id == id) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

TEST_F(OptionsDialogTest, EverySettingGoesThroughOkIntoSettingsJsonAndBackIntoTheDialog) {
    Settings before = defaultSettings(paths_.defaultLibraryFolder);
    // A session of the old service: changing the address must not carry it over.
    before.apiBaseUrl = "http://127.0.0.1:9";
    before.bearerToken = "token-of-the-old-service";
    before.refreshToken = "refresh-of-the-old-service";
    before.username = "someone";
    before.webGameBrowsers = {{"github:abc", "firefox"}};
    openMainWindow(before);
    HWND dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(GetWindow(dialog, GW_OWNER), window_->hwnd());
    EXPECT_EQ(textOf(dialog, kSessionState), L"Signed in as someone.");

    const std::filesystem::path library = folder_.path() / "new games" / "library";
    const std::vector<std::string> inputs = waveInDeviceNames();
    const std::vector<std::string> outputs = waveOutDeviceNames();
    setText(dialog, kServiceAddress, L"  HTTPS://Options.Example.Test:8443/ ");
    setText(dialog, kLibraryFolder, library.wstring());
    setText(dialog, kDownloadLimit, L" 750 ");
    CheckDlgButton(dialog, kVoiceEnabled, BST_UNCHECKED);
    CheckDlgButton(dialog, kMuteByDefault, BST_CHECKED);
    choose(dialog, kInputDevice, static_cast<int>(inputs.size()), CB_SETCURSEL, CBN_SELCHANGE);
    choose(dialog, kOutputDevice, static_cast<int>(outputs.size()), CB_SETCURSEL, CBN_SELCHANGE);
    setText(dialog, kInputVolume, L"80");
    setText(dialog, kOutputVolume, L"150");
    choose(dialog, kSkinList, skinIndex("light"), LB_SETCURSEL, LBN_SELCHANGE);
    EXPECT_EQ(currentTheme().id, "light") << "a chosen skin shows at once";

    press(dialog, IDOK);
    ASSERT_TRUE(waitUntilClosed(dialog));

    Settings expected = before;
    expected.apiBaseUrl = "https://options.example.test:8443";
    expected.bearerToken.clear();
    expected.refreshToken.clear();
    expected.username.clear();
    expected.libraryPath = library;
    expected.downloadLimitKbps = 750;
    expected.voiceEnabled = false;
    expected.voiceMuteByDefault = true;
    expected.voiceInputDevice = inputs.empty() ? "" : inputs.back();
    expected.voiceOutputDevice = outputs.empty() ? "" : outputs.back();
    expected.voiceInputVolume = 80;
    expected.voiceOutputVolume = 150;
    expected.skinId = "light";
    EXPECT_EQ(savedSettings(), expected);
    EXPECT_EQ(window_->settings(), expected);
    EXPECT_TRUE(std::filesystem::is_directory(library)) << "the library folder is created";
    EXPECT_EQ(currentTheme().id, "light");

    // Opened again, the dialog shows what was saved.
    dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(textOf(dialog, kServiceAddress), L"https://options.example.test:8443");
    EXPECT_EQ(textOf(dialog, kSessionState), L"Not signed in. Restart Corvandell to sign in.");
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(dialog, kSignOut)));
    EXPECT_EQ(textOf(dialog, kLibraryFolder), library.wstring());
    EXPECT_EQ(textOf(dialog, kDownloadLimit), L"750");
    EXPECT_EQ(IsDlgButtonChecked(dialog, kVoiceEnabled), UINT{BST_UNCHECKED});
    EXPECT_EQ(IsDlgButtonChecked(dialog, kMuteByDefault), UINT{BST_CHECKED});
    EXPECT_EQ(SendDlgItemMessageW(dialog, kInputDevice, CB_GETCURSEL, 0, 0),
              static_cast<LRESULT>(inputs.size()));
    EXPECT_EQ(SendDlgItemMessageW(dialog, kOutputDevice, CB_GETCURSEL, 0, 0),
              static_cast<LRESULT>(outputs.size()));
    EXPECT_EQ(textOf(dialog, kInputVolume), L"80");
    EXPECT_EQ(textOf(dialog, kOutputVolume), L"150");
    EXPECT_EQ(SendDlgItemMessageW(dialog, kSkinList, LB_GETCURSEL, 0, 0), skinIndex("light"));
    press(dialog, IDCANCEL);
    EXPECT_TRUE(waitUntilClosed(dialog));
    EXPECT_EQ(savedSettings(), expected) << "Cancel writes nothing";
}

// Every field's own rules are tested on the checks themselves (OptionsInput_test); one refused
// entry here shows how the dialog deals with any of them.
TEST_F(OptionsDialogTest, ABadEntryIsNamedOnItsTabAndChangesNeitherTheFileNorTheClient) {
    Settings before = defaultSettings(paths_.defaultLibraryFolder);
    openMainWindow(before);
    const std::string fileBefore = settingsFileBytes();
    HWND dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    setText(dialog, kDownloadLimit, L"64"); // a good change elsewhere must not be applied either
    setText(dialog, kInputVolume, L"250");
    press(dialog, IDOK);

    ASSERT_TRUE(IsWindow(dialog)) << "a bad entry keeps the dialog open";
    EXPECT_EQ(narrow(textOf(dialog, kMessageLine)),
              "The input volume must be a whole number from 0 to 200 (%).");
    EXPECT_EQ(TabCtrl_GetCurSel(GetDlgItem(dialog, kTabStrip)), static_cast<int>(Tab::Voice));
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(dialog, kInputVolume)));
    EXPECT_EQ(GetFocus(), GetDlgItem(dialog, kInputVolume));
    EXPECT_EQ(settingsFileBytes(), fileBefore);
    EXPECT_EQ(window_->settings(), before);

    setText(dialog, kDownloadLimit, L"0");
    setText(dialog, kInputVolume, L"100");
    press(dialog, kApplyButton);
    EXPECT_EQ(narrow(textOf(dialog, kMessageLine)), "Settings saved.");
    EXPECT_EQ(savedSettings(), before) << "the good values, unchanged, are what is saved";
}

void postKey(HWND target, UINT message, WPARAM key) {
    PostMessageW(target, message, key, 1);
}

TEST_F(OptionsDialogTest, OneDialogAtATimeReportsItsEndAndTheKeyboardWorksInTheClientsLoop) {
    openMainWindow(defaultSettings(paths_.defaultLibraryFolder));
    HWND dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(pressOptions(), dialog) << "a second press brings the open one forward";
    ShowWindow(dialog, SW_SHOW);
    SetActiveWindow(dialog);

    // Tab goes on from the address to the next control that can take it (Sign out is
    // disabled without a session), and Alt+letter jumps to the field its label names.
    HWND address = GetDlgItem(dialog, kServiceAddress);
    SetFocus(address);
    postKey(address, WM_KEYDOWN, VK_TAB);
    test::pumpUntil([] { return false; }, 100);
    EXPECT_EQ(GetFocus(), GetDlgItem(dialog, IDOK));
    showTabOf(dialog, Tab::Downloads);
    postKey(GetFocus(), WM_SYSCHAR, 'm');
    test::pumpUntil([] { return false; }, 100);
    EXPECT_EQ(GetFocus(), GetDlgItem(dialog, kDownloadLimit)) << "Alt+M: Download li&mit";

    // Enter is OK: the entry is applied and the dialog ends.
    setText(dialog, kDownloadLimit, L"128");
    postKey(GetDlgItem(dialog, kDownloadLimit), WM_KEYDOWN, VK_RETURN);
    ASSERT_TRUE(waitUntilClosed(dialog)) << "Enter closes the dialog";
    EXPECT_EQ(savedSettings().downloadLimitKbps, 128);

    // Escape is Cancel.
    dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    setText(dialog, kDownloadLimit, L"256");
    postKey(GetDlgItem(dialog, kServiceAddress), WM_KEYDOWN, VK_ESCAPE);
    ASSERT_TRUE(waitUntilClosed(dialog)) << "Escape closes the dialog";
    EXPECT_EQ(savedSettings().downloadLimitKbps, 128);

    // Its end is reported as kind 2 with its own handle, and a stale report is ignored.
    dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    SendMessageW(window_->hwnd(), MsgChildClosed, static_cast<WPARAM>(ChildKind::Options),
                 reinterpret_cast<LPARAM>(window_->hwnd()));
    EXPECT_EQ(window_->childWindow(ChildKind::Options), dialog);
    SendMessageW(window_->hwnd(), MsgChildClosed, static_cast<WPARAM>(ChildKind::Friends),
                 reinterpret_cast<LPARAM>(dialog));
    EXPECT_EQ(window_->childWindow(ChildKind::Options), dialog);
    DestroyWindow(dialog);
    EXPECT_TRUE(waitUntilClosed(dialog));

    // The main window takes an open dialog with it.
    dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    DestroyWindow(window_->hwnd());
    EXPECT_FALSE(IsWindow(dialog));
}

TEST_F(OptionsDialogTest, ASkinPreviewShowsAtOnceAndCancelTakesItBack) {
    openMainWindow(defaultSettings(paths_.defaultLibraryFolder));
    const std::string fileBefore = settingsFileBytes();
    HWND dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    choose(dialog, kSkinList, skinIndex("slate"), LB_SETCURSEL, LBN_SELCHANGE);
    EXPECT_EQ(currentTheme().id, "slate");
    press(dialog, IDCANCEL);
    ASSERT_TRUE(waitUntilClosed(dialog));
    EXPECT_EQ(currentTheme().id, "dark");
    EXPECT_EQ(window_->settings().skinId, "dark");
    EXPECT_EQ(settingsFileBytes(), fileBefore);

    // Apply keeps it, and a later Cancel does not take back what was applied.
    dialog = pressOptions();
    choose(dialog, kSkinList, skinIndex("slate"), LB_SETCURSEL, LBN_SELCHANGE);
    press(dialog, kApplyButton);
    press(dialog, IDCANCEL);
    ASSERT_TRUE(waitUntilClosed(dialog));
    EXPECT_EQ(currentTheme().id, "slate");
    EXPECT_EQ(savedSettings().skinId, "slate");

    // The user's own skin files are listed after the built-in ones, and Reload finds new ones.
    dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(SendDlgItemMessageW(dialog, kSkinList, LB_GETCOUNT, 0, 0), 3);
    folder_.writeFile("data/skins/neon.json", R"({"id":"neon","name":"Neon Night","accent":"#ff3fa4"})");
    press(dialog, kReloadSkins);
    ASSERT_EQ(SendDlgItemMessageW(dialog, kSkinList, LB_GETCOUNT, 0, 0), 4);
    wchar_t item[64] = {};
    SendDlgItemMessageW(dialog, kSkinList, LB_GETTEXT, 3, reinterpret_cast<LPARAM>(item));
    EXPECT_STREQ(item, L"Neon Night  (your skin file)");
    EXPECT_EQ(SendDlgItemMessageW(dialog, kSkinList, LB_GETCURSEL, 0, 0), skinIndex("slate"));
    choose(dialog, kSkinList, 3, LB_SETCURSEL, LBN_SELCHANGE);
    EXPECT_EQ(currentTheme().accent, (Rgb{0xff, 0x3f, 0xa4}));
    press(dialog, IDOK);
    ASSERT_TRUE(waitUntilClosed(dialog));
    EXPECT_EQ(savedSettings().skinId, "neon");
}

} // namespace
} // namespace corvandell::win
