// The session's agent carries our suffix while the header sent with each request names
// plain git, which is what the host expects to see from a git client.
#include "webgames/git/win/WinHttpGitTransport.hpp"

#include <stdexcept>
#include <vector>

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

// The handles of one exchange whose reply has begun; the session and connection must
// outlive the request.
struct WinHttpGitTransport::Exchange {
    UniqueInternetHandle session;
    UniqueInternetHandle connection;
    UniqueInternetHandle request;
};

WinHttpGitTransport::Exchange WinHttpGitTransport::send(const std::wstring& path, const std::string& body,
                                                        const std::optional<std::wstring>& contentType,
                                                        const std::optional<std::wstring>& accept) {
    Exchange exchange;
    exchange.session.reset(WinHttpOpen(L"git/2.40.0 (corvandell)", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                                       WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    if (!exchange.session) {
        throw std::runtime_error("WinHttpOpen failed");
    }
    exchange.connection.reset(WinHttpConnect(exchange.session.get(), host_.host.c_str(), host_.port, 0));
    if (!exchange.connection) {
        throw std::runtime_error("WinHttpOpenRequest failed");
    }
    exchange.request.reset(WinHttpOpenRequest(
        exchange.connection.get(), body.empty() ? L"GET" : L"POST", path.c_str(), nullptr, WINHTTP_NO_REFERER,
        WINHTTP_DEFAULT_ACCEPT_TYPES, host_.isHttps ? WINHTTP_FLAG_SECURE : 0));
    if (!exchange.request) {
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
    if (!WinHttpSendRequest(exchange.request.get(), headers.c_str(), static_cast<DWORD>(-1), bodyData,
                            bodyLength, bodyLength, 0) ||
        !WinHttpReceiveResponse(exchange.request.get(), nullptr)) {
        throw std::runtime_error("git HTTP request failed");
    }
    if (const DWORD status = replyStatusCode(exchange.request.get()); isFailureStatus(status)) {
        throw std::runtime_error("GitHub returned HTTP " + std::to_string(status));
    }
    return exchange;
}

std::string WinHttpGitTransport::request(const std::wstring& path, const std::string& body,
                                         const std::optional<std::wstring>& contentType,
                                         const std::optional<std::wstring>& accept) {
    const Exchange exchange = send(path, body, contentType, accept);
    return readReplyBody(exchange.request.get());
}

void WinHttpGitTransport::request_streamed(const std::wstring& path, const std::string& body,
                                           const std::optional<std::wstring>& contentType,
                                           const std::optional<std::wstring>& accept,
                                           const std::function<void(std::string_view)>& receive) {
    const Exchange exchange = send(path, body, contentType, accept);
    std::vector<char> piece(std::size_t{256} << 10);
    for (;;) {
        DWORD read = 0;
        if (!WinHttpReadData(exchange.request.get(), piece.data(), static_cast<DWORD>(piece.size()), &read) ||
            read == 0) {
            return; // the end, or a reply cut short, which the reader of the body will find
        }
        receive(std::string_view(piece.data(), read));
    }
}

} // namespace corvandell::win
