// Status is judged only after the whole body is read, so an error reply's text reaches the
// user inside the "Corvandell API HTTP" message. Handles are closed on every path, the
// failure paths included. A body over 64 MB is refused as it arrives, never held whole.
#include "api/win/WinHttpApiClient.hpp"

#include <stdexcept>
#include <vector>

#include "base/win/UniqueHandle.hpp"
#include "base/win/WideText.hpp"
#include "base/win/WinHttpReply.hpp"
#include "base/win/WinHttpUrl.hpp"

namespace corvandell::win {

namespace {

constexpr wchar_t kUserAgent[] = L"Corvandell/0.1";
// No service reply comes near this (the largest, a 100-title catalogue page, is tens of
// kilobytes); a larger one is a fault or an attack, and is refused before it is held.
constexpr std::size_t kMaxReplyBytes = std::size_t{64} << 20;

std::wstring fullUrl(const Settings& settings, const std::string& path) {
    std::string base = settings.apiBaseUrl;
    while (!base.empty() && base.back() == '/') {
        base.pop_back();
    }
    return widen(base + path);
}

std::wstring requestHeaders(const Settings& settings, bool hasBody) {
    std::wstring headers = L"Accept: application/json\r\n";
    if (!settings.bearerToken.empty()) {
        headers += L"Authorization: Bearer " + widen(settings.bearerToken) + L"\r\n";
    }
    if (hasBody) {
        headers += L"Content-Type: application/json\r\n";
    }
    return headers;
}

// Handles in creation order, so the request closes first and the session last.
struct OpenExchange {
    UniqueInternetHandle session;
    UniqueInternetHandle connection;
    UniqueInternetHandle request;
};

OpenExchange openExchange(const std::wstring& url, const std::wstring& method) {
    const SplitUrl parts = splitUrl(url);
    OpenExchange exchange;
    // Null handles are not checked here: a null handle makes the send fail, which reports
    // the one transport error the user sees.
    exchange.session.reset(WinHttpOpen(kUserAgent, WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                                       WINHTTP_NO_PROXY_BYPASS, 0));
    exchange.connection.reset(WinHttpConnect(exchange.session.get(), parts.host.c_str(), parts.port, 0));
    exchange.request.reset(WinHttpOpenRequest(
        exchange.connection.get(), method.c_str(), parts.pathAndQuery.c_str(), nullptr, WINHTTP_NO_REFERER,
        WINHTTP_DEFAULT_ACCEPT_TYPES, parts.isHttps ? WINHTTP_FLAG_SECURE : 0));
    return exchange;
}

void sendAndReceive(HINTERNET request, const std::wstring& headers, const std::string& body) {
    const DWORD bodyLength = static_cast<DWORD>(body.size());
    void* bodyData = body.empty() ? WINHTTP_NO_REQUEST_DATA : const_cast<char*>(body.data());
    if (!WinHttpSendRequest(request, headers.c_str(), static_cast<DWORD>(-1), bodyData, bodyLength,
                            bodyLength, 0) ||
        !WinHttpReceiveResponse(request, nullptr)) {
        throw std::runtime_error("HTTP request failed");
    }
}

std::runtime_error statusError(DWORD status, const std::string& body) {
    return std::runtime_error("Corvandell API HTTP " + std::to_string(status) + ": " + body);
}

std::wstring locationHeader(HINTERNET request) {
    DWORD bytes = 0;
    WinHttpQueryHeaders(request, WINHTTP_QUERY_LOCATION, WINHTTP_HEADER_NAME_BY_INDEX,
                        WINHTTP_NO_OUTPUT_BUFFER, &bytes, WINHTTP_NO_HEADER_INDEX);
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || bytes == 0) {
        return {};
    }
    std::vector<wchar_t> text(bytes / sizeof(wchar_t) + 1, L'\0');
    if (!WinHttpQueryHeaders(request, WINHTTP_QUERY_LOCATION, WINHTTP_HEADER_NAME_BY_INDEX, text.data(),
                             &bytes, WINHTTP_NO_HEADER_INDEX)) {
        return {};
    }
    return std::wstring(text.data(), bytes / sizeof(wchar_t));
}

// Redirects are never followed: WinHTTP would resend the bearer token to wherever the
// Location points, and every 3xx is to reach the caller as an error with its body anyway.
void disableRedirects(HINTERNET request) {
    DWORD disable = WINHTTP_DISABLE_REDIRECTS;
    WinHttpSetOption(request, WINHTTP_OPTION_DISABLE_FEATURE, &disable, sizeof(disable));
}

} // namespace

std::string WinHttpApiClient::request(const std::string& method, const std::string& path,
                                      const std::string& body) {
    const OpenExchange exchange = openExchange(fullUrl(*settings_, path), widen(method));
    disableRedirects(exchange.request.get());
    sendAndReceive(exchange.request.get(), requestHeaders(*settings_, !body.empty()), body);
    const DWORD status = replyStatusCode(exchange.request.get());
    std::optional<std::string> reply = readReplyBodyUpTo(exchange.request.get(), kMaxReplyBytes);
    if (!reply) {
        throw std::runtime_error("Corvandell API reply larger than 64 MB");
    }
    if (isFailureStatus(status)) {
        throw statusError(status, *reply);
    }
    return *reply;
}

std::string WinHttpApiClient::requestRedirectLocation(const std::string& path) {
    const OpenExchange exchange = openExchange(fullUrl(*settings_, path), L"GET");
    disableRedirects(exchange.request.get());
    sendAndReceive(exchange.request.get(), requestHeaders(*settings_, false), {});
    std::wstring location = locationHeader(exchange.request.get());
    const DWORD status = replyStatusCode(exchange.request.get());
    std::string reply = readReplyBody(exchange.request.get());
    // Without an address to open, the reply itself is the only explanation worth showing.
    if (location.empty() && isFailureStatus(status)) {
        throw statusError(status, reply);
    }
    return narrow(location);
}

} // namespace corvandell::win
