// The chat window's voice half: joining the conversation's room and running its channel,
// muting, leaving, and a connection that ends by itself.
//
// Joining happens on a job (service calls and the socket's upgrade block); the channel it
// starts belongs to the window. Leaving stops the channel on the UI thread at once (it
// only shuts the socket down and joins two threads) and tells the service on a detached
// thread holding its own copy of the settings, so a closing window never waits on the
// network.
#include <windows.h>

#include "api/win/WinHttpApiClient.hpp"
#include "base/win/WideText.hpp"
#include "social/win/ChatWindow.hpp"
#include "social/win/PendingResults.hpp"
#include "social/win/SocialControls.hpp"
#include "social/win/SocialIds.hpp"

#include <exception>
#include <thread>

namespace corvandell::win {
namespace {

using namespace social;

VoiceChannelOptions voiceOptionsFrom(const Settings& settings) {
    return {settings.apiBaseUrl,        settings.bearerToken,      settings.voiceInputDevice,
            settings.voiceOutputDevice, settings.voiceInputVolume, settings.voiceOutputVolume,
            settings.voiceMuteByDefault};
}

// The conversation's active room, made when there is none; joining twice is harmless.
std::string joinConversationRoom(IApiClient& client, const std::string& conversationId) {
    const std::vector<VoiceRoom> rooms = client.listVoiceRooms(conversationId);
    std::string roomId;
    for (const VoiceRoom& room : rooms) {
        if (room.status == "active") {
            roomId = room.id;
            break;
        }
    }
    if (roomId.empty()) {
        roomId = client.createVoiceRoom(conversationId).id;
    }
    client.joinVoiceRoom(roomId);
    return roomId;
}

} // namespace

void ChatWindow::toggleVoice() {
    if (voiceState_ == VoiceState::Connecting) {
        return;
    }
    if (voiceState_ == VoiceState::On) {
        voice_->stop();
        leaveRoomInBackground();
        setVoiceState(VoiceState::Off);
        append("Voice channel disconnected.\r\n");
        return;
    }
    if (!settings_->voiceEnabled) {
        append("Voice chat is disabled in options.\r\n");
        return;
    }
    if (!conversation_) {
        append("Still connecting...\r\n");
        return;
    }
    setVoiceState(VoiceState::Connecting);
    voice_->setObserver(voiceObserver_);
    jobThreads_.start<VoiceJoined>(
        hwnd_, MsgVoiceJoined,
        [settings = settings_, conversationId = conversation_->id, channel = voice_.get()] {
            VoiceJoined joined;
            WinHttpApiClient client(settings);
            try {
                joined.roomId = joinConversationRoom(client, conversationId);
                if (settings->voiceMuteByDefault) {
                    client.setVoiceMuted(joined.roomId, true);
                }
                if (!channel->start(joined.roomId, voiceOptionsFrom(*settings))) {
                    joined.errorText = channel->failureText();
                    client.leaveVoiceRoom(joined.roomId);
                    return joined;
                }
                joined.succeeded = true;
            } catch (const std::exception& error) {
                if (joined.errorText.empty()) {
                    joined.errorText = error.what();
                }
            }
            return joined;
        });
}

void ChatWindow::onVoiceJoined(std::unique_ptr<VoiceJoined> result) {
    if (!result->succeeded) {
        setVoiceState(VoiceState::Off);
        append("Voice failed: " + result->errorText + "\r\n");
        return;
    }
    roomId_ = result->roomId;
    setVoiceState(VoiceState::On);
    append("Voice channel active for this chat.\r\n");
}

void ChatWindow::onVoiceEnded(VoiceEnd end) {
    if (voiceState_ != VoiceState::On) {
        return;
    }
    voice_->stop();
    leaveRoomInBackground();
    setVoiceState(VoiceState::Off);
    append(end == VoiceEnd::ClosedByService ? "Voice channel disconnected: the service closed it.\r\n"
                                            : "Voice channel disconnected: the connection was lost.\r\n");
}

void ChatWindow::toggleMute() {
    if (voiceState_ != VoiceState::On) {
        return;
    }
    const bool isMuted = !voice_->isMuted();
    voice_->setMuted(isMuted);
    setControlText(control(kMuteButton), isMuted ? L"Unmute mic" : L"Mute mic");
    // The relay drops a muted member's audio too, for anyone else using the same account.
    jobThreads_.start<MuteSet>(hwnd_, MsgMuteSet, [settings = settings_, roomId = roomId_, isMuted] {
        MuteSet result;
        try {
            WinHttpApiClient(settings).setVoiceMuted(roomId, isMuted);
        } catch (const std::exception& error) {
            result.errorText = error.what();
        }
        return result;
    });
}

void ChatWindow::leaveRoomInBackground() {
    if (roomId_.empty()) {
        return;
    }
    try {
        std::thread([settings = *settings_, roomId = std::exchange(roomId_, std::string())] {
            try {
                WinHttpApiClient(&settings).leaveVoiceRoom(roomId);
            } catch (...) {
                // The service closes an abandoned room when its sockets are gone.
            }
        }).detach();
    } catch (...) {
        // No thread, no leave message: the room still ends with its sockets.
    }
}

void ChatWindow::setVoiceState(VoiceState state) {
    voiceState_ = state;
    setControlText(control(kVoiceButton), state == VoiceState::On ? L"Voice: On" : L"Voice: Off");
    const bool isOn = state == VoiceState::On;
    EnableWindow(control(kMuteButton), isOn ? TRUE : FALSE);
    setControlText(control(kMuteButton), isOn && voice_->isMuted() ? L"Unmute mic" : L"Mute mic");
}

void ChatWindow::onDestroy() noexcept {
    KillTimer(hwnd_, kPollTimerId);
    // A job still running would post to a window that is gone. A join that got through
    // still has to be left.
    jobThreads_.waitForAll();
    discardPendingResults<ChatLoad>(hwnd_, MsgChatLoad);
    discardPendingResults<ChatSent>(hwnd_, MsgChatSent);
    discardPendingResults<ChatMessages>(hwnd_, MsgChatMessages);
    discardPendingResults<MuteSet>(hwnd_, MsgMuteSet);
    discardPendingResults<VoiceJoined>(hwnd_, MsgVoiceJoined, [this](VoiceJoined& joined) {
        if (joined.succeeded) {
            roomId_ = joined.roomId;
        }
    });
    if (voice_) {
        voice_->stop();
    }
    leaveRoomInBackground();
}

} // namespace corvandell::win
