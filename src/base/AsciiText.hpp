// ASCII case-insensitive comparisons for the names stores write in varying case (locales,
// device families, file suffixes), and ASCII blank trimming. Non-ASCII bytes compare
// exactly and are never trimmed, so UTF-8 is safe.
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

inline bool isAsciiBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The text without the spaces, tabs and line breaks around it.
inline std::string_view trimAsciiBlanks(std::string_view text) {
    while (!text.empty() && isAsciiBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isAsciiBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

} // namespace corvandell
