// Fuzzes what sign-in reads from others: the loopback listener's request reader (any local
// program may connect), the challenge reply's canonical text, and the addresses and links
// a user pastes. Checks properties as well as faults.
#include "auth/ChallengePayload.hpp"
#include "auth/LoopbackRequest.hpp"
#include "auth/SignInAddress.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

void check(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

void checkRequestReader(std::string_view input) {
    using corvandell::LoopbackRequestState;
    const corvandell::LoopbackRequest request = corvandell::readLoopbackRequest(input);
    if (request.state != LoopbackRequestState::Complete) {
        check(request.target.empty());
    } else {
        // A complete head ended within the limit, and its target is one printable word.
        const std::size_t end = input.find("\r\n\r\n");
        check(end != std::string_view::npos && end + 4 <= corvandell::kMaxLoopbackRequestBytes);
        check(!request.target.empty() && request.target.front() == '/');
        for (const char c : request.target) {
            check(static_cast<unsigned char>(c) > 0x20 && static_cast<unsigned char>(c) < 0x7f);
        }
        // The reply declares its body's length exactly.
        const std::string reply = corvandell::answerLoopbackRequest(request.target).reply;
        const std::size_t headEnd = reply.find("\r\n\r\n");
        const std::string lengthKey = "Content-Length: ";
        const std::size_t length = reply.find(lengthKey);
        check(headEnd != std::string::npos && length != std::string::npos);
        check(std::stoul(reply.substr(length + lengthKey.size())) == reply.size() - headEnd - 4);
    }
    // Whatever was judged wrong stays wrong as more bytes arrive.
    if (input.size() > 1) {
        const auto prefix = corvandell::readLoopbackRequest(input.substr(0, input.size() / 2));
        if (prefix.state == LoopbackRequestState::Malformed) {
            check(request.state == LoopbackRequestState::Malformed);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    checkRequestReader(input);

    const std::string canonical = corvandell::buildChallengePayload(input);
    check(canonical.empty() || (canonical.starts_with("{\"ChallengeId\":\"") && canonical.ends_with("\"}")));

    const corvandell::AddressTokens tokens = corvandell::tokensFromAddress(input);
    check(tokens.accessToken.size() <= size && tokens.refreshToken.size() <= size);
    check(corvandell::verificationTokenFromLink(input).size() <= size);
    check(corvandell::percentDecode(input).size() <= size);
    return 0;
}
