// Reassembles WebSocket messages from the pieces a receive call hands over.
//
// A receive returns part of a message both when the peer fragmented it and when the
// message is longer than the receive buffer; the pieces are marked "fragment" until the
// last, which carries the message's own type. Only whole messages are played: a block
// cut in two would play as two clicks. A message over the limit is dropped whole, so a
// misbehaving peer cannot make the channel hold more than one message's worth.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace corvandell::voice {

// The piece types of a WebSocket receive, in portable terms.
enum class PieceKind { BinaryMessage, BinaryFragment, TextMessage, TextFragment, Close };

enum class AssembledKind {
    Incomplete, // more pieces to come
    Binary,     // message() holds a whole binary message
    Text,       // a whole text message (its bytes are not kept)
    Close,      // the peer closed
    Oversized,  // a message longer than the limit ended; it was dropped
};

class MessageAssembler {
public:
    explicit MessageAssembler(std::size_t maxMessageBytes) : maxMessageBytes_(maxMessageBytes) {}

    AssembledKind add(PieceKind kind, std::span<const std::uint8_t> bytes);

    // The last whole binary message; valid until the next add.
    std::span<const std::uint8_t> message() const noexcept { return message_; }

private:
    std::size_t maxMessageBytes_;
    std::vector<std::uint8_t> message_;
    bool isOversized_ = false;
    bool isCompleted_ = false;
};

} // namespace corvandell::voice
