#include "voice/MessageAssembler.hpp"

namespace corvandell::voice {

AssembledKind MessageAssembler::add(PieceKind kind, std::span<const std::uint8_t> bytes) {
    if (isCompleted_) {
        message_.clear();
        isOversized_ = false;
        isCompleted_ = false;
    }
    if (kind == PieceKind::Close) {
        isCompleted_ = true;
        return AssembledKind::Close;
    }
    if (!isOversized_ && message_.size() + bytes.size() <= maxMessageBytes_) {
        message_.insert(message_.end(), bytes.begin(), bytes.end());
    } else {
        isOversized_ = true;
        message_.clear();
    }
    if (kind == PieceKind::BinaryFragment || kind == PieceKind::TextFragment) {
        return AssembledKind::Incomplete;
    }
    isCompleted_ = true;
    if (isOversized_) {
        return AssembledKind::Oversized;
    }
    if (kind == PieceKind::TextMessage) {
        message_.clear();
        return AssembledKind::Text;
    }
    return AssembledKind::Binary;
}

} // namespace corvandell::voice
