#include "voice/win/VoiceSocket.hpp"

#include "base/win/WideText.hpp"
#include "base/win/WinHttpReply.hpp"
#include "base/win/WinHttpUrl.hpp"

#include <stdexcept>

namespace corvandell::win {
namespace {

constexpr wchar_t kUserAgent[] = L"CorvandellVoice/0.1";

std::string withoutTrailingSlashes(std::string base) {
    while (!base.empty() && base.back() == '/') {
        base.pop_back();
    }
    return base;
}

voice::PieceKind pieceKindOf(WINHTTP_WEB_SOCKET_BUFFER_TYPE type) noexcept {
    switch (type) {
    case WINHTTP_WEB_SOCKET_BINARY_MESSAGE_BUFFER_TYPE:
        return voice::PieceKind::BinaryMessage;
    case WINHTTP_WEB_SOCKET_BINARY_FRAGMENT_BUFFER_TYPE:
        return voice::PieceKind::BinaryFragment;
    case WINHTTP_WEB_SOCKET_UTF8_MESSAGE_BUFFER_TYPE:
        return voice::PieceKind::TextMessage;
    case WINHTTP_WEB_SOCKET_UTF8_FRAGMENT_BUFFER_TYPE:
        return voice::PieceKind::TextFragment;
    default:
        return voice::PieceKind::Close;
    }
}

} // namespace

void VoiceSocket::connect(const std::string& baseUrl, const std::string& path,
                          const std::string& bearerToken) {
    const SplitUrl parts = splitUrl(widen(withoutTrailingSlashes(baseUrl) + path));
    session_.reset(WinHttpOpen(kUserAgent, WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, WINHTTP_NO_PROXY_NAME,
                               WINHTTP_NO_PROXY_BYPASS, 0));
    connection_.reset(WinHttpConnect(session_.get(), parts.host.c_str(), parts.port, 0));
    UniqueInternetHandle request(WinHttpOpenRequest(connection_.get(), L"GET", parts.pathAndQuery.c_str(),
                                                    nullptr, WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                                    parts.isHttps ? WINHTTP_FLAG_SECURE : 0));
    // The token must never follow a redirect to another host.
    DWORD disable = WINHTTP_DISABLE_REDIRECTS;
    if (!request ||
        !WinHttpSetOption(request.get(), WINHTTP_OPTION_DISABLE_FEATURE, &disable, sizeof(disable)) ||
        !WinHttpSetOption(request.get(), WINHTTP_OPTION_UPGRADE_TO_WEB_SOCKET, nullptr, 0)) {
        throw std::runtime_error("HTTP request failed");
    }
    std::wstring headers;
    if (!bearerToken.empty()) {
        headers = L"Authorization: Bearer " + widen(bearerToken) + L"\r\n";
    }
    if (!WinHttpSendRequest(request.get(), headers.empty() ? WINHTTP_NO_ADDITIONAL_HEADERS : headers.c_str(),
                            headers.empty() ? 0 : static_cast<DWORD>(-1), WINHTTP_NO_REQUEST_DATA, 0, 0, 0) ||
        !WinHttpReceiveResponse(request.get(), nullptr)) {
        throw std::runtime_error("HTTP request failed");
    }
    // A refused upgrade still yields a socket handle under some WinHTTP versions, so the
    // status decides.
    if (const DWORD status = replyStatusCode(request.get()); status != HTTP_STATUS_SWITCH_PROTOCOLS) {
        throw std::runtime_error("Voice connection refused: HTTP " + std::to_string(status));
    }
    socket_.reset(WinHttpWebSocketCompleteUpgrade(request.get(), 0));
    if (!socket_) {
        throw std::runtime_error("HTTP request failed");
    }
}

bool VoiceSocket::sendBinary(std::span<const std::uint8_t> bytes) noexcept {
    if (!isOpen()) {
        return false;
    }
    return WinHttpWebSocketSend(socket_.get(), WINHTTP_WEB_SOCKET_BINARY_MESSAGE_BUFFER_TYPE,
                                const_cast<std::uint8_t*>(bytes.data()),
                                static_cast<DWORD>(bytes.size())) == NO_ERROR;
}

VoiceSocketPiece VoiceSocket::receive(std::span<std::uint8_t> buffer) noexcept {
    DWORD received = 0;
    WINHTTP_WEB_SOCKET_BUFFER_TYPE type{};
    if (!socket_ || WinHttpWebSocketReceive(socket_.get(), buffer.data(), static_cast<DWORD>(buffer.size()),
                                            &received, &type) != NO_ERROR) {
        return {};
    }
    return {true, pieceKindOf(type), received};
}

void VoiceSocket::shutdown() noexcept {
    if (socket_ && !isShutDown_.exchange(true)) {
        WinHttpWebSocketShutdown(socket_.get(), WINHTTP_WEB_SOCKET_SUCCESS_CLOSE_STATUS, nullptr, 0);
    }
}

} // namespace corvandell::win
