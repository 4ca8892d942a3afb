#include "base/win/WinHttpReply.hpp"

#include <algorithm>
#include <cwchar>
#include <limits>

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

// A declared length sizes the body once (within a bound a lying header cannot push past),
// and each piece is read straight into the body's tail rather than through a buffer.
std::optional<std::string> readReplyBodyUpTo(HINTERNET request, std::size_t maxBytes) {
    constexpr unsigned long long kMostReservedBytes = 256ull << 20;
    const auto length = declaredLength(request);
    if (length && *length > maxBytes) {
        return std::nullopt;
    }
    std::string body;
    if (length) {
        body.reserve(static_cast<std::size_t>(std::min(*length, kMostReservedBytes)));
    }
    for (;;) {
        DWORD available = 0;
        if (!WinHttpQueryDataAvailable(request, &available) || available == 0) {
            break;
        }
        if (available > maxBytes - body.size()) {
            return std::nullopt;
        }
        const std::size_t at = body.size();
        body.resize(at + available);
        DWORD read = 0;
        const bool isRead = WinHttpReadData(request, body.data() + at, available, &read) != 0;
        body.resize(at + (isRead ? read : 0));
        if (!isRead) {
            break;
        }
    }
    return body;
}

// With no cap no reply is refused, so there is always a body, possibly cut short.
std::string readReplyBody(HINTERNET request) {
    return readReplyBodyUpTo(request, std::numeric_limits<std::size_t>::max()).value_or(std::string());
}

} // namespace corvandell::win
