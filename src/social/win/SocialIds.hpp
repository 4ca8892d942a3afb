// Control ids and private messages of the friends and chat windows.
#pragma once

#include <windows.h>

namespace corvandell::win::social {

// Friends window.
inline constexpr int kFriendsList = 800;
inline constexpr int kAddButton = 801;
inline constexpr int kRefreshButton = 802;
inline constexpr int kChatSelectedButton = 803;
inline constexpr int kCopyButton = 804;
inline constexpr int kOwnIdEdit = 805;
inline constexpr int kFriendIdEdit = 806;
inline constexpr int kHintLine = 807;
inline constexpr int kFriendsStatus = 808;
inline constexpr int kOwnIdLabel = 809;
inline constexpr int kFriendIdLabel = 810;

// What Enter presses where no button is the default: an id no control has.
inline constexpr int kNoDefaultButton = 0x7FFE;

inline constexpr UINT MsgFriendsResult = WM_APP + 1;
inline constexpr UINT MsgFriendRequestDone = WM_APP + 2;

// Chat window.
inline constexpr int kTranscript = 900;
inline constexpr int kMessageEdit = 901;
inline constexpr int kSendButton = 902;
inline constexpr int kChatRefreshButton = 903;
inline constexpr int kVoiceButton = 904;
inline constexpr int kMuteButton = 905;

inline constexpr UINT MsgChatLoad = WM_APP + 1;
inline constexpr UINT MsgChatSent = WM_APP + 2;
inline constexpr UINT MsgChatMessages = WM_APP + 3;
inline constexpr UINT MsgVoiceJoined = WM_APP + 4;
inline constexpr UINT MsgVoiceEnded = WM_APP + 5;
inline constexpr UINT MsgVoiceLeft = WM_APP + 6;
inline constexpr UINT MsgMuteSet = WM_APP + 7;

inline constexpr UINT_PTR kPollTimerId = 1;
// New messages appear without pressing Refresh; a few seconds keeps the service load low.
inline constexpr UINT kPollIntervalMs = 3000;

} // namespace corvandell::win::social
