// PackWriter: pack framing and stored-block zlib written independently of the decoder.
#include "support/PackWriter.hpp"

#include "webgames/Sha1.hpp"

#include <array>

namespace corvandell::test {

namespace {

void append_big_endian32(std::string& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<char>((value >> shift) & 0xFF));
    }
}

} // namespace

std::string from_hex(std::string_view hex) {
    std::string bytes;
    for (std::size_t index = 0; index + 1 < hex.size(); index += hex[index] == ' ' ? 1 : 2) {
        if (hex[index] != ' ') {
            bytes.push_back(static_cast<char>(std::stoi(std::string(hex.substr(index, 2)), nullptr, 16)));
        }
    }
    return bytes;
}

std::string zlib_stored(std::string_view bytes) {
    const auto length = static_cast<std::uint32_t>(bytes.size());
    std::string stream = "\x78\x01\x01";
    for (const std::uint32_t half : {length, ~length}) {
        stream.push_back(static_cast<char>(half & 0xFF));
        stream.push_back(static_cast<char>((half >> 8) & 0xFF));
    }
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const char byte : bytes) {
        a = (a + static_cast<std::uint8_t>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    append_big_endian32(stream.append(bytes), (b << 16) | a);
    return stream;
}

std::string delta_varint(std::uint64_t value) {
    std::string bytes;
    for (; value >= 0x80; value >>= 7) {
        bytes.push_back(static_cast<char>(0x80 | (value & 0x7F)));
    }
    return bytes + static_cast<char>(value);
}

std::string tree_entry(std::string_view mode, std::string_view name, std::string_view hexName) {
    return std::string(mode) + " " + std::string(name) + '\0' + from_hex(hexName);
}

std::string git_object_name(int type, std::string_view content) {
    static constexpr std::array<const char*, 5> kTypeWords = {"", "commit", "tree", "blob", "tag"};
    const std::string header = std::string(kTypeWords.at(static_cast<std::size_t>(type))) + " " +
                               std::to_string(content.size()) + '\0';
    return git::object_name(header, content);
}

std::size_t PackWriter::add(int type, std::string_view content) {
    return add_raw(type, content.size(), zlib_stored(content));
}

// The distance is big-endian base-128 where each continuation also adds one.
std::size_t PackWriter::add_offset_delta(std::size_t baseOffset, std::string_view delta) {
    std::uint64_t distance = 12 + entries_.size() - baseOffset;
    std::string encoded(1, static_cast<char>(distance & 0x7F));
    while (distance >>= 7) {
        encoded.insert(encoded.begin(), static_cast<char>(0x80 | (--distance & 0x7F)));
    }
    return add_raw(6, delta.size(), encoded + zlib_stored(delta));
}

std::size_t PackWriter::add_ref_delta(std::string_view baseHexName, std::string_view delta) {
    return add_raw(7, delta.size(), from_hex(baseHexName) + zlib_stored(delta));
}

std::size_t PackWriter::add_raw(int type, std::uint64_t declaredSize, std::string_view afterHeader) {
    const std::size_t offset = 12 + entries_.size();
    entries_.push_back(static_cast<char>((type << 4) | (declaredSize & 0x0F)));
    for (declaredSize >>= 4; declaredSize != 0; declaredSize >>= 7) {
        entries_.back() = static_cast<char>(entries_.back() | 0x80);
        entries_.push_back(static_cast<char>(declaredSize & 0x7F));
    }
    entries_.append(afterHeader);
    ++count_;
    return offset;
}

std::string PackWriter::finish() const {
    std::string pack = "PACK";
    append_big_endian32(pack, 2);
    append_big_endian32(pack, count_);
    pack.append(entries_);
    const auto checksum = git::sha1(pack);
    return pack.append(checksum.begin(), checksum.end());
}

} // namespace corvandell::test
