// The checks behind every field of the options dialog. Messages name the field and say
// what would be accepted, since the dialog shows them as they are.
#include "app/OptionsInput.hpp"

#include "base/AsciiText.hpp"
#include "base/Utf8Path.hpp"

#include <array>
#include <charconv>
#include <system_error>

namespace corvandell {
namespace {

bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isAllDigits(std::string_view text) {
    if (text.empty()) {
        return false;
    }
    for (const char c : text) {
        if (!isAsciiDigit(c)) {
            return false;
        }
    }
    return true;
}

// A whole decimal number no larger than `maximum`; nothing when the text is anything else.
bool parseBoundedNumber(std::string_view text, int maximum, int& out) {
    if (!isAllDigits(text)) {
        return false;
    }
    while (text.size() > 1 && text.front() == '0') {
        text.remove_prefix(1); // "0050" is 50, and leading zeros must not overflow the parse
    }
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value > maximum) {
        out = -1;
        return true;
    }
    out = static_cast<int>(value);
    return true;
}

bool isHostCharacter(char c) {
    return isAsciiDigit(c) || (c >= 'a' && c <= 'z') || c == '-' || c == '.';
}

bool isLoopbackHost(std::string_view host) {
    return host == "localhost" || host == "127.0.0.1" || host == "[::1]";
}

// "host", "host:port", "[v6]" or "[v6]:port" in lower case; false when malformed.
bool isValidAuthority(std::string_view authority, std::string_view& host) {
    std::string_view port;
    if (authority.starts_with('[')) {
        const std::size_t close = authority.find(']');
        if (close == std::string_view::npos || close < 3) {
            return false;
        }
        for (const char c : authority.substr(1, close - 1)) {
            if (!isAsciiDigit(c) && !(c >= 'a' && c <= 'f') && c != ':') {
                return false;
            }
        }
        host = authority.substr(0, close + 1);
        const std::string_view rest = authority.substr(close + 1);
        if (!rest.empty()) {
            if (rest.front() != ':') {
                return false;
            }
            port = rest.substr(1);
            if (port.empty()) {
                return false;
            }
        }
    } else {
        const std::size_t colon = authority.find(':');
        host = authority.substr(0, colon);
        if (colon != std::string_view::npos) {
            port = authority.substr(colon + 1);
            if (port.empty()) {
                return false;
            }
        }
        if (host.empty() || host.front() == '.' || host.front() == '-' || host.back() == '.' ||
            host.back() == '-' || host.find("..") != std::string_view::npos) {
            return false;
        }
        for (const char c : host) {
            if (!isHostCharacter(c)) {
                return false;
            }
        }
    }
    if (port.empty()) {
        return true;
    }
    int number = 0;
    return parseBoundedNumber(port, 65535, number) && number >= 1;
}

// The number of code points of valid UTF-8 text; continuation bytes are not counted.
std::size_t countCodePoints(std::string_view text) {
    std::size_t count = 0;
    for (const char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            ++count;
        }
    }
    return count;
}

bool isDriveLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isSeparator(char c) {
    return c == '\\' || c == '/';
}

// Names Windows keeps for devices, with or without an extension ("nul.txt" is NUL too).
bool isReservedDeviceName(std::string_view name) {
    const std::string base = lowerAscii(std::string(name.substr(0, name.find('.'))));
    static constexpr std::array<std::string_view, 4> kPlain{"con", "prn", "aux", "nul"};
    for (const std::string_view reserved : kPlain) {
        if (base == reserved) {
            return true;
        }
    }
    return base.size() == 4 && (base.starts_with("com") || base.starts_with("lpt")) && base[3] >= '1' &&
           base[3] <= '9';
}

constexpr std::string_view kForbiddenInNames = "<>:\"|?*";

// One folder name of the path; "" when Windows accepts it, else the message.
std::string checkFolderName(std::string_view name) {
    for (const char c : name) {
        if (static_cast<unsigned char>(c) < 0x20 || kForbiddenInNames.find(c) != std::string_view::npos) {
            return "A folder name in the library path cannot contain any of < > : \" | ? * "
                   "or control characters.";
        }
    }
    if (name.back() == ' ' || name.back() == '.') {
        if (name == "." || name == "..") {
            return "The library path cannot contain \".\" or \"..\"; write the folder out in full.";
        }
        return "A folder name in the library path cannot end with a space or a dot.";
    }
    if (isReservedDeviceName(name)) {
        return "\"" + std::string(name) +
               "\" is a name Windows keeps for a device; choose another folder name.";
    }
    return {};
}

} // namespace

