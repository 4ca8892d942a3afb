// Applies one git delta (a source size, a target size, then copy/insert opcodes) to its base.
//
// Every count in a delta comes from the sender, so none is trusted: the target buffer is
// sized only after checking it against the caller's limit and that the opcodes left could
// possibly fill it, each copy is bounds-checked without overflow, and no opcode may write
// past the announced target size. The limit matters because the second check alone still
// lets each one-byte copy opcode announce 64 KiB: a kilobyte of compressed delta can
// announce 64 GiB. The output is one buffer written in place, which is the fast path for
// long delta chains.
#include "webgames/git/Delta.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace corvandell::git {

namespace {

constexpr std::size_t kDefaultCopySize = 0x10000;

// Little-endian base-128; fails on a truncated number or one wider than 64 bits.
bool read_varint(std::string_view bytes, std::size_t& position, std::uint64_t& value) {
    value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
        if (position >= bytes.size()) {
            return false;
        }
        const auto byte = static_cast<std::uint8_t>(bytes[position++]);
        value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
        if ((byte & 0x80) == 0) {
            return true;
        }
    }
    return false;
}

// Gathers the little-endian bytes whose presence the opcode's bits flag, lowest bit first.
bool read_flagged(std::string_view delta, std::size_t& position, unsigned flags, unsigned count,
                  std::size_t& value) {
    value = 0;
    for (unsigned index = 0; index < count; ++index) {
        if ((flags & (1U << index)) == 0) {
            continue;
        }
        if (position >= delta.size()) {
            return false;
        }
        value |= static_cast<std::size_t>(static_cast<std::uint8_t>(delta[position++])) << (8 * index);
    }
    return true;
}

// The most output the remaining opcodes could produce: one byte each at least, and no
// single opcode yields more than a full-size copy or the whole base.
std::uint64_t max_output(std::size_t opcodeBytes, std::size_t baseSize) {
    const std::uint64_t perOpcode = std::max<std::uint64_t>(1, std::min(kDefaultCopySize, baseSize));
    return static_cast<std::uint64_t>(opcodeBytes) * perOpcode;
}

} // namespace

std::optional<std::string> apply_delta(std::string_view base, std::string_view delta, DeltaError* error,
                                       std::size_t maxTargetBytes) {
    DeltaError ignored = DeltaError::None;
    DeltaError& reason = error != nullptr ? *error : ignored;
    reason = DeltaError::None;
    const auto fail = [&reason](DeltaError why) {
        reason = why;
        return std::nullopt;
    };
    std::size_t position = 0;
    std::uint64_t sourceSize = 0;
    std::uint64_t targetSize = 0;
    if (!read_varint(delta, position, sourceSize) || !read_varint(delta, position, targetSize)) {
        return fail(DeltaError::BadHeader);
    }
    if (sourceSize != base.size()) {
        return fail(DeltaError::SourceSizeMismatch);
    }
    if (targetSize > maxTargetBytes) {
        return fail(DeltaError::TooLarge);
    }
    if (targetSize > max_output(delta.size() - position, base.size())) {
        return fail(DeltaError::TargetUnreachable);
    }
    std::string result;
    try {
        result.assign(static_cast<std::size_t>(targetSize), '\0');
    } catch (const std::bad_alloc&) {
        return fail(DeltaError::OutOfMemory);
    }
    char* out = result.data();
    std::size_t written = 0;
    while (position < delta.size()) {
        const auto opcode = static_cast<std::uint8_t>(delta[position++]);
        const std::size_t room = result.size() - written;
        if (opcode & 0x80) {
            std::size_t offset = 0;
            std::size_t size = 0;
            if (!read_flagged(delta, position, opcode, 4, offset) ||
                !read_flagged(delta, position, opcode >> 4, 3, size)) {
                return fail(DeltaError::TruncatedOpcode);
            }
            if (size == 0) {
                size = kDefaultCopySize;
            }
            if (offset > base.size() || size > base.size() - offset) {
                return fail(DeltaError::CopyOutOfRange);
            }
            if (size > room) {
                return fail(DeltaError::TargetOverrun);
            }
            std::memcpy(out + written, base.data() + offset, size);
            written += size;
            continue;
        }
        if (opcode == 0) {
            return fail(DeltaError::ReservedOpcode);
        }
        const std::size_t size = opcode;
        if (size > delta.size() - position) {
            return fail(DeltaError::TruncatedOpcode);
        }
        if (size > room) {
            return fail(DeltaError::TargetOverrun);
        }
        std::memcpy(out + written, delta.data() + position, size);
        position += size;
        written += size;
    }
    if (written != result.size()) {
        return fail(DeltaError::TargetShort);
    }
    return result;
}

std::optional<std::uint64_t> delta_target_size(std::string_view delta) {
    std::size_t position = 0;
    std::uint64_t sourceSize = 0;
    std::uint64_t targetSize = 0;
    if (!read_varint(delta, position, sourceSize) || !read_varint(delta, position, targetSize)) {
        return std::nullopt;
    }
    return targetSize;
}

} // namespace corvandell::git
