// Reading the fields of a protocol buffers message without its schema, for the one store
// (Battle.net) that keeps its install list in that format.
//
// Bounds-checked at every step: a varint longer than ten bytes, a length past the end of
// the message, field number 0 or a wire type other than 0, 1, 2 and 5 (groups are
// deprecated and never written by the store) ends the reading, and the reader tells how it
// stopped so callers keep what came before and can say the file was damaged.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace corvandell {

enum class ProtobufWireType : std::uint8_t { Varint = 0, Fixed64 = 1, LengthDelimited = 2, Fixed32 = 5 };

struct ProtobufField {
    std::uint64_t number = 0;
    ProtobufWireType wireType = ProtobufWireType::Varint;
    std::uint64_t value = 0; // varint and fixed fields
    std::string_view bytes;  // length-delimited fields: a string, bytes or a nested message
};

enum class ProtobufStop {
    None,        // still reading
    End,         // the message ended cleanly after a whole field
    Truncated,   // a field runs past the end
    BadVarint,   // a varint longer than ten bytes
    BadFieldTag, // field number 0
    BadWireType, // a group or an undefined wire type
};

class ProtobufReader {
public:
    explicit ProtobufReader(std::string_view message) : message_(message) {}

    // The next field; nothing once reading has stopped (see stop()).
    std::optional<ProtobufField> next();

    ProtobufStop stop() const { return stop_; }
    bool isDamaged() const { return stop_ != ProtobufStop::None && stop_ != ProtobufStop::End; }

private:
    std::optional<std::uint64_t> readVarint();
    std::optional<ProtobufField> halt(ProtobufStop reason);

    std::string_view message_;
    std::size_t pos_ = 0;
    ProtobufStop stop_ = ProtobufStop::None;
};

} // namespace corvandell
