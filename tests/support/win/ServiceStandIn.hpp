// Reaching the service stand-in that the test fixture runs on loopback: its address, a
// signed-in user of its own per test, and what it last received over the wire.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "api/win/WinHttpApiClient.hpp"
#include "app/SettingsFile.hpp"

namespace corvandell::win {

// Exposes the raw exchange, so tests can also reach the stand-in's test-only routes.
class ProbeClient : public WinHttpApiClient {
public:
    using WinHttpApiClient::request;
    using WinHttpApiClient::WinHttpApiClient;
};

struct ReceivedRequest {
    std::string method;
    std::string path;
    std::map<std::string, std::string> headers;
    std::string body;
};

// The stand-in's base address, from the fixture's files; "" when it is not running.
std::string serviceBaseUrl();

// Settings pointing at the stand-in and holding a fresh session of `username`; throws, saying
// so, when the fixture has not started the stand-in.
Settings signedInSettings(const std::string& username);

ReceivedRequest lastReceivedRequest();

// Every request the stand-in received since it started (the last 5000), oldest first, as
// "METHOD path?query"; its test routes are left out.
std::vector<std::string> receivedRequests();

// A call to one of the stand-in's own routes (test hooks, pages), without a token.
std::string callStandIn(const std::string& method, const std::string& path, const std::string& body = "");

// Moves the stand-in's clock on, so sessions last and tokens age without waiting.
void advanceServiceClock(int seconds);

// Makes the stand-in answer the next request to `path` with this status, body and headers.
void scriptNextReply(const std::string& path, int status, const std::string& body,
                     const std::string& headersJson = "{}");

// How a scripted file is sent: with its Content-Length, chunked, or declaring more bytes
// than it sends and then dropping the connection, as a download that breaks off does.
enum class FileTransfer { WithLength, Chunked, CutShort };

// Makes the stand-in serve `bytes` (any binary) at `path` for the next `times` requests.
void scriptFileReply(const std::string& path, std::string_view bytes, FileTransfer transfer, int times = 1);

} // namespace corvandell::win
