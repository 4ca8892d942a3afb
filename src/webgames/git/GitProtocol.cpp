// Reading the ref advertisement, writing the upload-pack request and unwrapping its reply.
//
// The client only ever wants one commit at depth 1 with nothing in hand, so the request is
// fixed apart from the tip, and the reply walk needs to know only the few records a
// server sends before and around the side-band pack data.
#include "webgames/git/GitProtocol.hpp"

#include "webgames/git/PktLine.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace corvandell::git {

namespace {

constexpr std::size_t kObjectNameDigits = 40;
constexpr char kChannelPack = 1;
constexpr char kChannelError = 3;

bool is_hex_digit(char digit) {
    return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f') || (digit >= 'A' && digit <= 'F');
}

bool starts_with(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

} // namespace

std::string tip_from_advertisement(std::string_view body) {
    std::size_t position = 0;
    const auto lines = pkt_line_read(body, position);
    if (!lines) {
        return {};
    }
    for (const PktLine& line : *lines) {
        const std::string_view payload = line.payload;
        if (line.isFlush || payload.size() < kObjectNameDigits || starts_with(payload, "#")) {
            continue;
        }
        const std::string_view name = payload.substr(0, kObjectNameDigits);
        if (std::all_of(name.begin(), name.end(), is_hex_digit)) {
            return std::string(name);
        }
    }
    return {};
}

std::string upload_pack_request(const std::string& tip) {
    return pkt_line_encode("want " + tip + " side-band-64k ofs-delta shallow agent=corvandell\n") +
           pkt_line_encode("deepen 1\n") + pkt_line_encode({}, true) + pkt_line_encode("done\n");
}

// Compacting in place is safe: the data gathered so far is never longer than the bytes
// before the current record, so each move lands at or before its source and never on a
// record still to be read.
std::string pack_from_response(std::string body) {
    std::size_t position = 0;
    const auto lines = pkt_line_read(body, position);
    if (!lines) {
        throw std::runtime_error("malformed git response");
    }
    std::size_t packBytes = 0;
    for (const PktLine& line : *lines) {
        const std::string_view payload = line.payload;
        if (line.isFlush || payload.empty() || starts_with(payload, "shallow ") ||
            starts_with(payload, "unshallow ") || starts_with(payload, "NAK") ||
            starts_with(payload, "ACK")) {
            continue;
        }
        if (starts_with(payload, "ERR ")) {
            throw std::runtime_error("git: " + std::string(payload.substr(4)));
        }
        if (payload[0] == kChannelPack) {
            std::memmove(body.data() + packBytes, payload.data() + 1, payload.size() - 1);
            packBytes += payload.size() - 1;
        } else if (payload[0] == kChannelError) {
            throw std::runtime_error("git: " + std::string(payload.substr(1)));
        }
    }
    body.resize(packBytes);
    if (!starts_with(body, "PACK")) {
        throw std::runtime_error("no packfile in git response");
    }
    return body;
}

} // namespace corvandell::git
