// The two smart-HTTP exchanges of a depth-1 clone: the ref advertisement and upload-pack.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace corvandell::git {

// The first advertised ref's object name (40 hex digits as sent), or "".
std::string tip_from_advertisement(std::string_view body);

// The upload-pack request asking for `tip` alone, at depth 1, with no haves.
std::string upload_pack_request(const std::string& tip);

// Unwraps the upload-pack reply as it arrives, in pieces of any size: the pack carried on
// side-band channel 1 goes to `receivePack` run by run, in order, so it can be written
// straight to a file and never held whole. Records cut by a piece's end wait for the rest
// (a record is at most 64 KB).
class PackReplyReader {
public:
    explicit PackReplyReader(std::function<void(std::string_view)> receivePack);

    void feed(std::string_view bytes);
    // The pack's size once the reply has ended. Throws std::runtime_error with what the whole
    // reply means, whatever the pieces: "malformed git response" when any record is bad,
    // else "git: " + the first server error text, else "no packfile in git response" when
    // no pack starting "PACK" came.
    std::uint64_t finish();

private:
    void take_record(std::string_view payload);
    // Takes one whole record at the start of `bytes`; false when it is not all there yet.
    bool take_from(std::string_view& bytes);

    std::function<void(std::string_view)> receivePack_;
    std::string pending_;
    std::string firstError_;
    std::string signature_; // the pack's first bytes, up to four
    std::uint64_t packBytes_ = 0;
    bool isMalformed_ = false;
};

// The pack of a whole reply held in memory; throws as PackReplyReader::finish.
std::string pack_from_response(std::string_view body);

} // namespace corvandell::git
