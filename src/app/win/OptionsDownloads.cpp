// Options > Downloads: where games are installed and how fast they may download.
#include <windows.h>

#include <commctrl.h>

#include "app/OptionsInput.hpp"
#include "app/win/FilePickers.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/OptionsLayout.hpp"
#include "base/Utf8Path.hpp"
#include "base/win/WideText.hpp"

#include <array>

namespace corvandell::win {
namespace options {
namespace {

constexpr std::array<OptionsControl, 7> kControls{{
    {kLibraryFolderLabel, WC_STATICW, L"&Library folder", kLabelStyle, kLabelX, 63, kLabelWidth, 18},
    {kLibraryFolder, WC_EDITW, L"", kEditStyle, kFieldX, 60, kFieldWidth - 96, 24},
    {kBrowseFolder, WC_BUTTONW, L"&Browse...", kButtonStyle, kFieldX + kFieldWidth - 90, 59, 90, 26},
    {kLibraryFolderHint, WC_STATICW,
     L"Games you install through Corvandell go here. The folder is created when you apply.", kHintStyle,
     kFieldX, 90, kFieldWidth, 34},
    {kDownloadLimitLabel, WC_STATICW, L"Download li&mit (KB/s)", kLabelStyle, kLabelX, 143, kLabelWidth, 18},
    {kDownloadLimit, WC_EDITW, L"", kEditStyle, kFieldX, 140, 100, 24},
    {kDownloadLimitHint, WC_STATICW, L"0 or empty: no limit", kHintStyle, kFieldX + 110, 143,
     kFieldWidth - 110, 18},
}};

} // namespace

std::span<const OptionsControl> downloadsControls() {
    return kControls;
}

} // namespace options

using namespace options;

void OptionsDialog::fillDownloads() {
    SetWindowTextW(control(kLibraryFolder), widen(pathToUtf8(host_.settings->libraryPath)).c_str());
    SetWindowTextW(control(kDownloadLimit), std::to_wstring(host_.settings->downloadLimitKbps).c_str());
}

std::optional<OptionsDialog::FieldProblem> OptionsDialog::readDownloads(Settings& changed) {
    const std::wstring folderText = hwndText(control(kLibraryFolder));
    // An untouched folder is kept as it is, even one the check would word differently.
    if (folderText != widen(pathToUtf8(host_.settings->libraryPath))) {
        const CheckedInput<std::filesystem::path> folder = checkLibraryFolderText(narrow(folderText));
        if (!folder.isValid()) {
            return FieldProblem{kLibraryFolder, folder.error};
        }
        changed.libraryPath = folder.value;
    }
    const CheckedInput<int> limit = checkDownloadLimit(narrow(hwndText(control(kDownloadLimit))));
    if (!limit.isValid()) {
        return FieldProblem{kDownloadLimit, limit.error};
    }
    changed.downloadLimitKbps = limit.value;
    return std::nullopt;
}

void OptionsDialog::browseForFolder() {
    const std::wstring chosen =
        pickFolder(hwnd_, hwndText(control(kLibraryFolder)), L"Choose the library folder");
    if (!chosen.empty()) {
        SetWindowTextW(control(kLibraryFolder), chosen.c_str());
    }
}

} // namespace corvandell::win
