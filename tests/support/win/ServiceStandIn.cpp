#include "support/win/ServiceStandIn.hpp"

#include <stdexcept>

#include "api/JsonText.hpp"
#include "auth/Base64.hpp"
#include "support/TempFolder.hpp"
#include "support/win/ChildProcess.hpp"

namespace corvandell::win {

std::string serviceBaseUrl() {
    const auto fixtures = test::fixtureFolder(L"CORVANDELL_TEST_FIXTURES");
    if (fixtures.empty()) {
        return {};
    }
    std::string url = test::readTestFile(fixtures / L"service" / L"url");
    while (!url.empty() && (url.back() == '\n' || url.back() == '\r')) {
        url.pop_back();
    }
    return url;
}

std::string callStandIn(const std::string& method, const std::string& path, const std::string& body) {
    Settings settings;
    settings.apiBaseUrl = serviceBaseUrl();
    settings.bearerToken.clear();
    return ProbeClient(&settings).request(method, path, body);
}

void advanceServiceClock(int seconds) {
    callStandIn("POST", "/__test/clock", "{\"advanceSeconds\":" + std::to_string(seconds) + "}");
}

Settings signedInSettings(const std::string& username) {
    Settings settings;
    settings.apiBaseUrl = serviceBaseUrl();
    if (settings.apiBaseUrl.empty()) {
        throw std::runtime_error("the service fixture is not running");
    }
    const std::string tokens =
        callStandIn("POST", "/__test/session", "{\"username\":\"" + escapeBodyString(username) + "\"}");
    settings.bearerToken = readString(tokens, "accessToken");
    settings.refreshToken = readString(tokens, "refreshToken");
    settings.username = username;
    return settings;
}

ReceivedRequest lastReceivedRequest() {
    const std::string record = callStandIn("GET", "/__test/last-request", "");
    return {readString(record, "method"), readString(record, "path"), readStringMap(record, "headers"),
            readString(record, "body")};
}

std::vector<std::string> receivedRequests() {
    std::vector<std::string> requests;
    for (const std::string& item : readObjectList(callStandIn("GET", "/__test/requests", ""), "items")) {
        requests.push_back(readString(item, "request"));
    }
    return requests;
}

void scriptNextReply(const std::string& path, int status, const std::string& body,
                     const std::string& headersJson) {
    callStandIn("POST", "/__test/reply",
                "{\"path\":\"" + escapeBodyString(path) + "\",\"status\":" + std::to_string(status) +
                    ",\"body\":\"" + escapeBodyString(body) + "\",\"headers\":" + headersJson + "}");
}

void scriptFileReply(const std::string& path, std::string_view bytes, FileTransfer transfer, int times) {
    const char* name = transfer == FileTransfer::WithLength ? "length"
                       : transfer == FileTransfer::Chunked  ? "chunked"
                                                            : "cut";
    callStandIn("POST", "/__test/reply",
                "{\"path\":\"" + escapeBodyString(path) +
                    "\",\"status\":200,\"times\":" + std::to_string(times) + ",\"transfer\":\"" + name +
                    "\",\"bodyBase64\":\"" + base64Encode(bytes) + "\"}");
}

} // namespace corvandell::win
