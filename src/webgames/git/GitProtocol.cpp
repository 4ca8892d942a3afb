// Reading the ref advertisement, writing the upload-pack request and unwrapping its reply.
//
// The client only ever wants one commit at depth 1 with nothing in hand, so the request is
// fixed apart from the tip, and the reply walk needs to know only the few records a
// server sends before and around the side-band pack data.
#include "webgames/git/GitProtocol.hpp"

#include "webgames/git/PktLine.hpp"

#include <algorithm>
#include <stdexcept>

namespace corvandell::git {

namespace {

constexpr std::size_t kObjectNameDigits = 40;
constexpr char kChannelPack = 1;
constexpr char kChannelError = 3;
constexpr std::size_t kLengthDigits = 4;
constexpr std::string_view kPackSignature = "PACK";

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

PackReplyReader::PackReplyReader(std::function<void(std::string_view)> receivePack)
    : receivePack_(std::move(receivePack)) {}

bool PackReplyReader::take_from(std::string_view& bytes) {
    if (bytes.size() < kLengthDigits) {
        return false;
    }
    const auto length = pkt_line_length(bytes.substr(0, kLengthDigits));
    if (!length || (*length != 0 && *length < kLengthDigits)) {
        isMalformed_ = true;
        return false;
    }
    if (*length == 0) { // a flush
        bytes.remove_prefix(kLengthDigits);
        return true;
    }
    if (*length > bytes.size()) {
        return false;
    }
    take_record(bytes.substr(kLengthDigits, *length - kLengthDigits));
    bytes.remove_prefix(*length);
    return true;
}

void PackReplyReader::feed(std::string_view bytes) {
    if (isMalformed_) {
        return;
    }
    if (!pending_.empty()) { // complete the record the last piece cut: its length, then the rest
        const auto moveIn = [&](std::size_t size) {
            const std::size_t taken = std::min(size - pending_.size(), bytes.size());
            pending_.append(bytes.substr(0, taken));
            bytes.remove_prefix(taken);
            return pending_.size() == size;
        };
        if (!moveIn(std::max(pending_.size(), kLengthDigits))) {
            return;
        }
        const auto length = pkt_line_length(std::string_view(pending_).substr(0, kLengthDigits));
        if (!length || (*length != 0 && *length < kLengthDigits)) {
            isMalformed_ = true;
            return;
        }
        if (!moveIn(std::max(*length, kLengthDigits))) {
            return;
        }
        std::string_view record = pending_;
        take_from(record);
        pending_.clear();
    }
    while (take_from(bytes)) {
    }
    if (!isMalformed_) {
        pending_.assign(bytes); // less than one record
    }
}

void PackReplyReader::take_record(std::string_view payload) {
    if (payload.empty() || starts_with(payload, "shallow ") || starts_with(payload, "unshallow ") ||
        starts_with(payload, "NAK") || starts_with(payload, "ACK")) {
        return;
    }
    if (!firstError_.empty()) {
        return; // only the framing still matters
    }
    if (starts_with(payload, "ERR ")) {
        firstError_ = "git: " + std::string(payload.substr(4));
    } else if (payload[0] == kChannelError) {
        firstError_ = "git: " + std::string(payload.substr(1));
    } else if (payload[0] == kChannelPack) {
        const std::string_view data = payload.substr(1);
        signature_.append(
            data.substr(0, kPackSignature.size() - std::min(signature_.size(), kPackSignature.size())));
        packBytes_ += data.size();
        receivePack_(data);
    }
}

std::uint64_t PackReplyReader::finish() {
    // A record the reply ended inside; fewer than four bytes left over are no record at all.
    if (isMalformed_ || pending_.size() >= kLengthDigits) {
        throw std::runtime_error("malformed git response");
    }
    if (!firstError_.empty()) {
        throw std::runtime_error(firstError_);
    }
    if (signature_ != kPackSignature) {
        throw std::runtime_error("no packfile in git response");
    }
    return packBytes_;
}

std::string pack_from_response(std::string_view body) {
    std::string pack;
    PackReplyReader reader([&pack](std::string_view data) { pack.append(data); });
    reader.feed(body);
    reader.finish();
    return pack;
}

} // namespace corvandell::git
