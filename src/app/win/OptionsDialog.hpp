// The options dialog: Connection, Downloads, Voice, Appearance and Profile on one tab strip,
// with OK, Cancel and Apply.
//
// It is modeless and owns itself: open() creates it, and it deletes itself after its last
// message, having told the main window (MsgChildClosed, kind 2). It edits the main
// window's settings record in place, but only on OK or Apply and only when every field
// passes its check: a bad entry is named in the message line, its tab is shown and its
// field focused, and nothing at all is changed. settings.json is then written through the
// main window's guard. A skin is previewed as soon as it is chosen; Cancel takes it back.
// Service calls (profile, picture, GitHub) run as background jobs.
#pragma once

#include <windows.h>

#include "api/IApiClient.hpp"
#include "app/DataPaths.hpp"
#include "app/Skins.hpp"
#include "app/win/OptionsIds.hpp"
#include "base/Settings.hpp"
#include "base/win/UiJob.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvandell::win {

class WaveCapture;

// What the dialog works on, all of it the main window's.
struct OptionsHost {
    HWND mainWindow = nullptr; // hears MsgThemeChanged, MsgChildClosed and a Refresh after sign-out
    Settings* settings = nullptr;
    DataPaths paths;
    // Writes settings.json through the main window's guard: "" when saved, else what went wrong.
    std::function<std::string()> saveSettings;
    std::shared_ptr<IApiClient> api; // the main window's service client, over `settings`
    // Opens a page in the user's browser; empty: the shell's "open".
    std::function<void(const std::wstring& address)> openInBrowser;
};

// Results of the dialog's background jobs.
struct ProfileLoaded {
    bool succeeded = false;
    std::string errorText;
    std::string nickname;
    std::string avatarBytes; // empty: no picture
    std::string gitHubLogin; // empty: not linked
};
struct ProfileSaved {
    std::string errorText; // empty: saved
    std::string nickname;  // what was sent
};
struct PictureUploaded {
    std::string errorText; // empty: uploaded
    std::string png;
};
struct GitHubStep {
    std::string errorText;
    std::string linkAddress; // set when a link was started: the page to open
    std::string login;       // set when the linked login was asked for
    bool isLinkStart = false;
};

class OptionsDialog final : public Window {
public:
    // Creates and shows the dialog on `tab`; null when it could not be created.
    static OptionsDialog* open(HINSTANCE instance, OptionsHost host,
                               options::Tab tab = options::Tab::Connection, int showCommand = SW_SHOW);

    HWND control(int id) const noexcept { return GetDlgItem(hwnd_, id); }
    options::Tab currentTab() const noexcept { return tab_; }
    void showTab(options::Tab tab);
    std::wstring messageText() const;
    // Checks every field and applies them; false (with the message shown) when one is bad.
    bool apply();
    // Uploads PNG bytes as the profile picture, as the picture chooser does after the crop.
    void uploadPicture(std::string png);
    bool isBusy() const noexcept { return pendingJobs_ > 0; }
    // The input meter's last reading (percent) and whether a device is open for it.
    int inputLevel() const noexcept { return inputLevel_; }
    bool isMeterOpen() const noexcept;

private:
    OptionsDialog(HINSTANCE instance, OptionsHost host, options::Tab tab);
    ~OptionsDialog() override;

    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);
    void onFinalMessage() noexcept override { delete this; }

    // Building and laying out (OptionsDialog.cpp).
    void onCreate();
    void onActivate(bool isActive);
    void createControls();
    void layout();
    void onDpiChanged(UINT dpi, const RECT& suggested);
    void onCommand(int id, int notification, HWND from);
    void onDestroy() noexcept;
    void finish(bool isApplied);
    void setMessage(const std::wstring& text, bool isProblem = false);
    void drawItem(const DRAWITEMSTRUCT& item);
    struct FieldProblem {
        int controlId;
        std::string message;
    };
    std::optional<FieldProblem> collectChanges(Settings& changed, bool& isNicknameChanged);
    void showProblem(const FieldProblem& problem);

    // Connection (OptionsConnection.cpp).
    void fillConnection();
    std::optional<FieldProblem> readConnection(Settings& changed);
    void showSessionState();
    void signOut();

    // Downloads (OptionsDownloads.cpp).
    void fillDownloads();
    std::optional<FieldProblem> readDownloads(Settings& changed);
    void browseForFolder();

    // Voice (OptionsVoice.cpp).
    void fillVoice();
    std::optional<FieldProblem> readVoice(Settings& changed);
    void startMeter();
    void stopMeter() noexcept;
    void onMeterTick();
    void drawMeter(const DRAWITEMSTRUCT& item) const;

    // Appearance (OptionsAppearance.cpp).
    void fillAppearance();
    void readAppearance(Settings& changed) const;
    void previewSelectedSkin();
    void restoreOriginalSkin() noexcept;
    void reloadSkins();
    void openSkinFolder();

    // Profile (OptionsProfile.cpp).
    void fillProfile();
    std::optional<FieldProblem> readProfile(bool& isNicknameChanged);
    void loadProfile();
    void saveNickname();
    void choosePicture();
    void linkGitHub();
    void refreshGitHub();
    void onProfileLoaded(std::unique_ptr<ProfileLoaded> result);
    void onProfileSaved(std::unique_ptr<ProfileSaved> result);
    void onPictureUploaded(std::unique_ptr<PictureUploaded> result);
    void onGitHubStep(std::unique_ptr<GitHubStep> result);
    void drawPicture(const DRAWITEMSTRUCT& item) const;
    bool isSignedIn() const noexcept { return !host_.settings->bearerToken.empty(); }

    template <UiJobResult Result> void startJob(UINT message, std::function<Result()> producer);
    void jobEnded() noexcept;

    HINSTANCE instance_;
    OptionsHost host_;
    options::Tab tab_;
    UINT dpi_ = 96;
    HWND lastFocus_ = nullptr;
    UniqueFont font_;
    std::vector<HWND> tabControls_[options::kTabCount];

    std::vector<Skin> skins_;
    Skin originalSkin_;
    bool isSkinPreviewed_ = false;

    std::vector<std::string> inputDevices_; // as listed; the first is "" for the default
    std::vector<std::string> outputDevices_;
    std::unique_ptr<WaveCapture> meter_;
    int inputLevel_ = 0;
    int shownLevel_ = 0;

    std::string loadedNickname_;
    bool isProfileLoaded_ = false;
    UniqueBitmap picture_;
    bool isGitHubLinkPending_ = false;
    bool isNicknameSaving_ = false;
    bool isClosingAfterSave_ = false;
    int pendingJobs_ = 0;
    // Last, so its jobs end before anything they may use is destroyed.
    UiJobThreads jobThreads_;
};

} // namespace corvandell::win
