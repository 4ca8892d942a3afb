#include "stores/JsonStrings.hpp"

#include "stores/StoreFiles.hpp"

#include <cstdint>
#include <optional>

namespace corvandell {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

std::optional<std::uint32_t> hexUnit(std::string_view raw, std::size_t at) {
    if (raw.size() < at + 4) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i) {
        const char c = raw[i];
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0) {
            return std::nullopt;
        }
        value = (value << 4) | static_cast<std::uint32_t>(digit);
    }
    return value;
}

bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Decodes the \u escape whose "u" is at `at`; returns the index just past what it used.
std::size_t appendUnicodeEscape(std::string& out, std::string_view raw, std::size_t at) {
    const auto unit = hexUnit(raw, at + 1);
    if (!unit) {
        appendUtf8CodePoint(out, kReplacement);
        return at + 1;
    }
    if (isHighSurrogate(*unit) && raw.substr(at + 5, 2) == "\\u") {
        if (const auto low = hexUnit(raw, at + 7); low && isLowSurrogate(*low)) {
            appendUtf8CodePoint(out, 0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00));
            return at + 11;
        }
    }
    appendUtf8CodePoint(out, isHighSurrogate(*unit) || isLowSurrogate(*unit) ? kReplacement : *unit);
    return at + 5;
}

} // namespace

std::string decodeJsonString(std::string_view raw) {
    std::string out;
    out.reserve(raw.size());
    for (std::size_t i = 0; i < raw.size();) {
        if (raw[i] != '\\' || i + 1 == raw.size()) {
            out.push_back(raw[i++]);
            continue;
        }
        const char escape = raw[i + 1];
        if (escape == 'u') {
            i = appendUnicodeEscape(out, raw, i + 1);
            continue;
        }
        static constexpr std::string_view kFrom = "\"\\/bfnrt";
        static constexpr std::string_view kTo = "\"\\/\b\f\n\r\t";
        const std::size_t known = kFrom.find(escape);
        if (known == std::string_view::npos) {
            appendUtf8CodePoint(out, kReplacement);
        } else {
            out.push_back(kTo[known]);
        }
        i += 2;
    }
    return out;
}

std::string readDecodedString(std::string_view text, std::string_view key) {
    const std::string pattern = "\"" + std::string(key) + "\"";
    const std::size_t match = text.find(pattern);
    const std::size_t colon =
        match == std::string_view::npos ? match : text.find(':', match + pattern.size());
    const std::size_t open = colon == std::string_view::npos ? colon : text.find('"', colon);
    if (open == std::string_view::npos) {
        return {};
    }
    std::size_t end = open + 1;
    for (bool isEscaped = false; end < text.size(); ++end) {
        if (isEscaped) {
            isEscaped = false;
        } else if (text[end] == '\\') {
            isEscaped = true;
        } else if (text[end] == '"') {
            break;
        }
    }
    return decodeJsonString(text.substr(open + 1, end - open - 1));
}

} // namespace corvandell
