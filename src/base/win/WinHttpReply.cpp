#include "base/win/WinHttpReply.hpp"

#include <cwchar>
#include <limits>
#include <vector>

namespace corvandell::win {

DWORD replyStatusCode(HINTERNET request) {
    DWORD status = 0;
    DWORD length = sizeof(status);
    WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                        WINHTTP_HEADER_NAME_BY_INDEX, &status, &length, WINHTTP_NO_HEADER_INDEX);
    return status;
}

namespace {

// The declared Content-Length; nothing when there is none (a chunked reply) or it is not a number.
std::optional<unsigned long long> declaredLength(HINTERNET request) {
    wchar_t text[32] = {};
    DWORD bytes = sizeof(text) - sizeof(wchar_t);
    if (!WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_LENGTH, WINHTTP_HEADER_NAME_BY_INDEX, text,
                             &bytes, WINHTTP_NO_HEADER_INDEX)) {
        return std::nullopt;
    }
    wchar_t* end = nullptr;
    const unsigned long long length = std::wcstoull(text, &end, 10);
    return end != text ? std::optional(length) : std::nullopt;
}

} // namespace

std::optional<std::string> readReplyBodyUpTo(HINTERNET request, std::size_t maxBytes) {
    if (const auto length = declaredLength(request); length && *length > maxBytes) {
        return std::nullopt;
    }
    std::string body;
    std::vector<char> chunk;
    for (;;) {
        DWORD available = 0;
        if (!WinHttpQueryDataAvailable(request, &available) || available == 0) {
            break;
        }
        if (available > maxBytes - body.size()) {
            return std::nullopt;
        }
        chunk.assign(available, '\0');
        DWORD read = 0;
        if (!WinHttpReadData(request, chunk.data(), available, &read)) {
            break;
        }
        body.append(chunk.data(), read);
    }
    return body;
}

// With no cap no reply is refused, so there is always a body, possibly cut short.
std::string readReplyBody(HINTERNET request) {
    return readReplyBodyUpTo(request, std::numeric_limits<std::size_t>::max()).value_or(std::string());
}

} // namespace corvandell::win
