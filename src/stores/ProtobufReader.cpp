// Wire-format notes: a field starts with a varint tag (field number << 3 | wire type);
// varints hold 7 bits per byte, least significant group first, the high bit set on every
// byte but the last; fixed fields are little-endian; length-delimited fields carry a
// varint byte count. Unknown field numbers are the caller's to ignore.
#include "stores/ProtobufReader.hpp"

namespace corvandell {

namespace {

constexpr int kMaxVarintBytes = 10;

} // namespace

std::optional<ProtobufField> ProtobufReader::halt(ProtobufStop reason) {
    stop_ = reason;
    return std::nullopt;
}

std::optional<std::uint64_t> ProtobufReader::readVarint() {
    std::uint64_t value = 0;
    for (int i = 0; i < kMaxVarintBytes; ++i) {
        if (pos_ >= message_.size()) {
            halt(ProtobufStop::Truncated);
            return std::nullopt;
        }
        const auto byte = static_cast<std::uint8_t>(message_[pos_++]);
        value |= static_cast<std::uint64_t>(byte & 0x7F) << (7 * i);
        if ((byte & 0x80) == 0) {
            return value;
        }
    }
    halt(ProtobufStop::BadVarint);
    return std::nullopt;
}

std::optional<ProtobufField> ProtobufReader::next() {
    if (stop_ != ProtobufStop::None) {
        return std::nullopt;
    }
    if (pos_ == message_.size()) {
        return halt(ProtobufStop::End);
    }
    const auto tag = readVarint();
    if (!tag) {
        return std::nullopt;
    }
    ProtobufField field;
    field.number = *tag >> 3;
    if (field.number == 0) {
        return halt(ProtobufStop::BadFieldTag);
    }
    const std::size_t remaining = message_.size() - pos_;
    switch (*tag & 7) {
    case 0: {
        const auto value = readVarint();
        if (!value) {
            return std::nullopt;
        }
        field.value = *value;
        return field;
    }
    case 1:
    case 5: {
        const std::size_t width = (*tag & 7) == 1 ? 8 : 4;
        if (remaining < width) {
            return halt(ProtobufStop::Truncated);
        }
        for (std::size_t i = width; i-- > 0;) {
            field.value = (field.value << 8) | static_cast<std::uint8_t>(message_[pos_ + i]);
        }
        field.wireType = width == 8 ? ProtobufWireType::Fixed64 : ProtobufWireType::Fixed32;
        pos_ += width;
        return field;
    }
    case 2: {
        const auto length = readVarint();
        if (!length) {
            return std::nullopt;
        }
        if (*length > message_.size() - pos_) {
            return halt(ProtobufStop::Truncated);
        }
        field.wireType = ProtobufWireType::LengthDelimited;
        field.bytes = message_.substr(pos_, static_cast<std::size_t>(*length));
        pos_ += static_cast<std::size_t>(*length);
        return field;
    }
    default:
        return halt(ProtobufStop::BadWireType);
    }
}

} // namespace corvandell
