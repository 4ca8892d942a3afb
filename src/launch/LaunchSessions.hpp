// The service side of playing: opening and closing a play session, and the one-time
// overlay hint flag kept in the user's profile. Each call blocks and runs on a job thread;
// none throws, because its caller is a thread entry that has nowhere to report to.
#pragma once

#include "api/IApiClient.hpp"

#include <cstdint>
#include <string>

namespace corvandell {

// Posted back to the window when the service answered (or failed to) a session start.
struct LaunchRecord {
    std::uint32_t launchToken = 0;
    std::string rowKey{};    // the row the session is for
    std::string sessionId{}; // empty: the service call failed
    bool isExternal = false;
    std::string errorText{};
};

// Posted back when the service said whether the user has seen the overlay hint.
struct OverlayHintCheck {
    bool isChecked = false;      // the service answered
    bool isAlreadyShown = false; // its overlayHintShown flag
    std::string rowKey{};        // the row waiting to be launched
    std::string errorText{};
};

// Posted back once a session's end was sent, whatever the service answered.
struct SessionEnded {
    std::string errorText{};
};

// A key without ':' is a catalogue title; "store:externalId" an external launch.
LaunchRecord openLaunchSession(IApiClient& api, std::uint32_t launchToken, const std::string& rowKey,
                               const std::string& title);
// Whether it worked or not: a failed end is not retried.
void closeLaunchSession(IApiClient& api, const std::string& sessionId, bool isExternal) noexcept;

OverlayHintCheck checkOverlayHint(IApiClient& api, const std::string& rowKey) noexcept;
// Sets the flag in the profile's metadata, keeping whatever else the metadata holds.
void markOverlayHintShown(IApiClient& api) noexcept;

// The profile metadata is the client's own JSON object text; these read and set the flag
// in it without a parser, as everything else the client reads.
bool isOverlayHintShownIn(const std::string& metadata);
std::string withOverlayHintShown(const std::string& metadata);

} // namespace corvandell
