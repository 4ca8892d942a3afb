#include "webgames/win/AddGameDialog.hpp"

#include "base/win/Dpi.hpp"
#include "base/win/WideText.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace corvandell::win {
namespace {

constexpr wchar_t kClassName[] = L"CorvandellAddGame";
constexpr wchar_t kTitle[] = L"Add GitHub Browser Game";
constexpr DWORD kStyle = WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
constexpr DWORD kExStyle = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
constexpr int kClientWidth = 480; // at 96 dots per inch
constexpr int kClientHeight = 300;

// The dialog's own messages; it is a window of its own, so they only need to differ here.
constexpr UINT MsgLinkedLogin = WM_APP + 1;
constexpr UINT MsgSubmitted = WM_APP + 2;
constexpr UINT MsgClaimed = WM_APP + 3;

struct Child {
    int id;
    const wchar_t* className;
    DWORD style;
    int x, y, width, height;
};

constexpr DWORD kEdit = WS_TABSTOP | ES_AUTOHSCROLL;
constexpr DWORD kLabel = SS_LEFT | SS_NOPREFIX;

constexpr std::array<Child, 10> kChildren{{
    {addgame::AddressLabel, L"STATIC", kLabel, 16, 14, 448, 18},
    {addgame::Address, L"EDIT", kEdit, 16, 34, 448, 24},
    {addgame::Status, L"STATIC", kLabel, 16, 66, 448, 68},
    {addgame::NameLabel, L"STATIC", kLabel, 16, 140, 448, 18},
    {addgame::Name, L"EDIT", kEdit, 16, 160, 448, 24},
    {addgame::LaunchLabel, L"STATIC", kLabel, 16, 194, 448, 18},
    {addgame::Launch, L"EDIT", kEdit, 16, 214, 448, 24},
    {addgame::TakeOwnership, L"BUTTON", WS_TABSTOP | BS_PUSHBUTTON, 16, 256, 128, 28},
    {addgame::AddGame, L"BUTTON", WS_TABSTOP | BS_DEFPUSHBUTTON, 272, 256, 100, 28},
    {addgame::Cancel, L"BUTTON", WS_TABSTOP | BS_PUSHBUTTON, 380, 256, 84, 28},
}};

} // namespace

AddGameDialog::AddGameDialog(HINSTANCE instance, HWND owner, std::shared_ptr<IApiClient> api,
                             RepositoryHost host, AddGameLook look, AddGameEndNotice endNotice)
    : instance_(instance), owner_(owner), api_(std::move(api)), host_(std::move(host)), look_(look),
      endNotice_(endNotice) {}

AddGameDialog::~AddGameDialog() {
    if (hwnd_ != nullptr) {
        end(false);
    }
}

bool AddGameDialog::create(int showCommand) {
    const auto background = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
    if (!registerWindowClass(instance_, kClassName, &Window::windowProcedure, background)) {
        return false;
    }
    if (CreateWindowExW(kExStyle, kClassName, kTitle, kStyle, CW_USEDEFAULT, CW_USEDEFAULT, kClientWidth,
                        kClientHeight, owner_, nullptr, instance_, this) == nullptr) {
        return false;
    }
    if (owner_ != nullptr) {
        isOwnerEnabled_ = !EnableWindow(owner_, FALSE);
    }
    ShowWindow(hwnd_, showCommand);
    UpdateWindow(hwnd_);
    jobs_.start<LoginResult>(hwnd_, MsgLinkedLogin, [api = api_] {
        return LoginResult{api->getLinkedRepositoryAccount(), {}};
    });
    return true;
}

std::wstring AddGameDialog::statusText() const {
    return hwndText(control(addgame::Status));
}

LRESULT AddGameDialog::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT themed = 0;
    if (look_.messageHook != nullptr && look_.messageHook(hwnd_, message, wParam, lParam, themed)) {
        return themed;
    }
    return route(message, wParam, lParam);
}

