// The command lines a browser game is started with: Firefox or, for every other browser,
// Chromium's kiosk switches, each pointed at a private profile folder.
//
// The target URL is the one piece a game's submitter can influence, so it is refused when
// it could end one argument and start another.
#pragma once

#include <string>
#include <string_view>

namespace corvandell {

// "file:///" + the path with "\" as "/", and space, "#" and "%" escaped.
std::wstring fileUrl(std::wstring_view path);

// The lower-cased file name of the browser contains "firefox".
bool isFirefox(std::wstring_view browserPath);

// False for a URL that would add arguments to the command line: one holding a quote, a
// blank or a control character, or beginning with "-".
bool isSafeOnCommandLine(std::wstring_view url);

// The whole command line, the executable quoted.
std::wstring browserCommandLine(std::wstring_view browserPath, std::wstring_view targetUrl,
                                std::wstring_view profileFolder);

} // namespace corvandell
