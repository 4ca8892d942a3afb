// gzip (RFC 1952): member headers, the raw DEFLATE body through inflate_raw, and the
// CRC-32 and length each member ends with.
//
// Strict on purpose: a receipt that is not exactly a run of valid members (trailing bytes,
// reserved flags, a wrong checksum) is treated as unreadable rather than half read.
#include "webgames/git/Gzip.hpp"

#include "webgames/git/Inflate.hpp"

#include <array>
#include <cstdint>
#include <new>

namespace corvandell::git {
namespace {

constexpr std::uint8_t kHeaderCrc = 0x02;
constexpr std::uint8_t kExtraField = 0x04;
constexpr std::uint8_t kFileName = 0x08;
constexpr std::uint8_t kComment = 0x10;
constexpr std::uint8_t kReservedFlags = 0xE0;
constexpr std::size_t kFixedHeaderSize = 10;
constexpr std::size_t kTrailerSize = 8;

constexpr std::array<std::uint32_t, 256> make_crc_table() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t n = 0; n < 256; ++n) {
        std::uint32_t value = n;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? 0xEDB88320u ^ (value >> 1) : value >> 1;
        }
        table[n] = value;
    }
    return table;
}

std::uint32_t crc32(std::string_view bytes) {
    static constexpr auto kTable = make_crc_table();
    std::uint32_t crc = 0xFFFFFFFFu;
    for (const char byte : bytes) {
        crc = kTable[(crc ^ static_cast<std::uint8_t>(byte)) & 0xFF] ^ (crc >> 8);
    }
    return ~crc;
}

std::uint32_t read_le(std::string_view bytes, std::size_t at, int count) {
    std::uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i) {
        value = (value << 8) | static_cast<std::uint8_t>(bytes[at + static_cast<std::size_t>(i)]);
    }
    return value;
}

// Offset of the DEFLATE data of the member starting at `at`; no value for a bad header.
std::optional<std::size_t> body_offset(std::string_view file, std::size_t at) {
    if (file.size() - at < kFixedHeaderSize || file.compare(at, 3, "\x1f\x8b\x08") != 0) {
        return std::nullopt;
    }
    const auto flags = static_cast<std::uint8_t>(file[at + 3]);
    if ((flags & kReservedFlags) != 0) {
        return std::nullopt;
    }
    std::size_t position = at + kFixedHeaderSize;
    if ((flags & kExtraField) != 0) {
        if (file.size() - position < 2 || file.size() - position - 2 < read_le(file, position, 2)) {
            return std::nullopt;
        }
        position += 2 + read_le(file, position, 2);
    }
    for (const std::uint8_t text : {kFileName, kComment}) {
        if ((flags & text) == 0) {
            continue;
        }
        const std::size_t terminator = file.find('\0', position);
        if (terminator == std::string_view::npos) {
            return std::nullopt;
        }
        position = terminator + 1;
    }
    if ((flags & kHeaderCrc) != 0) {
        const bool isIntact = file.size() - position >= 2 &&
                              (crc32(file.substr(at, position - at)) & 0xFFFF) == read_le(file, position, 2);
        if (!isIntact) {
            return std::nullopt;
        }
        position += 2;
    }
    return position;
}

} // namespace

std::optional<std::string> gunzip(std::string_view file, std::size_t maxBytes) try {
    if (file.empty()) {
        return std::nullopt;
    }
    // The last member's ISIZE is the whole content's size when there is one member; it is
    // only a hint, which inflate never trusts beyond what the input can expand to.
    const std::size_t sizeHint = file.size() >= 4 ? read_le(file, file.size() - 4, 4) : 0;
    std::string content;
    for (std::size_t at = 0; at < file.size();) {
        const auto body = body_offset(file, at);
        if (!body) {
            return std::nullopt;
        }
        auto member = inflate_raw(file.substr(*body), sizeHint, nullptr, maxBytes - content.size());
        if (!member) {
            return std::nullopt;
        }
        const std::size_t trailer = *body + member->consumed;
        if (file.size() - trailer < kTrailerSize || crc32(member->bytes) != read_le(file, trailer, 4) ||
            static_cast<std::uint32_t>(member->bytes.size()) != read_le(file, trailer + 4, 4)) {
            return std::nullopt;
        }
        content += member->bytes;
        at = trailer + kTrailerSize;
    }
    return content;
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

} // namespace corvandell::git
