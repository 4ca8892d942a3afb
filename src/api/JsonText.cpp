// Key scanners and escapers: the only way the client reads or writes JSON text.
//
// The numeric readers follow std::stoi/stoll/stod exactly (strtol and friends on the text
// after the colon, errno for range) but never throw: replies are untrusted, and a failed
// read is an ordinary default here, not an error worth an exception.
#include "api/JsonText.hpp"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <optional>

namespace corvandell {

namespace {

constexpr std::size_t kBoolWindow = 8;

std::string keyPattern(std::string_view key) {
    std::string pattern;
    pattern.reserve(key.size() + 2);
    pattern += '"';
    pattern += key;
    pattern += '"';
    return pattern;
}

// The position of the first ":" at or after the first match of the key pattern.
std::optional<std::size_t> locateColon(const std::string& text, std::string_view key) {
    const std::size_t match = text.find(keyPattern(key));
    if (match == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t colon = text.find(':', match);
    if (colon == std::string::npos) {
        return std::nullopt;
    }
    return colon;
}

// strtol-family calls report range errors only through errno, which the caller may be using.
class ErrnoGuard {
public:
    ErrnoGuard() : saved_(errno) { errno = 0; }
    ~ErrnoGuard() { errno = saved_; }
    ErrnoGuard(const ErrnoGuard&) = delete;
    ErrnoGuard& operator=(const ErrnoGuard&) = delete;
    bool isOutOfRange() const { return errno == ERANGE; }

private:
    int saved_;
};

// Index of the quote that closes the string opened at `open`, or the text's size when the
// string runs to the end.
std::size_t findStringEnd(std::string_view text, std::size_t open) {
    bool isEscaped = false;
    for (std::size_t end = open + 1; end < text.size(); ++end) {
        if (isEscaped) {
            isEscaped = false;
        } else if (text[end] == '\\') {
            isEscaped = true;
        } else if (text[end] == '"') {
            return end;
        }
    }
    return text.size();
}

std::size_t skipSpace(std::string_view text, std::size_t pos) {
    while (pos < text.size() &&
           (text[pos] == ' ' || text[pos] == '\t' || text[pos] == '\r' || text[pos] == '\n')) {
        ++pos;
    }
    return pos;
}

// The complete string at `pos`, unescaped; `pos` moves past its closing quote.
std::optional<std::string> readQuotedAt(std::string_view text, std::size_t& pos) {
    if (pos >= text.size() || text[pos] != '"') {
        return std::nullopt;
    }
    const std::size_t end = findStringEnd(text, pos);
    if (end == text.size()) {
        return std::nullopt;
    }
    std::string value = unescape(text.substr(pos + 1, end - pos - 1));
    pos = end + 1;
    return value;
}

template <typename Value, typename Convert>
Value readNumber(const std::string& text, std::string_view key, Value defaultValue, Convert convert) {
    const auto colon = locateColon(text, key);
    if (!colon) {
        return defaultValue;
    }
    const char* start = text.c_str() + *colon + 1;
    char* end = nullptr;
    const ErrnoGuard errnoGuard;
    const auto value = convert(start, &end);
    if (end == start || errnoGuard.isOutOfRange()) {
        return defaultValue;
    }
    return value;
}

// Whether a scan is inside a string: a quote toggles, and inside a string a backslash
// makes the next character inert, so brackets and braces in values mean nothing.
class StringTracker {
public:
    // True when `c` is part of a string, its quotes included.
    bool isInsideString(char c) noexcept {
        if (!isInString_) {
            isInString_ = c == '"';
            return isInString_;
        }
        if (isEscaped_) {
            isEscaped_ = false;
        } else if (c == '\\') {
            isEscaped_ = true;
        } else if (c == '"') {
            isInString_ = false;
        }
        return true;
    }

private:
    bool isInString_ = false;
    bool isEscaped_ = false;
};

// Index just past the closing "]" matching the "[" at `open`, or the text's end if none.
std::size_t findArrayEnd(std::string_view text, std::size_t open) {
    StringTracker strings;
    int depth = 0;
    for (std::size_t i = open; i < text.size(); ++i) {
        const char c = text[i];
        if (strings.isInsideString(c)) {
            continue;
        }
        if (c == '[') {
            ++depth;
        } else if (c == ']' && --depth == 0) {
            return i + 1;
        }
    }
    return text.size();
}

} // namespace

std::string readString(const std::string& text, std::string_view key) {
    const auto colon = locateColon(text, key);
    if (!colon) {
        return {};
    }
    const std::size_t open = text.find('"', *colon);
    if (open == std::string::npos) {
        return {};
    }
    // An unterminated string runs to the end of the text.
    const std::size_t end = findStringEnd(text, open);
    return unescape(std::string_view(text).substr(open + 1, end - open - 1));
}

bool hasKey(const std::string& text, std::string_view key) {
    return text.find(keyPattern(key)) != std::string::npos;
}

std::map<std::string, std::string> readStringMap(const std::string& text, std::string_view key) {
    std::map<std::string, std::string> entries;
    const auto colon = locateColon(text, key);
    if (!colon) {
        return entries;
    }
    const std::size_t open = text.find('{', *colon);
    if (open == std::string::npos) {
        return entries;
    }
    std::size_t pos = skipSpace(text, open + 1);
    while (pos < text.size() && text[pos] != '}') {
        auto name = readQuotedAt(text, pos);
        pos = skipSpace(text, pos);
        if (!name || pos >= text.size() || text[pos] != ':') {
            break;
        }
        pos = skipSpace(text, pos + 1);
        auto value = readQuotedAt(text, pos);
        if (!value) {
            break;
        }
        entries[std::move(*name)] = std::move(*value);
        pos = skipSpace(text, pos);
        if (pos < text.size() && text[pos] == ',') {
            pos = skipSpace(text, pos + 1);
        } else if (pos >= text.size() || text[pos] != '}') {
            break;
        }
    }
    return entries;
}

std::vector<std::string> readStringList(const std::string& text, std::string_view key) {
    std::vector<std::string> items;
    const auto colon = locateColon(text, key);
    if (!colon) {
        return items;
    }
    std::size_t pos = skipSpace(text, *colon + 1);
    if (pos >= text.size() || text[pos] != '[') {
        return items;
    }
    pos = skipSpace(text, pos + 1);
    while (auto item = readQuotedAt(text, pos)) {
        items.push_back(std::move(*item));
        pos = skipSpace(text, pos);
        if (pos >= text.size() || text[pos] != ',') {
            break;
        }
        pos = skipSpace(text, pos + 1);
    }
    return items;
}

bool readBool(const std::string& text, std::string_view key, bool defaultValue) {
    const auto colon = locateColon(text, key);
    if (!colon) {
        return defaultValue;
    }
    const std::string_view window = std::string_view(text).substr(*colon + 1, kBoolWindow);
    if (window.find("true") != std::string_view::npos) {
        return true;
    }
    if (window.find("false") != std::string_view::npos) {
        return false;
    }
    return defaultValue;
}

int readInt(const std::string& text, std::string_view key, int defaultValue) {
    const long value = readNumber(text, key, long{defaultValue},
                                  [](const char* start, char** end) { return std::strtol(start, end, 10); });
    // std::stoi rejects what fits a long but not an int (long is 64-bit on Linux).
    if (value < INT_MIN || value > INT_MAX) {
        return defaultValue;
    }
    return static_cast<int>(value);
}

std::int64_t readInt64(const std::string& text, std::string_view key, std::int64_t defaultValue) {
    const long long value =
        readNumber(text, key, static_cast<long long>(defaultValue),
                   [](const char* start, char** end) { return std::strtoll(start, end, 10); });
    return static_cast<std::int64_t>(value);
}

double readDouble(const std::string& text, std::string_view key, double defaultValue) {
    return readNumber(text, key, defaultValue,
                      [](const char* start, char** end) { return std::strtod(start, end); });
}

std::vector<std::string> readObjectList(const std::string& text, std::string_view key) {
    const std::string pattern = keyPattern(key);
    const std::size_t match = text.find(pattern);
    if (match == std::string::npos) {
        return splitObjects(text);
    }
    const std::size_t open = text.find('[', match + pattern.size());
    if (open == std::string::npos) {
        return splitObjects(text);
    }
    const std::string_view whole(text);
    return splitObjects(whole.substr(open, findArrayEnd(whole, open) - open));
}

std::vector<std::string> splitObjects(std::string_view text) {
    std::vector<std::string> objects;
    StringTracker strings;
    int depth = 0;
    std::optional<std::size_t> start;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (strings.isInsideString(c)) {
            continue;
        }
        if (c == '{') {
            if (depth == 0) {
                start = i;
            }
            ++depth;
        } else if (c == '}' && depth > 0) {
            if (depth == 1 && start) {
                objects.emplace_back(text.substr(*start, i - *start + 1));
                start.reset();
            }
            --depth;
        }
    }
    return objects;
}

std::string unescape(std::string_view raw) {
    std::string out;
    out.reserve(raw.size());
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] != '\\' || i + 1 == raw.size()) {
            out += raw[i];
            continue;
        }
        const char next = raw[++i];
        if (next == 'n') {
            out += '\n';
        } else if (next == 't') {
            out += '\t';
        } else {
            out += next;
        }
    }
    return out;
}

std::string escapeBodyString(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 8);
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else {
            out += c;
        }
    }
    return out;
}

std::string encodeQueryValue(std::string_view text) {
    static constexpr char kHexDigits[] = "0123456789ABCDEF";
    // Spelled out rather than isalnum: the classification must not follow the C locale.
    const auto isUnreserved = [](unsigned char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
               c == '.' || c == '_' || c == '~';
    };
    std::string out;
    out.reserve(text.size() * 3);
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isUnreserved(byte)) {
            out += c;
            continue;
        }
        out += '%';
        out += kHexDigits[byte >> 4];
        out += kHexDigits[byte & 0x0F];
    }
    return out;
}

} // namespace corvandell