LRESULT AddGameDialog::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        onCreate();
        return 0;
    case WM_COMMAND:
        if (HIWORD(wParam) == BN_CLICKED || lParam == 0) {
            onCommand(LOWORD(wParam));
        }
        return 0;
    case DM_GETDEFID:
        return MAKELRESULT(addgame::AddGame, DC_HASDEFID);
    case WM_NEXTDLGCTL:
        if (LOWORD(lParam) != 0) {
            SetFocus(reinterpret_cast<HWND>(wParam));
        } else {
            SetFocus(GetNextDlgTabItem(hwnd_, GetFocus(), wParam != 0));
        }
        return 0;
    case WM_DESTROY:
        if (look_.removeDialogKeys != nullptr) {
            look_.removeDialogKeys(hwnd_);
        }
        return 0;
    case WM_CLOSE:
        end(false);
        return 0;
    case WM_DPICHANGED: {
        dpi_ = HIWORD(wParam);
        const auto* suggested = reinterpret_cast<const RECT*>(lParam);
        SetWindowPos(hwnd_, nullptr, suggested->left, suggested->top, suggested->right - suggested->left,
                     suggested->bottom - suggested->top, SWP_NOZORDER | SWP_NOACTIVATE);
        layout();
        return 0;
    }
    case MsgLinkedLogin:
        onLinkedLogin(takeUiJobResult<LoginResult>(lParam));
        return 0;
    case MsgSubmitted:
        onSubmitted(takeUiJobResult<GameResult>(lParam));
        return 0;
    case MsgClaimed:
        onClaimed(takeUiJobResult<GameResult>(lParam));
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void AddGameDialog::onCreate() {
    dpi_ = windowDpi(hwnd_);
    const std::wstring launchLabel = widen(launchFileLabel(host_));
    for (const Child& child : kChildren) {
        const wchar_t* text = L"";
        switch (child.id) {
        case addgame::AddressLabel:
            text = L"GitHub repository or Pages URL";
            break;
        case addgame::NameLabel:
            text = L"Display name (required if you don't own the repo)";
            break;
        case addgame::LaunchLabel:
            text = launchLabel.c_str();
            break;
        case addgame::TakeOwnership:
            text = L"Take Ownership";
            break;
        case addgame::AddGame:
            text = L"Add Game";
            break;
        case addgame::Cancel:
            text = L"Cancel";
            break;
        default:
            break;
        }
        DWORD style = WS_CHILD | child.style;
        if (child.id != addgame::TakeOwnership) {
            style |= WS_VISIBLE; // shown once the service says someone else shared the game
        }
        const bool isButton = child.className == std::wstring_view(L"BUTTON");
        if (isButton && look_.messageHook != nullptr) {
            style = (style & ~BS_DEFPUSHBUTTON) | BS_OWNERDRAW;
        }
        const DWORD exStyle = child.className == std::wstring_view(L"EDIT") ? WS_EX_CLIENTEDGE : 0;
        HWND control =
            CreateWindowExW(exStyle, child.className, text, style, 0, 0, 0, 0, hwnd_,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(child.id)), instance_, nullptr);
        if (isButton && look_.trackButtonHover != nullptr) {
            look_.trackButtonHover(control);
        }
    }
    SendMessageW(control(addgame::Address), EM_LIMITTEXT, 300, 0);
    SendMessageW(control(addgame::Name), EM_LIMITTEXT, 100, 0);
    SendMessageW(control(addgame::Launch), EM_LIMITTEXT, 300, 0);
    RECT frame{0, 0, scaledForDpi(kClientWidth, dpi_), scaledForDpi(kClientHeight, dpi_)};
    AdjustWindowRectExForDpi(&frame, kStyle, FALSE, kExStyle, dpi_);
    RECT around{};
    if (owner_ == nullptr || !GetWindowRect(owner_, &around)) {
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &around, 0);
    }
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    SetWindowPos(hwnd_, nullptr, around.left + (around.right - around.left - width) / 2,
                 std::max(around.top, around.top + (around.bottom - around.top - height) / 2), width, height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    layout();
    if (look_.addDialogKeys != nullptr) {
        look_.addDialogKeys(hwnd_);
    }
    SetFocus(control(addgame::Address));
}

void AddGameDialog::layout() {
    font_ = createUiFont(dpi_);
    for (const Child& child : kChildren) {
        HWND control = GetDlgItem(hwnd_, child.id);
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
        MoveWindow(control, scaledForDpi(child.x, dpi_), scaledForDpi(child.y, dpi_),
                   scaledForDpi(child.width, dpi_), scaledForDpi(child.height, dpi_), TRUE);
    }
    InvalidateRect(hwnd_, nullptr, TRUE);
}

