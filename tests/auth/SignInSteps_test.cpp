// Each failing step leaves its own text for the status line.
#include "auth/SignInSteps.hpp"

#include "support/ScriptedService.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvandell {
namespace {

constexpr const char* kChallenge = "POST /api/v1/auth/public-key/challenge";
constexpr const char* kComplete = "POST /api/v1/auth/public-key/complete";
const std::string kChallengeReply =
    R"({"challengeId":"c1","payload":{"challengeId":"c1","fingerprint":"f","issuer":"i","audience":"a",)"
    R"("expiry":"e","nonce":"n","clientTimestamp":"t"},"algorithm":"ES256"})";

TEST(SignInSteps, KeySignInSignsTheCanonicalPayloadAndSendsTheSignatureBack) {
    test::ScriptedService service;
    service.answer(kChallenge, kChallengeReply);
    service.answer(kComplete, R"({"userId":"u","accessToken":"cva_1","refreshToken":"cvr_1"})");
    std::string signedMessage;
    const AuthAttempt attempt = signInWithKey(
        service, [&](const std::string& message) { return signedMessage = message, std::string("SIG=="); },
        "PUB==", AttemptKind::KeyByPolling);
    EXPECT_TRUE(attempt.succeeded) << attempt.errorText;
    EXPECT_EQ(attempt.kind, AttemptKind::KeyByPolling);
    EXPECT_EQ(attempt.tokens.accessToken, "cva_1");
    EXPECT_EQ(attempt.tokens.refreshToken, "cvr_1");
    EXPECT_EQ(signedMessage, R"({"ChallengeId":"c1","Fingerprint":"f","Issuer":"i","Audience":"a",)"
                             R"("Expiry":"e","Nonce":"n","ClientTimestamp":"t"})");
    EXPECT_EQ(
        service.requests(),
        (std::vector<std::string>{
            std::string(kChallenge) + R"( {"keyType":"ECDSA-P256","keyData":"PUB=="})",
            std::string(kComplete) +
                R"( {"challengeId":"c1","signature":"SIG==","keyType":"ECDSA-P256","keyData":"PUB=="})"}));
}

TEST(SignInSteps, KeySignInFailuresSayWhichStepFailed) {
    const std::string refused = "Corvandell API HTTP 401: {\"error\":\"key_not_registered\"}";
    const struct {
        const char* name;
        std::string challengeReply;
        std::string signature;
        std::string completeReply; // "" for the service's refusal
        std::string errorText;
        std::size_t requests;
    } cases[] = {
        {"challenge without payload", R"({"challengeId":"c1"})", "S", "",
         "Malformed challenge from the server.", 1},
        {"payload missing a member",
         R"({"challengeId":"c1","payload":{"challengeId":"c1","fingerprint":"f","issuer":"i",)"
         R"("audience":"a","expiry":"e","nonce":"n"}})",
         "S", "", "Malformed challenge from the server.", 1},
        {"signer failed", kChallengeReply, "", "", "Signing the challenge failed.", 1},
        {"no tokens in the answer", kChallengeReply, "S", R"({"userId":"u"})",
         "The server returned no tokens.", 2},
        {"service refused", kChallengeReply, "S", "", refused, 2},
    };
    for (const auto& c : cases) {
        test::ScriptedService service;
        service.answer(kChallenge, c.challengeReply);
        if (c.completeReply.empty()) {
            service.fail(kComplete, refused);
        } else {
            service.answer(kComplete, c.completeReply);
        }
        const AuthAttempt attempt = signInWithKey(
            service, [&](const std::string&) { return c.signature; }, "PUB==", AttemptKind::KeyByUser);
        EXPECT_FALSE(attempt.succeeded) << c.name;
        EXPECT_EQ(attempt.errorText, c.errorText) << c.name;
        EXPECT_EQ(service.requests().size(), c.requests) << c.name;
        EXPECT_EQ(attempt.tokens.accessToken, "") << c.name;
    }
}

TEST(SignInSteps, OneRequestStepsNeedAnAccessTokenToSucceed) {
    test::ScriptedService service;
    service.answer("POST /api/v1/auth/refresh", R"({"accessToken":"a","refreshToken":"r"})");
    service.answer("GET /api/v1/auth/public-key/verify?token=t%2F1", R"({"refreshToken":"r"})");
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
