// Fuzzes the JSON key scanners and every reader of the service's replies. Besides faults,
// these trap: an object slice that is not a piece of the input or is not braced, a read
// string longer than the text it came from (unescaping only shortens), and a string that
// does not survive being escaped into a template and read back, which is how every
// request body and our own files carry text.
#include "api/JsonText.hpp"
#include "api/ServiceReaders.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

void readEveryReply(const std::string& reply) {
    using namespace corvandell;
    readAuthTokens(reply);
    readKeyChallenge(reply);
    readRegStart(reply);
    readMe(reply);
    readSoftwareList(reply);
    readEntitlements(reply);
    readLatestBuild(reply);
    readDownloadGrant(reply);
    readLaunchStart(reply);
    readFriends(reply);
    readConversation(reply);
    readMessage(reply);
    readMessages(reply);
    readVoiceRoom(reply);
    readVoiceRooms(reply);
    readPlaytime(reply);
    readFriendPlaytimes(reply);
    readFeed(reply);
    readRatingSummary(reply);
    readRatingSummaries(reply);
    readRepositoryGame(reply);
    readRepositoryGames(reply);
    readLinkedLogin(reply);
    readProfileMetadata(reply);
}

void checkScanners(const std::string& text) {
    using namespace corvandell;
    for (const std::string& object : splitObjects(text)) {
        check(object.size() >= 2 && object.front() == '{' && object.back() == '}');
        check(text.find(object) != std::string::npos);
    }
    for (const char* key : {"items", "id", "name", "message", "tags"}) {
        check(readString(text, key).size() <= text.size());
        readBool(text, key, false);
        readInt(text, key, 0);
        readInt64(text, key, 0);
        readDouble(text, key, 0.0);
        readStringMap(text, key);
        readStringList(text, key);
        for (const std::string& object : readObjectList(text, key)) {
            check(object.size() <= text.size());
        }
    }
}

void checkEscapeRoundTrip(const std::string& value) {
    const std::string body = "{\"k\":\"" + corvandell::escapeBodyString(value) + "\"}";
    check(corvandell::readString(body, "k") == value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    readEveryReply(text);
    checkScanners(text);
    checkEscapeRoundTrip(text);
    corvandell::encodeQueryValue(text);
    return 0;
}
