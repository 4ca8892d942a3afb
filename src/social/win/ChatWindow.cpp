#include <windows.h>

#include <commctrl.h>

#include "social/win/ChatWindow.hpp"

#include "api/win/WinHttpApiClient.hpp"
#include "base/win/Dpi.hpp"
#include "base/win/DpiWindow.hpp"
#include "base/win/WideText.hpp"
#include "social/ChatNames.hpp"
#include "social/win/SocialControls.hpp"
#include "social/win/SocialIds.hpp"

#include <exception>

namespace corvandell::win {
namespace {

using namespace social;

constexpr wchar_t kClassName[] = L"CorvandellChatWindow";
constexpr int kMargin = 12;
constexpr UINT_PTR kEnterSubclassId = 1;

// Enter in the message edit presses Send; the edit itself would only beep.
LRESULT CALLBACK enterSendsSubclass(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                    DWORD_PTR) noexcept {
    if (message == WM_KEYDOWN && wParam == VK_RETURN) {
        PostMessageW(GetParent(edit), WM_COMMAND, MAKEWPARAM(kSendButton, BN_CLICKED), 0);
        return 0;
    }
    if (message == WM_CHAR && (wParam == L'\r' || wParam == L'\n')) {
        return 0;
    }
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(edit, &enterSendsSubclass, kEnterSubclassId);
    }
    return DefSubclassProc(edit, message, wParam, lParam);
}

ChatLoad openConversation(const Settings* settings, const std::vector<FriendInfo>& friends) {
    WinHttpApiClient client(settings);
    ChatLoad load;
    if (friends.size() == 1) {
        load.conversation = client.openDirectConversation(friends.front().userId);
    } else {
        std::vector<std::string> ids;
        for (const FriendInfo& friendInfo : friends) {
            ids.push_back(friendInfo.userId);
        }
        load.conversation = client.createGroupConversation(ids, groupConversationName(friends));
    }
    load.messages = client.listMessages(load.conversation.id);
    load.succeeded = true;
    return load;
}

} // namespace

ChatWindow::ChatWindow(HINSTANCE instance, HWND owner, const Settings* settings, const SocialLook& look,
                       std::vector<FriendInfo> friends)
    : instance_(instance), owner_(owner), settings_(settings), look_(look), friends_(std::move(friends)) {}

ChatWindow* ChatWindow::open(HINSTANCE instance, HWND owner, const Settings* settings, const SocialLook& look,
                             std::vector<FriendInfo> friends, int showCommand) {
    if (friends.empty() || !registerWindowClass(instance, kClassName, &Window::windowProcedure,
                                                reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1))) {
        return nullptr;
    }
    auto* window = new ChatWindow(instance, owner, settings, look, std::move(friends));
    // A taskbar button of its own: a chat is a window the user switches to.
    if (!createSelfDeleting(window, WS_EX_APPWINDOW, kClassName, L"Corvandell Chat", 540, 480, owner,
                            instance)) {
        return nullptr;
    }
    resizeForDpi(window->hwnd_, 540, 480);
    ShowWindow(window->hwnd_, showCommand);
    UpdateWindow(window->hwnd_);
    window->load();
    return window;
}

LRESULT ChatWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    if (look_.messageHook != nullptr && look_.messageHook(hwnd_, message, wParam, lParam, result)) {
        return result;
    }
    return route(message, wParam, lParam);
}

LRESULT ChatWindow::route(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CREATE:
        createControls();
        voice_ = std::make_unique<VoiceChannel>(hwnd_, MsgVoiceEnded);
        SetTimer(hwnd_, kPollTimerId, kPollIntervalMs, nullptr);
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
    case WM_TIMER:
        if (wParam == kPollTimerId && conversation_ && !isPolling_) {
            requestMessages(false);
        }
        return 0;
    case MsgChatLoad:
        onLoad(takeUiJobResult<ChatLoad>(lParam));
        return 0;
    case MsgChatSent:
        onSent(takeUiJobResult<ChatSent>(lParam));
        return 0;
    case MsgChatMessages:
        onMessages(takeUiJobResult<ChatMessages>(lParam));
        return 0;
    case MsgVoiceJoined:
        onVoiceJoined(takeUiJobResult<VoiceJoined>(lParam));
        return 0;
    case MsgVoiceEnded:
        onVoiceEnded(static_cast<VoiceEnd>(wParam));
        return 0;
    case MsgMuteSet:
        if (auto result = takeUiJobResult<MuteSet>(lParam); !result->errorText.empty()) {
            append("Mute failed: " + result->errorText + "\r\n");
        }
        return 0;
    case WM_DESTROY:
        onDestroy();
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd_, message, wParam, lParam);
}

void ChatWindow::createControls() {
    font_ = createUiFont(windowDpi(hwnd_));
    const ControlMaker maker(hwnd_, instance_, font_.get(), look_);
    transcriptEdit_ = maker.make(
        L"EDIT", L"", ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL | WS_VSCROLL | WS_BORDER, kTranscript);
    // The default limit (about 32K characters) would stop a long chat from growing.
    SendMessageW(transcriptEdit_, EM_SETLIMITTEXT, 0, 0);
    HWND edit = maker.make(L"EDIT", L"", ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, kMessageEdit);
    SetWindowSubclass(edit, &enterSendsSubclass, kEnterSubclassId, 0);
    maker.button(L"Send", kSendButton);
    maker.button(L"Refresh", kChatRefreshButton);
    maker.button(L"Voice: Off", kVoiceButton);
    EnableWindow(maker.button(L"Mute mic", kMuteButton), FALSE);
}

