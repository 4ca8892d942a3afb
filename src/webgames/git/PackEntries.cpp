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

// Bytes one at a time from the pack, never past the end of the entry data. Entry headers
// are a few bytes long, so asking the source for each is cheap for a pack in memory and a
// buffer lookup for one in a file.
class Reader {
public:
    Reader(PackBytes& pack, std::size_t end, std::size_t position)
        : pack_(pack), end_(end), position_(position) {}

    std::size_t position() const { return position_; }
    std::size_t end() const { return end_; }
    std::size_t remaining() const { return end_ - position_; }
    void skip(std::size_t count) { position_ += count; }

    std::optional<std::uint8_t> next() {
        if (position_ >= end_) {
            return std::nullopt;
        }
        const std::string_view byte = pack_.read(position_, 1);
        if (byte.empty()) {
            return std::nullopt;
        }
        ++position_;
        return static_cast<std::uint8_t>(byte.front());
    }

    // `count` bytes, which must remain; empty if the source cannot give them.
    std::string_view take(std::size_t count) {
        const std::string_view bytes = pack_.read(position_, count).substr(0, count);
        position_ += count;
        return bytes.size() == count ? bytes : std::string_view{};
    }

private:
    PackBytes& pack_;
    std::size_t end_;
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
        const std::string_view raw = reader.take(kRawNameBytes);
        if (raw.empty()) {
            return PackError::Truncated;
        }
        entry.baseName = hex_of(raw);
    }
    return PackError::None;
}

// The entry's stream inflated from as much of the pack as it needs: a window of what the
// declared size takes at worst when stored, widened while the stream runs past it. A pack
// in memory hands over its whole rest at once; one in a file is then read about once. Only
// a result found within the window, or from the whole rest, is final, so the outcome is
// the one the whole rest would give.
std::optional<Inflated> inflate_entry(PackBytes& pack, std::size_t start, std::size_t end, std::size_t size,
                                      InflateError& error) {
    std::size_t want = size > SIZE_MAX / 2 ? SIZE_MAX : size + size / 8 + 64;
    for (;;) {
        const std::size_t length = std::min(want, end - start);
        const std::string_view window = pack.read(start, length).substr(0, end - start);
        auto inflated = inflate_zlib(window, size, &error, size);
        const bool isFinal = window.size() == end - start || window.size() < length ||
                             (inflated && inflated->consumed <= window.size());
        if (isFinal) {
            return inflated;
        }
        want = want > SIZE_MAX / 2 ? SIZE_MAX : want * 2;
    }
}

} // namespace

std::string object_header(std::int32_t type, std::size_t contentSize) {
    std::string header = type == kPackCommit ? "commit"
                         : type == kPackTree ? "tree"
                         : type == kPackBlob ? "blob"
                                             : "tag";
    header.append(" ").append(std::to_string(contentSize)).push_back('\0');
    return header;
}

Sha1Digest object_digest(std::int32_t type, std::string_view content) {
    Sha1 hash;
    hash.update(object_header(type, content.size()));
    hash.update(content);
    return hash.finish();
}

std::size_t plausible_entry_count(PackBytes& pack) {
    if (pack.size() < kHeaderBytes + kChecksumBytes) {
        return 0;
    }
    const std::string_view header = pack.read(0, kHeaderBytes);
    if (header.size() < kHeaderBytes) {
        return 0;
    }
    const std::uint32_t count = read_big_endian32(header.substr(8));
    return std::min<std::size_t>(count, (pack.size() - kHeaderBytes - kChecksumBytes) / kMinEntryBytes);
}

PackError scan_pack_entries(PackBytes& pack, ByteBudget& budget, const PackEntryVisitor& visit) {
    if (pack.size() < kHeaderBytes + kChecksumBytes) {
        return PackError::BadHeader;
    }
    const std::string_view header = pack.read(0, kHeaderBytes);
    if (header.size() < kHeaderBytes || header.substr(0, 4) != "PACK") {
        return PackError::BadHeader;
    }
    const std::uint32_t count = read_big_endian32(header.substr(8));
    Reader reader(pack, pack.size() - kChecksumBytes, kHeaderBytes);
    for (std::uint32_t index = 0; index < count; ++index) {
        if (reader.position() >= reader.end()) {
            return PackError::Truncated;
        }
        PackEntry entry;
        entry.offset = reader.position();
        std::uint64_t declaredSize = 0;
        if (!read_type_and_size(reader, entry.type, declaredSize)) {
            return PackError::Truncated;
        }
        if (const PackError base = read_base(reader, entry); base != PackError::None) {
            return base;
        }
        if (!budget.take(declaredSize)) {
            return PackError::TooLarge;
        }
        const auto size = static_cast<std::size_t>(declaredSize);
        InflateError inflateError = InflateError::None;
        auto inflated = inflate_entry(pack, reader.position(), reader.end(), size, inflateError);
        if (!inflated) {
            // Output past the declared size is a wrong size, not a large object: the
            // budget has already accepted the size the header gave.
            return inflateError == InflateError::TooLarge      ? PackError::SizeMismatch
                   : inflateError == InflateError::OutOfMemory ? PackError::TooLarge
                                                               : PackError::BadStream;
        }
        if (inflated->bytes.size() != declaredSize) {
            return PackError::SizeMismatch;
        }
        entry.streamOffset = reader.position();
        entry.streamBytes = std::min(inflated->consumed, reader.remaining());
        reader.skip(entry.streamBytes);
        entry.data = std::move(inflated->bytes);
        visit(entry);
    }
    return PackError::None;
}

std::optional<std::vector<PackEntry>> read_pack_entries(std::string_view pack, ByteBudget& budget,
                                                        PackError* error) {
    PackError ignored = PackError::None;
    PackError& reason = error != nullptr ? *error : ignored;
    PackInMemory bytes(pack);
    std::vector<PackEntry> entries;
    entries.reserve(plausible_entry_count(bytes));
    reason = scan_pack_entries(bytes, budget,
                               [&entries](PackEntry& entry) { entries.push_back(std::move(entry)); });
    if (reason != PackError::None) {
        return std::nullopt;
    }
    return entries;
}

} // namespace corvandell::git
