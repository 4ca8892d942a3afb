// Pack framing and stored-block zlib written independently of the decoder.
#include "support/PackWriter.hpp"

#include "webgames/git/Sha1.hpp"

#include <algorithm>

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
    std::string stream = "\x78\x01";
    std::size_t at = 0;
    do {
        const std::size_t length = std::min<std::size_t>(bytes.size() - at, 0xFFFF);
        const bool isFinal = at + length == bytes.size();
        stream.push_back(isFinal ? '\x01' : '\x00');
        for (const auto half : {static_cast<std::uint32_t>(length), ~static_cast<std::uint32_t>(length)}) {
            stream += {static_cast<char>(half & 0xFF), static_cast<char>((half >> 8) & 0xFF)};
        }
        stream.append(bytes.substr(at, length));
        at += length;
    } while (at < bytes.size());
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const char byte : bytes) {
        a = (a + static_cast<std::uint8_t>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    append_big_endian32(stream, (b << 16) | a);
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
    const char* const kTypeWords[] = {"", "commit", "tree", "blob", "tag"};
    return git::object_name(std::string(kTypeWords[type]) + " " + std::to_string(content.size()) + '\0',
                            content);
}

std::string pack_entry(int type, std::uint64_t declaredSize, std::string_view afterHeader) {
    std::string entry(1, static_cast<char>((type << 4) | (declaredSize & 0x0F)));
    for (declaredSize >>= 4; declaredSize != 0; declaredSize >>= 7) {
        entry.back() = static_cast<char>(entry.back() | 0x80);
        entry.push_back(static_cast<char>(declaredSize & 0x7F));
    }
    return entry.append(afterHeader);
}

std::string pack_entry(int type, std::string_view content) {
    return pack_entry(type, content.size(), zlib_stored(content));
}

std::string ref_delta_entry(std::string_view baseHexName, std::string_view delta) {
    return pack_entry(7, delta.size(), from_hex(baseHexName) + zlib_stored(delta));
}

std::string pack_of(const std::vector<std::string>& entries) {
    std::string pack = "PACK";
    append_big_endian32(pack, 2);
    append_big_endian32(pack, static_cast<std::uint32_t>(entries.size()));
    for (const std::string& entry : entries) {
        pack += entry;
    }
    const auto checksum = git::sha1(pack);
    return pack.append(checksum.begin(), checksum.end());
}

} // namespace corvandell::test
