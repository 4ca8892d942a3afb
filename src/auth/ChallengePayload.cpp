// The service checks the signature against the text it builds itself from the payload, so the
// client must not reformat anything: values are copied exactly as they stand between their
// quotes, escapes included, and nothing is decoded. Only the payload object is searched, so
// a top-level "challengeId" or one nested elsewhere never stands in for the payload's own.
#include "auth/ChallengePayload.hpp"

#include <array>
#include <optional>

namespace corvandell {
namespace {

struct Member {
    std::string_view key;  // as the reply spells it
    std::string_view name; // as the canonical text spells it
};

constexpr std::array<Member, 7> kMembers{{
    {"challengeId", "ChallengeId"},
    {"fingerprint", "Fingerprint"},
    {"issuer", "Issuer"},
    {"audience", "Audience"},
    {"expiry", "Expiry"},
    {"nonce", "Nonce"},
    {"clientTimestamp", "ClientTimestamp"},
}};

// The position just past the closing quote of the string literal opening at `open`, or
// npos when it never closes. A backslash makes the character after it inert.
std::size_t skipLiteral(std::string_view text, std::size_t open) {
    for (std::size_t i = open + 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            return i + 1;
        }
    }
    return std::string_view::npos;
}

// The {...} after "payload", braces inside string literals not counted.
std::optional<std::string_view> payloadObject(std::string_view reply) {
    static constexpr std::string_view kPayloadKey = "\"payload\"";
    const std::size_t key = reply.find(kPayloadKey);
    if (key == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t open = reply.find('{', key + kPayloadKey.size());
    if (open == std::string_view::npos) {
        return std::nullopt;
    }
    int depth = 0;
    for (std::size_t i = open; i < reply.size();) {
        if (reply[i] == '"') {
            i = skipLiteral(reply, i);
            if (i == std::string_view::npos) {
                return std::nullopt;
            }
            continue;
        }
        if (reply[i] == '{') {
            ++depth;
        } else if (reply[i] == '}' && --depth == 0) {
            return reply.substr(open, i - open + 1);
        }
        ++i;
    }
    return std::nullopt;
}

// The raw text between the quotes of the string after the key's colon.
std::optional<std::string_view> rawStringValue(std::string_view object, std::string_view key) {
    const std::string quotedKey = "\"" + std::string(key) + "\"";
    const std::size_t at = object.find(quotedKey);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t colon = object.find(':', at + quotedKey.size());
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t open = object.find('"', colon + 1);
    if (open == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t end = skipLiteral(object, open);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    return object.substr(open + 1, end - open - 2);
}

} // namespace

std::string buildChallengePayload(std::string_view replyText) {
    const auto payload = payloadObject(replyText);
    if (!payload) {
        return {};
    }
    std::string text = "{";
    for (const Member& member : kMembers) {
        const auto value = rawStringValue(*payload, member.key);
        if (!value) {
            return {};
        }
        if (text.size() > 1) {
            text += ',';
        }
        text += '"';
        text += member.name;
        text += "\":\"";
        text += *value;
        text += '"';
    }
    return text + "}";
}

} // namespace corvandell
