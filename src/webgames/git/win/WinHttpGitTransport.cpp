// The session's agent carries our suffix while the header sent with each request names
// plain git, which is what the host expects to see from a git client.
#include "webgames/git/win/WinHttpGitTransport.hpp"

#include <stdexcept>

#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "base/win/WinHttpReply.hpp"

namespace corvandell::win {

SplitUrl gitHostFromUrl(const std::string& baseUrl) {
    SplitUrl host = splitUrl(widen(baseUrl));
    // Any path in the base address is ignored: repository paths always start at the root.
    host.pathAndQuery.clear();
    return host;
}

std::string WinHttpGitTransport::request(const std::wstring& path, const std::string& body,
                                         const std::optional<std::wstring>& contentType,
                                         const std::optional<std::wstring>& accept) {
    UniqueInternetHandle session(WinHttpOpen(L"git/2.40.0 (corvandell)", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                                             WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    if (!session) {
        throw std::runtime_error("WinHttpOpen failed");
    }
    UniqueInternetHandle connection(WinHttpConnect(session.get(), host_.host.c_str(), host_.port, 0));
    if (!connection) {
        throw std::runtime_error("WinHttpOpenRequest failed");
    }
    UniqueInternetHandle request(WinHttpOpenRequest(
        connection.get(), body.empty() ? L"GET" : L"POST", path.c_str(), nullptr, WINHTTP_NO_REFERER,
        WINHTTP_DEFAULT_ACCEPT_TYPES, host_.isHttps ? WINHTTP_FLAG_SECURE : 0));
    if (!request) {
        throw std::runtime_error("WinHttpOpenRequest failed");
    }
    std::wstring headers = L"User-Agent: git/2.40.0\r\n";
    if (accept) {
        headers += L"Accept: " + *accept + L"\r\n";
    }
    if (contentType) {
        headers += L"Content-Type: " + *contentType + L"\r\n";
    }
    const DWORD bodyLength = static_cast<DWORD>(body.size());
    void* bodyData = body.empty() ? WINHTTP_NO_REQUEST_DATA : const_cast<char*>(body.data());
    if (!WinHttpSendRequest(request.get(), headers.c_str(), static_cast<DWORD>(-1), bodyData, bodyLength,
                            bodyLength, 0) ||
        !WinHttpReceiveResponse(request.get(), nullptr)) {
        throw std::runtime_error("git HTTP request failed");
    }
    const DWORD status = replyStatusCode(request.get());
    std::string reply = readReplyBody(request.get());
    if (isFailureStatus(status)) {
        throw std::runtime_error("GitHub returned HTTP " + std::to_string(status));
    }
    return reply;
}

} // namespace corvandell::win
