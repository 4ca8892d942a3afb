// What the user types into the options dialog, checked before anything is changed: each
// check gives the value to store or one sentence that says what is wrong and how to fix
// it. The dialog applies nothing unless every field passes, so a bad entry never leaves
// the settings half changed.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace corvandell {

template <class Value> struct CheckedInput {
    Value value{};
    std::string error; // empty: the value is good
    bool isValid() const noexcept { return error.empty(); }
};

inline constexpr int kMaxDownloadLimitKbps = 1'000'000; // about 1 GB/s; above it "no limit" is meant
inline constexpr int kMaxVolumePercent = 200;
inline constexpr std::size_t kMaxNicknameCharacters = 32;

// KB/s as a whole decimal number; empty or 0 means no limit.
CheckedInput<int> checkDownloadLimit(std::string_view text);

// A percentage from 0 to 200; `which` names the control in the message ("input").
CheckedInput<int> checkVolume(std::string_view text, std::string_view which);

// The service's base address: https://host[:port] with nothing after it. Plain http only
// for this computer, since every request carries the session's token. The value comes back
// with scheme and host in lower case and no trailing slash.
CheckedInput<std::string> checkServiceAddress(std::string_view text);

// 1 to 32 characters (code points) after trimming, no control characters.
CheckedInput<std::string> checkNickname(std::string_view text);

// A full Windows path (C:\... or \\server\share\...) whose folder names Windows accepts.
// Only the text is judged; createLibraryFolder then makes sure the folder can exist.
CheckedInput<std::filesystem::path> checkLibraryFolderText(std::string_view utf8Text);

// Creates the folder and its parents; "" on success, else the message to show.
std::string createLibraryFolder(const std::filesystem::path& folder);

} // namespace corvandell
