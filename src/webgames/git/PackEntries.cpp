// The framing of a pack: "PACK", version, count, then count entries, then a 20-byte checksum.
//
// Each entry is a variable-length type-and-size header, a base reference for deltas, and
// one zlib stream. Nothing in the framing is trusted: every read is checked against the
// end of the entry data (the checksum is never parsed, nor verified), the entry table grows
// with what the input really holds rather than with the count the header claims, and a
// declared size is charged to the byte budget before anything is inflated. The declared
// size then caps the inflated output too, since any byte beyond it makes the entry
// malformed anyway: a header that understates a run of zeros costs no more than one
// that tells the truth.
#include "webgames/git/PackEntries.hpp"

#include "webgames/git/Inflate.hpp"
#include "webgames/git/Sha1.hpp"

#include <algorithm>

namespace corvandell::git {

namespace {

constexpr std::size_t kHeaderBytes = 12;
constexpr std::size_t kChecksumBytes = 20;
constexpr std::size_t kRawNameBytes = 20;
// The smallest entry: one header byte and a zlib stream of header, one block byte, trailer.
constexpr std::size_t kMinEntryBytes = 8;

class Reader {
public:
    Reader(std::string_view bytes, std::size_t position) : bytes_(bytes), position_(position) {}

    std::size_t position() const { return position_; }
    std::size_t remaining() const { return bytes_.size() - position_; }
    std::string_view rest() const { return bytes_.substr(position_); }
    void skip(std::size_t count) { position_ += count; }

    std::optional<std::uint8_t> next() {
        if (position_ >= bytes_.size()) {
            return std::nullopt;
        }
        return static_cast<std::uint8_t>(bytes_[position_++]);
    }

private:
    std::string_view bytes_;
    std::size_t position_;
};

std::uint32_t read_big_endian32(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const char byte : bytes.substr(0, 4)) {
        value = (value << 8) | static_cast<std::uint8_t>(byte);
    }
    return value;
}

// Type in bits 4-6 of the first byte, size in its low four bits, then seven bits a byte.
// A size too wide for 64 bits saturates, so the budget refuses it like any other.
bool read_type_and_size(Reader& reader, std::int32_t& type, std::uint64_t& size) {
    auto byte = reader.next();
    if (!byte) {
        return false;
    }
    type = (*byte >> 4) & 0x07;
    size = *byte & 0x0F;
    for (unsigned shift = 4; *byte & 0x80; shift = std::min(shift + 7, 64u)) {
        byte = reader.next();
        if (!byte) {
            return false;
        }
        const std::uint64_t bits = *byte & 0x7F;
        const bool fits = bits == 0 || (shift < 64 && (bits << shift) >> shift == bits);
        size = fits ? size | (shift < 64 ? bits << shift : 0) : UINT64_MAX;
    }
    return true;
}

// Big-endian base-128 where each continuation also adds one, so encodings are unique. A
// distance too wide for 64 bits saturates: it reaches before any pack all the same.
bool read_base_distance(Reader& reader, std::uint64_t& distance) {
    auto byte = reader.next();
    if (!byte) {
        return false;
    }
    distance = *byte & 0x7F;
    while (*byte & 0x80) {
        byte = reader.next();
        if (!byte) {
            return false;
        }
        distance = distance > (UINT64_MAX >> 7) - 1 ? UINT64_MAX : ((distance + 1) << 7) | (*byte & 0x7F);
    }
    return true;
}

PackError read_base(Reader& reader, PackEntry& entry) {
    if (entry.type == kPackOffsetDelta) {
        std::uint64_t distance = 0;
        if (!read_base_distance(reader, distance)) {
            return PackError::Truncated;
        }
        if (distance > entry.offset) {
            return PackError::MissingBase;
        }
        entry.baseOffset = entry.offset - static_cast<std::size_t>(distance);
        return PackError::None;
    }
    if (entry.type == kPackRefDelta) {
        if (reader.remaining() < kRawNameBytes) {
            return PackError::Truncated;
        }
        entry.baseName = hex_of(reader.rest().substr(0, kRawNameBytes));
        reader.skip(kRawNameBytes);
    }
    return PackError::None;
}

} // namespace

std::optional<std::vector<PackEntry>> read_pack_entries(std::string_view pack, ByteBudget& budget,
                                                        PackError* error) {
    PackError ignored = PackError::None;
    PackError& reason = error != nullptr ? *error : ignored;
    reason = PackError::None;
    const auto fail = [&reason](PackError why) {
        reason = why;
        return std::nullopt;
    };
    if (pack.size() < kHeaderBytes + kChecksumBytes || pack.substr(0, 4) != "PACK") {
        return fail(PackError::BadHeader);
    }
    const std::uint32_t count = read_big_endian32(pack.substr(8));
    const std::string_view body = pack.substr(0, pack.size() - kChecksumBytes);
    std::vector<PackEntry> entries;
    entries.reserve(std::min<std::size_t>(count, (body.size() - kHeaderBytes) / kMinEntryBytes));
    Reader reader(body, kHeaderBytes);
    for (std::uint32_t index = 0; index < count; ++index) {
        if (reader.position() >= body.size()) {
            return fail(PackError::Truncated);
        }
        PackEntry entry;
        entry.offset = reader.position();
        std::uint64_t declaredSize = 0;
        if (!read_type_and_size(reader, entry.type, declaredSize)) {
            return fail(PackError::Truncated);
        }
        if (const PackError base = read_base(reader, entry); base != PackError::None) {
            return fail(base);
        }
        if (!budget.take(declaredSize)) {
            return fail(PackError::TooLarge);
        }
        const auto size = static_cast<std::size_t>(declaredSize);
        InflateError inflateError = InflateError::None;
        auto inflated = inflate_zlib(reader.rest(), size, &inflateError, size);
        if (!inflated) {
            // Output past the declared size is a wrong size, not a large object: the
            // budget has already accepted the size the header gave.
            return fail(inflateError == InflateError::TooLarge      ? PackError::SizeMismatch
                        : inflateError == InflateError::OutOfMemory ? PackError::TooLarge
                                                                    : PackError::BadStream);
        }
        if (inflated->bytes.size() != declaredSize) {
            return fail(PackError::SizeMismatch);
        }
        reader.skip(std::min(inflated->consumed, reader.remaining()));
        entry.data = std::move(inflated->bytes);
        entries.push_back(std::move(entry));
    }
    return entries;
}

} // namespace corvandell::git
