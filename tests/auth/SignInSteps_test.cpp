// The key sign-in's three steps against a scripted service: what is signed, what is sent
// back, and the text each failure leaves for the status line.
#include "auth/SignInSteps.hpp"

#include "api/ApiClient.hpp"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

namespace corvandell {
namespace {

// Answers each path with a scripted reply, or throws the scripted error text.
class ScriptedService : public ApiClient {
public:
    std::map<std::string, std::string> replies;
    std::map<std::string, std::string> failures;
    std::vector<std::string> paths;
    std::vector<std::string> bodies;

protected:
    std::string request(const std::string&, const std::string& path, const std::string& body) override {
        paths.push_back(path);
        bodies.push_back(body);
        if (const auto failure = failures.find(path); failure != failures.end()) {
            throw std::runtime_error(failure->second);
        }
        const auto reply = replies.find(path);
        return reply == replies.end() ? "{}" : reply->second;
    }
    std::string requestRedirectLocation(const std::string&) override { return {}; }
};

constexpr const char* kChallengePath = "/api/v1/auth/public-key/challenge";
constexpr const char* kCompletePath = "/api/v1/auth/public-key/complete";
const std::string kChallengeReply =
    R"({"challengeId":"c1","payload":{"challengeId":"c1","fingerprint":"f","issuer":"i","audience":"a",)"
    R"("expiry":"e","nonce":"n","clientTimestamp":"t"},"algorithm":"ES256"})";
const std::string kCanonical = R"({"ChallengeId":"c1","Fingerprint":"f","Issuer":"i","Audience":"a",)"
                               R"("Expiry":"e","Nonce":"n","ClientTimestamp":"t"})";

TEST(SignInSteps, KeySignInSignsTheCanonicalPayloadAndSendsTheSignatureBack) {
    ScriptedService service;
    service.replies[kChallengePath] = kChallengeReply;
    service.replies[kCompletePath] = R"({"userId":"u","accessToken":"cva_1","refreshToken":"cvr_1"})";
    std::string signedMessage;
    const AuthAttempt attempt = signInWithKey(
        service, [&](const std::string& message) { return signedMessage = message, std::string("SIG=="); },
        "PUB==", AttemptKind::KeyByPolling);
    EXPECT_TRUE(attempt.succeeded) << attempt.errorText;
    EXPECT_EQ(attempt.kind, AttemptKind::KeyByPolling);
    EXPECT_EQ(attempt.tokens.accessToken, "cva_1");
    EXPECT_EQ(attempt.tokens.refreshToken, "cvr_1");
    EXPECT_EQ(signedMessage, kCanonical);
    ASSERT_EQ(service.bodies.size(), 2u);
    EXPECT_EQ(service.bodies[0], R"({"keyType":"ECDSA-P256","keyData":"PUB=="})");
    EXPECT_EQ(service.bodies[1],
              R"({"challengeId":"c1","signature":"SIG==","keyType":"ECDSA-P256","keyData":"PUB=="})");
}

TEST(SignInSteps, KeySignInFailuresSayWhichStepFailed) {
    const struct {
        const char* name;
        std::string challengeReply;
        std::string signature;
        std::string completeReply;
        std::string completeFailure;
        std::string errorText;
        std::size_t requests;
    } cases[] = {
        {"challenge without payload", R"({"challengeId":"c1"})", "S", "", "",
         "Malformed challenge from the server.", 1},
        {"payload missing a member",
         R"({"challengeId":"c1","payload":{"challengeId":"c1","fingerprint":"f","issuer":"i",)"
         R"("audience":"a","expiry":"e","nonce":"n"}})",
         "S", "", "", "Malformed challenge from the server.", 1},
        {"signer failed", kChallengeReply, "", "", "", "Signing the challenge failed.", 1},
        {"no tokens in the answer", kChallengeReply, "S", R"({"userId":"u"})", "",
         "The server returned no tokens.", 2},
        {"service refused", kChallengeReply, "S", "",
         "Corvandell API HTTP 401: {\"error\":\"key_not_registered\"}",
         "Corvandell API HTTP 401: {\"error\":\"key_not_registered\"}", 2},
    };
    for (const auto& c : cases) {
        ScriptedService service;
        service.replies[kChallengePath] = c.challengeReply;
        service.replies[kCompletePath] = c.completeReply;
        if (!c.completeFailure.empty()) {
            service.failures[kCompletePath] = c.completeFailure;
        }
        const AuthAttempt attempt = signInWithKey(
            service, [&](const std::string&) { return c.signature; }, "PUB==", AttemptKind::KeyByUser);
        EXPECT_FALSE(attempt.succeeded) << c.name;
        EXPECT_EQ(attempt.errorText, c.errorText) << c.name;
        EXPECT_EQ(service.paths.size(), c.requests) << c.name;
        EXPECT_EQ(attempt.tokens.accessToken, "") << c.name;
    }
}

TEST(SignInSteps, OneRequestStepsNeedAnAccessTokenToSucceed) {
    ScriptedService service;
    service.replies["/api/v1/auth/refresh"] = R"({"accessToken":"a","refreshToken":"r"})";
    service.replies["/api/v1/auth/public-key/verify?token=t%2F1"] = R"({"refreshToken":"r"})";
    const AuthAttempt restored = restoreSession(service, "old");
    EXPECT_TRUE(restored.succeeded);
    EXPECT_EQ(restored.kind, AttemptKind::SessionRestore);
    const AuthAttempt verified = verifyLinkToken(service, "t/1");
    EXPECT_FALSE(verified.succeeded);
    EXPECT_EQ(verified.kind, AttemptKind::PastedLink);
    EXPECT_EQ(verified.errorText, "The server returned no tokens.");
}

} // namespace
} // namespace corvandell
