#include <windows.h>

#include <commctrl.h>

#include "social/win/FriendsWindow.hpp"

#include "api/win/WinHttpApiClient.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/DpiWindow.hpp"
#include "base/win/WideText.hpp"
#include "social/ChatNames.hpp"
#include "social/win/ChatWindow.hpp"
#include "social/win/PendingResults.hpp"
#include "social/win/SocialControls.hpp"
#include "social/win/SocialIds.hpp"

#include <exception>

namespace corvandell::win {
namespace {

using namespace social;

constexpr wchar_t kClassName[] = L"CorvandellFriendsWindow";
constexpr int kRowHeight = 24;
constexpr int kRowPadding = 8;
constexpr int kMargin = 12;

FriendsResult loadFriends(const Settings* settings) {
    WinHttpApiClient client(settings);
    FriendsResult result;
    try {
        result.ownUserId = client.getMe().id;
    } catch (const std::exception&) {
        // The list may still load; the id edit then asks the user to sign in.
    }
    try {
        result.friends = client.listFriends();
        result.succeeded = true;
    } catch (const std::exception& error) {
        result.errorText = error.what();
    }
    return result;
}

} // namespace

FriendsWindow::FriendsWindow(HINSTANCE instance, HWND owner, const Settings* settings, const SocialLook& look,
                             ClosedNotice closedNotice)
    : instance_(instance), owner_(owner), settings_(settings), look_(look), closedNotice_(closedNotice) {}

FriendsWindow* FriendsWindow::open(HINSTANCE instance, HWND owner, const Settings* settings,
                                   const SocialLook& look, ClosedNotice closedNotice, int showCommand) {
    if (!registerWindowClass(instance, kClassName, &Window::windowProcedure,
                             reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1))) {
        return nullptr;
    }
    auto* window = new FriendsWindow(instance, owner, settings, look, closedNotice);
    if (!createSelfDeleting(window, 0, kClassName, L"Corvandell Friends", 380, 560, owner, instance)) {
        return nullptr;
    }
    resizeForDpi(window->hwnd_, 380, 560);
    ShowWindow(window->hwnd_, showCommand);
    UpdateWindow(window->hwnd_);
    window->refresh();
    return window;
}

LRESULT FriendsWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    if (look_.messageHook != nullptr && message != WM_DRAWITEM &&
        look_.messageHook(hwnd_, message, wParam, lParam, result)) {
        return result;
    }
    return route(message, wParam, lParam);
}

