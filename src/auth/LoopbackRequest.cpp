#include "auth/LoopbackRequest.hpp"

#include <algorithm>

namespace corvandell {
namespace {

constexpr std::string_view kMethod = "GET ";
constexpr std::string_view kVersion = "HTTP/1.";
constexpr std::string_view kEndOfHead = "\r\n\r\n";
constexpr std::string_view kPageStyle = "font-family:sans-serif;background:#15161a;color:#d6d7dc;padding:2em";

LoopbackRequest judged(LoopbackRequestState state, std::string target = {}) {
    return LoopbackRequest{state, std::move(target)};
}

bool isTargetCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte > 0x20 && byte < 0x7f;
}

// The request line without its CRLF; Malformed unless "GET /target HTTP/1.x".
LoopbackRequest judgeRequestLine(std::string_view line) {
    if (!line.starts_with(kMethod)) {
        return judged(LoopbackRequestState::Malformed);
    }
    const std::string_view rest = line.substr(kMethod.size());
    const std::size_t space = rest.find(' ');
    if (space == std::string_view::npos || space == 0 || rest.front() != '/') {
        return judged(LoopbackRequestState::Malformed);
    }
    const std::string_view target = rest.substr(0, space);
    const std::string_view version = rest.substr(space + 1);
    if (version.size() != kVersion.size() + 1 || !version.starts_with(kVersion)) {
        return judged(LoopbackRequestState::Malformed);
    }
    for (const char c : target) {
        if (!isTargetCharacter(c)) {
            return judged(LoopbackRequestState::Malformed);
        }
    }
    return judged(LoopbackRequestState::Complete, std::string(target));
}

std::string page(std::string_view bodyHtml) {
    std::string html =
        "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Corvandell sign-in</title>"
        "</head><body style=\"";
    html += kPageStyle;
    html += "\">";
    html += bodyHtml;
    html += "</body></html>\n";
    std::string reply = "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: ";
    reply += std::to_string(html.size());
    reply += "\r\nConnection: close\r\n\r\n";
    return reply + html;
}

std::string successPage() {
    return page("<p><b>You are signed in.</b></p>"
                "<p>You can close this tab and return to the Corvandell app.</p>");
}

// The fragment stays in the browser, so the page hands it over on a second request.
std::string fragmentRelayPage() {
    return page("<p>Completing Corvandell sign-in...</p>"
                "<script>\n"
                "var fragment = window.location.hash.substring(1);\n"
                "if (fragment.length > 0) {\n"
                "  window.location.replace('/deliver?' + fragment);\n"
                "} else {\n"
                "  document.body.textContent = 'No sign-in data found at this address. "
                "Return to the Corvandell app and try again.';\n"
                "}\n"
                "</script>");
}

} // namespace

LoopbackRequest readLoopbackRequest(std::string_view received) {
    const std::string_view window = received.substr(0, kMaxLoopbackRequestBytes);
    const std::size_t lineEnd = window.find("\r\n");
    if (lineEnd == std::string_view::npos) {
        // The method shows itself in the first bytes; no need to wait for the line.
        const std::size_t shown = std::min(window.size(), kMethod.size());
        if (window.substr(0, shown) != kMethod.substr(0, shown)) {
            return judged(LoopbackRequestState::Malformed);
        }
        return judged(received.size() >= kMaxLoopbackRequestBytes ? LoopbackRequestState::TooLarge
                                                                  : LoopbackRequestState::NeedMore);
    }
    LoopbackRequest line = judgeRequestLine(window.substr(0, lineEnd));
    if (line.state != LoopbackRequestState::Complete) {
        return line;
    }
    // The request line's own CRLF may be the first half of the blank line's.
    if (window.find(kEndOfHead, lineEnd) == std::string_view::npos) {
        return judged(received.size() >= kMaxLoopbackRequestBytes ? LoopbackRequestState::TooLarge
                                                                  : LoopbackRequestState::NeedMore);
    }
    return line;
}

LoopbackAnswer answerLoopbackRequest(std::string_view target) {
    LoopbackAnswer answer;
    answer.tokens = tokensFromAddress(target);
    answer.hasTokens = !answer.tokens.accessToken.empty();
    answer.reply = answer.hasTokens ? successPage() : fragmentRelayPage();
    return answer;
}

} // namespace corvandell
