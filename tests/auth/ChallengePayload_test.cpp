#include "auth/ChallengePayload.hpp"

#include <gtest/gtest.h>

namespace corvandell {
namespace {

// A payload object with the seven members; `extra` goes in front of them.
std::string payloadWith(const std::string& extra, const std::string& nonce = "n1") {
    return "{" + extra + "\"challengeId\":\"c1\",\"fingerprint\":\"f1\",\"issuer\":\"http://i\"," +
           "\"audience\":\"corvandell-client\",\"expiry\":\"2030-01-01T00:00:00Z\",\"nonce\":\"" + nonce +
           "\",\"clientTimestamp\":\"2029-12-31T23:55:00Z\"}";
}

std::string canonicalWith(const std::string& nonce = "n1") {
    return "{\"ChallengeId\":\"c1\",\"Fingerprint\":\"f1\",\"Issuer\":\"http://i\","
           "\"Audience\":\"corvandell-client\",\"Expiry\":\"2030-01-01T00:00:00Z\",\"Nonce\":\"" +
           nonce + "\",\"ClientTimestamp\":\"2029-12-31T23:55:00Z\"}";
}

TEST(ChallengePayload, BuildsTheCanonicalTextFromThePayloadObject) {
    const struct {
        const char* name;
        std::string reply;
        std::string canonical;
    } cases[] = {
        {"the service's own shape",
         "{\"challengeId\":\"c1\",\"payload\":" + payloadWith("") + ",\"algorithm\":\"ES256\"}",
         canonicalWith()},
        {"spaces and new lines between tokens",
         "{ \"payload\" : \n{ \"challengeId\" : \"c1\", \"fingerprint\":\"f1\", \"issuer\":\"http://i\",\n"
         " \"audience\":\"corvandell-client\", \"expiry\" :\"2030-01-01T00:00:00Z\", \"nonce\": \"n1\",\n"
         " \"clientTimestamp\":\"2029-12-31T23:55:00Z\" } }",
         canonicalWith()},
        {"members in another order come out in the fixed order",
         "{\"payload\":{\"nonce\":\"n1\",\"clientTimestamp\":\"2029-12-31T23:55:00Z\",\"expiry\":"
         "\"2030-01-01T00:00:00Z\",\"audience\":\"corvandell-client\",\"issuer\":\"http://i\","
         "\"fingerprint\":\"f1\",\"challengeId\":\"c1\"}}",
         canonicalWith()},
        {"escaped quotes and backslashes stay verbatim",
         "{\"payload\":" + payloadWith("", R"(a\"b\\c\\)") + "}", canonicalWith(R"(a\"b\\c\\)")},
        {"a brace inside a string does not end the object",
         "{\"payload\":" + payloadWith("\"note\":\"}{}\",", "x}y") + "}", canonicalWith("x}y")},
        {"nested objects and arrays inside the payload are skipped whole",
         "{\"payload\":" + payloadWith("\"meta\":{\"a\":[1,{\"b\":\"}\"}],\"c\":{}},") + "}",
         canonicalWith()},
        {"a top-level member of the same name does not stand in",
         "{\"challengeId\":\"TOP\",\"nonce\":\"TOP\",\"payload\":" + payloadWith("") + "}", canonicalWith()},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(buildChallengePayload(c.reply), c.canonical) << c.name;
    }
}

TEST(ChallengePayload, IsEmptyWhenThePayloadOrAMemberIsMissing) {
    const std::string full = payloadWith("");
    const struct {
        const char* name;
        std::string reply;
    } cases[] = {
        {"no payload key", "{\"challengeId\":\"c1\"}"},
        {"payload is not an object", "{\"payload\":\"text\"}"},
        {"string never closes inside the object", "{\"payload\":{\"challengeId\":\"c1}}"},
        {"nonce missing", "{\"payload\":{\"challengeId\":\"c1\",\"fingerprint\":\"f1\",\"issuer\":\"i\","
                          "\"audience\":\"a\",\"expiry\":\"e\",\"clientTimestamp\":\"t\"}}"},
        {"challengeId only outside the payload",
         "{\"challengeId\":\"c1\",\"payload\":{\"fingerprint\":\"f1\",\"issuer\":\"i\",\"audience\":\"a\","
         "\"expiry\":\"e\",\"nonce\":\"n\",\"clientTimestamp\":\"t\"}}"},
        {"a value that is not a string and no string follows",
         "{\"payload\":{\"challengeId\":\"c1\",\"fingerprint\":\"f1\",\"issuer\":\"i\",\"audience\":\"a\","
         "\"expiry\":\"e\",\"nonce\":\"n\",\"clientTimestamp\":42}}"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(buildChallengePayload(c.reply), "") << c.name;
    }
}

} // namespace
} // namespace corvandell
