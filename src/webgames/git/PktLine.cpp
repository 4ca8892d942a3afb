// Pkt-line framing of the smart-HTTP replies.
//
// The reader takes a whole reply at once and either returns every record or nothing: a
// bad length anywhere means the reply cannot be trusted, so there is no partial result.
// The delimiter and response-end packets of newer protocol versions ("0001"-"0003") are
// never requested and therefore rejected.
#include "webgames/git/PktLine.hpp"

namespace corvandell::git {

namespace {

constexpr std::size_t kLengthDigits = 4;

int hex_digit_value(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return -1;
}

} // namespace

std::optional<std::size_t> pkt_line_length(std::string_view digits) {
    std::size_t length = 0;
    for (const char digit : digits) {
        const int value = hex_digit_value(digit);
        if (value < 0) {
            return std::nullopt;
        }
        length = length * 16 + static_cast<std::size_t>(value);
    }
    return length;
}

std::string pkt_line_encode(std::string_view payload, bool isFlush) {
    if (isFlush) {
        return "0000";
    }
    static constexpr char kHexDigits[] = "0123456789abcdef";
    const std::size_t length = (payload.size() + kLengthDigits) & 0xFFFF;
    std::string frame;
    frame.reserve(kLengthDigits + payload.size());
    for (int shift = 12; shift >= 0; shift -= 4) {
        frame.push_back(kHexDigits[(length >> shift) & 0xF]);
    }
    frame.append(payload);
    return frame;
}

std::optional<std::vector<PktLine>> pkt_line_read(std::string_view buffer, std::size_t& position) {
    std::vector<PktLine> lines;
    while (position <= buffer.size() && buffer.size() - position >= kLengthDigits) {
        const auto length = pkt_line_length(buffer.substr(position, kLengthDigits));
        if (!length) {
            return std::nullopt;
        }
        if (*length == 0) {
            lines.push_back(PktLine{{}, true});
            position += kLengthDigits;
            continue;
        }
        if (*length < kLengthDigits || *length > buffer.size() - position) {
            return std::nullopt;
        }
        lines.push_back(PktLine{buffer.substr(position + kLengthDigits, *length - kLengthDigits), false});
        position += *length;
    }
    return lines;
}

} // namespace corvandell::git
