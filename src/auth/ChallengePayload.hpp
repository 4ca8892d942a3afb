// The canonical text of a sign-in challenge, which is what the device key signs.
#pragma once

#include <string>
#include <string_view>

namespace corvandell {

// From the whole challenge reply: {"ChallengeId":"…","Fingerprint":"…",…} with the seven
// members in their fixed order, each value copied raw from the reply's payload object.
// Empty when the payload object or any of the seven members is missing.
std::string buildChallengePayload(std::string_view replyText);

} // namespace corvandell