void AddGameDialog::onCommand(int id) {
    switch (id) {
    case addgame::AddGame:
        if (state_ == State::Editing) {
            submit();
        }
        return;
    case addgame::TakeOwnership:
        if (state_ == State::Editing && !claimGameId_.empty()) {
            takeOwnership();
        }
        return;
    case addgame::Cancel:
        end(false);
        return;
    default:
        return;
    }
}

void AddGameDialog::submit() {
    const AddGameInput input{narrow(hwndText(control(addgame::Address))),
                             narrow(hwndText(control(addgame::Name))),
                             narrow(hwndText(control(addgame::Launch)))};
    AddGameCheck check = checkAddGame(input, linkedLogin_.value_or(""), host_);
    if (!check.submission) {
        setStatus(check.message);
        return;
    }
    lastSubmission_ = std::move(*check.submission);
    ShowWindow(control(addgame::TakeOwnership), SW_HIDE);
    claimGameId_.clear();
    setStatus("Submitting...");
    enterState(State::Submitting);
    jobs_.start<GameResult>(hwnd_, MsgSubmitted, [api = api_, submission = lastSubmission_] {
        api->submitRepositoryGame(submission.address, submission.displayName, submission.launchFile);
        return GameResult{true, {}};
    });
}

void AddGameDialog::takeOwnership() {
    setStatus("Asking the server to verify you own this repository...");
    enterState(State::Claiming);
    jobs_.start<GameResult>(hwnd_, MsgClaimed, [api = api_, gameId = claimGameId_] {
        api->claimRepositoryGame(gameId);
        return GameResult{true, {}};
    });
}

void AddGameDialog::onLinkedLogin(std::unique_ptr<LoginResult> result) {
    // Without an answer the user is simply not known to own anything; the service decides.
    linkedLogin_ = result->login;
    if (state_ == State::Editing && statusText().empty()) {
        setStatus(linkedLoginText(*linkedLogin_));
    }
}

void AddGameDialog::onSubmitted(std::unique_ptr<GameResult> result) {
    enterState(State::Editing);
    if (result->succeeded) {
        end(true);
        return;
    }
    if (const std::optional<AlreadyShared> shared = readAlreadyShared(result->errorText)) {
        claimGameId_ = shared->gameId;
        setStatus(alreadySharedText(*shared, lastSubmission_));
        ShowWindow(control(addgame::TakeOwnership), SW_SHOW);
        EnableWindow(control(addgame::TakeOwnership), TRUE);
        return;
    }
    setStatus("Could not add the game: " + result->errorText);
}

void AddGameDialog::onClaimed(std::unique_ptr<GameResult> result) {
    enterState(State::Editing);
    if (result->succeeded) {
        end(true);
        return;
    }
    setStatus("Could not take ownership: " + result->errorText);
}

void AddGameDialog::enterState(State state) {
    state_ = state;
    EnableWindow(control(addgame::AddGame), state == State::Editing);
    EnableWindow(control(addgame::TakeOwnership), state == State::Editing);
}

void AddGameDialog::setStatus(const std::string& text) {
    SetWindowTextW(control(addgame::Status), widen(text).c_str());
}

void AddGameDialog::end(bool wasGameAdded) {
    if (isDone_) {
        return;
    }
    isDone_ = true;
    wasGameAdded_ = wasGameAdded;
    if (owner_ != nullptr && isOwnerEnabled_) {
        EnableWindow(owner_, TRUE); // before the dialog goes, so the owner is activated again
    }
    // A worker still running posts to a window that is gone, which frees its result; one
    // that already posted has its result freed here.
    jobs_.waitForAll();
    discardPendingResults();
    if (hwnd_ != nullptr) {
        DestroyWindow(hwnd_);
    }
    if (endNotice_.target != nullptr) {
        PostMessageW(endNotice_.target, endNotice_.message, wasGameAdded ? 1 : 0, 0);
    }
}

void AddGameDialog::discardPendingResults() noexcept {
    MSG message{};
    while (PeekMessageW(&message, hwnd_, MsgLinkedLogin, MsgClaimed, PM_REMOVE)) {
        if (message.message == MsgLinkedLogin) {
            takeUiJobResult<LoginResult>(message.lParam).reset();
        } else {
            takeUiJobResult<GameResult>(message.lParam).reset();
        }
    }
}

} // namespace corvandell::win
