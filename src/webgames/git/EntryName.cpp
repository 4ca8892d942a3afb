// Which tree entry names the checkout may turn into a path component.
//
// Repositories are written by strangers and checked out on Windows, where a name can do
// more than name a file: "..", a drive ("C:x"), a separator or an alternate data stream
// (":") leave the folder, and device names ("CON", "com1.txt") open a device instead of a
// file. Windows also drops trailing dots and spaces, so "a." would silently become "a".
// The rules are the same on every platform so a clone behaves alike everywhere.
#include "webgames/git/GitTree.hpp"

#include <algorithm>
#include <array>

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

} // namespace

bool is_safe_entry_name(std::string_view name) {
    if (name.empty() || name == "." || name == ".." || equals_ignoring_case(name, ".git")) {
        return false;
    }
    if (name.find_first_of(std::string_view("/\\:\0", 4)) != std::string_view::npos) {
        return false;
    }
    if (name.back() == '.' || name.back() == ' ') {
        return false;
    }
    return !is_device_name(name);
}

} // namespace corvandell::git
