// The browser may deliver tokens in the fragment (which never reaches a server) or in the
// query; when an address has both, the fragment is the one the service wrote, and the query
// belongs to whatever page it landed on, so the fragment wins.
#include "auth/SignInAddress.hpp"

#include "base/AsciiText.hpp"

#include <optional>

namespace corvandell {
namespace {

std::optional<int> hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return std::nullopt;
}

std::string_view parametersOf(std::string_view address) {
    if (const std::size_t hash = address.find('#'); hash != std::string_view::npos) {
        return address.substr(hash + 1);
    }
    if (const std::size_t question = address.find('?'); question != std::string_view::npos) {
        return address.substr(question + 1);
    }
    return address;
}

} // namespace

std::string percentDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const auto high = hexValue(text[i + 1]);
            const auto low = hexValue(text[i + 2]);
            if (high && low) {
                out += static_cast<char>(*high * 16 + *low);
                i += 2;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

AddressTokens tokensFromAddress(std::string_view address) {
    AddressTokens tokens;
    std::string_view rest = parametersOf(address);
    while (!rest.empty()) {
        const std::size_t amp = rest.find('&');
        const std::string_view piece = rest.substr(0, amp);
        rest = amp == std::string_view::npos ? std::string_view() : rest.substr(amp + 1);
        const std::size_t equals = piece.find('=');
        if (equals == std::string_view::npos) {
            continue;
        }
        const std::string_view name = piece.substr(0, equals);
        if (name == "access_token") {
            tokens.accessToken = percentDecode(piece.substr(equals + 1));
        } else if (name == "refresh_token") {
            tokens.refreshToken = percentDecode(piece.substr(equals + 1));
        }
    }
    return tokens;
}

std::string verificationTokenFromLink(std::string_view link) {
    static constexpr std::string_view kTokenKey = "token=";
    std::string_view token = trimAsciiBlanks(link);
    if (const std::size_t at = token.find(kTokenKey); at != std::string_view::npos) {
        token.remove_prefix(at + kTokenKey.size());
    }
    token = token.substr(0, token.find_first_of("&#"));
    return percentDecode(token);
}

} // namespace corvandell
