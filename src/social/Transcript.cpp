#include "social/Transcript.hpp"

namespace corvandell {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kDeletedText = "(message deleted)";

// sentAt is "YYYY-MM-DDTHH:MM:SSZ"; anything shorter has no usable day or time.
std::string dayOf(const std::string& sentAt) {
    return sentAt.size() >= 10 ? sentAt.substr(0, 10) : "";
}
std::string timeOf(const std::string& sentAt) {
    return sentAt.size() >= 16 ? sentAt.substr(11, 5) : "";
}

// Lone "\n" and "\r" both become "\r\n": a multi-line edit breaks lines only at the pair.
std::string withEditLineEnds(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' || text[i] == '\n') {
            out += kLineEnd;
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
                ++i;
            }
            continue;
        }
        out += text[i];
    }
    return out;
}

} // namespace

std::string transcriptHeading(std::string_view text) {
    std::string line = "--- ";
    line += text;
    line += " ---";
    line += kLineEnd;
    return line;
}

std::string transcriptLine(const ChatMessage& message) {
    std::string line;
    if (const std::string time = timeOf(message.sentAt); !time.empty()) {
        line += "[" + time + "] ";
    }
    line += message.senderUsername.empty() ? std::string("?") : message.senderUsername;
    line += ": ";
    line += message.isDeleted ? std::string(kDeletedText) : withEditLineEnds(message.content);
    line += kLineEnd;
    return line;
}

std::string Transcript::merge(const std::vector<ChatMessage>& page) {
    std::string text;
    for (const ChatMessage& message : page) {
        if (message.id.empty() || !seenIds_.insert(message.id).second) {
            continue;
        }
        if (std::string day = dayOf(message.sentAt); !day.empty() && day != lastDay_) {
            text += transcriptHeading(day);
            lastDay_ = std::move(day);
        }
        text += transcriptLine(message);
    }
    return text;
}

} // namespace corvandell
