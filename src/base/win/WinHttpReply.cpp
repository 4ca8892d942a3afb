#include "base/win/WinHttpReply.hpp"

#include <vector>

namespace corvandell::win {

DWORD replyStatusCode(HINTERNET request) {
    DWORD status = 0;
    DWORD length = sizeof(status);
    WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                        WINHTTP_HEADER_NAME_BY_INDEX, &status, &length, WINHTTP_NO_HEADER_INDEX);
    return status;
}

std::string readReplyBody(HINTERNET request) {
    std::string body;
    std::vector<char> chunk;
    for (;;) {
        DWORD available = 0;
        if (!WinHttpQueryDataAvailable(request, &available) || available == 0) {
            break;
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

} // namespace corvandell::win
