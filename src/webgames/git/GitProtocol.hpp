// The two smart-HTTP exchanges of a depth-1 clone: the ref advertisement and upload-pack.
#pragma once

#include <string>
#include <string_view>

namespace corvandell::git {

// The first advertised ref's object name (40 hex digits as sent), or "".
std::string tip_from_advertisement(std::string_view body);

// The upload-pack request asking for `tip` alone, at depth 1, with no haves.
std::string upload_pack_request(const std::string& tip);

// The pack carried on side-band channel 1, gathered in the reply's own buffer: each
// record's data moves down over the framing before it, so the pack never exists twice.
// Throws std::runtime_error: "malformed git response", "git: " + server text, "no packfile
// in git response".
std::string pack_from_response(std::string body);

} // namespace corvandell::git
