// Fuzzes the pkt-line reader and the two reply readers built on it. The reply readers
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
    try {
        corvandell::git::pack_from_response(std::string(body));
    } catch (const std::runtime_error&) {
    }
    return 0;
}
