// The options dialog as the main window opens it, driven through its real controls: every
// setting goes through OK into settings.json and comes back into the dialog; a bad entry
// is named, shown on its tab, and changes neither the file nor the client; the keyboard
// works in a loop that is not the dialog's own; a skin preview is taken back by Cancel;
// and the dialog reports its end (MsgChildClosed, kind 2).
#include <windows.h>

#include <commctrl.h>

#include "app/Skins.hpp"
#include "app/win/MainWindow.hpp"
#include "app/win/OptionsIds.hpp"
#include "base/Utf8Path.hpp"
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

// Every field's own rules are tested on the checks themselves (OptionsInput_test); here, one
// refused entry per field shows how the dialog deals with any of them.
TEST_F(OptionsDialogTest, ABadEntryIsNamedOnItsTabAndChangesNeitherTheFileNorTheClient) {
    Settings before = defaultSettings(paths_.defaultLibraryFolder);
    before.apiBaseUrl = "https://api.example.test";
    openMainWindow(before);
    const std::string fileBefore = settingsFileBytes();
    const std::filesystem::path blocked = folder_.writeFile("blocker", "a file, not a folder") / "Games";

    const struct {
        int id;
        std::wstring text;
        std::string message; // its start only, for the library folder that cannot be created
        Tab tab;
    } entries[] = {
        {kServiceAddress, L"http://api.example.test",
         "Use an https:// address: plain http is allowed only for this computer (localhost), since every "
         "request carries your session.",
         Tab::Connection},
        {kLibraryFolder, L"Games", "The library folder must be a full path, such as C:\\Games.",
         Tab::Downloads},
        {kLibraryFolder, blocked.wstring(),
         "The library folder \"" + pathToUtf8(blocked) + "\" could not be created: ", Tab::Downloads},
        {kDownloadLimit, L"fast", "The download limit must be a whole number of KB/s (0 for no limit).",
         Tab::Downloads},
        {kInputVolume, L"250", "The input volume must be a whole number from 0 to 200 (%).", Tab::Voice},
        {kOutputVolume, L"-3", "The output volume must be a whole number from 0 to 200 (%).", Tab::Voice},
    };
    HWND dialog = pressOptions();
    ASSERT_NE(dialog, nullptr);
    for (const auto& entry : entries) {
        SCOPED_TRACE(pathToUtf8(std::filesystem::path(entry.text)));
        showTabOf(dialog, Tab::Profile); // the problem's tab must come forward
        const std::wstring good = textOf(dialog, entry.id);
        // A good change elsewhere must not be applied either.
        const bool isLimit = entry.id == kDownloadLimit;
        setText(dialog, isLimit ? kInputVolume : kDownloadLimit, isLimit ? L"90" : L"64");
        setText(dialog, entry.id, entry.text);
        press(dialog, isLimit ? kApplyButton : IDOK);

        ASSERT_TRUE(IsWindow(dialog)) << "a bad entry keeps the dialog open";
        const std::string message = narrow(textOf(dialog, kMessageLine));
        if (entry.text == blocked.wstring()) {
            EXPECT_TRUE(message.starts_with(entry.message)) << message;
            EXPECT_GT(message.size(), entry.message.size() + 1) << "the reason is given";
        } else {
            EXPECT_EQ(message, entry.message);
        }
        EXPECT_EQ(TabCtrl_GetCurSel(GetDlgItem(dialog, kTabStrip)), static_cast<int>(entry.tab));
        EXPECT_TRUE(IsWindowVisible(GetDlgItem(dialog, entry.id)));
        EXPECT_EQ(GetFocus(), GetDlgItem(dialog, entry.id));
        EXPECT_EQ(settingsFileBytes(), fileBefore);
        EXPECT_EQ(window_->settings(), before);

        setText(dialog, entry.id, good);
        setText(dialog, kDownloadLimit, L"0");
        setText(dialog, kInputVolume, L"100");
    }
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
    for (const bool isClosedByButton : {true, false}) {
        HWND dialog = pressOptions();
        ASSERT_NE(dialog, nullptr);
        choose(dialog, kSkinList, skinIndex("slate"), LB_SETCURSEL, LBN_SELCHANGE);
        EXPECT_EQ(currentTheme().id, "slate");
        if (isClosedByButton) {
            press(dialog, IDCANCEL);
        } else {
            SendMessageW(dialog, WM_CLOSE, 0, 0);
        }
        ASSERT_TRUE(waitUntilClosed(dialog));
        EXPECT_EQ(currentTheme().id, "dark");
        EXPECT_EQ(window_->settings().skinId, "dark");
        EXPECT_EQ(settingsFileBytes(), fileBefore);
    }
    // Apply keeps it, and a later Cancel does not take back what was applied.
    HWND dialog = pressOptions();
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
