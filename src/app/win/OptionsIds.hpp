// Control ids of the options dialog, so its tab files, its tests and its screenshots can
// find each control. Ids are unique across tabs: every control is a child of the dialog.
#pragma once

#include <windows.h>

namespace corvandell::win::options {

// The tabs, in their order on the strip.
enum class Tab { Connection = 0, Downloads, Voice, Appearance, Profile };
inline constexpr int kTabCount = 5;

inline constexpr int kTabStrip = 1000;
inline constexpr int kMessageLine = 1001;
inline constexpr int kApplyButton = 1002; // beside IDOK and IDCANCEL

// Connection
inline constexpr int kServiceAddressLabel = 1100;
inline constexpr int kServiceAddress = 1101;
inline constexpr int kServiceAddressHint = 1102;
inline constexpr int kSessionLabel = 1103;
inline constexpr int kSessionState = 1104;
inline constexpr int kSignOut = 1105;

// Downloads
inline constexpr int kLibraryFolderLabel = 1200;
inline constexpr int kLibraryFolder = 1201;
inline constexpr int kBrowseFolder = 1202;
inline constexpr int kLibraryFolderHint = 1203;
inline constexpr int kDownloadLimitLabel = 1204;
inline constexpr int kDownloadLimit = 1205;
inline constexpr int kDownloadLimitHint = 1206;

// Voice
inline constexpr int kVoiceEnabled = 1300;
inline constexpr int kMuteByDefault = 1301;
inline constexpr int kInputDeviceLabel = 1302;
inline constexpr int kInputDevice = 1303;
inline constexpr int kInputVolumeLabel = 1304;
inline constexpr int kInputVolume = 1305;
inline constexpr int kInputVolumeSpin = 1306;
inline constexpr int kInputLevelLabel = 1307;
inline constexpr int kInputLevel = 1308;
inline constexpr int kOutputDeviceLabel = 1309;
inline constexpr int kOutputDevice = 1310;
inline constexpr int kOutputVolumeLabel = 1311;
inline constexpr int kOutputVolume = 1312;
inline constexpr int kOutputVolumeSpin = 1313;
inline constexpr int kVoiceHint = 1314;

// Appearance
inline constexpr int kSkinLabel = 1400;
inline constexpr int kSkinList = 1401;
inline constexpr int kSkinHint = 1402;
inline constexpr int kSkinFilesLabel = 1403;
inline constexpr int kSkinFolder = 1404;
inline constexpr int kOpenSkinFolder = 1405;
inline constexpr int kReloadSkins = 1406;

// Profile
inline constexpr int kNicknameLabel = 1500;
inline constexpr int kNickname = 1501;
inline constexpr int kPictureLabel = 1502;
inline constexpr int kPicturePreview = 1503;
inline constexpr int kChoosePicture = 1504;
inline constexpr int kPictureHint = 1505;
inline constexpr int kGitHubLabel = 1506;
inline constexpr int kGitHubState = 1507;
inline constexpr int kLinkGitHub = 1508;
inline constexpr int kRefreshGitHub = 1509;
inline constexpr int kGitHubHint = 1510;

// Controls of a tab have ids from 1100 + 100 * tab up to the next hundred.
inline constexpr Tab tabOfControl(int id) noexcept {
    return static_cast<Tab>((id - 1100) / 100);
}
inline constexpr bool isTabControl(int id) noexcept {
    return id >= 1100 && id < 1100 + 100 * kTabCount;
}

} // namespace corvandell::win::options