void ChatWindow::layout(int width, int height) {
    const UINT dpi = windowDpi(hwnd_);
    const auto s = [dpi](int pixels) { return scaledForDpi(pixels, dpi); };
    const int margin = s(kMargin);
    const int inner = width - 2 * margin;
    const int sendWidth = s(84);
    placeControl(transcriptEdit_, margin, margin, inner, height - margin - s(92));
    placeControl(control(kMessageEdit), margin, height - s(72), inner - sendWidth - s(6), s(28));
    placeControl(control(kSendButton), width - margin - sendWidth, height - s(72), sendWidth, s(28));
    placeControl(control(kChatRefreshButton), margin, height - s(38), s(96), s(28));
    placeControl(control(kVoiceButton), margin + s(102), height - s(38), s(110), s(28));
    placeControl(control(kMuteButton), margin + s(218), height - s(38), s(110), s(28));
}

void ChatWindow::onDpiChanged(const RECT& suggested) {
    font_ = createUiFont(windowDpi(hwnd_));
    setChildrenFont(hwnd_, font_.get(), false);
    applySuggestedRect(hwnd_, suggested);
    RECT client{};
    GetClientRect(hwnd_, &client);
    layout(client.right, client.bottom);
    RedrawWindow(hwnd_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

// Enter in the message box sends it; on a button it presses that button.
int ChatWindow::defaultButton() const noexcept {
    if (GetFocus() == control(kMessageEdit)) {
        return kSendButton;
    }
    const int button = focusedButtonOf(hwnd_);
    return button != 0 ? button : kNoDefaultButton;
}

void ChatWindow::onCommand(int id) {
    switch (id) {
    case IDCANCEL: // Escape
        PostMessageW(hwnd_, WM_CLOSE, 0, 0);
        return;
    case kSendButton:
        sendCurrentMessage();
        return;
    case kChatRefreshButton:
        if (conversation_) {
            requestMessages(true);
        }
        return;
    case kVoiceButton:
        toggleVoice();
        return;
    case kMuteButton:
        toggleMute();
        return;
    default:
        return;
    }
}

void ChatWindow::load() {
    append("Connecting...\r\n");
    jobThreads_.start<ChatLoad>(hwnd_, MsgChatLoad, [settings = settings_, friends = friends_] {
        return openConversation(settings, friends);
    });
}

void ChatWindow::onLoad(std::unique_ptr<ChatLoad> result) {
    // The transcript is rebuilt: "Connecting..." and anything said while connecting go.
    if (!result->succeeded) {
        setControlText(transcriptEdit_, widen("Chat load failed: " + result->errorText + "\r\n"));
        return;
    }
    conversation_ = std::move(result->conversation);
    SetWindowTextW(hwnd_, widen(conversationTitle(*conversation_)).c_str());
    setControlText(transcriptEdit_, widen(transcriptHeading(conversationTitle(*conversation_)) +
                                          transcript_.merge(result->messages)));
}

void ChatWindow::sendCurrentMessage() {
    const std::wstring typed = hwndText(control(kMessageEdit));
    if (typed.empty()) {
        return;
    }
    if (!conversation_) {
        append("Still connecting...\r\n");
        return;
    }
    setControlText(control(kMessageEdit), L"");
    jobThreads_.start<ChatSent>(
        hwnd_, MsgChatSent, [settings = settings_, conversationId = conversation_->id, text = narrow(typed)] {
            ChatSent sent;
            sent.unsentText = text;
            WinHttpApiClient client(settings);
            try {
                const ChatMessage message = client.sendMessage(conversationId, text);
                sent.succeeded = true;
                sent.unsentText.clear();
                sent.messages = {message};
                // The page puts the new message in its place among others' messages.
                sent.messages = client.listMessages(conversationId);
            } catch (const std::exception& error) {
                if (!sent.succeeded) {
                    sent.errorText = error.what();
                }
            }
            return sent;
        });
}

void ChatWindow::onSent(std::unique_ptr<ChatSent> result) {
    if (!result->succeeded) {
        append("Send failed: " + result->errorText + "\r\n");
        if (HWND edit = control(kMessageEdit); GetWindowTextLengthW(edit) == 0) {
            setControlText(edit, widen(result->unsentText));
        }
        return;
    }
    append(transcript_.merge(result->messages));
}

void ChatWindow::requestMessages(bool isManual) {
    isPolling_ = true;
    jobThreads_.start<ChatMessages>(
        hwnd_, MsgChatMessages, [settings = settings_, conversationId = conversation_->id, isManual] {
            ChatMessages page;
            page.isManual = isManual;
            try {
                page.messages = WinHttpApiClient(settings).listMessages(conversationId);
                page.succeeded = true;
            } catch (const std::exception& error) {
                page.errorText = error.what();
            }
            return page;
        });
}

void ChatWindow::onMessages(std::unique_ptr<ChatMessages> result) {
    isPolling_ = false;
    if (!result->succeeded) {
        // The poll stays quiet: a service that is away would fill the transcript otherwise.
        if (result->isManual) {
            append("Refresh failed: " + result->errorText + "\r\n");
        }
        return;
    }
    append(transcript_.merge(result->messages));
}

std::wstring ChatWindow::transcriptText() const {
    return hwndText(transcriptEdit_);
}

void ChatWindow::append(const std::string& utf8Text) {
    if (!utf8Text.empty()) {
        appendToEdit(transcriptEdit_, widen(utf8Text));
    }
}

} // namespace corvandell::win
