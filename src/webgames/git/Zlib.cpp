// The zlib wrapper (RFC 1950) around DEFLATE: a two-byte header checked here, the stream,
// and an Adler-32 trailer that is counted in the bytes occupied but never verified, as the
// pack's own checksum is not either.
#include "webgames/git/Inflate.hpp"
#include "webgames/git/InflatePath.hpp"

#include <cstdint>

namespace corvandell::git {

std::optional<Inflated> inflate_zlib(std::string_view input, std::size_t expectedSize, InflateError* error,
                                     std::size_t maxOutputBytes) {
    return inflate_detail::inflate_zlib_on(InflatePath::Fast, input, expectedSize, error, maxOutputBytes);
}

std::optional<Inflated> inflate_detail::inflate_zlib_on(InflatePath path, std::string_view input,
                                                        std::size_t expectedSize, InflateError* error,
                                                        std::size_t maxOutputBytes) {
    if (input.size() < 2) {
        if (error != nullptr) {
            *error = InflateError::TruncatedInput;
        }
        return std::nullopt;
    }
    const auto method = static_cast<std::uint8_t>(input[0]);
    const auto flags = static_cast<std::uint8_t>(input[1]);
    const bool hasPresetDictionary = (flags & 0x20) != 0;
    if ((method & 0x0F) != 8 || (method * 256u + flags) % 31 != 0 || hasPresetDictionary) {
        if (error != nullptr) {
            *error = InflateError::BadZlibHeader;
        }
        return std::nullopt;
    }
    auto result = inflate_raw_on(path, input.substr(2), expectedSize, error, maxOutputBytes);
    if (result) {
        result->consumed += 2 + 4; // header and Adler-32 trailer
    }
    return result;
}

} // namespace corvandell::git
