// Reading a WinHTTP reply the same way for every exchange the client makes: the status as
// a number, then the body until the server has no more, keeping what arrived before a
// failed read rather than losing it.
#pragma once

#include <windows.h>
#include <winhttp.h>

#include <cstddef>
#include <optional>
#include <string>

namespace corvandell::win {

// 0 when the status cannot be read.
DWORD replyStatusCode(HINTERNET request);

std::string readReplyBody(HINTERNET request);

// The body, read only while it stays within maxBytes: nothing as soon as the declared
// Content-Length or what has arrived passes it, so an oversized reply is never held whole.
std::optional<std::string> readReplyBodyUpTo(HINTERNET request, std::size_t maxBytes);

// Whether a status is outside 200..299 (0 and every 1xx, 3xx, 4xx and 5xx included).
constexpr bool isFailureStatus(DWORD status) {
    return status - 200u > 99u;
}

} // namespace corvandell::win
