// Fuzzes the pkt-line reader and the two reply readers. The reply readers
// throw std::runtime_error by design; anything else escaping, or a fault, is a finding.
#include "webgames/git/GitProtocol.hpp"
#include "webgames/git/PktLine.hpp"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view body(reinterpret_cast<const char*>(data), size);
    std::size_t position = 0;
    const auto lines = corvandell::git::pkt_line_read(body, position);
    if (lines && body.size() - position >= 4) {
        __builtin_trap(); // a successful read leaves fewer than four bytes
    }
    corvandell::git::tip_from_advertisement(body);
    // The reply read whole and read in pieces (of 1-16 bytes, by the first byte) must mean
    // the same: the same pack or the same error, wherever the network cuts it.
    const auto outcome = [&](std::size_t pieceBytes) {
        std::string pack;
        corvandell::git::PackReplyReader reader([&pack](std::string_view data) { pack.append(data); });
        try {
            for (std::size_t at = 0; at < body.size(); at += pieceBytes) {
                reader.feed(body.substr(at, pieceBytes));
            }
            reader.finish();
            return "pack " + pack;
        } catch (const std::runtime_error& error) {
            return std::string("error ") + error.what();
        }
    };
    if (!body.empty() && outcome(body.size()) != outcome(1 + static_cast<std::uint8_t>(body[0]) % 16)) {
        __builtin_trap();
    }
    return 0;
}
