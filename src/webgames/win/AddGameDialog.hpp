// The Add Game dialog: a user shares a browser game by its repository or pages address.
//
// Submitting and taking ownership are service calls, so each runs on a worker thread and
// posts its result back; while one runs the buttons it could repeat are disabled. The
// linked repository-host login is asked for when the dialog opens: it decides whether the
// user owns the repository, in which case name and launch file may be left blank.
#pragma once

#include <windows.h>

#include "api/IApiClient.hpp"
#include "base/win/UiJob.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"
#include "webgames/AddGameForm.hpp"
#include "webgames/RepositoryHost.hpp"

#include <memory>
#include <optional>
#include <string>

namespace corvandell::win {

// How the client paints its windows, handed in so this dialog follows the chosen skin
// without knowing about skins; without a hook it has the system's look.
struct AddGameLook {
    bool (*messageHook)(HWND, UINT, WPARAM, LPARAM, LRESULT& result) noexcept = nullptr;
    void (*trackButtonHover)(HWND button) noexcept = nullptr;
    // Tab, Enter and Escape in a message loop that is not the dialog's own.
    void (*addDialogKeys)(HWND dialog) = nullptr;
    void (*removeDialogKeys)(HWND dialog) noexcept = nullptr;
};

// Who hears that the dialog has ended: `message` is posted with wParam 1 when a game was
// added (or taken over) and 0 otherwise.
struct AddGameEndNotice {
    HWND target = nullptr;
    UINT message = 0;
};

namespace addgame {
inline constexpr int AddressLabel = 10;
inline constexpr int Address = 11;
inline constexpr int Status = 12;
inline constexpr int NameLabel = 13;
inline constexpr int Name = 14;
inline constexpr int LaunchLabel = 15;
inline constexpr int Launch = 16;
inline constexpr int TakeOwnership = 17;
inline constexpr int AddGame = IDOK;
inline constexpr int Cancel = IDCANCEL;
} // namespace addgame

class AddGameDialog final : public Window {
public:
    enum class State { Editing, Submitting, Claiming };

    AddGameDialog(HINSTANCE instance, HWND owner, std::shared_ptr<IApiClient> api, RepositoryHost host,
                  AddGameLook look = {}, AddGameEndNotice endNotice = {});
    ~AddGameDialog() override;

    // Shows the dialog and disables its owner until it ends, so it is modal while the
    // owner's message loop keeps running; false when it could not be made.
    bool create(int showCommand = SW_SHOW);

    bool isDone() const noexcept { return isDone_; }
    bool wasGameAdded() const noexcept { return wasGameAdded_; }
    State state() const noexcept { return state_; }
    bool hasLinkedLogin() const noexcept { return linkedLogin_.has_value(); }
    HWND control(int id) const noexcept { return GetDlgItem(hwnd_, id); }
    std::wstring statusText() const;

private:
    struct LoginResult {
        std::string login;
        std::string errorText;
    };
    struct GameResult {
        bool succeeded = false;
        std::string errorText;
    };

    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);
    void onCreate();
    void layout();
    void onCommand(int id);
    void submit();
    void takeOwnership();
    void onLinkedLogin(std::unique_ptr<LoginResult> result);
    void onSubmitted(std::unique_ptr<GameResult> result);
    void onClaimed(std::unique_ptr<GameResult> result);
    void enterState(State state);
    void setStatus(const std::string& text);
    void end(bool wasGameAdded);
    void discardPendingResults() noexcept;

    HINSTANCE instance_;
    HWND owner_;
    std::shared_ptr<IApiClient> api_;
    RepositoryHost host_;
    AddGameLook look_;
    AddGameEndNotice endNotice_;
    UINT dpi_ = 96;
    UniqueFont font_;
    std::optional<std::string> linkedLogin_; // empty until the service answered
    AddGameSubmission lastSubmission_;       // what "already shared" was said about
    std::string claimGameId_;
    State state_ = State::Editing;
    bool isDone_ = false;
    bool wasGameAdded_ = false;
    bool isOwnerEnabled_ = false;
    // Last, so that its jobs end before anything they may use is destroyed.
    UiJobThreads jobs_;
};

} // namespace corvandell::win
