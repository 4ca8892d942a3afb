// On POSIX builds a backslash in a store path becomes "/", so the native tests can write
// records the way Windows stores do and still resolve them to folders of the test's tree.
#include "stores/StoreFiles.hpp"

#include "base/AsciiText.hpp"
#include "base/BoundedFileRead.hpp"
#include "base/Utf8Path.hpp"

#include <cstdint>

namespace corvandell {

std::optional<std::string> readStoreFile(const std::filesystem::path& file, std::size_t maxBytes) {
    FileRead read = readFileBounded(file, maxBytes);
    if (read.status != FileReadStatus::Ok) {
        return std::nullopt;
    }
    return std::move(read.bytes);
}

std::string megabytesText(std::size_t bytes) {
    return std::to_string(bytes >> 20) + " MB";
}

std::string storeFileProblem(const std::filesystem::path& file, std::size_t maxBytes, bool asText) {
    const std::string name = utf8Text(file.filename());
    const FileRead read = readFileBounded(file, maxBytes);
    if (read.status == FileReadStatus::TooLarge) {
        return name + " is larger than " + megabytesText(maxBytes);
    }
    if (read.status == FileReadStatus::Ok && asText && !isValidUtf8(decodeStoreText(read.bytes))) {
        return name + " is not UTF-8 or UTF-16 text";
    }
    return name + " could not be read";
}

void appendUtf8CodePoint(std::string& out, std::uint32_t codePoint) {
    if (codePoint < 0x80) {
        out.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else if (codePoint < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    }
}

namespace {

std::string utf8FromUtf16(std::string_view bytes, bool isBigEndian) {
    constexpr std::uint32_t kReplacement = 0xFFFD;
    std::string out;
    out.reserve(bytes.size());
    auto unitAt = [&](size_t i) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<std::uint32_t>(isBigEndian ? (first << 8) | second : (second << 8) | first);
    };
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const std::uint32_t unit = unitAt(i);
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 3 < bytes.size()) {
            const std::uint32_t low = unitAt(i + 2);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                appendUtf8CodePoint(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
                i += 2;
                continue;
            }
        }
        appendUtf8CodePoint(out, unit >= 0xD800 && unit <= 0xDFFF ? kReplacement : unit);
    }
    return out;
}

} // namespace

std::string decodeStoreText(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        return std::string(bytes.substr(3));
    }
    if (bytes.starts_with("\xFF\xFE")) {
        return utf8FromUtf16(bytes.substr(2), false);
    }
    if (bytes.starts_with("\xFE\xFF")) {
        return utf8FromUtf16(bytes.substr(2), true);
    }
    // Without a mark, text whose second byte is zero is UTF-16LE: no UTF-8 store file
    // starts with a NUL.
    if (bytes.size() >= 2 && bytes[0] != '\0' && bytes[1] == '\0') {
        return utf8FromUtf16(bytes, false);
    }
    return std::string(bytes);
}

std::optional<std::string> readStoreText(const std::filesystem::path& file) {
    auto bytes = readStoreFile(file);
    if (!bytes) {
        return std::nullopt;
    }
    std::string text = decodeStoreText(*bytes);
    if (!isValidUtf8(text)) {
        return std::nullopt;
    }
    return text;
}

namespace {

// The length of the well-formed UTF-8 sequence at the start of `text`; 0 when there is none.
size_t utf8SequenceLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t length = lead < 0x80           ? 1
                          : (lead >> 5) == 0x6  ? 2
                          : (lead >> 4) == 0xE  ? 3
                          : (lead >> 3) == 0x1E ? 4
                                                : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    std::uint32_t codePoint = length == 1 ? lead : lead & (0xFFu >> (length + 1));
    for (size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[k]);
        if ((next & 0xC0) != 0x80) {
            return 0;
        }
        codePoint = (codePoint << 6) | (next & 0x3Fu);
    }
    static constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    return codePoint < kSmallest[length] || codePoint > 0x10FFFF || isSurrogate ? 0 : length;
}

} // namespace

bool isValidUtf8(std::string_view text) {
    for (size_t i = 0; i < text.size();) {
        // ASCII runs are the common case and need no decoding.
        if (static_cast<unsigned char>(text[i]) < 0x80) {
            ++i;
            continue;
        }
        const size_t length = utf8SequenceLength(text.substr(i));
        if (length == 0) {
            return false;
        }
        i += length;
    }
    return true;
}

std::string validUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t length = utf8SequenceLength(text.substr(i));
        if (length == 0) {
            appendUtf8CodePoint(out, 0xFFFD);
            ++i;
            continue;
        }
        out.append(text.substr(i, length));
        i += length;
    }
    return out;
}

std::filesystem::path storePath(std::string_view utf8) {
    auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '"'; };
    while (!utf8.empty() && isBlank(utf8.front())) {
        utf8.remove_prefix(1);
    }
    while (!utf8.empty() && isBlank(utf8.back())) {
        utf8.remove_suffix(1);
    }
    if (utf8.starts_with("\\\\?\\") || utf8.starts_with("//?/")) {
        utf8.remove_prefix(4);
    }
    std::string text(utf8);
    for (char& c : text) {
        if (c == '\\' || c == '/') {
            c = static_cast<char>(std::filesystem::path::preferred_separator);
        }
    }
    // Keep the separator of a root ("C:\" or "/"), drop any other trailing ones.
    while (text.size() > 1 && text.back() == static_cast<char>(std::filesystem::path::preferred_separator) &&
           !(text.size() == 3 && text[1] == ':')) {
        text.pop_back();
    }
    return pathFromUtf8(isValidUtf8(text) ? text : validUtf8(text));
}

bool isSameFolder(const std::filesystem::path& a, const std::filesystem::path& b) {
    auto comparable = [](const std::filesystem::path& path) {
        return lowerAscii(utf8Text(storePath(utf8Text(path.lexically_normal()))));
    };
    return comparable(a) == comparable(b);
}

bool isExistingFolder(const std::filesystem::path& folder) {
    std::error_code error;
    return !folder.empty() && std::filesystem::is_directory(folder, error);
}

std::optional<std::string> installFolderProblem(const std::filesystem::path& folder) {
    if (folder.empty()) {
        return "no install folder is recorded";
    }
    if (!isExistingFolder(folder)) {
        return "the install folder no longer exists";
    }
    return std::nullopt;
}

bool isExistingFile(const std::filesystem::path& file) {
    std::error_code error;
    return !file.empty() && std::filesystem::is_regular_file(file, error);
}

std::filesystem::path existingFileUnder(const std::filesystem::path& folder, std::string_view relative) {
    while (!relative.empty() && (relative.front() == '/' || relative.front() == '\\')) {
        relative.remove_prefix(1);
    }
    if (relative.empty()) {
        return {};
    }
    auto file = folder / storePath(relative);
    return isExistingFile(file) ? file : std::filesystem::path();
}

std::string utf8Text(const std::filesystem::path& path) {
    if constexpr (sizeof(std::filesystem::path::value_type) == 2) {
        std::string units;
        units.reserve(path.native().size() * 2);
        for (const auto unit : path.native()) {
            units.push_back(static_cast<char>(static_cast<std::uint16_t>(unit) & 0xFF));
            units.push_back(static_cast<char>(static_cast<std::uint16_t>(unit) >> 8));
        }
        return utf8FromUtf16(units, false);
    } else {
        std::string text = pathToUtf8(path);
        return isValidUtf8(text) ? text : validUtf8(text);
    }
}

} // namespace corvandell
