// Which path decodes a stream: the fast loop wherever enough input and output remain,
// or the careful one-symbol-at-a-time path throughout. Only the tests and the fuzzer pick
// the careful path, to show that both give the same bytes, consumed count and verdict.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "webgames/git/Inflate.hpp"

namespace corvandell::git {

enum class InflatePath { Fast, CarefulOnly };

namespace inflate_detail {

std::optional<Inflated> inflate_raw_on(InflatePath path, std::string_view input, std::size_t expectedSize,
                                       InflateError* error = nullptr,
                                       std::size_t maxOutputBytes = kMaxObjectBytes);
std::optional<Inflated> inflate_zlib_on(InflatePath path, std::string_view input, std::size_t expectedSize,
                                        InflateError* error = nullptr,
                                        std::size_t maxOutputBytes = kMaxObjectBytes);

} // namespace inflate_detail
} // namespace corvandell::git