LRESULT FriendsWindow::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        createControls();
        return 0;
    case WM_SIZE:
        layout(LOWORD(lParam), HIWORD(lParam));
        return 0;
    case WM_DPICHANGED:
        onDpiChanged(*reinterpret_cast<const RECT*>(lParam));
        return 0;
    case DM_GETDEFID:
        return MAKELRESULT(defaultButton(), DC_HASDEFID);
    case WM_COMMAND:
        onCommand(LOWORD(wParam));
        return 0;
    case WM_MEASUREITEM:
        if (auto* item = reinterpret_cast<MEASUREITEMSTRUCT*>(lParam); item->CtlID == kFriendsList) {
            item->itemHeight = static_cast<UINT>(scaledForDpi(kRowHeight, windowDpi(hwnd_)));
            return TRUE;
        }
        break;
    case WM_DRAWITEM: {
        const auto* item = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
        if (item->CtlID == kFriendsList) {
            drawRow(*item);
            return TRUE;
        }
        LRESULT result = 0;
        if (look_.messageHook != nullptr && look_.messageHook(hwnd_, message, wParam, lParam, result)) {
            return result;
        }
        break;
    }
    case MsgFriendsResult:
        onFriendsResult(takeUiJobResult<FriendsResult>(lParam));
        return 0;
    case MsgFriendRequestDone:
        if (auto done = takeUiJobResult<FriendRequestDone>(lParam); !done->errorText.empty()) {
            setStatus(L"Add failed: " + widen(done->errorText));
        }
        // Whatever came of it, the list is refreshed, as if Refresh had been pressed.
        PostMessageW(hwnd_, WM_COMMAND, MAKEWPARAM(kRefreshButton, BN_CLICKED), 0);
        return 0;
    case WM_DESTROY:
        jobThreads_.waitForAll();
        discardPendingResults<FriendsResult>(hwnd_, MsgFriendsResult);
        discardPendingResults<FriendRequestDone>(hwnd_, MsgFriendRequestDone);
        if (closedNotice_.target != nullptr) {
            PostMessageW(closedNotice_.target, closedNotice_.message, closedNotice_.kind,
                         reinterpret_cast<LPARAM>(hwnd_));
        }
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void FriendsWindow::createControls() {
    font_ = createUiFont(windowDpi(hwnd_));
    const ControlMaker maker(hwnd_, instance_, font_.get(), look_);
    maker.make(L"STATIC", L"Your User ID (share it so friends can add you)", SS_LEFT, kOwnIdLabel);
    maker.make(L"EDIT", L"Loading...", ES_READONLY | ES_AUTOHSCROLL | WS_BORDER, kOwnIdEdit);
    HWND copy = maker.button(L"Copy", kCopyButton);
    maker.make(L"STATIC", L"Friend User ID", SS_LEFT, kFriendIdLabel);
    maker.make(L"EDIT", L"", ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, kFriendIdEdit);
    maker.button(L"Add", kAddButton);
    maker.button(L"Refresh", kRefreshButton);
    maker.button(L"Chat Selected", kChatSelectedButton);
    list_ = maker.make(L"LISTBOX", L"",
                       LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_EXTENDEDSEL | LBS_NOTIFY |
                           LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_BORDER | WS_TABSTOP,
                       kFriendsList);
    maker.make(L"STATIC", L"Select one or more friends to chat.", SS_LEFT, kHintLine);
    maker.make(L"STATIC", L"", SS_LEFT | SS_ENDELLIPSIS, kFriendsStatus);

    tooltip_ =
        CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT,
                        CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, hwnd_, nullptr, instance_, nullptr);
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof(tool);
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = hwnd_;
    tool.uId = reinterpret_cast<UINT_PTR>(copy);
    tool.lpszText = const_cast<wchar_t*>(L"Copy your user ID");
    SendMessageW(tooltip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void FriendsWindow::layout(int width, int height) {
    const UINT dpi = windowDpi(hwnd_);
    const auto s = [dpi](int pixels) { return scaledForDpi(pixels, dpi); };
    const int margin = s(kMargin);
    const int inner = width - 2 * margin;
    const int sideButton = s(72);
    placeControl(control(kOwnIdLabel), margin, s(10), inner, s(18));
    placeControl(control(kOwnIdEdit), margin, s(32), inner - sideButton - s(6), s(26));
    placeControl(control(kCopyButton), width - margin - sideButton, s(32), sideButton, s(26));
    placeControl(control(kFriendIdLabel), margin, s(68), inner, s(18));
    placeControl(control(kFriendIdEdit), margin, s(90), inner - sideButton - s(6), s(26));
    placeControl(control(kAddButton), width - margin - sideButton, s(90), sideButton, s(26));
    placeControl(control(kRefreshButton), margin, s(128), s(96), s(28));
    placeControl(control(kChatSelectedButton), margin + s(102), s(128), s(120), s(28));
    placeControl(list_, margin, s(166), inner, height - s(166 + 56));
    placeControl(control(kHintLine), margin, height - s(50), inner, s(18));
    placeControl(control(kFriendsStatus), margin, height - s(28), inner, s(18));
}

void FriendsWindow::onDpiChanged(const RECT& suggested) {
    const UINT dpi = windowDpi(hwnd_);
    font_ = createUiFont(dpi);
    setChildrenFont(hwnd_, font_.get(), false);
    SendMessageW(list_, LB_SETITEMHEIGHT, 0, scaledForDpi(kRowHeight, dpi));
    applySuggestedRect(hwnd_, suggested);
    RECT client{};
    GetClientRect(hwnd_, &client);
    layout(client.right, client.bottom);
    RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

// Enter adds the friend whose id was typed, opens a chat with the selected friends, or
// presses the focused button.
int FriendsWindow::defaultButton() const noexcept {
    HWND focus = GetFocus();
    if (focus == control(kFriendIdEdit)) {
        return kAddButton;
    }
    if (focus == list_) {
        return kChatSelectedButton;
    }
    if (focus == control(kOwnIdEdit)) {
        return kCopyButton;
    }
    const int button = focusedButtonOf(hwnd_);
    return button != 0 ? button : kNoDefaultButton;
}

void FriendsWindow::onCommand(int id) {
    switch (id) {
    case IDCANCEL: // Escape
        PostMessageW(hwnd_, WM_CLOSE, 0, 0);
        return;
    case kRefreshButton:
        refresh();
        return;
    case kAddButton:
        addFriend();
        return;
    case kCopyButton:
        copyOwnId();
        return;
    case kChatSelectedButton:
        chatSelected();
        return;
    default:
        return;
    }
}

void FriendsWindow::refresh() {
    setStatus(L"Loading friends...");
    jobThreads_.start<FriendsResult>(hwnd_, MsgFriendsResult,
                                     [settings = settings_] { return loadFriends(settings); });
}

void FriendsWindow::onFriendsResult(std::unique_ptr<FriendsResult> result) {
    if (!result->ownUserId.empty()) {
        ownUserId_ = result->ownUserId;
        setControlText(control(kOwnIdEdit), widen(ownUserId_));
    } else if (ownUserId_.empty()) {
        setControlText(control(kOwnIdEdit), L"Sign in to get your user ID");
    }
    if (!result->succeeded) {
        setStatus(widen(result->errorText));
        return;
    }
    friends_ = std::move(result->friends);
    SendMessageW(list_, LB_RESETCONTENT, 0, 0);
    for (const FriendInfo& friendInfo : friends_) {
        const std::wstring name = widen(friendInfo.username);
        SendMessageW(list_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
    }
    setStatus(friends_.empty() ? L"No friends found." : L"Friends refreshed");
}

void FriendsWindow::addFriend() {
    const std::string toUserId = narrow(hwndText(control(kFriendIdEdit)));
    setStatus(L"Sending friend request...");
    jobThreads_.start<FriendRequestDone>(hwnd_, MsgFriendRequestDone, [settings = settings_, toUserId] {
        FriendRequestDone done;
        try {
            WinHttpApiClient(settings).sendFriendRequest(toUserId);
        } catch (const std::exception& error) {
            done.errorText = error.what();
        }
        return done;
    });
}

void FriendsWindow::copyOwnId() {
    if (ownUserId_.empty()) {
        setStatus(L"No user ID yet - sign in first.");
        return;
    }
    if (!OpenClipboard(hwnd_)) {
        setStatus(L"Could not open the clipboard.");
        return;
    }
    const std::wstring text = widen(ownUserId_);
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    bool isCopied = false;
    EmptyClipboard();
    if (HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes); memory != nullptr) {
        if (void* target = GlobalLock(memory); target != nullptr) {
            memcpy(target, text.c_str(), bytes);
            GlobalUnlock(memory);
            // On success the clipboard owns the memory; otherwise it is still ours to free.
            isCopied = SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        }
        if (!isCopied) {
            GlobalFree(memory);
        }
    }
    CloseClipboard();
    if (!isCopied) {
        setStatus(L"Could not open the clipboard.");
        return;
    }
    setStatus(L"Your user ID is on the clipboard.");
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof(tool);
    tool.hwnd = hwnd_;
    tool.uId = reinterpret_cast<UINT_PTR>(control(kCopyButton));
    tool.lpszText = const_cast<wchar_t*>(L"Copied!");
    SendMessageW(tooltip_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
}

std::wstring FriendsWindow::copyTooltipText() const {
    wchar_t text[80] = {};
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof(tool);
    tool.hwnd = hwnd_;
    tool.uId = reinterpret_cast<UINT_PTR>(control(kCopyButton));
    tool.lpszText = text;
    SendMessageW(tooltip_, TTM_GETTEXTW, std::size(text), reinterpret_cast<LPARAM>(&tool));
    return text;
}

void FriendsWindow::chatSelected() {
    const auto count = static_cast<int>(SendMessageW(list_, LB_GETSELCOUNT, 0, 0));
    if (count <= 0) {
        setStatus(L"Select at least one friend.");
        return;
    }
    std::vector<int> rows(static_cast<std::size_t>(count));
    const auto got = static_cast<int>(SendMessageW(list_, LB_GETSELITEMS, static_cast<WPARAM>(count),
                                                   reinterpret_cast<LPARAM>(rows.data())));
    std::vector<FriendInfo> selected;
    for (int i = 0; i < got; ++i) {
        if (const auto row = static_cast<std::size_t>(rows[static_cast<std::size_t>(i)]);
            row < friends_.size()) {
            selected.push_back(friends_[row]);
        }
    }
    if (selected.empty()) {
        setStatus(L"Select at least one friend.");
        return;
    }
    // Owned by the main window, not by this one: a chat outlives the friends list.
    ChatWindow::open(instance_, owner_, settings_, look_, std::move(selected));
}

void FriendsWindow::drawRow(const DRAWITEMSTRUCT& item) {
    if (item.itemID == static_cast<UINT>(-1)) {
        return;
    }
    const bool isSelected = (item.itemState & ODS_SELECTED) != 0;
    const int padding = scaledForDpi(kRowPadding, windowDpi(hwnd_));
    RECT rect = item.rcItem;
    const UniqueBrush background(CreateSolidBrush(isSelected ? look_.selection : look_.rowBackground));
    FillRect(item.hDC, &rect, background.get());
    if (item.itemID >= friends_.size()) {
        return;
    }
    const FriendInfo& friendInfo = friends_[item.itemID];
    SetBkMode(item.hDC, TRANSPARENT);
    const std::wstring state = widen(friendStateText(friendInfo));
    RECT stateRect{rect.left, rect.top, rect.right - padding, rect.bottom};
    SIZE stateSize{};
    GetTextExtentPoint32W(item.hDC, state.c_str(), static_cast<int>(state.size()), &stateSize);
    const bool isAway = !friendInfo.online && friendInfo.currentGame.empty();
    SetTextColor(item.hDC, isAway ? look_.mutedText : look_.accent);
    DrawTextW(item.hDC, state.c_str(), -1, &stateRect,
              DT_RIGHT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    SetTextColor(item.hDC, look_.rowText);
    const std::wstring name = widen(friendInfo.username);
    RECT nameRect{rect.left + padding, rect.top, rect.right - padding - stateSize.cx - padding, rect.bottom};
    DrawTextW(item.hDC, name.c_str(), -1, &nameRect,
              DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
}

void FriendsWindow::setStatus(const std::wstring& text) {
    setControlText(control(kFriendsStatus), text);
}

} // namespace corvandell::win
