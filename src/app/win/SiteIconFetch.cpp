#include <windows.h>

#include <winhttp.h>

#include "app/win/SiteIconFetch.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "base/win/WinHttpReply.hpp"
#include "base/win/WinHttpUrl.hpp"

namespace corvandell::win {
namespace {

constexpr wchar_t kUserAgent[] = L"Corvandell/0.1";
constexpr int kResolveTimeoutMs = 3000;
constexpr int kConnectTimeoutMs = 3000;
constexpr int kSendTimeoutMs = 3000;
constexpr int kReceiveTimeoutMs = 5000;

} // namespace

std::optional<std::string> fetchSmallFile(const std::string& address, std::size_t maxBytes) noexcept {
    try {
        if (!address.starts_with("https://") && !address.starts_with("http://")) {
            return std::nullopt;
        }
        const SplitUrl parts = splitUrl(widen(address));
        const UniqueInternetHandle session(WinHttpOpen(kUserAgent, WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                                                       WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
        if (!session) {
            return std::nullopt;
        }
        WinHttpSetTimeouts(session.get(), kResolveTimeoutMs, kConnectTimeoutMs, kSendTimeoutMs,
                           kReceiveTimeoutMs);
        const UniqueInternetHandle connection(
            WinHttpConnect(session.get(), parts.host.c_str(), parts.port, 0));
        const UniqueInternetHandle request(WinHttpOpenRequest(
            connection.get(), L"GET", parts.pathAndQuery.c_str(), nullptr, WINHTTP_NO_REFERER,
            WINHTTP_DEFAULT_ACCEPT_TYPES, parts.isHttps ? WINHTTP_FLAG_SECURE : 0));
        if (!request ||
            !WinHttpSendRequest(request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0,
                                0, 0) ||
            !WinHttpReceiveResponse(request.get(), nullptr) ||
            isFailureStatus(replyStatusCode(request.get()))) {
            return std::nullopt;
        }
        return readReplyBodyUpTo(request.get(), maxBytes);
    } catch (...) {
        return std::nullopt;
    }
}

} // namespace corvandell::win
