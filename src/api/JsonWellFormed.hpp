// Whether a JSON text is whole: the check that tells a settings.json or library.json cut
// short by a crash or a full disk from one the client wrote completely.
//
// It reads nothing out of the text (the key scanners still do that) and builds no tree. It
// walks the bytes once with an explicit stack of open brackets, never recursing, so a
// hostile file of a million "[" costs a bounded stack and one pass, and stops at maxDepth.
#pragma once

#include <cstddef>
#include <string_view>

namespace corvandell {

enum class JsonShape {
    WellFormed,
    Empty,     // nothing but white space (and a byte order mark)
    CutShort,  // everything read was valid, but the text ended inside a value
    Malformed, // a byte that cannot stand where it is
    TooDeep,   // more than maxDepth brackets open at once
};

struct JsonCheck {
    JsonShape shape = JsonShape::WellFormed;
    std::size_t offset = 0; // where the problem was found (the text's size when cut short)
};

// Far deeper than any file of ours (settings and library nest two levels).
inline constexpr std::size_t kMaxJsonDepth = 64;

// One JSON value with optional white space around it. Strings are taken the way our own
// writer leaves them (escapeBodyString escapes only quote, backslash and line feed, so
// tabs, carriage returns and other raw bytes stand in them) and the way the readers take
// them: any byte but an unescaped quote, a backslash taking the next byte whatever it is.
// Numbers, literals, commas, colons and brackets follow the JSON grammar exactly.
JsonCheck checkJsonWellFormed(std::string_view text, std::size_t maxDepth = kMaxJsonDepth);

} // namespace corvandell
