// Which tree entry names the checkout may turn into a path component.
//
// Repositories are written by strangers and checked out on Windows, where a name can do
// more than name a file: "..", a drive ("C:x"), a separator or an alternate data stream
// (":") leave the folder, and device names ("CON", "com1.txt") open a device instead of a
// file. Windows also drops trailing dots and spaces, so "a." would silently become "a", and
// refuses control characters and < > " | ? * outright. Names are UTF-8 by git's
// convention but nothing enforces it; bytes that do not decode have no UTF-16 form.
// Skipping all of these up front, rather than failing on them halfway through the
// writing, is what lets a clone decide before it empties the destination. The rules are
// the same on every platform so a clone behaves alike everywhere.
#include "webgames/git/GitTree.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

namespace corvandell::git {

namespace {

char lower_ascii(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equals_ignoring_case(std::string_view text, std::string_view lowerCase) {
    return text.size() == lowerCase.size() && std::equal(text.begin(), text.end(), lowerCase.begin(),
                                                         [](char a, char b) { return lower_ascii(a) == b; });
}

// Windows reserves these whatever extension follows, and ignores spaces before the dot.
// Port numbers run 0-9 and include the superscript digits 1-3, which Windows also accepts.
bool is_device_name(std::string_view name) {
    std::string_view stem = name.substr(0, name.find('.'));
    while (!stem.empty() && stem.back() == ' ') {
        stem.remove_suffix(1);
    }
    static constexpr std::array<std::string_view, 6> kDevices = {"con", "nul",    "aux",
                                                                 "prn", "conin$", "conout$"};
    if (std::any_of(kDevices.begin(), kDevices.end(),
                    [stem](std::string_view device) { return equals_ignoring_case(stem, device); })) {
        return true;
    }
    if (stem.size() < 4 ||
        !(equals_ignoring_case(stem.substr(0, 3), "com") || equals_ignoring_case(stem.substr(0, 3), "lpt"))) {
        return false;
    }
    const std::string_view number = stem.substr(3);
    const bool isDigit = number.size() == 1 && number[0] >= '0' && number[0] <= '9';
    return isDigit || number == "\xC2\xB9" || number == "\xC2\xB2" || number == "\xC2\xB3";
}

bool has_forbidden_character(std::string_view name) {
    return std::any_of(name.begin(), name.end(), [](char c) {
        const auto byte = static_cast<std::uint8_t>(c);
        return byte < 0x20 || std::string_view("<>:\"/\\|?*").find(c) != std::string_view::npos;
    });
}

// Strict UTF-8 (RFC 3629): no overlong forms, no surrogates, nothing above U+10FFFF, which
// are exactly the sequences that have no UTF-16 equivalent or more than one spelling.
bool is_valid_utf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto lead = static_cast<std::uint8_t>(text[at]);
        if (lead < 0x80) {
            ++at;
            continue;
        }
        std::size_t length = 0;
        std::uint8_t low = 0x80;  // the range of the second byte, which rules out the
        std::uint8_t high = 0xBF; // overlong forms, surrogates and values past U+10FFFF
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            low = lead == 0xE0 ? 0xA0 : 0x80;
            high = lead == 0xED ? 0x9F : 0xBF;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            low = lead == 0xF0 ? 0x90 : 0x80;
            high = lead == 0xF4 ? 0x8F : 0xBF;
        } else {
            return false;
        }
        if (text.size() - at < length) {
            return false;
        }
        const auto second = static_cast<std::uint8_t>(text[at + 1]);
        if (second < low || second > high) {
            return false;
        }
        for (std::size_t i = 2; i < length; ++i) {
            if ((static_cast<std::uint8_t>(text[at + i]) & 0xC0) != 0x80) {
                return false;
            }
        }
        at += length;
    }
    return true;
}

} // namespace

bool is_safe_entry_name(std::string_view name) {
    if (name.empty() || name == "." || name == ".." || equals_ignoring_case(name, ".git")) {
        return false;
    }
    if (has_forbidden_character(name) || !is_valid_utf8(name)) {
        return false;
    }
    if (name.back() == '.' || name.back() == ' ') {
        return false;
    }
    return !is_device_name(name);
}

} // namespace corvandell::git