CheckedInput<int> checkDownloadLimit(std::string_view text) {
    text = trimAsciiBlanks(text);
    if (text.empty()) {
        return {0, {}};
    }
    int value = 0;
    if (!parseBoundedNumber(text, kMaxDownloadLimitKbps, value)) {
        return {0, "The download limit must be a whole number of KB/s (0 for no limit)."};
    }
    if (value < 0) {
        return {0, "The download limit can be at most " + std::to_string(kMaxDownloadLimitKbps) +
                       " KB/s (0 for no limit)."};
    }
    return {value, {}};
}

CheckedInput<int> checkVolume(std::string_view text, std::string_view which) {
    int value = 0;
    if (!parseBoundedNumber(trimAsciiBlanks(text), kMaxVolumePercent, value) || value < 0) {
        return {0, "The " + std::string(which) + " volume must be a whole number from 0 to " +
                       std::to_string(kMaxVolumePercent) + " (%)."};
    }
    return {value, {}};
}

CheckedInput<std::string> checkServiceAddress(std::string_view text) {
    const std::string address = std::string(trimAsciiBlanks(text));
    constexpr char kExample[] = "such as https://api.example.com";
    if (address.empty()) {
        return {{}, std::string("Enter the service address, ") + kExample + "."};
    }
    std::string scheme;
    if (startsWithIgnoringAsciiCase(address, "https://")) {
        scheme = "https://";
    } else if (startsWithIgnoringAsciiCase(address, "http://")) {
        scheme = "http://";
    } else {
        return {{}, std::string("The service address must start with https://, ") + kExample + "."};
    }
    std::string rest = lowerAscii(address.substr(scheme.size()));
    if (rest.ends_with('/')) {
        rest.pop_back();
    }
    if (rest.find_first_of("/?#@ \t") != std::string::npos) {
        return {{},
                std::string("The service address is only the scheme, host and port, ") + kExample +
                    " (no path, query or user name)."};
    }
    std::string_view host;
    if (!isValidAuthority(rest, host)) {
        return {{}, "The service address has no valid host name or port."};
    }
    if (scheme == "http://" && !isLoopbackHost(host)) {
        return {{},
                "Use an https:// address: plain http is allowed only for this computer (localhost), "
                "since every request carries your session."};
    }
    return {scheme + rest, {}};
}

CheckedInput<std::string> checkNickname(std::string_view text) {
    const std::string_view nickname = trimAsciiBlanks(text);
    if (nickname.empty()) {
        return {{}, "Enter a nickname."};
    }
    for (const char c : nickname) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            return {{}, "A nickname cannot contain control characters such as tabs or line breaks."};
        }
    }
    if (countCodePoints(nickname) > kMaxNicknameCharacters) {
        return {{}, "A nickname can be at most " + std::to_string(kMaxNicknameCharacters) + " characters."};
    }
    return {std::string(nickname), {}};
}

CheckedInput<std::filesystem::path> checkLibraryFolderText(std::string_view utf8Text) {
    const std::string_view text = trimAsciiBlanks(utf8Text);
    if (text.empty()) {
        return {{}, "Choose a library folder."};
    }
    std::size_t namesStart = 0;
    if (text.size() >= 3 && isDriveLetter(text[0]) && text[1] == ':' && isSeparator(text[2])) {
        namesStart = 3;
    } else if (text.size() >= 2 && isSeparator(text[0]) && isSeparator(text[1])) {
        namesStart = 2; // \\server\share\...
        const std::size_t server = text.find_first_of("\\/", 2);
        if (server == std::string_view::npos || server == 2 || server + 1 >= text.size()) {
            return {{}, "A network library folder needs a server and a share, such as \\\\server\\games."};
        }
    } else {
        return {{}, "The library folder must be a full path, such as C:\\Games."};
    }
    std::string_view names = text.substr(namesStart);
    while (!names.empty()) {
        const std::size_t end = names.find_first_of("\\/");
        const std::string_view name = names.substr(0, end);
        if (!name.empty()) {
            if (std::string error = checkFolderName(name); !error.empty()) {
                return {{}, std::move(error)};
            }
        }
        if (end == std::string_view::npos) {
            break;
        }
        names.remove_prefix(end + 1);
    }
    return {pathFromUtf8(std::string(text)), {}};
}

std::string createLibraryFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!error && std::filesystem::is_directory(folder, error)) {
        return {};
    }
    std::string reason = error ? error.message() : "a file of that name is in the way";
    return "The library folder \"" + pathToUtf8(folder) + "\" could not be created: " + reason + ".";
}

} // namespace corvandell
