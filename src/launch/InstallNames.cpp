#include "launch/InstallNames.hpp"

#include "base/AsciiText.hpp"

#include <array>
#include <vector>

namespace corvandell {
namespace {

bool isForbiddenChar(unsigned char c) {
    return c < 0x20 || c == 0x7F || c == '<' || c == '>' || c == ':' || c == '"' || c == '/' || c == '\\' ||
           c == '|' || c == '?' || c == '*';
}

bool isContinuationByte(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

// The part Windows matches device names against: up to the first dot, trailing blanks off.
std::string_view deviceStem(std::string_view name) {
    std::string_view stem = name.substr(0, name.find('.'));
    while (!stem.empty() && stem.back() == ' ') {
        stem.remove_suffix(1);
    }
    return stem;
}

void trimTrailingDotsAndBlanks(std::string& text) {
    while (!text.empty() && (text.back() == '.' || text.back() == ' ')) {
        text.pop_back();
    }
}

// Forbidden characters become blanks, runs of blanks one blank, and the ends are trimmed.
std::string repaired(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const char kept = isForbiddenChar(static_cast<unsigned char>(c)) ? ' ' : c;
        if (kept == ' ' && (out.empty() || out.back() == ' ')) {
            continue;
        }
        out.push_back(kept);
    }
    // Cut at a character boundary, so a multi-byte character is never split.
    std::size_t chars = 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (!isContinuationByte(static_cast<unsigned char>(out[i])) && ++chars > kMaxTitleFolderChars) {
            out.resize(i);
            break;
        }
    }
    trimTrailingDotsAndBlanks(out);
    return out;
}

std::string withoutDeviceName(std::string name) {
    if (isReservedDeviceName(name)) {
        name.insert(deviceStem(name).size(), "_");
    }
    return name;
}

bool isAcceptableComponent(std::string_view component) {
    if (component.empty() || component.size() > kMaxAssetComponentBytes || component == "." ||
        component == "..") {
        return false;
    }
    for (const char c : component) {
        if (isForbiddenChar(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    // Windows drops trailing dots and blanks, so "a." would be written as "a".
    if (component.back() == '.' || component.back() == ' ') {
        return false;
    }
    return !isReservedDeviceName(component);
}

} // namespace

bool isReservedDeviceName(std::string_view name) {
    const std::string stem = lowerAscii(std::string(deviceStem(name)));
    static constexpr std::array<std::string_view, 6> kPlain{"con", "prn", "aux", "nul", "conin$", "conout$"};
    for (const std::string_view reserved : kPlain) {
        if (stem == reserved) {
            return true;
        }
    }
    if (stem.size() < 4 || (!stem.starts_with("com") && !stem.starts_with("lpt"))) {
        return false;
    }
    const std::string_view digit = std::string_view(stem).substr(3);
    if (digit.size() == 1) {
        return digit[0] >= '0' && digit[0] <= '9';
    }
    // The superscript digits one, two and three in UTF-8.
    return digit == "\xC2\xB9" || digit == "\xC2\xB2" || digit == "\xC2\xB3";
}

std::string titleFolderName(std::string_view title, std::string_view fallback) {
    std::string name = repaired(title);
    if (name.empty()) {
        name = repaired(fallback);
    }
    if (name.empty()) {
        name = "Game";
    }
    return withoutDeviceName(std::move(name));
}

std::optional<std::string> assetFileName(std::string_view assetName) {
    std::string path;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = assetName.find_first_of("/\\", start);
        const std::string_view component =
            assetName.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
        if (!isAcceptableComponent(component)) {
            return std::nullopt;
        }
        if (!path.empty()) {
            path += '/';
        }
        path += component;
        if (end == std::string_view::npos) {
            break;
        }
        start = end + 1;
    }
    return path + ".bin";
}

} // namespace corvandell
