// ASCII case-insensitive comparisons for the names stores write in varying case (locales,
// device families, file suffixes). Non-ASCII bytes compare exactly, so UTF-8 is safe.
#pragma once

#include <string>
#include <string_view>

namespace corvandell {

inline char lowerAsciiChar(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string lowerAscii(std::string text) {
    for (char& c : text) {
        c = lowerAsciiChar(c);
    }
    return text;
}

inline bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lowerAsciiChar(a[i]) != lowerAsciiChar(b[i])) {
            return false;
        }
    }
    return true;
}

inline bool startsWithIgnoringAsciiCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && equalsIgnoringAsciiCase(text.substr(0, prefix.size()), prefix);
}

inline bool endsWithIgnoringAsciiCase(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() &&
           equalsIgnoringAsciiCase(text.substr(text.size() - suffix.size()), suffix);
}

} // namespace corvandell
