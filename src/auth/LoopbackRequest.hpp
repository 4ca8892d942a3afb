// The loopback sign-in listener's protocol: reading one browser request and answering it.
//
// The listener speaks just enough HTTP/1.1 for a browser's redirect: it reads the request
// line and headers of one GET, answers with a small page and closes. Anything else (another
// method, a malformed line, a head over 8 KiB) is dropped without an answer.
#pragma once

#include "auth/SignInAddress.hpp"

#include <string>
#include <string_view>

namespace corvandell {

// The request line and headers, terminating blank line included, must fit in this.
inline constexpr std::size_t kMaxLoopbackRequestBytes = 8192;

enum class LoopbackRequestState {
    NeedMore,  // no blank line yet, nothing wrong so far
    Complete,  // a GET whose head ended within the limit; `target` is set
    TooLarge,  // no end of head within the limit
    Malformed, // not a GET request line of the form "GET /target HTTP/1.x"
};

struct LoopbackRequest {
    LoopbackRequestState state = LoopbackRequestState::NeedMore;
    std::string target;
};

// Judges everything received on a connection so far. Gives up early: a wrong method or a
// bad request line is Malformed as soon as the bytes that show it have arrived.
LoopbackRequest readLoopbackRequest(std::string_view received);

struct LoopbackAnswer {
    std::string reply; // the whole HTTP response
    AddressTokens tokens;
    bool hasTokens = false; // an access token came with the request
};

// The success page when the target carries an access token; otherwise the page whose
// script sends the address's fragment (which the browser never sends) back as a query.
LoopbackAnswer answerLoopbackRequest(std::string_view target);

} // namespace corvandell
