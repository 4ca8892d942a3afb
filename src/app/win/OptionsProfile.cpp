// Options > Profile: the nickname, the profile picture and the linked GitHub account, all
// kept by the service. They load in the background when the dialog opens; until then, and
// when signed out, the tab's controls are disabled.
//
// The picture is chosen from a file, cut to a square the user picks in the crop dialog,
// scaled to 256 pixels and sent as PNG. GitHub linking happens in the browser: the service
// gives the address to open, and the linked login is asked for again when the user comes
// back to the dialog.
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include "app/OptionsInput.hpp"
#include "app/win/CropDialog.hpp"
#include "app/win/FilePickers.hpp"
#include "app/win/OptionsDialog.hpp"
#include "app/win/OptionsLayout.hpp"
#include "app/win/OptionsMessages.hpp"
#include "app/win/ProfilePicture.hpp"
#include "app/win/ThemeHook.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"

#include <array>
#include <exception>

namespace corvandell::win {
namespace options {
namespace {

constexpr std::array<OptionsControl, 11> kControls{{
    {kNicknameLabel, WC_STATICW, L"&Nickname", kLabelStyle, kLabelX, 63, kLabelWidth, 18},
    {kNickname, WC_EDITW, L"", kEditStyle, kFieldX, 60, kFieldWidth, 24},
    {kPictureLabel, WC_STATICW, L"Profile picture", kLabelStyle, kLabelX, 100, kLabelWidth, 18},
    {kPicturePreview, WC_STATICW, L"", SS_OWNERDRAW, kFieldX, 98, 96, 96},
    {kChoosePicture, WC_BUTTONW, L"Choose &picture...", kButtonStyle, kFieldX + 108, 98, 150, 26},
    {kPictureHint, WC_STATICW,
     L"PNG, JPEG, GIF or BMP. You pick a square of it; it is sent at 256 x 256 pixels.", kHintStyle,
     kFieldX + 108, 130, kFieldWidth - 108, 64},
    {kGitHubLabel, WC_STATICW, L"GitHub account", kLabelStyle, kLabelX, 212, kLabelWidth, 18},
    {kGitHubState, WC_STATICW, L"", kHintStyle | SS_ENDELLIPSIS, kFieldX, 212, kFieldWidth, 18},
    {kLinkGitHub, WC_BUTTONW, L"&Link GitHub account...", kButtonStyle, kFieldX, 238, 180, 26},
    {kRefreshGitHub, WC_BUTTONW, L"Re&fresh", kButtonStyle, kFieldX + 188, 238, 90, 26},
    {kGitHubHint, WC_STATICW,
     L"Linking lets Add Game read corvandell.txt from the repositories you own, and lets you take "
     L"ownership of your games that others shared.",
     kHintStyle, kFieldX, 272, kFieldWidth, 50},
}};

} // namespace

std::span<const OptionsControl> profileControls() {
    return kControls;
}

} // namespace options

using namespace options;

namespace {

std::wstring gitHubStateText(const std::string& login) {
    return login.empty() ? L"Not linked." : L"Linked as " + widen(login) + L".";
}

} // namespace

void OptionsDialog::fillProfile() {
    const bool isUsable = isSignedIn() && isProfileLoaded_;
    for (const int id : {kNickname, kChoosePicture, kLinkGitHub, kRefreshGitHub}) {
        EnableWindow(control(id), isUsable);
    }
    if (!isSignedIn()) {
        isProfileLoaded_ = false;
        loadedNickname_.clear();
        picture_.reset();
        SetWindowTextW(control(kNickname), L"");
        SetWindowTextW(control(kGitHubState), L"Sign in to see your profile.");
        InvalidateRect(control(kPicturePreview), nullptr, FALSE);
    } else if (!isProfileLoaded_) {
        SetWindowTextW(control(kGitHubState), L"Loading...");
    }
}

void OptionsDialog::loadProfile() {
    if (!isSignedIn()) {
        return;
    }
    startJob<ProfileLoaded>(kMsgProfileLoaded, [api = host_.api.get()] {
        ProfileLoaded result;
        try {
            result.nickname = api->getMe().nickname;
            result.gitHubLogin = api->getLinkedRepositoryAccount();
            result.succeeded = true;
        } catch (const std::exception& error) {
            result.errorText = error.what();
            return result;
        }
        try {
            result.avatarBytes = api->getMyAvatar();
        } catch (const std::exception&) {
            // No picture yet is answered as an error by the service; the tab shows none.
        }
        return result;
    });
}

void OptionsDialog::onProfileLoaded(std::unique_ptr<ProfileLoaded> result) {
    if (!isSignedIn()) {
        return; // signed out while it loaded
    }
    if (!result->succeeded) {
        SetWindowTextW(control(kGitHubState), L"Could not load your profile.");
        setMessage(L"Could not load your profile: " + widen(result->errorText), true);
        return;
    }
    isProfileLoaded_ = true;
    loadedNickname_ = result->nickname;
    SetWindowTextW(control(kNickname), widen(result->nickname).c_str());
    SetWindowTextW(control(kGitHubState), gitHubStateText(result->gitHubLogin).c_str());
    picture_ = bitmapFromImageBytes(result->avatarBytes, scaledForDpi(96, dpi_));
    InvalidateRect(control(kPicturePreview), nullptr, FALSE);
    fillProfile();
}

std::optional<OptionsDialog::FieldProblem> OptionsDialog::readProfile(bool& isNicknameChanged) {
    isNicknameChanged = false;
    if (!isSignedIn() || !isProfileLoaded_) {
        return std::nullopt; // nothing was shown, so nothing can have changed
    }
    const CheckedInput<std::string> nickname = checkNickname(narrow(hwndText(control(kNickname))));
    if (!nickname.isValid()) {
        return FieldProblem{kNickname, nickname.error};
    }
    isNicknameChanged = nickname.value != loadedNickname_;
    return std::nullopt;
}

void OptionsDialog::saveNickname() {
    const std::string nickname = checkNickname(narrow(hwndText(control(kNickname)))).value;
    isNicknameSaving_ = true;
    startJob<ProfileSaved>(kMsgProfileSaved, [api = host_.api.get(), nickname] {
        ProfileSaved result{{}, nickname};
        try {
            api->setNickname(nickname);
        } catch (const std::exception& error) {
            result.errorText = error.what();
        }
        return result;
    });
}

void OptionsDialog::onProfileSaved(std::unique_ptr<ProfileSaved> result) {
    isNicknameSaving_ = false;
    if (!result->errorText.empty()) {
        isClosingAfterSave_ = false;
        showTab(Tab::Profile);
        setMessage(L"Settings saved, but the nickname was not: " + widen(result->errorText), true);
        return;
    }
    loadedNickname_ = result->nickname;
    setMessage(L"Settings and nickname saved.");
    if (isClosingAfterSave_) {
        finish(true);
    }
}

void OptionsDialog::choosePicture() {
    const std::wstring file = pickPictureFile(hwnd_, L"Choose your profile picture");
    if (file.empty()) {
        return;
    }
    std::string error;
    const std::unique_ptr<ProfilePicture> picture = ProfilePicture::load(file, error);
    if (!picture) {
        setMessage(widen(error), true);
        return;
    }
    CropDialog crop(instance_, hwnd_, *picture);
    const CropSquare square = crop.run();
    if (square.side <= 0) {
        return; // cancelled
    }
    std::string png = picture->squarePng(square);
    if (png.empty()) {
        setMessage(L"Could not make a PNG of that picture.", true);
        return;
    }
    uploadPicture(std::move(png));
}

void OptionsDialog::uploadPicture(std::string png) {
    if (!isSignedIn()) {
        setMessage(L"Sign in to change your profile picture.", true);
        return;
    }
    setMessage(L"Uploading your picture...");
    EnableWindow(control(kChoosePicture), FALSE);
    startJob<PictureUploaded>(kMsgPictureUploaded, [api = host_.api.get(), png = std::move(png)] {
        PictureUploaded result{{}, png};
        try {
            api->uploadAvatar(png);
        } catch (const std::exception& error) {
            result.errorText = error.what();
        }
        return result;
    });
}

void OptionsDialog::onPictureUploaded(std::unique_ptr<PictureUploaded> result) {
    EnableWindow(control(kChoosePicture), isSignedIn() && isProfileLoaded_);
    if (!result->errorText.empty()) {
        setMessage(L"Could not upload the picture: " + widen(result->errorText), true);
        return;
    }
    picture_ = bitmapFromImageBytes(result->png, scaledForDpi(96, dpi_));
    InvalidateRect(control(kPicturePreview), nullptr, FALSE);
    setMessage(L"Profile picture updated.");
}

void OptionsDialog::linkGitHub() {
    SetWindowTextW(control(kGitHubState), L"Asking the service...");
    startJob<GitHubStep>(kMsgGitHubStep, [api = host_.api.get()] {
        GitHubStep result;
        result.isLinkStart = true;
        try {
            result.linkAddress = api->startRepositoryAccountLink();
            if (result.linkAddress.empty()) {
                result.errorText = "the service gave no address to open";
            }
        } catch (const std::exception& error) {
            result.errorText = error.what();
        }
        return result;
    });
}

void OptionsDialog::refreshGitHub() {
    isGitHubLinkPending_ = false;
    if (!isSignedIn()) {
        return;
    }
    startJob<GitHubStep>(kMsgGitHubStep, [api = host_.api.get()] {
        GitHubStep result;
        try {
            result.login = api->getLinkedRepositoryAccount();
        } catch (const std::exception& error) {
            result.errorText = error.what();
        }
        return result;
    });
}

void OptionsDialog::onGitHubStep(std::unique_ptr<GitHubStep> result) {
    if (!result->errorText.empty()) {
        SetWindowTextW(control(kGitHubState), L"Could not reach the service.");
        setMessage(
            (result->isLinkStart ? L"Could not start linking: " : L"Could not check the GitHub link: ") +
                widen(result->errorText),
            true);
        return;
    }
    if (!result->isLinkStart) {
        SetWindowTextW(control(kGitHubState), gitHubStateText(result->login).c_str());
        return;
    }
    const std::wstring address = widen(result->linkAddress);
    if (host_.openInBrowser) {
        host_.openInBrowser(address);
    } else {
        ShellExecuteW(hwnd_, L"open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    }
    isGitHubLinkPending_ = true;
    SetWindowTextW(control(kGitHubState), L"Waiting for the browser...");
    setMessage(L"Finish linking in your browser; the linked account shows here when you come back.");
}

void OptionsDialog::drawPicture(const DRAWITEMSTRUCT& item) const {
    const Skin& skin = currentTheme();
    RECT rect = item.rcItem;
    FillRect(item.hDC, &rect, themeBrush(skin.border));
    InflateRect(&rect, -1, -1);
    FillRect(item.hDC, &rect, themeBrush(skin.controlBackground));
    if (!picture_) {
        SetBkMode(item.hDC, TRANSPARENT);
        SetTextColor(item.hDC, toColorRef(skin.mutedText));
        const auto font = reinterpret_cast<HFONT>(SendMessageW(hwnd_, WM_GETFONT, 0, 0));
        const ScopedSelect selectFont(item.hDC, font != nullptr ? static_cast<HGDIOBJ>(font)
                                                                : static_cast<HGDIOBJ>(font_.get()));
        DrawTextW(item.hDC, L"No picture", -1, &rect, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
        return;
    }
    const UniqueMemoryDc memory(CreateCompatibleDC(item.hDC));
    BITMAP size{};
    GetObjectW(picture_.get(), sizeof(size), &size);
    const ScopedSelect select(memory.get(), picture_.get());
    SetStretchBltMode(item.hDC, HALFTONE);
    StretchBlt(item.hDC, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, memory.get(), 0,
               0, size.bmWidth, size.bmHeight, SRCCOPY);
}

} // namespace corvandell::win
