#include "support/win/LinkedDeviceKey.hpp"

#include "api/JsonText.hpp"
#include "auth/SignInAddress.hpp"
#include "auth/win/DeviceKey.hpp"
#include "support/win/ServiceStandIn.hpp"

#include <random>

namespace corvandell::test {

std::string uniqueName(const std::string& prefix) {
    return prefix + std::to_string(std::random_device()() % 100000000);
}

std::string mailedLink(const std::string& email) {
    std::string link;
    for (const std::string& item : readObjectList(win::callStandIn("GET", "/__test/outbox"), "items")) {
        if (readString(item, "to") == email) {
            link = readString(item, "link");
        }
    }
    return link;
}

bool linkDeviceKey(const std::filesystem::path& dataFolder, const std::string& email) {
    win::DeviceKey key;
    if (!key.ensure(dataFolder)) {
        return false;
    }
    Settings service;
    service.apiBaseUrl = win::serviceBaseUrl();
    win::ProbeClient client(&service);
    client.registerKey(email, "ECDSA-P256", key.publicKeyText());
    const std::string link = mailedLink(email);
    return !link.empty() &&
           !client.verifyKeyRegistration(verificationTokenFromLink(link)).accessToken.empty();
}

} // namespace corvandell::test
