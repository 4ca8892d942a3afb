// A chat window: one conversation (direct for one friend, a group for several), its
// transcript, sending, and the conversation's voice channel.
//
// New messages appear without pressing Refresh: while the window is open it asks for the
// newest page every few seconds (one request at a time), and every send is followed by
// the same request, so all messages reach the transcript through pages in the service's
// order and are merged without duplicates. Like the friends window it owns itself and is
// owned by the main window; closing it stops its voice channel and waits for its jobs.
#pragma once

#include <windows.h>

#include "api/ServiceRecords.hpp"
#include "base/Settings.hpp"
#include "base/win/UiJob.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"
#include "social/Transcript.hpp"
#include "social/win/SocialLook.hpp"
#include "voice/win/VoiceChannel.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvandell::win {

struct ChatLoad {
    bool succeeded = false;
    Conversation conversation;
    std::vector<ChatMessage> messages;
    std::string errorText;
};

struct ChatSent {
    bool succeeded = false;
    std::vector<ChatMessage> messages; // the newest page after the send
    std::string unsentText;            // given back to the edit when the send failed
    std::string errorText;
};

struct ChatMessages {
    bool succeeded = false;
    bool isManual = false; // the Refresh button, not the poll: failures are shown
    std::vector<ChatMessage> messages;
    std::string errorText;
};

struct VoiceJoined {
    bool succeeded = false;
    std::string roomId;
    std::string errorText;
};

struct MuteSet {
    std::string errorText;
};

enum class VoiceState { Off, Connecting, On };

class ChatWindow final : public Window {
public:
    // Creates and shows a chat with the friends (one: direct, several: a group) and starts
    // opening the conversation; null when the window could not be created.
    static ChatWindow* open(HINSTANCE instance, HWND owner, const Settings* settings, const SocialLook& look,
                            std::vector<FriendInfo> friends, int showCommand = SW_SHOW);

    void load();
    void sendCurrentMessage();
    void toggleVoice();
    void toggleMute();

    HWND control(int id) const noexcept { return GetDlgItem(hwnd_, id); }
    std::wstring transcriptText() const;
    const std::optional<Conversation>& conversation() const noexcept { return conversation_; }
    VoiceState voiceState() const noexcept { return voiceState_; }
    VoiceChannel* voiceChannel() noexcept { return voice_.get(); }
    const std::string& voiceRoomId() const noexcept { return roomId_; }
    // Called on the channel's threads; set before voice is switched on.
    void setVoiceObserver(VoiceBlockObserver observer) { voiceObserver_ = std::move(observer); }

private:
    ChatWindow(HINSTANCE instance, HWND owner, const Settings* settings, const SocialLook& look,
               std::vector<FriendInfo> friends);
    ~ChatWindow() override = default;

    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);
    void onFinalMessage() noexcept override { delete this; }

    void createControls();
    void layout(int width, int height);
    void onDpiChanged(const RECT& suggested);
    // The button Enter presses where the focus is (DM_GETDEFID); kNoDefaultButton for none.
    int defaultButton() const noexcept;
    void onCommand(int id);
    void onDestroy() noexcept;
    void onLoad(std::unique_ptr<ChatLoad> result);
    void onSent(std::unique_ptr<ChatSent> result);
    void onMessages(std::unique_ptr<ChatMessages> result);
    void onVoiceJoined(std::unique_ptr<VoiceJoined> result);
    void onVoiceEnded(VoiceEnd end);
    void requestMessages(bool isManual);
    void leaveRoomInBackground();
    void setVoiceState(VoiceState state);
    void append(const std::string& utf8Text);

    HINSTANCE instance_;
    HWND owner_;
    const Settings* settings_;
    SocialLook look_;
    std::vector<FriendInfo> friends_;
    std::optional<Conversation> conversation_;
    Transcript transcript_;
    bool isPolling_ = false;
    VoiceState voiceState_ = VoiceState::Off;
    std::string roomId_;
    VoiceBlockObserver voiceObserver_;
    UniqueFont font_;
    HWND transcriptEdit_ = nullptr;
    // Declared before the jobs, which may be starting it, so it is destroyed after them.
    std::unique_ptr<VoiceChannel> voice_;
    UiJobThreads jobThreads_;
};

} // namespace corvandell::win
