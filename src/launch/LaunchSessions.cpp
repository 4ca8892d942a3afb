#include "launch/LaunchSessions.hpp"

#include "api/JsonText.hpp"
#include "launch/LaunchKey.hpp"

#include <exception>

namespace corvandell {
namespace {

constexpr char kHintKey[] = "\"overlayHintShown\"";

} // namespace

LaunchRecord openLaunchSession(IApiClient& api, std::uint32_t launchToken, const std::string& rowKey,
                               const std::string& title) {
    LaunchRecord record;
    record.launchToken = launchToken;
    record.rowKey = rowKey;
    const LaunchKey key = splitLaunchKey(rowKey);
    record.isExternal = key.isExternal;
    try {
        record.sessionId = key.isExternal
                               ? api.startExternalLaunch(key.provider, key.externalId, title).launchId
                               : api.startLaunch(key.softwareId).launchId;
    } catch (const std::exception& error) {
        record.sessionId.clear();
        record.errorText = error.what();
    } catch (...) {
        record.sessionId.clear();
        record.errorText = "unexpected error";
    }
    return record;
}

void closeLaunchSession(IApiClient& api, const std::string& sessionId, bool isExternal) noexcept {
    try {
        if (isExternal) {
            api.endExternalLaunch(sessionId);
        } else {
            api.endLaunch(sessionId);
        }
    } catch (...) {
        // The service keeps the session open until the user's next one closes it.
    }
}

OverlayHintCheck checkOverlayHint(IApiClient& api, const std::string& rowKey) noexcept {
    OverlayHintCheck check;
    try {
        check.rowKey = rowKey;
        check.isAlreadyShown = isOverlayHintShownIn(api.getProfileMetadata());
        check.isChecked = true;
    } catch (const std::exception& error) {
        check.errorText = error.what();
    } catch (...) {
        check.errorText = "unexpected error";
    }
    return check;
}

void markOverlayHintShown(IApiClient& api) noexcept {
    try {
        api.setProfileMetadata(withOverlayHintShown(api.getProfileMetadata()));
    } catch (...) {
        // The local settings remember it; the service is asked again on another machine.
    }
}

bool isOverlayHintShownIn(const std::string& metadata) {
    return readBool(metadata, "overlayHintShown", false);
}

std::string withOverlayHintShown(const std::string& metadata) {
    const size_t key = metadata.find(kHintKey);
    if (key != std::string::npos) {
        // Replace the value after the key's colon: up to the next ',' or '}' outside text.
        const size_t colon = metadata.find(':', key + sizeof(kHintKey) - 1);
        if (colon != std::string::npos) {
            size_t end = colon + 1;
            while (end < metadata.size() && metadata[end] != ',' && metadata[end] != '}') {
                ++end;
            }
            return metadata.substr(0, colon + 1) + "true" + metadata.substr(end);
        }
    }
    const size_t open = metadata.find_first_not_of(" \t\r\n");
    if (open == std::string::npos || metadata[open] != '{') {
        return "{\"overlayHintShown\":true}"; // nothing of ours to keep
    }
    const size_t next = metadata.find_first_not_of(" \t\r\n", open + 1);
    const bool isEmptyObject = next != std::string::npos && metadata[next] == '}';
    return metadata.substr(0, open + 1) + "\"overlayHintShown\":true" + (isEmptyObject ? "" : ",") +
           metadata.substr(open + 1);
}

} // namespace corvandell
