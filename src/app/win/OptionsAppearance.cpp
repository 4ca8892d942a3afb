// Options > Appearance: the skin, previewed on every window as soon as it is chosen, and
// the user's own skin files.
//
// A preview changes the process-wide theme and tells the main window (MsgThemeChanged), so
// the user sees the real client, not a sample. Apply or OK keeps it; Cancel, Escape or
// closing the dialog puts back the skin that was in use when the dialog opened.
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include "app/win/Messages.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/OptionsLayout.hpp"
#include "base/Utf8Path.hpp"
#include "base/win/WideText.hpp"

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>

namespace corvandell::win {
namespace options {
namespace {

constexpr std::array<OptionsControl, 7> kControls{{
    {kSkinLabel, WC_STATICW, L"&Skin", kLabelStyle, kLabelX, 63, kLabelWidth, 18},
    {kSkinList, WC_LISTBOXW, L"", WS_TABSTOP | WS_BORDER | WS_VSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
     kFieldX, 60, kFieldWidth, 132},
    {kSkinHint, WC_STATICW, L"A skin shows on every window as soon as you choose it; Cancel goes back.",
     kHintStyle, kFieldX, 198, kFieldWidth, 34},
    {kSkinFilesLabel, WC_STATICW, L"Your skin files", kLabelStyle, kLabelX, 246, kLabelWidth, 18},
    {kSkinFolder, WC_STATICW, L"", kHintStyle | SS_PATHELLIPSIS, kFieldX, 246, kFieldWidth, 18},
    {kOpenSkinFolder, WC_BUTTONW, L"Open skins &folder", kButtonStyle, kFieldX, 272, 150, 26},
    {kReloadSkins, WC_BUTTONW, L"&Reload skins", kButtonStyle, kFieldX + 158, 272, 120, 26},
}};

} // namespace

std::span<const OptionsControl> appearanceControls() {
    return kControls;
}

} // namespace options

using namespace options;

namespace {

// Skins that a file in the skins folder made or changed, as opposed to the built-in ones.
bool isFromFile(const Skin& skin, const std::vector<Skin>& builtIns) {
    return std::find(builtIns.begin(), builtIns.end(), skin) == builtIns.end();
}

std::vector<Skin> skinsOrBuiltIns(const std::filesystem::path& dataFolder) {
    try {
        return loadSkins(dataFolder);
    } catch (const std::exception&) {
        return builtInSkins(); // an unreadable skins folder leaves the built-in choice
    }
}

} // namespace

void OptionsDialog::fillAppearance() {
    skins_ = skinsOrBuiltIns(host_.paths.dataFolder);
    const std::vector<Skin> builtIns = builtInSkins();
    HWND list = control(kSkinList);
    SendMessageW(list, LB_RESETCONTENT, 0, 0);
    const std::string& chosen = isSkinPreviewed_ ? currentTheme().id : host_.settings->skinId;
    int selected = -1;
    for (size_t i = 0; i < skins_.size(); ++i) {
        std::wstring text = widen(skins_[i].name.empty() ? skins_[i].id : skins_[i].name);
        if (isFromFile(skins_[i], builtIns)) {
            text += L"  (your skin file)";
        }
        SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        if (selected < 0 && skins_[i].id == chosen) {
            selected = static_cast<int>(i);
        }
    }
    if (selected < 0) {
        // An unknown skin id shows as dark, so that is what is chosen here too.
        const Skin shown = chooseSkin(skins_, chosen);
        const auto at =
            std::find_if(skins_.begin(), skins_.end(), [&](const Skin& skin) { return skin.id == shown.id; });
        selected = at == skins_.end() ? 0 : static_cast<int>(at - skins_.begin());
    }
    SendMessageW(list, LB_SETCURSEL, static_cast<WPARAM>(selected), 0);
    const std::wstring folder = widen(pathToUtf8(skinsFolder(host_.paths.dataFolder)));
    SetWindowTextW(control(kSkinFolder), folder.c_str());
}

void OptionsDialog::readAppearance(Settings& changed) const {
    const LRESULT selected = SendMessageW(control(kSkinList), LB_GETCURSEL, 0, 0);
    if (selected >= 0 && static_cast<size_t>(selected) < skins_.size()) {
        changed.skinId = skins_[static_cast<size_t>(selected)].id;
    }
}

void OptionsDialog::previewSelectedSkin() {
    const LRESULT selected = SendMessageW(control(kSkinList), LB_GETCURSEL, 0, 0);
    if (selected < 0 || static_cast<size_t>(selected) >= skins_.size()) {
        return;
    }
    applyTheme(skins_[static_cast<size_t>(selected)]);
    isSkinPreviewed_ = true;
    PostMessageW(host_.mainWindow, MsgThemeChanged, 0, 0);
    RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void OptionsDialog::restoreOriginalSkin() noexcept {
    if (!isSkinPreviewed_) {
        return;
    }
    applyTheme(originalSkin_);
    isSkinPreviewed_ = false;
    PostMessageW(host_.mainWindow, MsgThemeChanged, 0, 0);
}

void OptionsDialog::reloadSkins() {
    const LRESULT selected = SendMessageW(control(kSkinList), LB_GETCURSEL, 0, 0);
    const std::string keep = selected >= 0 && static_cast<size_t>(selected) < skins_.size()
                                 ? skins_[static_cast<size_t>(selected)].id
                                 : host_.settings->skinId;
    fillAppearance();
    const auto at =
        std::find_if(skins_.begin(), skins_.end(), [&](const Skin& skin) { return skin.id == keep; });
    if (at != skins_.end()) {
        SendMessageW(control(kSkinList), LB_SETCURSEL, static_cast<WPARAM>(at - skins_.begin()), 0);
    }
    setMessage(L"Skins reloaded: " + std::to_wstring(skins_.size()) + L" available.");
}

void OptionsDialog::openSkinFolder() {
    const std::filesystem::path folder = skinsFolder(host_.paths.dataFolder);
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    const auto result = reinterpret_cast<INT_PTR>(
        ShellExecuteW(hwnd_, L"open", folder.wstring().c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    if (result <= 32) {
        setMessage(L"Could not open the skins folder. Skin files go in " + folder.wstring(), true);
    }
}

} // namespace corvandell::win
