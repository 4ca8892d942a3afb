// Git pkt-line framing: four hexadecimal length digits, then the payload.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvandell::git {

// A record read in place: the payload is a view into the buffer it was read from, so a
// reply of many megabytes is walked without copying it record by record.
struct PktLine {
    std::string_view payload;
    bool isFlush = false;
};

std::string pkt_line_encode(std::string_view payload, bool isFlush = false);

// The value of four length digits (upper or lower case hex), or no value.
std::optional<std::size_t> pkt_line_length(std::string_view digits);

// Reads records from `position` until fewer than four bytes remain; no value on a bad
// length (non-hex digit, 1-3, or longer than what is left). `position` is advanced.
std::optional<std::vector<PktLine>> pkt_line_read(std::string_view buffer, std::size_t& position);

} // namespace corvandell::git
